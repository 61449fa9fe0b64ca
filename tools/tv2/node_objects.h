#pragma once

#include "tev2_loader/tev2.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tv2
{

/// An object of a scene that refers to a node.
struct NodeObject
{
    std::size_t node = 0;
    const char* kind = ""; ///< "camera", "light", "mesh", "spline", "helper", "instance" or "reference"
    std::string path;      ///< "cameras[0]"
    const TEV2_LOADER::TEV2_WIDE_STRING* name = nullptr; ///< of a reference to a scene its file; not owned
};

/// What each node of a scene is there for, as far as objects say so. Refers to the scene.
class NodeObjects
{
public:
    explicit NodeObjects(const TEV2_LOADER::TEV2& scene);

    /// The objects at a node, in the order of the scene's lists.
    std::span<const NodeObject> At(std::size_t node) const;

    /// Whether a skinned mesh has the node as a bone.
    bool IsJoint(std::size_t node) const { return joints_[node]; }

    /// What is at a node, each kind once: "joint" first.
    std::vector<std::string> KindsAt(std::size_t node) const;

private:
    std::vector<NodeObject> objects_; ///< by node
    std::vector<bool> joints_;
};

} // namespace tv2
