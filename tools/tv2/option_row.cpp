#include "tools/tv2/option_row.h"

#include "exporter/rules/sampling_rate.h"
#include "host/import/base/import_options.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/text.h"

#include <charconv>
#include <cmath>
#include <sstream>
#include <string_view>
#include <utility>

namespace tv2
{

std::vector<std::string> NamesOf(const OptionRow& row)
{
    if (constexpr std::string_view kEitherWay = "--[no-]"; row.name.starts_with(kEitherWay))
    {
        const std::string name = row.name.substr(kEitherWay.size());
        return {"--" + name, "--no-" + name};
    }
    std::vector<std::string> names;
    std::istringstream parts(row.name);
    for (std::string name; std::getline(parts, name, ',');)
        names.push_back(name);
    return names;
}

bool IsOption(const OptionRow& row)
{
    return row.name.starts_with('-');
}

bool IsFlag(const OptionRow& row)
{
    return std::holds_alternative<bool*>(row.value);
}

bool IsNumber(const OptionRow& row)
{
    return std::holds_alternative<std::optional<int>*>(row.value) ||
           std::holds_alternative<std::size_t*>(row.value);
}

std::string ValueName(const OptionRow& row)
{
    if (IsFlag(row))
        return {};
    if (IsNumber(row))
        return "NUMBER";
    return row.files.empty() ? "TEXT" : row.files == "/" ? "FOLDER" : "FILE";
}

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
            .help = "The exporter's module (default: the one beside this command)",
            .files = "*"};
}

OptionRow SceneFileOption(std::string& path, std::string extensions)
{
    const auto is_a_file = [](const std::string& text) -> std::string
    {
        return text == kStandardInput
                   ? "a scene cannot be read from standard input, since its name and folder go into the "
                     "export and "
                     "other files may belong to it: save it to a file (./- is a file of the name -)"
                   : "";
    };
    return {.name = "SCENE",
            .value = &path,
            .help = "The scene file",
            .required = true,
            .check = is_a_file,
            .files = std::move(extensions)};
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
