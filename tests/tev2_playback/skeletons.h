#pragma once

#include "tev2_loader/tev2.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"

#include <cstddef>
#include <memory>
#include <random>

namespace tv2_tests
{

/// Adds nodes to a scene as no exporter makes them, all sorts side by side: several at top level, some below nodes that
/// come after them; tracks on shared and on other times, of one key and absent; rotations of both kinds, not of length
/// 1; some scale. From 0 to 2 seconds.
inline void AddOddNodes(TEV2_LOADER::TEV2& scene, std::size_t count, unsigned seed)
{
    using namespace TEV2_LOADER;
    std::mt19937 random(seed);
    const auto one_in = [&random](unsigned n) { return random() % n == 0; };
    const auto number = [&random] { return static_cast<float>(random() % 20'001) / 10'000.0f - 1.0f; };
    const auto vector = [&] { return TEV2_VECTOR_3{number(), number(), number()}; };
    const auto rotation = [&] { return TEV2_QUATERNION{number(), number(), number(), number()} * 0.5f; };
    const auto track = [&]<typename Track>(std::unique_ptr<Track> empty, const auto& value)
    {
        const int keys = one_in(4) ? 1 : 5;
        const float first = one_in(3) ? 0.25f : 0.0f;
        for (int key = 0; key < keys; ++key)
            empty->Append(first + 0.5f * static_cast<float>(key), value());
        return empty;
    };
    auto& nodes = scene.matrixHierarchy.nodes;
    for (const std::size_t end = nodes.size() + count; nodes.size() < end;)
    {
        const std::size_t index = nodes.size();
        TEV2_MATRIX_NODE& node = nodes.emplace_back();
        if (!one_in(5))
            node.parentIndex = static_cast<std::int32_t>(random() % (one_in(8) ? end : index + 1));
        if (!one_in(8))
            node.translation = track(std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(), vector);
        if (one_in(4))
            node.rotation = track(std::make_unique<TEV2_ANIMATABLE_QUATERNION_LERP>(), rotation);
        else if (!one_in(8))
            node.rotation = track(std::make_unique<TEV2_ANIMATABLE_QUATERNION_SLERP>(), rotation);
        if (one_in(6))
            node.scale = track(std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(), vector);
    }
    scene.matrixHierarchy.LinkParents();
    scene.environment.timeRange = {0.0f, 2.0f};
}

} // namespace tv2_tests
