#include "exporter/file_information.h"

#include "exporter/base/text.h"
#include "exporter/base/version.h"
#include "exporter/platform/platform.h"

#include <charconv>
#include <cstdio>

namespace tev2_exporter
{
namespace
{

/// Two decimals with a point, whatever the locale.
std::string TwoDecimals(float value)
{
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2).ptr;
    return std::string(text, end);
}

std::string Title(ExportContext& context)
{
    const double version = context.system.Version;
    return std::string(TEV2_LOADER::kCreatorBegin) + TwoDecimals(static_cast<float>(version * 0.001)) +
           std::string(TEV2_LOADER::kCreatorExporter) + kExporterVersion;
}

std::string UserLine()
{
    return "USERNAME:\t" + platform::UserName().value_or("Unknown User") + "\r\n";
}

std::string TimeLine()
{
    const platform::UtcTime now = platform::CurrentUtcTime();
    char text[64];
    std::snprintf(text, sizeof text, "EXPORTED:\t%02d/%02d/%04d,%02d:%02d:%02d\r\n", now.day, now.month,
                  now.year, now.hour, now.minute, now.second);
    return text;
}

std::string SceneLine(ExportContext& context)
{
    const char* scene = context.system.Scene->FilePath;
    return std::string("FBX_FILE:\t") + (scene ? scene : "Unsaved FBX") + "\r\n";
}

} // namespace

void FillFileInformation(ExportContext& context, const std::u16string& file_name,
                         TEV2_LOADER::TEV2_INF& information)
{
    const std::string lines = UserLine() + TimeLine() + std::string(TEV2_LOADER::kFileNameLine) +
                              Narrow(file_name) + "\r\n" + SceneLine(context);
    information.creatorText = WideText(Title(context).c_str());
    information.infoText = WideText(lines.c_str());
}

} // namespace tev2_exporter
