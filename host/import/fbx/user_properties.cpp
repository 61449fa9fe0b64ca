#include "host/import/base/parse_error.h"
#include "host/import/fbx/scene_models.h"

#include <algorithm>
#include <limits>

namespace mobu_host::fbx
{
namespace
{

enum class PropertyKind
{
    Truth,
    Whole,
    Number,
    Text,
    Choice, // of an enumeration
    Vector3,
    Colour,
    ColourAlpha
};

struct Kind
{
    std::string_view name;
    PropertyKind kind;
};

// The same kinds go by many names: those of the format, of its versions, and of the applications that write it.
constexpr Kind kKinds[] = {
    {"bool", PropertyKind::Truth},
    {"Bool", PropertyKind::Truth},
    {"int", PropertyKind::Whole},
    {"Integer", PropertyKind::Whole},
    {"Int", PropertyKind::Whole},
    {"Short", PropertyKind::Whole},
    {"UShort", PropertyKind::Whole},
    {"UInteger", PropertyKind::Whole},
    {"LongLong", PropertyKind::Whole},
    {"ULongLong", PropertyKind::Whole},
    {"enum", PropertyKind::Choice},
    {"Enum", PropertyKind::Choice},
    {"double", PropertyKind::Number},
    {"Number", PropertyKind::Number},
    {"float", PropertyKind::Number},
    {"Float", PropertyKind::Number},
    {"Real", PropertyKind::Number},
    {"HalfFloat", PropertyKind::Number},
    {"KString", PropertyKind::Text},
    {"charptr", PropertyKind::Text},
    {"Url", PropertyKind::Text},
    {"XRefUrl", PropertyKind::Text},
    {"DateTime", PropertyKind::Text},
    {"Vector", PropertyKind::Vector3},
    {"Vector3D", PropertyKind::Vector3},
    {"Vector3", PropertyKind::Vector3},
    {"Color", PropertyKind::Colour},
    {"ColorRGB", PropertyKind::Colour},
    {"ColorAndAlpha", PropertyKind::ColourAlpha},
    {"ColorRGBA", PropertyKind::ColourAlpha},
};

// "Idle~Walk~Run"
std::vector<std::string> ItemsOf(const std::string& text)
{
    std::vector<std::string> items;
    if (text.empty())
        return items;
    std::size_t begin = 0;
    for (std::size_t end = text.find('~'); end != std::string::npos; end = text.find('~', begin))
    {
        items.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    items.push_back(text.substr(begin));
    return items;
}

template <std::size_t kCount>
std::array<double, kCount> Numbers(const PropertyRow& row)
{
    std::array<double, kCount> numbers{};
    for (std::size_t i = 0; i < kCount; ++i)
        numbers[i] = FiniteNumber(row, i, 0.0);
    return numbers;
}

int Whole(const PropertyRow& row, const std::string& full_name, ImportNotes& notes)
{
    const double number = FiniteNumber(row, 0, 0.0);
    const double fitting = std::clamp(number, -2147483648.0, 2147483647.0);
    if (fitting != number)
        notes.Add({"user property that 32 bits cannot hold was clamped",
                   "user properties that 32 bits cannot hold were clamped"},
                  full_name);
    return static_cast<int>(fitting);
}

PropertyDescription::Value ValueOf(PropertyKind kind, const PropertyRow& row, const RecordTree& tree,
                                   const std::string& full_name, ImportNotes& notes)
{
    const auto text = [&](std::size_t value)
    { return PlainText(row.ValueAt(value).Text().value_or(std::string_view()), tree); };
    switch (kind)
    {
    case PropertyKind::Truth:
        return FiniteNumber(row, 0, 0.0) != 0.0;
    case PropertyKind::Whole:
        return Whole(row, full_name, notes);
    case PropertyKind::Number:
        break;
    case PropertyKind::Text:
        return text(0);
    case PropertyKind::Choice:
        return Choice{Whole(row, full_name, notes), ItemsOf(text(1))};
    case PropertyKind::Vector3:
        return Numbers<3>(row);
    case PropertyKind::Colour:
        return Colour{Numbers<3>(row)};
    case PropertyKind::ColourAlpha:
        return Numbers<4>(row);
    }
    return FiniteNumber(row, 0, 0.0);
}

} // namespace

std::optional<PropertyDescription> ReadUserProperty(const PropertyRow& row, const RecordTree& tree,
                                                    const std::string& model, ImportNotes& notes)
{
    std::string name = PlainText(row.name, tree);
    const std::string full_name = model + "." + name;
    const auto* const known = std::find_if(std::begin(kKinds), std::end(kKinds),
                                           [&](const Kind& kind) { return kind.name == row.kind; });
    if (known == std::end(kKinds))
    {
        notes.Add({"user property of a kind that is not read is left out",
                   "user properties of kinds that are not read are left out"},
                  full_name + " (" + PlainText(row.kind, tree) + ")");
        return std::nullopt;
    }
    return PropertyDescription{std::move(name), ValueOf(known->kind, row, tree, full_name, notes),
                               row.Has('A')};
}

} // namespace mobu_host::fbx
