#include "exporter/export_settings.h"

#include "exporter/base/clamped_cast.h"
#include "exporter/base/option_table.h"
#include "exporter/platform/settings_store.h"
#include "exporter/sampling/take_span.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>

namespace tev2_exporter
{
namespace
{

/// The stored values in the order in which they are read and written; `visit` is called with name and field.
template <typename Settings, typename Visit>
void VisitStoredValues(Settings& settings, Visit&& visit)
{
    visit("SAMPLING_RADIO_CHOICE_KEY_NAME", settings.sampling_choice);
    visit("KEYFRAME_RADIO_CHOICE_KEY_NAME", settings.key_frame_choice);
    visit(Option("all_takes").key, settings.takes_choice);
    visit(Option("start_frame").key, settings.start_key);
    visit(Option("end_frame").key, settings.end_key);
    visit(Option("fps").key, settings.frame_rate);
    for (const ExportOption& row : kCheckBoxes)
        visit(row.key, settings.flags.*row.flag);
    visit("DIALOG_POS_X_KEY_NAME", settings.dialog_x);
    visit("DIALOG_POS_Y_KEY_NAME", settings.dialog_y);
}

/// The number at the start of a text, after white space; 0 when there is none.
std::int32_t ParseInteger(const std::string& text)
{
    return ToInt32(static_cast<double>(std::strtoll(text.c_str(), nullptr, 10)));
}

/// The same with decimals; the decimal point does not depend on the locale.
float ParseRate(const std::string& text)
{
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    double rate = 0.0;
    if (start != std::string::npos)
    {
        const char* first = text.c_str() + start + (text[start] == '+' ? 1 : 0);
        std::from_chars(first, text.c_str() + text.size(), rate);
    }
    return static_cast<float>(rate);
}

void Assign(std::int32_t& field, const std::string& text)
{
    field = ParseInteger(text);
}
void Assign(float& field, const std::string& text)
{
    field = ParseRate(text);
}
void Assign(bool& field, const std::string& text)
{
    field = ParseInteger(text) == 1;
}

std::string Format(std::int32_t value)
{
    return std::to_string(value);
}
std::string Format(bool value)
{
    return value ? "1" : "0";
}

std::string Format(float value)
{
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), static_cast<double>(value),
                                   std::chars_format::fixed, 6);
    return std::string(text.data(), end.ptr);
}

} // namespace

void RefreshFromScene(ExportContext& context, ExporterSettings& settings)
{
    settings.transport_rate = context.player.GetTransportFpsValue();
    FBTake* take = context.system.CurrentTake;
    if (!take)
        return; // the frames stay what they were
    FBTimeSpan span = take->LocalTimeSpan;
    const auto frame = [&](const FBTime& time)
    { return ToInt32(std::round(time.GetSecondDouble() * settings.transport_rate)); };
    settings.take_start_frame = frame(span.GetStart());
    settings.take_end_frame = frame(span.GetStop());
}

void LoadSettings(ExporterSettings& settings)
{
    settings.start_key = settings.take_start_frame;
    settings.end_key = settings.take_end_frame;
    settings.frame_rate = static_cast<float>(settings.transport_rate);
    const platform::SettingsReader reader;
    VisitStoredValues(settings,
                      [&](const char* name, auto& field)
                      {
                          if (const std::optional<std::string> text = reader.Read(name))
                              Assign(field, *text);
                      });
}

void SaveSettings(const ExporterSettings& settings)
{
    platform::SettingsWriter writer;
    VisitStoredValues(settings,
                      [&](const char* name, const auto& field) { writer.Write(name, Format(field)); });
}

bool WantsAsteriskExtension()
{
    const std::optional<std::string> text = platform::SettingsReader().Read(Option("asterisk_extension").key);
    return !text || ParseInteger(*text) == 1;
}

ExportOptions FillOptionsFromSettings(const ExporterSettings& settings)
{
    ExportOptions options;
    options.CustomStart = SecondsOfKey(settings.start_key, settings.transport_rate);
    options.CustomEnd = SecondsOfKey(settings.end_key, settings.transport_rate);
    options.SamplingRate = settings.frame_rate;
    options.UseCustomRange = static_cast<std::uint32_t>(settings.key_frame_choice);
    SetFlags(options, settings.flags);
    options.AllTakes = static_cast<std::uint32_t>(settings.takes_choice);
    options.Cancelled = options.CustomStart > options.CustomEnd || !(options.SamplingRate > 0.0f);
    return options;
}

} // namespace tev2_exporter
