#pragma once

#include "exporter/base/export_options.h"
#include "host/export_run/export_run.h"
#include "tools/tv2/export_report.h"

#include <ostream>

namespace tv2
{

/// Measures what key reduction cost each file of an export that came out. For that its take is exported once more with
/// every key, into a private temporary file that is removed whatever happens. `call` is the export's; `terminal` is
/// where progress is drawn, null for none.
void MeasureReductions(const mobu_host::Exporter& exporter, tev2_exporter::ExportCall call,
                       ExportReport& report, std::ostream* terminal);

} // namespace tv2
