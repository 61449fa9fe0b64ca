#pragma once

namespace tev2_exporter
{

inline constexpr const char* kExporterVersion = "v1.14"; // as the title of a file and the popup show it

} // namespace tev2_exporter
