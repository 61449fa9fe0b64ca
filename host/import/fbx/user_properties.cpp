#include "host/import/fbx/scene_models.h"
#include "host/import/long_text.h"
#include "host/import/parse_error.h"

#include <algorithm>
#include <limits>

namespace mobu_host::fbx
{
namespace
{

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

std::size_t ComponentsOf(PropertyKind kind)
{
    switch (kind)
    {
    case PropertyKind::Vector3:
    case PropertyKind::Colour:
        return 3;
    case PropertyKind::ColourAlpha:
        return 4;
    default:
        return 1;
    }
}

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

} // namespace

bool ReadUserProperty(const PropertyRow& row, const RecordTree& tree, const std::string& model,
                      UserProperty& property, ImportNotes& notes)
{
    property.name = PlainText(row.name, tree);
    const std::string full_name = model + "." + property.name;
    const auto* const known = std::find_if(std::begin(kKinds), std::end(kKinds),
                                           [&](const Kind& kind) { return kind.name == row.kind; });
    if (known == std::end(kKinds))
    {
        notes.Add({"user property of a kind that is not read is left out",
                   "user properties of kinds that are not read are left out"},
                  full_name + " (" + PlainText(row.kind, tree) + ")");
        return false;
    }
    NoteLongText(property.name, model, property.name, notes);
    property.kind = known->kind;
    property.animatable = row.Has('A');
    if (property.kind == PropertyKind::Text)
    {
        property.text = PlainText(row.ValueAt(0).Text().value_or(std::string_view()), tree);
        NoteLongText(property.text, model, property.name, notes);
        return true;
    }
    for (std::size_t i = 0; i < ComponentsOf(property.kind); ++i)
        property.value[i] = FiniteNumber(row, i, 0.0);
    if (property.kind == PropertyKind::Truth)
        property.value[0] = property.value[0] != 0.0 ? 1.0 : 0.0;
    if (property.kind == PropertyKind::Whole || property.kind == PropertyKind::Choice)
    {
        const double fitting = std::clamp(property.value[0], -2147483648.0, 2147483647.0);
        if (fitting != property.value[0])
            notes.Add({"user property that 32 bits cannot hold was clamped",
                       "user properties that 32 bits cannot hold were clamped"},
                      full_name);
        property.value[0] = fitting;
    }
    if (property.kind == PropertyKind::Choice)
        property.items = ItemsOf(PlainText(row.ValueAt(1).Text().value_or(std::string_view()), tree));
    return true;
}

} // namespace mobu_host::fbx
