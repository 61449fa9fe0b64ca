#include "compare/scene_match.h"

#include "tev2_loader/up_axis.h"

#include <algorithm>

namespace tev2_compare
{

using namespace TEV2_LOADER;

namespace
{

template <typename Object>
std::vector<std::string> NamesIn(const std::vector<std::unique_ptr<Object>>& list)
{
    std::vector<std::string> names;
    names.reserve(list.size());
    for (const auto& object : list)
        names.push_back(object ? NameOfObject(*object) : std::string());
    return names;
}

std::vector<std::size_t> SortedByName(const std::vector<std::string>& names)
{
    std::vector<std::size_t> order(names.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::ranges::stable_sort(order, {}, [&names](std::size_t i) -> const std::string& { return names[i]; });
    return order;
}

} // namespace

SceneMatch::SceneMatch(const TEV2& left, const TEV2& right)
    : left_tree(left.matrixHierarchy),
      right_tree(right.matrixHierarchy),
      exported_roots(UpAxis(left) != TEV2_UP_AXIS::Unknown && UpAxis(right) != TEV2_UP_AXIS::Unknown),
      nodes(MatchNodes(left_tree, right_tree, exported_roots))
{
    VisitLists(left,
               [&]<typename Member>(const auto& list, const Member& member)
               {
                   if constexpr (requires { member.begin(); })
                       lists[LabelOf(list)] = MatchNames(NamesIn(member), NamesIn(list.In(right)));
               });
}

std::string LabelOf(const TEV2_LIST& list)
{
    return list.label;
}

std::string LabelOf(const TEV2_INSTANCE_LIST& list)
{
    return list.label + ("[" + std::to_string(list.index) + "]");
}

const SceneMatch::List& ListOf(const SceneMatch& match, const std::string& label)
{
    static const SceneMatch::List kEmpty;
    const auto found = match.lists.find(label);
    return found == match.lists.end() ? kEmpty : found->second;
}

SceneMatch::List MatchNames(const std::vector<std::string>& left, const std::vector<std::string>& right)
{
    SceneMatch::List match{std::vector(left.size(), kNone), std::vector(right.size(), kNone)};
    const auto left_order = SortedByName(left);
    const auto right_order = SortedByName(right);
    for (std::size_t i = 0, j = 0; i < left.size() && j < right.size();)
    {
        const std::size_t a = left_order[i];
        const std::size_t b = right_order[j];
        const int order = left[a].compare(right[b]);
        if (order == 0)
        {
            match.right_of[a] = static_cast<std::uint32_t>(b);
            match.left_of[b] = static_cast<std::uint32_t>(a);
        }
        i += order <= 0 ? 1 : 0;
        j += order >= 0 ? 1 : 0;
    }
    match.left_names = left;
    match.right_names = right;
    return match;
}

std::string Singular(std::string_view title)
{
    const auto cut = [&title](std::string_view ending, std::string_view singular) -> std::string
    {
        const std::size_t at = title.rfind(ending);
        return std::string(title.substr(0, at)) + std::string(singular) +
               std::string(title.substr(at + ending.size()));
    };
    if (title.ends_with("meshes"))
        return cut("meshes", "mesh");
    if (title.find("references") != std::string_view::npos)
        return cut("references", "reference");
    return title.ends_with('s') ? std::string(title.substr(0, title.size() - 1)) : std::string(title);
}

std::string_view NameOf(PropertyName::Type type)
{
    constexpr std::string_view kNames[] = {"text", "integer", "float", "3-vector", "4-vector"};
    return kNames[type];
}

std::vector<PropertyName> PropertiesOf(const TEV2_EXTENDED_PROPERTIES& properties)
{
    std::vector<PropertyName> names;
    const auto add = [&names](const auto& list, PropertyName::Type type)
    {
        for (std::size_t index = 0; index < list.size(); ++index)
            names.push_back({Name(list[index]), type, index});
    };
    add(properties.stringArrays, PropertyName::Texts);
    add(properties.intValues, PropertyName::Integer);
    add(properties.floatValues, PropertyName::Float);
    add(properties.vector3Values, PropertyName::Vector3);
    add(properties.vector4Values, PropertyName::Vector4);
    return names;
}

SceneMatch::List MatchProperties(const std::vector<PropertyName>& left,
                                 const std::vector<PropertyName>& right)
{
    const auto keys = [](const std::vector<PropertyName>& properties)
    {
        std::vector<std::string> texts;
        texts.reserve(properties.size());
        for (const PropertyName& property : properties)
            texts.push_back(std::string(NameOf(property.type)) + ' ' + property.name);
        return texts;
    };
    return MatchNames(keys(left), keys(right));
}

} // namespace tev2_compare
