#include "exporter/export_settings.h"

#include "exporter/clamped_cast.h"
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

constexpr const char* kAsteriskExtensionName = "ASTERIX_TV2_EXTENSION_KEY_NAME";

// The stored values in the order in which they are read and written; `visit` is called with name and field.
template <typename Settings, typename Visit>
void VisitStoredValues(Settings& settings, Visit&& visit)
{
    visit("SAMPLING_RADIO_CHOICE_KEY_NAME", settings.sampling_choice);
    visit("KEYFRAME_RADIO_CHOICE_KEY_NAME", settings.key_frame_choice);
    visit("TAKES_RADIO_CHOICE_KEY_NAME", settings.takes_choice);
    visit("START_KEY_KEY_NAME", settings.start_key);
    visit("END_KEY_KEY_NAME", settings.end_key);
    visit("FPS_KEY_NAME", settings.frame_rate);
    visit("FILENAME_SPACES_KEY_NAME", settings.spaces_to_underscores);
    visit("KEEP_POSITIVE_Z_KEY_NAME", settings.keep_positive_z);
    visit("REMOVE_NAMESPACE_FROM_NAMES_KEY_NAME", settings.remove_namespace);
    visit(kAsteriskExtensionName, settings.asterisk_extension);
    visit("DISABLE_CONSTRAINTS_KEY_NAME", settings.disable_constraints);
    visit("DIALOG_POS_X_KEY_NAME", settings.dialog_x);
    visit("DIALOG_POS_Y_KEY_NAME", settings.dialog_y);
}

// The number a text begins with, after white space; 0 when it begins with none.
std::int32_t ParseInteger(const std::string& text)
{
    return ToInt32(static_cast<double>(std::strtoll(text.c_str(), nullptr, 10)));
}

// The same with decimals, whose point does not depend on the locale.
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
    const std::optional<std::string> text = platform::SettingsReader().Read(kAsteriskExtensionName);
    return !text || ParseInteger(*text) == 1;
}

ExportOptions FillOptionsFromSettings(const ExporterSettings& settings)
{
    ExportOptions options;
    options.CustomStart = SecondsOfKey(settings.start_key, settings.transport_rate);
    options.CustomEnd = SecondsOfKey(settings.end_key, settings.transport_rate);
    options.SamplingRate = settings.frame_rate;
    options.UseCustomRange = static_cast<std::uint32_t>(settings.key_frame_choice);
    options.AllTakes = static_cast<std::uint32_t>(settings.takes_choice);
    options.FilenameSpacesToUnderscores = settings.spaces_to_underscores;
    options.KeepPositiveZ = settings.keep_positive_z;
    options.RemoveNamespaceFromNames = settings.remove_namespace;
    options.DisableConstraints = settings.disable_constraints;
    options.Cancelled = options.CustomStart > options.CustomEnd || !(options.SamplingRate > 0.0f);
    return options;
}

} // namespace tev2_exporter
