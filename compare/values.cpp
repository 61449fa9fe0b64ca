#include "compare/values.h"

#include "compare/components.h"
#include "compare/rewound_scene.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <numbers>
#include <ranges>

namespace tev2_compare
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kMostInstants = 100'000; // of one track

using Numbers = std::vector<double>;

/// What the numbers of a field mean: `factor` brings them into the unit.
struct Meaning
{
    Unit unit = Unit::Percent;
    double factor = 1.0;
};

Meaning MeaningOf(std::string_view label)
{
    constexpr std::string_view kLengths[] = {"positions", "position",  "bounds",
                                             "distance",  "clipRange", "focusDistance"};
    constexpr std::string_view kAngles[] = {"fieldOfView", "cone"};
    if (std::ranges::find(kLengths, label) != std::end(kLengths))
        return {Unit::Millimetres, 1000.0};
    if (std::ranges::find(kAngles, label) != std::end(kAngles))
        return {Unit::Degrees, 180.0 / std::numbers::pi};
    return {};
}

std::string NumberText(double number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

/// "1, 2, 3" in the unit of their field.
std::string ValueText(const Numbers& numbers, const Meaning& meaning)
{
    std::string text;
    for (const double number : numbers)
    {
        // metres are read more easily than thousands of millimetres
        const bool degrees = meaning.unit == Unit::Degrees;
        text += (text.empty() ? "" : ", ") + NumberText(degrees ? number * meaning.factor : number);
    }
    return text;
}

Numbers ValueAt(TEV2_ANIMATABLE& track, float time)
{
    Rewind(track);
    track.SetTime(time);
    Numbers numbers;
    AllTracks::VisitAs(track,
                       [&numbers](const auto& concrete) { numbers = ComponentsOf(concrete.GetValue()); });
    return numbers;
}

bool IsInteger(const TEV2_ANIMATABLE& track)
{
    return track.GetType() == kIntegerTrack;
}

template <typename Element>
bool SameBytes(std::span<const Element> left, std::span<const Element> right)
{
    return left.size() == right.size() &&
           (left.empty() || std::memcmp(left.data(), right.data(), left.size_bytes()) == 0);
}

/// The largest finite number of a track's values.
double Largest(const TEV2_ANIMATABLE& track)
{
    double largest = 0.0;
    VisitKeys(track,
              [&largest](auto /*times*/, auto values)
              {
                  for (const auto& value : values)
                      for (const double number : ComponentsOf(value))
                          if (std::isfinite(number))
                              largest = std::max(largest, std::abs(number));
              });
    return largest;
}

/// The largest distance between numbers of two values, in the unit of their field; of percent relative to `largest`.
double DistanceOf(const Numbers& left, const Numbers& right, const Meaning& meaning, double largest)
{
    double worst = 0.0;
    for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i)
        worst = std::max(worst, Apart(left[i], right[i]));
    if (worst == 0.0 || !std::isfinite(worst))
        return worst;
    return meaning.unit == Unit::Percent ? 100.0 * worst / largest : worst * meaning.factor;
}

/// What an index leads to.
std::string NameAt(const std::vector<std::string>& names, double index)
{
    if (index >= 0.0 && index < static_cast<double>(names.size()))
        return '"' + names[static_cast<std::size_t>(index)] + '"';
    return index == static_cast<double>(kNone) ? "none" : "number " + NumberText(index);
}

void SetNumbers(Difference& difference, const Numbers& left, const Numbers& right, const Meaning& meaning)
{
    difference.left = ValueText(left, meaning);
    difference.right = ValueText(right, meaning);
    difference.left_numbers = left;
    difference.right_numbers = right;
}

std::string_view PresenceOf(const TEV2_ANIMATABLE* track)
{
    return track != nullptr ? "there" : "absent";
}

std::string SizeText(std::size_t count, std::string_view what)
{
    return std::to_string(count) + ' ' + std::string(what);
}

} // namespace

void ValueComparison::CompareTracks(TEV2_ANIMATABLE* left, TEV2_ANIMATABLE* right, std::string_view label,
                                    const Difference& like)
{
    if (left == nullptr || right == nullptr)
    {
        if (left == right)
            return;
        Difference& difference = found_.emplace_back(like);
        difference.left = PresenceOf(left);
        difference.right = PresenceOf(right);
        return;
    }
    if (left->IsEqual(*right) || span_ == nullptr)
        return;
    const bool integers = IsInteger(*left) && IsInteger(*right);
    const Meaning meaning = integers ? Meaning{Unit::Value, 1.0} : MeaningOf(label);
    const double largest = std::max(Largest(*left), Largest(*right));
    InstantCollector collector(*span_);
    collector.Add(left);
    collector.Add(right);
    DeviationOverTime deviation(meaning.unit);
    for (const float time : collector.Take(kMostInstants).times)
        deviation.Add(time, DistanceOf(ValueAt(*left, time), ValueAt(*right, time), meaning, largest),
                      tolerance_.Of(meaning.unit));
    if (!deviation.Beyond())
        return;
    Difference& difference = found_.emplace_back(like);
    Deviation worst = deviation.Result();
    if (integers)
    {
        worst.worst = 0.0;
        worst.worst_time = worst.first_time;
    }
    difference.deviations.push_back(worst);
    SetNumbers(difference, ValueAt(*left, worst.worst_time), ValueAt(*right, worst.worst_time), meaning);
}

const SceneMatch::List* ValueComparison::Target(std::string_view label, const std::string& list) const
{
    static constexpr std::string_view kSources[] = {
        "animMeshes", "bezierSplines",  "cameras", "lights",      "morphMeshes",
        "rigids",     "weightedMeshes", "helpers", "xrefObjects", "speedTreeReferences"};
    if (label == "material" || label == "materials")
        return &ListOf(match_, "materials");
    if (label == "light" || label == "lights")
        return &ListOf(match_, "lights");
    if (label == "library")
        return &ListOf(match_, "xrefs20");
    constexpr std::string_view kInstances = "instanceLists[";
    if (label == "source" && list.starts_with(kInstances))
        return &ListOf(match_,
                       std::string(kSources[static_cast<std::size_t>(list[kInstances.size()] - '0')]));
    return nullptr;
}

double ValueComparison::Translated(double index, std::string_view label, const std::string& list) const
{
    const SceneMatch::List* const target = Target(label, list);
    if (target == nullptr && label != "bones")
        return index;
    const auto& right_of = target != nullptr ? target->right_of : match_.nodes.right_of;
    const bool leads = index >= 0.0 && index < static_cast<double>(right_of.size());
    return leads ? static_cast<double>(right_of[static_cast<std::size_t>(index)]) : index;
}

void ValueComparison::CompareNumbers(const NumberBlock& left, const NumberBlock& right,
                                     std::string_view label, const Difference& like)
{
    if (left.elements != right.elements)
    {
        Difference& difference = found_.emplace_back(like);
        difference.left = SizeText(left.elements, "elements");
        difference.right = SizeText(right.elements, "elements");
        return;
    }
    const std::size_t count = left.elements * left.width;
    if (count == 0 || std::memcmp(left.bytes, right.bytes, count * sizeof(float)) == 0)
    {
        // indices may be the same and lead elsewhere
        const bool indices = left.whole && (label == "bones" || label == "materials" || label == "lights");
        if (!indices)
            return;
    }
    const Meaning meaning = left.whole ? Meaning{Unit::Value, 1.0} : MeaningOf(label);
    double largest = 0.0;
    double worst = 0.0;
    std::size_t differing = 0; // elements
    std::size_t last = count;  // element
    for (std::size_t i = 0; i < count; ++i)
    {
        const double number = left.whole ? Translated(left[i], label, {}) : left[i];
        const double apart = Apart(number, right[i]);
        if (std::isfinite(number))
            largest = std::max(largest, std::abs(number));
        if (apart > 0.0 && i / left.width != last)
        {
            last = i / left.width;
            ++differing;
        }
        worst = std::max(worst, apart);
    }
    const double off = DistanceOf({0.0}, {worst}, meaning, largest);
    if (!(off > tolerance_.Of(meaning.unit)))
        return;
    Difference& difference = found_.emplace_back(like);
    difference.differing = differing;
    difference.elements = left.elements;
    difference.deviations.push_back(
        {.unit = meaning.unit, .worst = left.whole ? 0.0 : off, .over_time = false});
}

void ValueComparison::CompareField(const FieldValue& left, const FieldValue& right, const std::string& list,
                                   const Difference& like)
{
    if (left.value.index() != right.value.index())
    {
        Difference& difference = found_.emplace_back(like);
        difference.left = "one layout";
        difference.right = "another layout";
        return;
    }
    if (const auto* numbers = std::get_if<Numbers>(&left.value))
    {
        const Numbers& others = std::get<Numbers>(right.value);
        Numbers translated;
        for (const double number : *numbers)
            translated.push_back(Translated(number, left.label, list));
        const Meaning meaning = MeaningOf(left.label);
        double largest = 0.0;
        for (const double number : translated)
            largest = std::max(largest, std::abs(number));
        for (const double number : others)
            largest = std::max(largest, std::abs(number));
        if (!(DistanceOf(translated, others, meaning, largest) > tolerance_.Of(meaning.unit)))
            return;
        Difference& difference = found_.emplace_back(like);
        difference.deviations.push_back({.unit = Unit::Value, .over_time = false});
        if (const SceneMatch::List* const target = Target(left.label, list))
        {
            difference.left = NameAt(target->left_names, numbers->front());
            difference.right = NameAt(target->right_names, others.front());
            return;
        }
        SetNumbers(difference, *numbers, others, meaning);
    }
    else if (const auto* text = std::get_if<std::string>(&left.value))
    {
        if (*text == std::get<std::string>(right.value))
            return;
        Difference& difference = found_.emplace_back(like);
        difference.left = *text;
        difference.right = std::get<std::string>(right.value);
    }
    else if (const auto* block = std::get_if<NumberBlock>(&left.value))
    {
        CompareNumbers(*block, std::get<NumberBlock>(right.value), left.label, like);
    }
    else if (const auto* track = std::get_if<TEV2_ANIMATABLE*>(&left.value))
    {
        CompareTracks(*track, std::get<TEV2_ANIMATABLE*>(right.value), left.label, like);
    }
    else
    {
        const auto& bytes = std::get<std::span<const std::uint8_t>>(left.value);
        const auto& others = std::get<std::span<const std::uint8_t>>(right.value);
        if (SameBytes(bytes, others))
            return;
        Difference& difference = found_.emplace_back(like);
        difference.left = SizeText(bytes.size(), "bytes");
        difference.right = SizeText(others.size(), "bytes");
        if (bytes.size() == others.size())
            difference.right = "other bytes";
    }
}

void ValueComparison::AddOnlyIn(const std::vector<FieldValue>& fields,
                                const std::vector<std::uint32_t>& matches, Change change,
                                const Difference& like)
{
    std::string last;
    for (std::size_t index = 0; index < fields.size(); ++index)
    {
        // of a record that only one has, the record
        const std::string part = fields[index].path.substr(0, fields[index].path.find('.'));
        if (matches[index] != kNone || part == last)
            continue;
        last = part;
        Difference& difference = found_.emplace_back(like);
        difference.change = change;
        difference.aspect = Aspect::Field;
        difference.part = part;
    }
}

void ValueComparison::CompareFields(const std::vector<FieldValue>& left, const std::vector<FieldValue>& right,
                                    const std::string& list, const Difference& like)
{
    constexpr std::string_view kElsewhere[] = {"name", "value", "node", "timeRange", "cameraIndex"};
    const auto compare = [&](const FieldValue& a, const FieldValue& b)
    {
        const bool elsewhere =
            a.path == a.label && std::ranges::find(kElsewhere, a.path) != std::end(kElsewhere);
        if (elsewhere)
            return;
        Difference difference = like;
        difference.aspect = Aspect::Field;
        difference.part = a.path;
        CompareField(a, b, list, difference);
    };
    const auto kept = [](const std::vector<FieldValue>& fields)
    { return std::ranges::find(fields, "body", &FieldValue::path) != fields.end(); };
    if (kept(left) != kept(right))
    {
        Difference& difference = found_.emplace_back(like);
        difference.change = Change::Retyped;
        difference.aspect = Aspect::Field;
        difference.part = "body";
        difference.left = kept(left) ? "bytes of another layout" : "fields";
        difference.right = kept(right) ? "bytes of another layout" : "fields";
        return;
    }
    const bool alike = std::ranges::equal(left, right, {}, &FieldValue::path, &FieldValue::path);
    if (alike)
    {
        for (std::size_t index = 0; index < left.size(); ++index)
            compare(left[index], right[index]);
        return;
    }
    const auto paths = [](const std::vector<FieldValue>& fields)
    {
        std::vector<std::string> all;
        all.reserve(fields.size());
        for (const FieldValue& field : fields)
            all.push_back(field.path);
        return all;
    };
    const SceneMatch::List match = MatchNames(paths(left), paths(right));
    for (std::size_t index = 0; index < left.size(); ++index)
        if (match.right_of[index] != kNone)
            compare(left[index], right[match.right_of[index]]);
    AddOnlyIn(left, match.right_of, Change::Missing, like);
    AddOnlyIn(right, match.left_of, Change::Added, like);
}

void ValueComparison::CompareProperties(TEV2_EXTENDED_PROPERTIES& left, TEV2_EXTENDED_PROPERTIES& right,
                                        const Difference& like)
{
    const auto left_names = PropertiesOf(left);
    const auto right_names = PropertiesOf(right);
    const SceneMatch::List match = MatchProperties(left_names, right_names);
    for (std::size_t index = 0; index < left_names.size(); ++index)
    {
        if (match.right_of[index] == kNone)
            continue;
        const PropertyName& property = left_names[index];
        const std::size_t other = right_names[match.right_of[index]].index;
        Difference difference = like;
        difference.aspect = Aspect::Property;
        difference.part = property.name;
        const auto compare = [&](auto& values, auto& others)
        { CompareTracks(values[property.index].track.get(), others[other].track.get(), "", difference); };
        switch (property.type)
        {
        case PropertyName::Texts:
        {
            const auto& texts = left.stringArrays[property.index].strings;
            const auto& others = right.stringArrays[other].strings;
            if (texts == others)
                break;
            const auto first = [](const std::vector<TEV2_WIDE_STRING>& all, std::size_t at) {
                return at < all.size() ? '"' + ReadableText(all[at].Text()) + '"'
                                       : SizeText(all.size(), "texts");
            };
            const auto at =
                static_cast<std::size_t>(std::ranges::mismatch(texts, others).in1 - texts.begin());
            difference.left = first(texts, at);
            difference.right = first(others, at);
            found_.push_back(difference);
            break;
        }
        case PropertyName::Integer:
            compare(left.intValues, right.intValues);
            break;
        case PropertyName::Float:
            compare(left.floatValues, right.floatValues);
            break;
        case PropertyName::Vector3:
            compare(left.vector3Values, right.vector3Values);
            break;
        case PropertyName::Vector4:
            compare(left.vector4Values, right.vector4Values);
            break;
        }
    }
}

void ValueComparison::CompareSwitchers(const TEV2& left, const TEV2& right)
{
    const Difference like{.topic = Topic::Camera, .object = "camera switcher", .name = {}};
    TEV2_ANIMATABLE* const track = left.cameraMan.cameraIndex.get();
    TEV2_ANIMATABLE* const other = right.cameraMan.cameraIndex.get();
    if (track == nullptr || other == nullptr)
        return CompareTracks(track, other, "", like);
    if (span_ == nullptr)
        return;
    const auto name = [](const TEV2& scene, double index)
    {
        const bool camera = index >= 0.0 && index < static_cast<double>(scene.cameras.size());
        if (camera && scene.cameras[static_cast<std::size_t>(index)])
            return '"' + Name(*scene.cameras[static_cast<std::size_t>(index)]) + '"';
        return index == -1.0 ? std::string("no camera") : "camera " + NumberText(index);
    };
    const std::vector<std::uint32_t>& right_of = ListOf(match_, "cameras").right_of;
    InstantCollector collector(*span_);
    collector.Add(track);
    collector.Add(other);
    for (const float time : collector.Take(kMostInstants).times)
    {
        const double camera = ValueAt(*track, time).front();
        const double other_camera = ValueAt(*other, time).front();
        const bool known = camera >= 0.0 && camera < static_cast<double>(right_of.size());
        if ((known ? static_cast<double>(right_of[static_cast<std::size_t>(camera)]) : camera) ==
            other_camera)
            continue;
        Difference& difference = found_.emplace_back(like);
        difference.left = name(left, camera);
        difference.right = name(right, other_camera);
        difference.deviations.push_back({.unit = Unit::Value, .worst_time = time, .first_time = time});
        return;
    }
}

} // namespace tev2_compare
