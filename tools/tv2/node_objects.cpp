#include "tools/tv2/node_objects.h"

#include <algorithm>
#include <concepts>
#include <optional>
#include <string_view>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

const char* KindOf(const TEV2_LIST& list)
{
    static constexpr std::pair<std::uint32_t, const char*> kKinds[] = {
        {kLightChunk, "light"},         {kCameraChunk, "camera"},
        {kRigidChunk, "mesh"},          {kAnimMeshChunk, "mesh"},
        {kMorphMeshChunk, "mesh"},      {kWeightedMeshChunk, "mesh"},
        {kBezierSplineChunk, "spline"}, {kHelperChunk, "helper"},
        {kInstanceChunk, "instance"},   {kXrefSpeedTreeChunk, "reference"},
        {kXref15Chunk, "reference"},    {kXrefObjectChunk, "reference"},
    };
    const auto* const kind =
        std::ranges::find_if(kKinds, [&](const auto& row) { return list.kind == row.first; });
    return kind != std::end(kKinds) ? kind->second : "object";
}

/// Node and name of an object that is at one; none where they were not read.
std::optional<std::pair<std::uint32_t, const TEV2_WIDE_STRING*>> Placing(const auto& object)
{
    using Object = std::remove_cvref_t<decltype(object)>;
    if constexpr (std::derived_from<Object, TEV2_POSITIONAL_OBJECT>)
    {
        if constexpr (requires { object.HasPlaced(); })
            if (!object.IsTyped() && !object.HasPlaced())
                return {};
        return {{object.value, &object.name}};
    }
    else if constexpr (std::same_as<Object, TEV2_XREF<15>>)
    {
        if (object.IsTyped())
            return {{object.node, &object.fileName}};
    }
    return {};
}

} // namespace

NodeObjects::NodeObjects(const TEV2& scene) : joints_(scene.matrixHierarchy.nodes.size())
{
    const auto add = [&]<typename Object>(const auto& list, const TEV2::Array<Object>& objects)
    {
        for (std::size_t i = 0; i < objects.size(); ++i)
        {
            const auto placing = objects[i] ? Placing(*objects[i]) : std::nullopt;
            if (placing && placing->first < joints_.size())
                objects_.push_back({placing->first, KindOf(list), PathOf(list, i), placing->second});
        }
    };
    VisitLists(scene,
               [&](const auto& list, const auto& member)
               {
                   if constexpr (requires { add(list, member); })
                       add(list, member);
               });
    std::ranges::stable_sort(objects_, {}, &NodeObject::node);
    for (const auto& mesh : scene.weightedMeshes)
    {
        if (!mesh || !mesh->IsTyped())
            continue;
        for (const std::uint32_t bone : mesh->skin->bones)
            if (bone < joints_.size())
                joints_[bone] = true;
    }
}

std::span<const NodeObject> NodeObjects::At(std::size_t node) const
{
    const auto begin = std::ranges::lower_bound(objects_, node, {}, &NodeObject::node);
    const auto end = std::ranges::upper_bound(objects_, node, {}, &NodeObject::node);
    return {begin, end};
}

std::vector<std::string> NodeObjects::KindsAt(std::size_t node) const
{
    std::vector<std::string> kinds;
    if (joints_[node])
        kinds.emplace_back("joint");
    for (const NodeObject& object : At(node))
        if (std::ranges::find(kinds, object.kind) == kinds.end())
            kinds.emplace_back(object.kind);
    return kinds;
}

} // namespace tv2
