#include "tools/tv2/option_row.h"

#include "exporter/rules/sampling_rate.h"
#include "host/import/base/import_options.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/text.h"

#include <charconv>
#include <cmath>

namespace tv2
{

TakeText TakeTime(std::optional<float>& time)
{
    return [&time](const std::string& text) -> std::string
    {
        float number = 0.0f;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || stop != end || !std::isfinite(number))
            return "needs a time in seconds: 0.5";
        time = number;
        return {};
    };
}

std::string NotEmpty(const std::string& text)
{
    return text.empty() ? "is empty" : "";
}

OptionRow ExporterOption(std::string& path)
{
    return {.name = "--plugin",
            .value = &path,
            .help = "The exporter's module (default: the one beside this command)"};
}

OptionRow SceneFileOption(std::string& path)
{
    const auto is_a_file = [](const std::string& text) -> std::string
    {
        return text == kStandardInput
                   ? "a scene cannot be read from standard input, since its name and folder go into the "
                     "export and "
                     "other files may belong to it: save it to a file (./- is a file of the name -)"
                   : "";
    };
    return {.name = "SCENE", .value = &path, .help = "The scene file", .required = true, .check = is_a_file};
}

OptionRow SceneRateOption(double& rate)
{
    const auto take_rate = [&rate](const std::string& text) -> std::string
    {
        const std::optional<double> number = tev2_exporter::RateOfText(text, 0.0);
        if (!number || !(*number > 0.0) || *number > mobu_host::kHighestRate)
            return "needs a rate above 0 and up to " +
                   CountText(static_cast<std::uint64_t>(mobu_host::kHighestRate)) + ": 24, 29.97, 30000/1001";
        rate = *number;
        return {};
    };
    return {
        .name = "--scene-rate",
        .value = TakeText(take_rate),
        .help =
            "Frames per second of the scene, which its takes and --start-frame are counted in (default: what "
            "the file states; where it states none, the lowest common rate that fits all keys)"};
}

} // namespace tv2
