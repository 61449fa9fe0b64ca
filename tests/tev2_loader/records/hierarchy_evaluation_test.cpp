#include "tests/tev2_loader/plain_evaluation.h"

#include <bit>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>

using namespace TEV2_LOADER;
namespace plain = tv2_tests::plain;

namespace
{

/// Two skeletons alike, one for the library and one for the plain formula: tracks with the same times and with
/// times of their own, constants, none; rotations of both kinds, unit and not, parallel and far apart; values
/// from tiny to large, zeros of both signs.
class Skeletons
{
public:
    explicit Skeletons(unsigned seed) : random_(seed)
    {
        for (std::size_t key = 0; key < 200; ++key)
            shared_times_.push_back(static_cast<float>(key) / 30.0f);
        const std::size_t count = seed % 8 == 0 ? 300 : 1 + random_() % 90;
        fast.nodes.resize(count);
        slow.nodes.resize(count);
        for (std::size_t index = 0; index < count; ++index)
        {
            TEV2_MATRIX_NODE& node = fast.nodes[index];
            node.parentIndex = static_cast<std::int32_t>(random_() % (index + 1)) - 1;
            if (random_() % 8 != 0)
                node.translation = Track<TEV2_ANIMATABLE_VECTOR_3_LINEAR>([this] { return Vector(); });
            if (random_() % 8 != 0)
                node.rotation = Rotation();
            if (random_() % 4 == 0)
                node.scale = Track<TEV2_ANIMATABLE_VECTOR_3_LINEAR>([this] { return Vector(); });
            slow.nodes[index].parentIndex = node.parentIndex;
            slow.nodes[index].translation = CloneTrack(node.translation);
            slow.nodes[index].rotation = CloneTrack(node.rotation);
            slow.nodes[index].scale = CloneTrack(node.scale);
        }
        fast.LinkParents();
        slow.LinkParents();
    }

    /// Moves the plain one.
    template <typename Move>
    void MoveSlow(Move move)
    {
        for (TEV2_MATRIX_NODE& node : slow.nodes)
        {
            ForEachTrack(node, [&](TEV2_ANIMATABLE& track) { move(track); });
            const TEV2_MATRIX_3X4 local = plain::LocalMatrix(node);
            node.worldMatrix = node.parentMatrix ? plain::Product(*node.parentMatrix, local) : local;
        }
    }

    /// Which node or track differs, if any.
    std::string Difference()
    {
        for (std::size_t index = 0; index < fast.nodes.size(); ++index)
        {
            std::vector<std::uint32_t> found;
            std::vector<std::uint32_t> expected;
            Collect(fast.nodes[index], found);
            Collect(slow.nodes[index], expected);
            if (found != expected)
                return "node " + std::to_string(index);
        }
        return {};
    }

    float AnyTime()
    {
        const float any[] = {shared_times_[random_() % shared_times_.size()], -1.0f, 1000.0f};
        const auto which = random_() % 8;
        return which < 3 ? any[which] : static_cast<float>(random_() % 7000) / 1000.0f;
    }

    TEV2_MATRIX_HIERARCHY fast;
    TEV2_MATRIX_HIERARCHY slow;

private:
    static void ForEachTrack(TEV2_MATRIX_NODE& node, const std::function<void(TEV2_ANIMATABLE&)>& apply)
    {
        for (TEV2_ANIMATABLE* track : std::initializer_list<TEV2_ANIMATABLE*>{
                 node.translation.get(), node.rotation.get(), node.scale.get()})
        {
            if (track != nullptr)
                apply(*track);
        }
    }

    static void Collect(TEV2_MATRIX_NODE& node, std::vector<std::uint32_t>& bits)
    {
        ForEachTrack(node,
                     [&](TEV2_ANIMATABLE& track)
                     {
                         bits.push_back(track.m_current_key);
                         bits.push_back(std::bit_cast<std::uint32_t>(track.m_fraction));
                     });
        for (const auto& row : node.worldMatrix.m)
            for (const float number : row)
                bits.push_back(std::isnan(number) ? 0x7FC00000u : std::bit_cast<std::uint32_t>(number));
    }

    float Number()
    {
        constexpr float kScales[] = {0.0f, -0.0f, 1e-39f, 1e-20f, 1e-3f, 1.0f, -1.0f, 1e4f, 1e15f};
        return kScales[random_() % std::size(kScales)] * static_cast<float>(1 + random_() % 1000);
    }

    TEV2_VECTOR_3 Vector() { return {Number(), Number(), Number()}; }

    TEV2_QUATERNION Turn()
    {
        if (random_() % 50 == 0)
            return {Number(), Number(), Number(), Number()};
        half_turn_ += random_() % 4 == 0 ? 0.7f : 0.01f;
        const float sine = std::sin(half_turn_);
        return {sine * 0.36f, sine * -0.48f, sine * 0.8f, std::cos(half_turn_)};
    }

    template <typename Concrete, typename Make>
    std::unique_ptr<Concrete> Track(Make make)
    {
        auto track = std::make_unique<Concrete>();
        const auto kind = random_() % 6;
        if (kind == 0)
            track->Append(3.0f, make());
        else if (kind == 1)
        {
            float time = 0.0f;
            for (auto key = 2 + random_() % 100; key > 0; --key)
                track->Append(time += static_cast<float>(random_() % 64) / 64.0f, make());
        }
        else
        {
            for (const float time : shared_times_)
                track->Append(time, make());
        }
        return track;
    }

    std::unique_ptr<TEV2_ANIMATABLE_QUATERNION> Rotation()
    {
        const auto make = [this] { return Turn(); };
        if (random_() % 4 == 0)
            return Track<TEV2_ANIMATABLE_QUATERNION_LERP>(make);
        return Track<TEV2_ANIMATABLE_QUATERNION_SLERP>(make);
    }

    std::mt19937 random_;
    std::vector<float> shared_times_;
    float half_turn_ = 0.0f;
};

TEST(HierarchyEvaluation, IsThePlainFormulaToTheLastBit)
{
    for (unsigned seed = 0; seed < 40; ++seed)
    {
        Skeletons skeletons(seed);
        const auto set_time = [&](float time)
        {
            skeletons.fast.SetTime(time);
            skeletons.MoveSlow([time](TEV2_ANIMATABLE& track) { plain::SetTime(track, time); });
            ASSERT_EQ(skeletons.Difference(), "") << "seed " << seed << ", to " << time;
        };
        for (int step = -60; step < 60; ++step)
            ASSERT_NO_FATAL_FAILURE(set_time(6.6f - static_cast<float>(std::abs(step)) * 0.11f));
        for (int jump = 0; jump < 60; ++jump)
            ASSERT_NO_FATAL_FAILURE(set_time(skeletons.AnyTime()));
        for (const float delta : {0.02f, 1.0f, -0.3f, 4.0f, 9.0f, 0.0f, -20.0f, 0.4f, 70.0f, 0.033f})
        {
            skeletons.fast.Update(delta);
            skeletons.MoveSlow([delta](TEV2_ANIMATABLE& track) { plain::Update(track, delta); });
            ASSERT_EQ(skeletons.Difference(), "") << "seed " << seed << ", on by " << delta;
        }
    }
}

/// Tracks as a file may bring them: cursors anywhere, more times than values and the other way round.
TEST(HierarchyEvaluation, MovesWildTracksAsTheyMoveAlone)
{
    constexpr std::uint32_t kKeys[] = {0, 3, 18, 19, 20, 0xFFFFFFFF};
    constexpr float kFractions[] = {0.0f, 0.5f, 1.0f, -0.0f, -3.0f, 9.0f, NAN, INFINITY};
    TEV2_MATRIX_HIERARCHY together;
    TEV2_MATRIX_HIERARCHY alone;
    together.nodes.resize(300);
    alone.nodes.resize(300);
    for (std::size_t index = 0; index < 300; ++index)
    {
        auto track = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
        const std::size_t times = index % 7 == 0 ? index % 5 : 20;
        const std::size_t values = index % 11 == 0 ? index % 4 : 20;
        for (std::size_t key = 0; key < times; ++key)
            track->m_times.push_back(static_cast<float>(key));
        for (std::size_t key = 0; key < values; ++key)
            track->m_values.push_back({static_cast<float>(key * key), 1.0f, 2.0f});
        track->m_current_key = kKeys[index % std::size(kKeys)];
        track->m_fraction = kFractions[index % std::size(kFractions)];
        TEV2_MATRIX_NODE& node = together.nodes[index];
        (index % 3 == 0 ? node.scale : node.translation) = std::move(track);
        alone.nodes[index].translation = CloneTrack(node.translation);
        alone.nodes[index].scale = CloneTrack(node.scale);
    }
    for (const float time : {8.5f, 3.0f, 17.25f, -1.0f, 30.0f, 8.5f})
    {
        together.SetTime(time);
        for (std::size_t index = 0; index < 300; ++index)
        {
            alone.nodes[index].SetTime(time);
            const auto& found = together.nodes[index].worldMatrix.m;
            const auto& expected = alone.nodes[index].worldMatrix.m;
            ASSERT_EQ(std::memcmp(found, expected, sizeof found), 0) << "node " << index << ", to " << time;
        }
    }
}

} // namespace
