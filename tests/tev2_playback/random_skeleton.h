#pragma once

#include "tev2_loader/tev2.h"

#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace tv2_tests
{

/// What a random skeleton has that exporters do not write.
enum class Oddity
{
    None,
    Nodes, ///< parents that come after their children, or are none; rotations that are not of unit length
    All ///< besides, tracks that are empty or have more or fewer values than times, and numbers of every size
};

/// Adds a skeleton to a scene, always the same one for a seed: most tracks on a few shared times, others on their own,
/// constant or absent; both kinds of rotation, near and far; some scale. Keys may have equal times, but not with
/// Oddity::Nodes: there results do not depend on what was evaluated before, and are finite.
class RandomSkeleton
{
public:
    /// With every third seed nothing is odd.
    RandomSkeleton(TEV2_LOADER::TEV2& scene, unsigned seed, std::size_t nodes)
        : RandomSkeleton(scene, seed, nodes, seed % 3 == 0 ? Oddity::None : Oddity::All)
    {
    }

    RandomSkeleton(TEV2_LOADER::TEV2& scene, unsigned seed, std::size_t nodes, Oddity oddity)
        : random_(seed), oddity_(oddity)
    {
        for (int clock = 0; clock < 4; ++clock)
            clocks_.push_back(clock == 0 ? Times(2 + Below(40)) : Reduced(clocks_[0]));
        scene.environment.timeRange = {clocks_[0].front(), clocks_[0].back()};
        const unsigned shape = Below(4);
        const std::size_t end = scene.matrixHierarchy.nodes.size() + nodes;
        while (scene.matrixHierarchy.nodes.size() < end)
        {
            const auto before = static_cast<unsigned>(scene.matrixHierarchy.nodes.size());
            auto& node = scene.matrixHierarchy.nodes.emplace_back();
            const unsigned up = shape == 0 ? 1 : shape == 1 ? before : 1 + Below(before + 1);
            node.parentIndex = static_cast<std::int32_t>(before) - static_cast<std::int32_t>(up);
            if (oddity_ != Oddity::None && OneIn(12)) // anywhere, itself and beyond the end included
                node.parentIndex = static_cast<std::int32_t>(Below(static_cast<unsigned>(end) + 3)) - 2;
            if (!OneIn(8))
                node.translation = Vectors([this] { return 0.001f * Number(); });
            if (!OneIn(8))
                node.rotation = Rotations();
            if (OneIn(12))
                node.scale = Vectors([this] { return 0.5f + Fraction(); });
        }
        scene.matrixHierarchy.LinkParents();
    }

    /// Times to compare at: of keys, one float beside them, between them, outside, and no times at all.
    std::vector<float> ComparedTimes()
    {
        constexpr float kInfinity = std::numeric_limits<float>::infinity();
        std::vector<float> times = {0.0f,   -0.0f,     1e-40f,     1e30f,
                                    -1e30f, kInfinity, -kInfinity, std::numeric_limits<float>::quiet_NaN()};
        for (int more = 0; more < 24; ++more)
        {
            const float key = met_[Below(static_cast<unsigned>(met_.size()))];
            times.insert(times.end(), {key, std::nextafter(key, kInfinity), std::nextafter(key, -kInfinity)});
        }
        for (int more = 0; more < 40; ++more)
            times.push_back(-2.0f + 5.0f * Fraction());
        return times;
    }

    /// At random, from 0 up to a number.
    unsigned Below(unsigned end) { return static_cast<unsigned>(random_() % end); }

private:
    bool OneIn(unsigned count) { return Below(count) == 0; }

    float Fraction() { return static_cast<float>(Below(1u << 20)) / static_cast<float>(1u << 20); }

    float Number()
    {
        constexpr float kOdd[] = {0.0f,
                                  -0.0f,
                                  1e-39f,
                                  1e-20f,
                                  3e19f,
                                  -3e38f,
                                  std::numeric_limits<float>::infinity(),
                                  std::numeric_limits<float>::quiet_NaN()};
        return oddity_ == Oddity::All && OneIn(200) ? kOdd[Below(std::size(kOdd))]
                                                    : -1000.0f + 2000.0f * Fraction();
    }

    /// Ascending, some of them equal.
    std::vector<float> Times(unsigned count)
    {
        std::vector<float> times;
        for (float time = -1.0f + 1.5f * Fraction(); times.size() < count;)
        {
            times.push_back(time);
            if (oddity_ == Oddity::Nodes)
                time += 0.01f + 0.2f * Fraction();
            else if (!OneIn(8))
                time += oddity_ == Oddity::None ? 1.0f / 30.0f : 0.2f * Fraction();
        }
        if (oddity_ == Oddity::All && OneIn(20))
            times.back() = std::numeric_limits<float>::infinity();
        Meet(times);
        return times;
    }

    /// As key reduction leaves them.
    std::vector<float> Reduced(const std::vector<float>& all)
    {
        std::vector<float> times = {all.front()};
        for (std::size_t key = 1; key < all.size(); ++key)
            if (!OneIn(4))
                times.push_back(all[key]);
        return times;
    }

    void Meet(const std::vector<float>& times)
    {
        met_.insert(met_.end(),
                    {times.front(), times.back(), times[Below(static_cast<unsigned>(times.size()))]});
    }

    template <typename Track, typename Make>
    std::unique_ptr<Track> Keys(Make make)
    {
        auto track = std::make_unique<Track>();
        const unsigned sort = Below(10);
        if (sort == 0 && oddity_ == Oddity::All)
            return track;
        track->m_times = sort == 1   ? Times(1)
                         : sort == 2 ? Times(2 + Below(12))
                         : sort <= 5 ? clocks_[1 + Below(3)]
                                     : clocks_[0];
        const auto count = static_cast<unsigned>(track->m_times.size());
        const unsigned values = oddity_ == Oddity::All && OneIn(12) ? Below(count + 3) : count;
        for (unsigned key = 0; key < values; ++key)
            track->m_values.push_back(make());
        return track;
    }

    template <typename Make>
    std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3> Vectors(Make number)
    {
        return Keys<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
            [&] {
                return TEV2_LOADER::TEV2_VECTOR_3{number(), number(), number()};
            });
    }

    std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION> Rotations()
    {
        const float step = OneIn(3) ? 1.0f : 0.05f; // half the angle from key to key: far and near
        float angle = 0.0f;
        const float size =
            oddity_ == Oddity::All ? 0.001f : 0.0005f; // no longer than 1: longer ones become NaN
        const auto turn = [&]() -> TEV2_LOADER::TEV2_QUATERNION
        {
            if (oddity_ != Oddity::None && OneIn(30))
                return {size * Number(), size * Number(), size * Number(), size * Number()};
            angle += step * Fraction();
            const float sine = std::sin(angle);
            return {0.36f * sine, -0.48f * sine, 0.8f * sine, std::cos(angle)};
        };
        if (OneIn(5))
            return Keys<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION_LERP>(turn);
        return Keys<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION_SLERP>(turn);
    }

    std::mt19937 random_;
    Oddity oddity_;
    std::vector<std::vector<float>> clocks_;
    std::vector<float> met_; ///< key times to compare at
};

} // namespace tv2_tests
