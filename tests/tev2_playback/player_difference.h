#pragma once

#include "tev2_loader/tev2.h"
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

/// What a player has to show: a scene that is rewound before every time. The scene must outlive it.
class RewoundScene
{
public:
    /// World matrices as the scene has them now are those of the rewound scene.
    explicit RewoundScene(TEV2_LOADER::TEV2& scene) : hierarchy_(scene.matrixHierarchy)
    {
        hierarchy_.LinkParents();
        for (const auto& node : hierarchy_.nodes)
            worlds_.push_back(node.worldMatrix);
        pose_.resize(worlds_.size());
    }

    void SetTime(float time)
    {
        Rewind();
        hierarchy_.SetTime(time);
    }

    void Rewind()
    {
        for (std::size_t index = 0; index < worlds_.size(); ++index)
        {
            auto& node = hierarchy_.nodes[index];
            node.worldMatrix = worlds_[index];
            for (TEV2_LOADER::TEV2_ANIMATABLE* track : std::initializer_list<TEV2_LOADER::TEV2_ANIMATABLE*>{
                     node.translation.get(), node.rotation.get(), node.scale.get()})
            {
                if (track == nullptr)
                    continue;
                track->m_current_key = 0;
                track->m_fraction = 0.0f;
            }
        }
    }

    /// Sends scene and player to a time; where they differ then in a world matrix or in a transform, or nothing.
    std::string Difference(TEV2_PLAYBACK::Player& player, float time)
    {
        SetTime(time);
        player.SetTime(time);
        const auto worlds = player.World();
        player.Sample(pose_);
        if (worlds.size() != worlds_.size())
            return std::to_string(worlds.size()) + " world matrices";
        for (std::size_t node = 0; node < worlds.size(); ++node)
        {
            const bool world = SameFloats(worlds[node], hierarchy_.nodes[node].worldMatrix);
            if (!world || !SameFloats(pose_[node], TransformOf(hierarchy_.nodes[node])))
                return (world ? "transform of node " : "world matrix of node ") + std::to_string(node) +
                       " at " + std::to_string(time);
        }
        return {};
    }

private:
    static TEV2_PLAYBACK::Transform TransformOf(const TEV2_LOADER::TEV2_MATRIX_NODE& node)
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

    TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy_;
    std::vector<TEV2_LOADER::TEV2_MATRIX_3X4> worlds_;
    std::vector<TEV2_PLAYBACK::Transform> pose_;
};

} // namespace tv2_tests
