#pragma once

#include "python/scene.h"

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace tev2_python
{

/// A reference to a node: it follows its node when others are taken out, and keeps it when it is itself.
struct Node
{
    std::shared_ptr<Scene> scene;
    std::shared_ptr<Keeper> keeper;

    Node(std::shared_ptr<Scene> the_scene, std::size_t index)
        : scene(std::move(the_scene)), keeper(scene->KeeperOfNode(index))
    {
    }

    /// Valid until nodes are added or taken out.
    TEV2_LOADER::TEV2_MATRIX_NODE& Record() const;

    /// Raises ReferenceError once the node was taken out.
    std::size_t Index() const;

    bool operator==(const Node& other) const { return keeper == other.keeper; }
};

/// The Node of an index of a file, or None where there is no such node.
pybind11::object NodeAt(const std::shared_ptr<Scene>& scene, std::uint32_t index);

/// The index of a Node of this scene, kNone for null. Raises ValueError for a node of another scene.
std::uint32_t NodeIndex(const Scene& scene, const Node* node);

/// How a repr shows a name: as Python does.
std::string Quoted(const pybind11::str& name);

} // namespace tev2_python
