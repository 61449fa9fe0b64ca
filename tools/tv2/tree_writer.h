#pragma once

#include "compare/node_tree.h"
#include "tools/tv2/evaluated_scene.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/node_objects.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tv2
{

/// What tv2 tree shows.
struct TreeView
{
    const LoadedFile& file;
    const EvaluatedScene& evaluated;
    const tev2_compare::NodeTree& tree;
    const NodeObjects& objects;
    std::optional<float> time; ///< with poses, as evaluated at this time
    bool outside_range = false;
    std::vector<std::string> notes;

    const TEV2_LOADER::TEV2_MATRIX_NODE& Node(std::size_t node) const
    {
        return file.scene->matrixHierarchy.nodes[node];
    }
};

struct ShownNode
{
    std::uint32_t node = 0;
    std::size_t depth = 0;       ///< below the first node that is shown with it
    bool last = false;           ///< of its siblings
    bool shows_children = false; ///< false: it has none, or they are too deep
};

/// Writes a tree node by node, parents first.
class TreeWriter
{
public:
    virtual ~TreeWriter() = default;
    virtual void Begin() = 0;
    virtual void Node(const ShownNode& shown) = 0;
    virtual void End() = 0;
};

/// The view and the stream must outlive the writer.
std::unique_ptr<TreeWriter> MakeTextTree(const TreeView& view, std::ostream& out);
std::unique_ptr<TreeWriter> MakeJsonTree(const TreeView& view, std::ostream& out);

/// Calls visit(kind, property) for the user properties of a node. `kind` is "texts", "integer", "number", "vector3" or
/// "vector4"; a property is a TEV2_NAMED_STRING_ARRAY or a TEV2_NAMED_ANIMATABLE.
template <typename Visit>
void VisitProperties(const TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& properties, const Visit& visit)
{
    const auto each = [&visit](const char* kind, const auto& list)
    {
        for (const auto& property : list)
            visit(kind, property);
    };
    each("texts", properties.stringArrays);
    each("integer", properties.intValues);
    each("number", properties.floatValues);
    each("vector3", properties.vector3Values);
    each("vector4", properties.vector4Values);
}

/// Number of keys of a track that may be null.
template <typename Track>
std::size_t KeyCount(const std::unique_ptr<Track>& track)
{
    return track ? track->m_times.size() : 0;
}

} // namespace tv2
