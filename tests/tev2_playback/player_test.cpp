#include "tests/support/allocation_watch.h"
#include "tests/support/sample_scenes.h"
#include "tests/support/tracks.h"
#include "tests/tev2_playback/counter.h"
#include "tev2_playback/player.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <memory_resource>
#include <random>
#include <type_traits>
#include <vector>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

// Only what lives on can be played.
static_assert(std::is_constructible_v<Player, const Clip&> && std::is_constructible_v<Player, Clip&>);
static_assert(!std::is_constructible_v<Player, Clip> && !std::is_constructible_v<Player, const Clip>);
static_assert(!std::is_constructible_v<Player, Clip, std::pmr::memory_resource*>);
static_assert(std::is_nothrow_move_constructible_v<Player> && std::is_nothrow_move_assignable_v<Player>);

namespace
{

Clip SoundClip()
{
    TEV2 scene;
    tv2_tests::FillSoundScene(scene);
    return Clip(scene);
}

std::vector<float> WorldNumbers(Player& player)
{
    const auto worlds = player.World();
    std::vector<float> numbers(worlds.size() * 12);
    std::memcpy(numbers.data(), worlds.data(), numbers.size() * sizeof(float));
    return numbers;
}

} // namespace

TEST(Player, CopiesIntoMemoryOfItsOwn)
{
    const Clip clip = SoundClip();
    const Clip other_clip;
    tv2_tests::Counter first;
    tv2_tests::Counter second;
    {
        Player player(clip, &first);
        player.SetRepeat(Repeat::Loop);
        player.Advance(0.25);
        const auto numbers = WorldNumbers(player);

        Player copy = player;
        EXPECT_EQ(first.pieces, 2);
        Player elsewhere(player, &second);
        EXPECT_EQ(second.pieces, 1);
        player.Advance(0.5);
        EXPECT_NE(WorldNumbers(player), numbers);
        EXPECT_EQ(WorldNumbers(copy), numbers);
        EXPECT_EQ(WorldNumbers(elsewhere), numbers);
        EXPECT_NE(copy.World().data(), elsewhere.World().data());
        EXPECT_EQ(copy.GetPlayhead().GetRepeat(), Repeat::Loop);

        // Of the same clip: in the same memory.
        elsewhere = player;
        EXPECT_EQ(elsewhere.Time(), 0.75f);
        EXPECT_EQ(WorldNumbers(elsewhere), WorldNumbers(player));
        const Player& self = elsewhere;
        elsewhere = self;
        EXPECT_EQ(WorldNumbers(elsewhere), WorldNumbers(player));
        EXPECT_EQ(second.taken, 1);

        // Of another clip: other memory of its own resource.
        copy = Player(other_clip);
        copy = player;
        Player plays_other(other_clip, &second);
        elsewhere = plays_other;
        EXPECT_TRUE(elsewhere.World().empty());
        EXPECT_EQ(second.pieces, 2);
        elsewhere = player;
        EXPECT_EQ(WorldNumbers(elsewhere), WorldNumbers(player));
        EXPECT_EQ(second.pieces, 2);

        // Moving takes nothing.
        const int taken = first.taken + second.taken;
        const auto* const worlds = player.World().data();
        Player moved = std::move(player);
        EXPECT_EQ(moved.World().data(), worlds);
        elsewhere = std::move(moved);
        EXPECT_EQ(elsewhere.World().data(), worlds);
        EXPECT_EQ(elsewhere.Time(), 0.75f);
        EXPECT_EQ(first.taken + second.taken, taken);
        moved = elsewhere; // what was moved from can be assigned to
        EXPECT_NE(moved.World().data(), worlds);
        EXPECT_EQ(WorldNumbers(moved), WorldNumbers(elsewhere));
        plays_other = std::move(elsewhere);
        elsewhere = moved;
        EXPECT_EQ(WorldNumbers(plays_other), WorldNumbers(elsewhere));
    }
    EXPECT_EQ(first.pieces, 0);
    EXPECT_EQ(second.pieces, 0);
}

TEST(Player, OutlivesTheMoveOfItsClip)
{
    Clip clip = SoundClip();
    Player player(clip);
    player.SetTime(0.25f);
    const auto numbers = WorldNumbers(player);
    const Clip moved = std::move(clip);
    player.SetTime(0.5f);
    player.SetTime(0.25f);
    EXPECT_EQ(WorldNumbers(player), numbers);
}

TEST(Player, SamplesNothingWhereThereIsNotRoomForAll)
{
    const Clip clip = SoundClip();
    Player player(clip);
    const Transform untouched = {{7, 8, 9}, {}, {}};
    std::vector<Transform> pose(clip.NodeCount(), untouched);
    player.Sample(std::span(pose).first(clip.NodeCount() - 1));
    for (const Transform& transform : pose)
        EXPECT_EQ(transform.translation, untouched.translation);
    player.Sample(pose);
    EXPECT_NE(pose[0].translation, untouched.translation);
}

TEST(Player, TakesNoMemoryOnceItIsMade)
{
    const Clip clip = SoundClip();
    const auto visible = clip.FindProperty<std::int32_t>(OfNode(1), "Visible");
    ASSERT_TRUE(visible);
    Player player(clip);
    Player other(clip);
    player.SetRepeat(Repeat::Loop);
    std::vector<Transform> pose(clip.NodeCount());
    const long before = tv2_tests::AllocationCount();
    int events = 0;
    for (int step = 0; step < 100; ++step)
    {
        player.Advance(0.125);
        player.World();
        player.Sample(pose);
        player.Camera(0);
        events += player.ActiveCamera() + player.Value(visible);
        for (const Event<std::int32_t>& event : player.Events(visible))
            events += event.after;
        other = player;
        other.SetTime(0.3f);
        other.World();
    }
    EXPECT_EQ(tv2_tests::AllocationCount(), before);
    EXPECT_NE(events, 0);
}

namespace
{

/// Keys as files may have them: equal times, more or fewer values than times, few keys, NaN and infinity.
template <typename Track, typename MakeValue>
std::unique_ptr<Track> OddTrack(std::mt19937& random, const MakeValue& value)
{
    auto track = std::make_unique<Track>();
    float time = static_cast<float>(random() % 100) / 77.0f;
    for (auto key = random() % 12; key > 0; --key)
    {
        track->Append(time, value());
        time += static_cast<float>(random() % 4) * 0.13f;
    }
    if (random() % 4 == 0)
        track->m_values.resize(track->m_values.size() + random() % 3, value());
    if (random() % 4 == 0 && !track->m_values.empty())
        track->m_values.pop_back();
    return track;
}

bool SameBits(std::int32_t left, std::int32_t right)
{
    return left == right;
}

bool SameBits(float left, float right)
{
    return std::memcmp(&left, &right, sizeof left) == 0 || (left != left && right != right);
}

template <ComponentValue Value>
bool SameBits(const Value& left, const Value& right)
{
    bool same = true;
    Zip(left, right,
        [&same](float a, float b)
        {
            same = same && SameBits(a, b);
            return a;
        });
    return same;
}

template <typename Family>
typename Family::Value RewoundValue(Family& track, float time)
{
    track.m_current_key = 0;
    track.m_fraction = 0.0f;
    track.SetTime(time);
    return track.GetValue();
}

template <typename Value, typename Family>
void Compare(Player& player, Property<Value> property, const std::unique_ptr<Family>& track, float time)
{
    ASSERT_TRUE(property);
    ASSERT_TRUE(SameBits(player.Value(property), track ? RewoundValue(*track, time) : Value{}))
        << "at " << time;
}

/// Times inside and outside, and those of the keys.
std::vector<float> TimesAround(const TEV2_ANIMATABLE& track, std::mt19937& random)
{
    std::vector<float> times = {-1.0f, 9.0f, std::numeric_limits<float>::quiet_NaN(),
                                std::numeric_limits<float>::infinity()};
    for (int time = 0; time < 20; ++time)
        times.push_back(static_cast<float>(random() % 1000) / 300.0f);
    times.insert(times.end(), track.m_times.begin(), track.m_times.end());
    return times;
}

} // namespace

TEST(Properties, HaveTheNumbersOfTheirTracks)
{
    std::mt19937 random(2);
    const auto number = [&random]
    {
        const auto kind = random() % 50;
        return kind == 0   ? std::numeric_limits<float>::quiet_NaN()
               : kind == 1 ? std::numeric_limits<float>::infinity()
                           : static_cast<float>(static_cast<int>(random() % 2001) - 1000) / 333.0f;
    };
    for (int round = 0; round < 200; ++round)
    {
        TEV2 scene;
        auto& node = scene.matrixHierarchy.nodes.emplace_back().properties;
        auto& camera = scene.cameras.emplace_back(std::make_unique<TEV2_CAMERA>())->properties;
        auto& whole = node.intValues.emplace_back().track;
        auto& real = node.floatValues.emplace_back().track;
        auto& three = camera.vector3Values.emplace_back().track;
        auto& four = camera.vector4Values.emplace_back().track;
        auto& none = camera.floatValues.emplace_back().track;
        whole = OddTrack<TEV2_ANIMATABLE_INT32_RLE>(random, [&] { return static_cast<int>(random()); });
        real = OddTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(random, number);
        three =
            OddTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(random,
                                                      [&] {
                                                          return TEV2_VECTOR_3{number(), number(), number()};
                                                      });
        four = OddTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(
            random,
            [&] {
                return TEV2_VECTOR_4{number(), number(), number(), number()};
            });
        auto& lens = *scene.cameras[0];
        lens.fieldOfView = OddTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(random, number);
        lens.clipRange =
            OddTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(random,
                                                           [&] {
                                                               return TEV2_FLOAT32_RANGE{number(), number()};
                                                           });
        const Clip clip(scene);
        Player player(clip);
        for (const float time : TimesAround(*real, random))
        {
            player.SetTime(time);
            Compare(player, clip.FindProperty<std::int32_t>(OfNode(0), ""), whole, time);
            Compare(player, clip.FindProperty<float>(OfNode(0), ""), real, time);
            Compare(player, clip.FindProperty<TEV2_VECTOR_3>(OfCamera(0), ""), three, time);
            Compare(player, clip.FindProperty<TEV2_VECTOR_4>(OfCamera(0), ""), four, time);
            Compare(player, clip.FindProperty<float>(OfCamera(0), ""), none, time);
            const CameraView view = player.Camera(0);
            EXPECT_TRUE(SameBits(view.fieldOfView, RewoundValue(*lens.fieldOfView, time)));
            EXPECT_TRUE(SameBits(view.nearPlane, RewoundValue(*lens.clipRange, time).minimum));
            EXPECT_TRUE(SameBits(view.farPlane, RewoundValue(*lens.clipRange, time).maximum));
        }
    }
}

TEST(Properties, AreFoundByOwnerNameAndType)
{
    TEV2 scene;
    tv2_tests::FillSoundScene(scene); // one property of each kind, on node 1
    auto& on_camera = scene.cameras[0]->properties;
    on_camera.intValues.emplace_back().name = TEV2_WIDE_STRING(u"Visible");
    on_camera.intValues.emplace_back().name = TEV2_WIDE_STRING::FromBytes("H\xC3\xBC");
    on_camera.intValues[1].track = tv2_tests::MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 7}, {0.25f, 9}});
    auto& list = on_camera.stringArrays.emplace_back();
    list.name = TEV2_WIDE_STRING(u"list");
    list.strings = {TEV2_WIDE_STRING(u"one"), TEV2_WIDE_STRING(u""), TEV2_WIDE_STRING(u"\u8155")};
    const Clip clip(scene);
    Player player(clip);

    EXPECT_EQ(clip.PropertyCount(), 8u);
    const auto visible = clip.FindProperty<std::int32_t>(OfNode(1), "Visible");
    EXPECT_EQ(clip.PropertyAt(visible.index).name, "Visible");
    EXPECT_EQ(clip.PropertyAt(visible.index).owner, OfNode(1));
    EXPECT_EQ(clip.PropertyAt(visible.index).type, PropertyType::Int);
    EXPECT_EQ(player.Value(visible), 1);
    player.SetTime(0.5f);
    EXPECT_EQ(player.Value(visible), -7);
    EXPECT_EQ(player.Value(clip.FindProperty<std::int32_t>(OfCamera(0), "H\xC3\xBC")), 9);
    EXPECT_EQ(player.Value(clip.FindProperty<std::int32_t>(OfCamera(0), "Visible")), 0); // it has no track
    EXPECT_EQ(player.Value(clip.FindProperty<float>(OfNode(1), "Blend")), 0.25f);

    const auto texts = clip.FindProperty<Texts>(OfCamera(0), "list");
    ASSERT_EQ(clip.TextCount(texts), 3u);
    EXPECT_EQ(clip.Text(texts, 0), "one");
    EXPECT_EQ(clip.Text(texts, 1), "");
    EXPECT_EQ(clip.Text(texts, 2), "\xE8\x85\x95");

    // What is not there, or of another type, has no value.
    EXPECT_FALSE(clip.FindProperty<float>(OfNode(1), "Visible"));
    EXPECT_FALSE(clip.FindProperty<std::int32_t>(OfNode(0), "Visible"));
    EXPECT_FALSE(clip.FindProperty<std::int32_t>(OfNode(7), "Visible"));
    EXPECT_FALSE(clip.FindProperty<Texts>(OfCamera(1), "list"));
    EXPECT_EQ(player.Value(Property<float>()), 0.0f);
    EXPECT_EQ(player.Value(Property<float>{visible.index}), 0.0f);
    EXPECT_EQ(clip.TextCount(Property<Texts>{visible.index}), 0u);
    for ([[maybe_unused]] const auto& event : player.Events(Property<TEV2_VECTOR_4>{visible.index}))
        FAIL();
}
