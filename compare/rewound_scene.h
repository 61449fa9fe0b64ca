#pragma once

#include "tev2_loader/tev2.h"

#include <cstddef>
#include <initializer_list>
#include <vector>

namespace tev2_compare
{

/// Puts the cursor of a track at its first key, so that the next SetTime does not depend on earlier ones: where keys
/// have equal times the cursor decides which of them counts.
inline void Rewind(TEV2_LOADER::TEV2_ANIMATABLE& track)
{
    track.m_current_key = 0;
    track.m_fraction = 0.0f;
}

/// Evaluates the hierarchy of a scene as TEV2::SetTime does when it is called for the first time, whatever was
/// evaluated before. The scene must outlive it and keep its nodes.
class RewoundScene
{
public:
    /// World matrices as the scene has them now are those that a node sees of a parent after it.
    explicit RewoundScene(TEV2_LOADER::TEV2& scene) : hierarchy_(scene.matrixHierarchy)
    {
        hierarchy_.LinkParents();
        worlds_.reserve(hierarchy_.nodes.size());
        for (const auto& node : hierarchy_.nodes)
            worlds_.push_back(node.worldMatrix);
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
                if (track != nullptr)
                    tev2_compare::Rewind(*track);
        }
    }

    std::size_t NodeCount() const { return worlds_.size(); }

    const TEV2_LOADER::TEV2_MATRIX_NODE& Node(std::size_t index) const { return hierarchy_.nodes[index]; }

private:
    TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy_;
    std::vector<TEV2_LOADER::TEV2_MATRIX_3X4> worlds_;
};

} // namespace tev2_compare
