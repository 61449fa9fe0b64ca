#pragma once

/// What is in a document and where: filled in one walk over the tree, so that nothing is searched for twice.

#include "host/import/collada/id_table.h"
#include "host/import/collada/xml_document.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace mobu_host::collada
{

inline constexpr std::uint32_t kNone = 0xFFFFFFFF;

/// A <node>, an <instance_node> or a <visual_scene>.
struct NodeRecord
{
    Element element;
    std::uint32_t first_child = kNone; // nodes first, then instances of nodes
    std::uint32_t next = kNone;        // with the same parent
    std::uint32_t first_instance = kNone;
};

struct AnimationRecord
{
    Element element;
    std::uint32_t parent = kNone; // the animation that holds it
    std::uint32_t first_channel = 0;
    std::uint32_t end_channel = 0; // with those of the animations in it
};

/// A transform of a node, counted among its transforms.
struct TransformPlace
{
    std::uint32_t node = kNone;
    std::uint32_t transform = 0;
};

struct DocumentIndex
{
    std::vector<NodeRecord> nodes;
    std::vector<AnimationRecord> animations; // parents first
    std::vector<Element> channels;
    std::vector<Element> clips;
    std::vector<std::uint32_t> visual_scenes; // indices into `nodes`
    std::size_t instance_count = 0;           // of nodes

    IdTable<std::uint32_t> node_ids;
    IdTable<std::uint32_t> visual_scene_ids;
    IdTable<std::uint32_t> animation_ids;
    IdTable<Element> sources, arrays, samplers, cameras;

    std::optional<TransformPlace> FindTransform(std::uint32_t node, std::string_view sid) const;
    std::uint32_t FindChild(std::uint32_t node, std::string_view sid) const; // kNone: no such node

    struct Sid
    {
        std::uint32_t parent;
        std::uint32_t value; // of the transform among its node's, or of a node's record
        std::string_view sid;
    };
    std::vector<Sid> transform_sids, node_sids; // sorted
};

DocumentIndex IndexDocument(const XmlDocument& document);

} // namespace mobu_host::collada
