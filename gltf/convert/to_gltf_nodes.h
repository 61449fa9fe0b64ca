#pragma once

/// The nodes of the document: those of the scene, then those that are added.

#include "gltf/convert/exchange.h"
#include "gltf/convert/to_gltf_context.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tev2_gltf
{

/// Where a node is: the exchanges of its parent, or of the world, and of itself, and whether the world is turned by
/// half a turn about Y before.
struct Frame
{
    Exchange parent = kWorldExchange;
    Exchange own = Exchange::SwapYZ;
    bool turned = false;
};

TEV2_VECTOR_3 ToGltfTranslation(const TEV2_VECTOR_3& translation, const Frame& frame);
TEV2_QUATERNION ToGltfRotation(const TEV2_QUATERNION& rotation, const Frame& frame);

class GltfNodes
{
public:
    /// One node for each of the scene, with the scene's parents; `worlds` has the world of each source.
    GltfNodes(ToGltfContext& context, std::vector<World> worlds);

    /// Gives an ordinary node the exchange of the camera or light on it, before anything is placed.
    void Claim(std::uint32_t node, Exchange exchange);

    /// The node on which an object goes, and where its `member` ("camera", ...) is still free: that at index `value`,
    /// a child of it where the member is taken or the exchange is another, or one at top level. Nothing for `exchange`
    /// takes that of the node.
    std::size_t Place(std::uint32_t value, std::optional<Exchange> exchange, const char* member,
                      const std::string& name, const std::string& where);

    /// A node at top level without a transform.
    std::size_t AddVoid(const std::string& name);

    /// A node of the scene that a skinned mesh may take over, since it is at top level and does nothing else.
    bool IsFreeForSkin(std::uint32_t value) const;
    void MakeVoid(std::size_t node) { nodes_[node].is_void = true; }
    void MarkBone(std::uint32_t node);

    /// A child without a transform of its own.
    std::size_t AddChild(std::size_t parent, const std::string& name);

    /// A node at top level in the place of the world.
    std::size_t AddToWorld(const std::string& name);

    std::size_t Count() const { return nodes_.size(); }
    std::size_t SceneCount() const { return scene_count_; }
    bool IsVoid(std::size_t node) const { return nodes_[node].is_void; }
    std::optional<std::size_t> ParentOf(std::size_t node) const { return nodes_[node].parent; }
    Frame FrameOf(std::size_t node, std::size_t source = 0) const;
    /// Of a node at top level.
    Frame WorldFrame(std::size_t source, Exchange own) const;

    /// What the node has besides its name, transform and children: "camera", "mesh", "extras", ...
    Json& Members(std::size_t node) { return nodes_[node].members; }

    /// Adds one node above those at top level that these are below, where they are more than one: joints of a skin
    /// have a common root.
    void JoinRoots(const std::vector<std::size_t>& joints);

    /// Writes nodes and scene.
    void Write(Json scene_extras);

private:
    struct Node
    {
        std::optional<std::size_t> parent;
        Exchange own = Exchange::SwapYZ;
        bool is_void = false;
        bool is_parent = false;
        bool is_bone = false;
        std::string name; // of added nodes
        Json members = Json::object();
    };

    void LinkParents();
    std::vector<std::size_t> CircleFrom(std::size_t node, std::vector<std::uint32_t>& visited) const;
    std::size_t Add(std::optional<std::size_t> parent, Exchange own, const std::string& name);
    void SetTransform(std::size_t node, Json& json) const;

    ToGltfContext& context_;
    std::vector<World> worlds_;
    std::vector<Node> nodes_;
    std::size_t scene_count_;
    std::optional<std::size_t> common_root_;
};

} // namespace tev2_gltf
