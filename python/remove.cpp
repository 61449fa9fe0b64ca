#include "python/remove.h"

#include "python/node.h"
#include "python/text.h"

#include <pybind11/pybind11.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

namespace
{

constexpr std::size_t kCameraInstances = 2; ///< the list of instances of cameras

/// Raises ValueError where records cannot be renumbered.
void RefuseKeptBodies(const Scene& scene)
{
    if (scene.records.HasKeptBodies())
        throw py::value_error(
            "the scene has objects of another layout, which may refer to nodes and objects by "
            "number: nothing can be removed");
}

/// Calls visit(index, list, name) for every index of a node that an object has.
template <typename Visit>
void VisitNodeIndices(TEV2& scene, const Visit& visit)
{
    const auto visit_object = [&]<typename Object>(const TEV2_LIST& list, Object& object)
    {
        if constexpr (std::derived_from<Object, TEV2_POSITIONAL_OBJECT>)
            visit(object.value, list, object.name);
        else if constexpr (std::same_as<Object, TEV2_XREF<15>>)
            visit(object.node, list, object.fileName);
        if constexpr (std::same_as<Object, TEV2_WEIGHTED_MESH>)
            for (std::uint32_t& bone : object.skin->bones)
                visit(bone, list, object.name);
    };
    const auto visit_list = [&]<typename Object>(const TEV2_LIST& list, TEV2::Array<Object>& objects)
    {
        for (const std::unique_ptr<Object>& object : objects)
            if (object)
                visit_object(list, *object);
    };
    VisitLists(scene,
               [&](const auto& list, auto& member)
               {
                   if constexpr (requires { visit_list(list, member); })
                       visit_list(list, member);
               });
}

/// Whether each node is the one at `top` or below it.
std::vector<bool> Below(const TEV2& scene, std::size_t top)
{
    const auto& nodes = scene.matrixHierarchy.nodes;
    std::vector<bool> below(nodes.size(), false);
    below[top] = true;
    for (bool again = true; again;) // once, where parents come before their children
    {
        again = false;
        for (std::size_t index = 0; index < nodes.size(); ++index)
        {
            const auto parent = static_cast<std::size_t>(nodes[index].parentIndex); // negative: beyond all
            if (below[index] || parent >= nodes.size() || !below[parent])
                continue;
            below[index] = true;
            again = again || parent > index;
        }
    }
    return below;
}

} // namespace

void RemoveNode(Scene& scene, std::size_t index)
{
    RefuseKeptBodies(scene);
    TEV2& records = scene.records;
    auto& nodes = records.matrixHierarchy.nodes;
    const std::vector<bool> gone = Below(records, index);
    VisitNodeIndices(records,
                     [&](std::uint32_t node, const TEV2_LIST& list, const TEV2_WIDE_STRING& name)
                     {
                         if (node < nodes.size() && gone[node])
                             throw py::value_error("node " + Quoted(Text(nodes[node].name)) +
                                                   " is needed by " + Quoted(Text(name)) + " (" +
                                                   list.kind.title + ")");
                     });
    std::vector<std::uint32_t> moved(nodes.size());
    for (std::uint32_t from = 0, to = 0; from < nodes.size(); ++from)
        moved[from] = gone[from] ? kNone : to++;
    const auto move = [&](std::uint32_t& node, const TEV2_LIST&, const TEV2_WIDE_STRING&)
    { node = node < moved.size() ? moved[node] : node; };
    VisitNodeIndices(records, move);
    for (TEV2_MATRIX_NODE& node : nodes)
        if (const auto parent = static_cast<std::size_t>(node.parentIndex); parent < moved.size())
            node.parentIndex = static_cast<std::int32_t>(moved[parent]); // kNone is -1
    if (auto& inverses = records.inverseBindMatrices; inverses.size() == nodes.size())
        std::erase_if(inverses, [&](const TEV2_MATRIX_3X4& matrix)
                      { return gone[static_cast<std::size_t>(&matrix - inverses.data())]; });
    nodes[index].parentIndex = -1;
    scene.RemoveNodes(gone);
}

void RemoveCamera(Scene& scene, std::size_t index)
{
    RefuseKeptBodies(scene);
    TEV2& records = scene.records;
    auto& instances = records.instanceLists[kCameraInstances];
    TEV2_CAMERA& camera = *records.cameras[index];
    for (const auto& instance : instances)
        if (instance && instance->source == index)
            throw py::value_error("camera " + Quoted(Text(camera.name)) + " is needed by " +
                                  Quoted(Text(instance->name)) + " (instances)");
    for (const auto& instance : instances)
        if (instance && instance->source != kNone && instance->source > index)
            --instance->source;
    if (auto& switcher = records.cameraMan.cameraIndex)
    {
        std::unique_ptr<TEV2_ANIMATABLE_INT32> cuts(
            static_cast<TEV2_ANIMATABLE_INT32*>(switcher->Clone().release()));
        const auto removed = static_cast<std::int32_t>(index);
        for (std::int32_t& cut : static_cast<TEV2_ANIMATABLE_INT32_RLE&>(*cuts).m_values)
            cut = cut == removed ? -1 : cut - (cut > removed ? 1 : 0);
        scene.Remove(std::exchange(switcher, std::move(cuts)));
    }
    camera.value = kNone;
    scene.Remove(std::move(records.cameras[index]));
    records.cameras.erase(records.cameras.begin() + static_cast<std::ptrdiff_t>(index));
}

} // namespace tev2_python
