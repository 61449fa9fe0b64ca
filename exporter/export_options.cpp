#include "exporter/export_options.h"

#include "exporter/sampling/take_span.h"

namespace tev2_exporter
{

ExportOptions FillOptionsFromScript(ExportContext& context, const ScriptArguments& arguments)
{
    const double transport_rate = GetTakeSecondSpan(context).transport_rate;

    ExportOptions options;
    options.CustomStart = SecondsOfKey(arguments.startFrame, transport_rate);
    options.CustomEnd = SecondsOfKey(arguments.endFrame, transport_rate);
    options.SamplingRate = static_cast<float>(arguments.fps);
    options.FilenameSpacesToUnderscores = arguments.spacesToUnderscores;
    options.KeepPositiveZ = arguments.keepPositiveZ;
    options.RemoveNamespaceFromNames = arguments.removeNamespace;
    options.DisableConstraints = arguments.disableConstraints;
    options.UseCustomRange = !arguments.exportAllKeys;
    options.AllTakes = arguments.allTakes;
    return options;
}

} // namespace tev2_exporter
