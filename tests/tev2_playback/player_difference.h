#pragma once

#include "compare/rewound_scene.h"
#include "tev2_playback/player.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace tv2_tests
{

/// Whether all their floats are equal to the last bit, or both NaN.
template <typename Floats>
bool SameFloats(const Floats& left, const Floats& right)
{
    static_assert(sizeof(Floats) % sizeof(float) == 0 && alignof(Floats) == alignof(float));
    if (std::memcmp(&left, &right, sizeof left) == 0)
        return true;
    using Array = std::array<float, sizeof(Floats) / sizeof(float)>;
    return std::ranges::equal(std::bit_cast<Array>(left), std::bit_cast<Array>(right),
                              [](float a, float b)
                              {
                                  return std::isnan(a) ? std::isnan(b)
                                                       : std::bit_cast<std::uint32_t>(a) ==
                                                             std::bit_cast<std::uint32_t>(b);
                              });
}

/// The transform of a node relative to its parent, as evaluated.
inline TEV2_PLAYBACK::Transform TransformOf(const TEV2_LOADER::TEV2_MATRIX_NODE& node)
{
    TEV2_PLAYBACK::Transform transform;
    if (node.translation)
        transform.translation = node.translation->GetValue();
    if (node.rotation)
        transform.rotation = node.rotation->GetValue();
    if (node.scale)
        transform.scale = node.scale->GetValue();
    return transform;
}

/// Sends scene and player to a time; where they differ then in a world matrix or in a transform, or nothing.
inline std::string Difference(tev2_compare::RewoundScene& scene, TEV2_PLAYBACK::Player& player, float time)
{
    scene.SetTime(time);
    player.SetTime(time);
    const auto worlds = player.World();
    std::vector<TEV2_PLAYBACK::Transform> pose(scene.NodeCount());
    player.Sample(pose);
    if (worlds.size() != scene.NodeCount())
        return std::to_string(worlds.size()) + " world matrices";
    for (std::size_t node = 0; node < worlds.size(); ++node)
    {
        const bool world = SameFloats(worlds[node], scene.Node(node).worldMatrix);
        if (!world || !SameFloats(pose[node], TransformOf(scene.Node(node))))
            return (world ? "transform of node " : "world matrix of node ") + std::to_string(node) + " at " +
                   std::to_string(time);
    }
    return {};
}

} // namespace tv2_tests
