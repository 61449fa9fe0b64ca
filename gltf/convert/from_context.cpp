#include "gltf/convert/from_context.h"

#include "gltf/document_builder.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace tev2_gltf
{

using gltf::JsonKind;
using gltf::JsonValue;
using gltf::Place;
using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kSceneBytesAtLeast = std::size_t{16} << 20;
constexpr std::size_t kSceneBytesPerByte = 64;
constexpr std::size_t kAllBytesAtLeast = std::size_t{1} << 30;
constexpr std::size_t kAllBytesPerByte = 256;
constexpr std::size_t kLeastScene = std::size_t{64} << 10; // what a scene counts for beside its records

template <std::size_t kCount>
std::optional<std::array<float, kCount>> NumbersOf(JsonValue value)
{
    std::array<float, kCount> numbers{};
    for (std::size_t i = 0; i < kCount; ++i)
    {
        const std::optional<double> number = value.Size() == kCount ? value[i].Number() : std::nullopt;
        if (!number || !std::isfinite(static_cast<float>(*number)))
            return std::nullopt;
        numbers[i] = static_cast<float>(*number);
    }
    return numbers;
}

bool IsShortText(JsonValue value)
{
    return value.Kind() == JsonKind::Text && value.Text().size() <= kMostStringUnits;
}

/// Whether single precision keeps every digit of a number, or of each in an array.
bool IsKept(JsonValue value)
{
    if (const std::optional<double> number = value.Number())
        return gltf::FloatNumber(static_cast<float>(*number)).get<double>() == *number;
    for (std::size_t i = 0; i < value.Size(); ++i)
        if (!IsKept(value[i]))
            return false;
    return true;
}

/// A text, or texts; nothing for other values, and for texts that no file can hold.
std::optional<std::vector<TEV2_WIDE_STRING>> TextsOf(JsonValue value)
{
    std::vector<TEV2_WIDE_STRING> texts;
    if (IsShortText(value))
    {
        texts.push_back(TEV2_WIDE_STRING::FromBytes(value.Text()));
        return texts;
    }
    if (value.Kind() != JsonKind::Array || value.Size() == 0)
        return std::nullopt;
    for (std::size_t i = 0; i < value.Size(); ++i)
    {
        if (!IsShortText(value[i]))
            return std::nullopt;
        texts.push_back(TEV2_WIDE_STRING::FromBytes(value[i].Text()));
    }
    return texts;
}

/// A truth value, or a whole number of 32 bits.
std::optional<std::int32_t> IntegerOf(JsonValue value)
{
    if (const std::optional<bool> truth = value.Truth())
        return *truth ? 1 : 0;
    const std::optional<std::int64_t> whole = value.Whole();
    if (!whole || *whole < std::numeric_limits<std::int32_t>::min() ||
        *whole > std::numeric_limits<std::int32_t>::max())
        return std::nullopt;
    return static_cast<std::int32_t>(*whole);
}

template <typename Track, typename Family>
void AddValue(std::vector<TEV2_NAMED_ANIMATABLE<Family>>& values, const TEV2_WIDE_STRING& name,
              const typename Track::Value& value)
{
    auto& added = values.emplace_back();
    added.name = name;
    added.track = ConstantTrack<Track>(value);
}

} // namespace

void Budget::Take(std::size_t bytes, const Place& place)
{
    const std::size_t read = document_.BytesRead();
    if (bytes > kSceneBytesAtLeast + kSceneBytesPerByte * read - scene_)
        place.Fail("the scene would take far more memory than the file has bytes");
    scene_ += bytes;
    if (!counts_)
        return;
    if (bytes > kAllBytesAtLeast + kAllBytesPerByte * read - all_)
        place.Fail("the scenes of all animations would take far more room than the file has bytes");
    all_ += bytes;
}

void Budget::Take(std::size_t count, std::size_t bytes_each, const Place& place)
{
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    Take(bytes_each > 0 && count > kMost / bytes_each ? kMost : count * bytes_each, place);
}

void Budget::BeginScene(bool is_new)
{
    scene_ = 0;
    counts_ = is_new;
    Take(kLeastScene, {"scenes", 0});
}

FromContext::FromContext(gltf::Document& the_document, FromGltfOptions the_options,
                         ConversionReport& the_report)
    : document(the_document),
      options(std::move(the_options)),
      accessors(document),
      keys(document, accessors),
      budget(document),
      report(&the_report),
      motion_report(&the_report)
{
}

void FromContext::ReportRest(JsonValue object, const Place& place,
                             std::initializer_list<std::string_view> known, bool loses_extras) const
{
    if (!reports_shared)
        return;
    const JsonValue extensions = object["extensions"];
    for (std::size_t i = 0; i < extensions.Size(); ++i)
    {
        if (std::ranges::find(known, extensions.Name(i)) == known.end())
            Report(Code::ExtensionLost, place, std::string(extensions.Name(i)));
    }
    if (loses_extras && object["extras"])
        Report(Code::ExtrasLost, place, "extras of this kind of object");
}

TEV2_WIDE_STRING FromContext::WideText(std::string_view utf8, const Place& place)
{
    if (utf8.size() > kMostStringUnits)
    {
        std::size_t size = kMostStringUnits;
        while (size > 0 && (static_cast<unsigned char>(utf8[size]) & 0xC0u) == 0x80u)
            --size; // no half character
        utf8 = utf8.substr(0, size);
        Report(Code::NameChanged, place, "its name was cut");
    }
    budget.Take(utf8.size(), sizeof(char16_t), place);
    return TEV2_WIDE_STRING::FromBytes(utf8);
}

void FromContext::ReadExtras(JsonValue owner, const Place& place, TEV2_EXTENDED_PROPERTIES& properties,
                             std::string_view except)
{
    const JsonValue extras = owner["extras"];
    if (extras && extras.Kind() != JsonKind::Object)
        Report(Code::ExtrasLost, place, "extras that are not an object");
    for (std::size_t i = 0; i < extras.Size() && extras.Kind() == JsonKind::Object; ++i)
    {
        const std::string_view name = extras.Name(i);
        if (!except.empty() && name == except)
            continue;
        if (!ReadExtra(extras[i], WideText(name, place), place, properties))
            Report(Code::ExtrasLost, place, std::string(name));
        else if (!IntegerOf(extras[i]) && !IsKept(extras[i]))
            Report(Code::NumberRounded, place, std::string(name));
    }
}

bool FromContext::ReadExtra(JsonValue value, const TEV2_WIDE_STRING& name, const Place& place,
                            TEV2_EXTENDED_PROPERTIES& properties)
{
    constexpr std::size_t kValueBytes =
        sizeof(TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>) + TEV2_ANIMATABLE::kMostBytes;
    budget.Take(kValueBytes, place);
    if (const std::optional<std::int32_t> integer = IntegerOf(value))
        AddValue<TEV2_ANIMATABLE_INT32_RLE>(properties.intValues, name, *integer);
    else if (const std::optional<double> number = value.Number();
             number && std::isfinite(static_cast<float>(*number)))
        AddValue<TEV2_ANIMATABLE_FLOAT32_LINEAR>(properties.floatValues, name, static_cast<float>(*number));
    else if (const auto three = NumbersOf<3>(value))
        AddValue<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(properties.vector3Values, name,
                                                  {(*three)[0], (*three)[1], (*three)[2]});
    else if (const auto four = NumbersOf<4>(value))
        AddValue<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(properties.vector4Values, name,
                                                  {(*four)[0], (*four)[1], (*four)[2], (*four)[3]});
    else if (auto texts = TextsOf(value))
    {
        for (const TEV2_WIDE_STRING& text : *texts)
            budget.Take(sizeof text + sizeof(char16_t) * text.Count(), place);
        TEV2_NAMED_STRING_ARRAY& array = properties.stringArrays.emplace_back();
        array.name = name;
        array.strings = std::move(*texts);
    }
    else
        return false;
    return true;
}

float Single(double number, const Place& place)
{
    const float single = static_cast<float>(number);
    if (!std::isfinite(single))
        place.Fail("has a number that is too large for single precision");
    return single;
}

} // namespace tev2_gltf
