#pragma once

#include "compare/differences.h"
#include "compare/structure.h"
#include "tests/support/sample_scenes.h"
#include "tev2_loader/names.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace tv2_tests
{

struct RigNode
{
    const char* name;
    std::int32_t parent;
};

/// Nodes 1 m apart, of which every one moves 1 m along its parent's Y axis from 0 to 1 s.
inline void AddRig(TEV2_LOADER::TEV2& scene, std::initializer_list<RigNode> nodes)
{
    using namespace TEV2_LOADER;
    for (const RigNode& made : nodes)
    {
        const auto index = static_cast<float>(scene.matrixHierarchy.nodes.size());
        TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
        ASSERT_TRUE(SetName(node, made.name));
        node.parentIndex = made.parent;
        node.translation =
            MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {index, 0, 0}}, {1.0f, {index, 1, 0}}});
        node.rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({});
    }
    scene.environment.timeRange = {0.0f, 1.0f};
}

/// A difference in short: `moved node object "Spine" Hips > Chest`.
inline std::string Short(const tev2_compare::Difference& difference)
{
    using tev2_compare::NameOf;
    std::string text = std::string(NameOf(difference.change)) + ' ' + difference.object + ' ' +
                       std::string(NameOf(difference.aspect)) + ' ' + difference.name;
    for (const std::string& name : difference.more_names)
        text += '+' + name;
    if (!difference.part.empty())
        text += '.' + difference.part;
    text += " " + difference.left + '>' + difference.right;
    const std::size_t nodes = std::max(difference.left_nodes.size(), difference.right_nodes.size());
    if (nodes > 1)
        text += " x" + std::to_string(nodes);
    if (difference.below > 0)
        text += " +" + std::to_string(difference.below);
    return text;
}

inline std::vector<std::string> ShortStructure(const TEV2_LOADER::TEV2& left, const TEV2_LOADER::TEV2& right)
{
    std::vector<std::string> texts;
    const tev2_compare::SceneMatch match(left, right);
    for (const auto& difference : tev2_compare::CompareStructure(left, right, match))
        texts.push_back(Short(difference));
    return texts;
}

} // namespace tv2_tests
