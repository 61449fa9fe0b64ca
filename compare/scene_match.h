#pragma once

#include "compare/node_match.h"
#include "compare/node_tree.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tev2_compare
{

/// What is the same in two scenes, by name.
struct SceneMatch
{
    /// The match of each object of a list, kNone where there is none: by name, of several with one name in their order;
    /// references without names by the file that they lead to.
    struct List
    {
        std::vector<std::uint32_t> right_of;
        std::vector<std::uint32_t> left_of;
        std::vector<std::string> left_names{};
        std::vector<std::string> right_names{};
    };

    NodeTree left_tree;
    NodeTree right_tree;

    /// Whether both files have the root that the exporter puts above everything: it is the same, whatever it is called.
    bool exported_roots = false;

    NodeMatch nodes;
    std::map<std::string, List> lists; ///< by label, "lights"; of instances "instanceLists[3]"

    SceneMatch(const TEV2_LOADER::TEV2& left, const TEV2_LOADER::TEV2& right);
};

/// "lights", "instanceLists[3]"
std::string LabelOf(const TEV2_LOADER::TEV2_LIST& list);
std::string LabelOf(const TEV2_LOADER::TEV2_INSTANCE_LIST& list);

/// The list of a label; an empty one for others.
const SceneMatch::List& ListOf(const SceneMatch& match, const std::string& label);

/// The name of an object; of a reference without one the file that it leads to.
template <typename Object>
std::string NameOfObject(const Object& object)
{
    if constexpr (requires { object.name; })
        return TEV2_LOADER::Name(object);
    else
        return TEV2_LOADER::ReadableText(object.fileName.Text());
}

/// The names of things in their order as numbers of pairs: each name's first with the first of the other side, and so
/// on.
SceneMatch::List MatchNames(const std::vector<std::string>& left, const std::vector<std::string>& right);

/// What reports call an object of a list: "light" of "lights".
std::string Singular(std::string_view title);

/// A user property: its name and its type.
struct PropertyName
{
    enum Type : std::uint8_t
    {
        Texts,
        Integer,
        Float,
        Vector3,
        Vector4,
    };

    std::string name;
    Type type;
    std::size_t index; ///< in the array of its type
};

/// "text", "integer", "float", "3-vector", "4-vector"
std::string_view NameOf(PropertyName::Type type);

/// All properties, in the order of the file.
std::vector<PropertyName> PropertiesOf(const TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& properties);

/// The properties of two records that are the same by name and type.
SceneMatch::List MatchProperties(const std::vector<PropertyName>& left,
                                 const std::vector<PropertyName>& right);

} // namespace tev2_compare
