#include "exporter/export_options.h"

#include "exporter/option_table.h"
#include "exporter/sampling/take_span.h"

namespace tev2_exporter
{

ExportOptions FillOptionsFromScript(ExportContext& context, const ExportCall& call)
{
    const double transport_rate = GetTakeSecondSpan(context).transport_rate;

    ExportOptions options;
    options.CustomStart = SecondsOfKey(call.start_frame, transport_rate);
    options.CustomEnd = SecondsOfKey(call.end_frame, transport_rate);
    options.SamplingRate = static_cast<float>(call.rate);
    options.UseCustomRange = !call.whole_take;
    SetFlags(options, call.flags);
    return options;
}

void SetFlags(ExportOptions& options, const ExportFlags& flags)
{
    for (const ExportOption& row : kExportOptions)
    {
        if (row.applied != nullptr)
        {
            options.*row.applied = flags.*row.flag;
        }
    }
    options.AllTakes = flags.all_takes;
}

} // namespace tev2_exporter
