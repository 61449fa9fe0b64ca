#pragma once

// Which names of files Windows reserves or refuses.

#include <string>

namespace tev2_exporter
{

/// Why no file of this path can exist under Windows: a device's name ("COM1.tv2"), a character that no name can have.
/// Empty when there can be one.
std::string WhyNoWindowsFile(const std::string& path);

/// The device that Windows opens under this path; empty for a path that names a file.
std::string WindowsDevice(const std::string& path);

} // namespace tev2_exporter
