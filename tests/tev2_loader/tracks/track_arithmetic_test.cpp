#include "tests/support/tracks.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// A value of a type whose components are first, first + step, ...
template <typename Value>
Value Counting(float first, float step)
{
    Value value{};
    std::apply([&](auto&... component) { ((component = first, first += step), ...); }, value.Components());
    return value;
}

template <>
float Counting<float>(float first, float)
{
    return first;
}

template <typename Track>
class LinearTrackValues : public testing::Test
{
};

using LinearKinds = testing::Types<TEV2_ANIMATABLE_FLOAT32_LINEAR, TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR,
                                   TEV2_ANIMATABLE_COLOUR_LINEAR, TEV2_ANIMATABLE_VECTOR_3_LINEAR,
                                   TEV2_ANIMATABLE_VECTOR_2_LINEAR, TEV2_ANIMATABLE_RECTF_LINEAR,
                                   TEV2_ANIMATABLE_VECTOR_4_LINEAR, TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR,
                                   TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>;
TYPED_TEST_SUITE(LinearTrackValues, LinearKinds);

TYPED_TEST(LinearTrackValues, InterpolateEachComponent)
{
    using Value = typename TypeParam::Value;
    TypeParam track;
    track.Append(0.0f, Counting<Value>(1.0f, 1.0f));
    track.m_fraction = 0.75f;
    EXPECT_TRUE(track.GetValue() == Counting<Value>(1.0f, 1.0f)) << "one value is a constant";
    track.Append(4.0f, Counting<Value>(5.0f, 3.0f));
    track.SetTime(1.0f);
    EXPECT_TRUE(track.GetValue() == Counting<Value>(2.0f, 1.5f));
    track.SetTime(4.0f);
    EXPECT_TRUE(track.GetValue() == Counting<Value>(5.0f, 3.0f));
}

TYPED_TEST(LinearTrackValues, TakeTheArithmeticOfTheirFamily)
{
    using Value = typename TypeParam::Value;
    TypeParam track;
    track.Append(0.0f, Counting<Value>(8.0f, 2.0f));
    track.Append(1.0f, Counting<Value>(-4.0f, 2.0f));
    constexpr bool kOffsets = requires
    {
        track.Add(Value{});
    };
    constexpr bool kScales = requires
    {
        track.Scale(1.0f);
    };
    EXPECT_EQ(kOffsets, track.GetType() != 10);
    EXPECT_EQ(kScales, track.GetType() != 10 && track.GetType() != 1);

    if constexpr (kOffsets)
    {
        track.Add(Counting<Value>(1.0f, 1.0f));
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(9.0f, 3.0f));
        EXPECT_TRUE(track.m_values[1] == Counting<Value>(-3.0f, 3.0f));
        track.Subtract(Counting<Value>(1.0f, 1.0f));
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(8.0f, 2.0f));
    }
    if constexpr (kScales)
    {
        track.Scale(0.5f).Scale(4.0f).Divide(2.0f);
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(8.0f, 2.0f));
        track.Divide(-2.0f);
        EXPECT_TRUE(track.m_values[0] == Counting<Value>(-4.0f, -1.0f));
        EXPECT_TRUE(track.m_values[1] == Counting<Value>(2.0f, -1.0f));
    }
}

TEST(SteppedIntegerTrack, HoldsUntilTheNextKey)
{
    TEV2_ANIMATABLE_INT32_RLE track;
    track.Append(0.0f, 4);
    track.m_fraction = 1.0f;
    EXPECT_EQ(track.GetValue(), 4) << "one value is a constant";
    track.Append(1.0f, 7);
    track.Append(2.0f, -1);

    const std::pair<float, std::int32_t> cases[] = {{-1.0f, 4}, {0.0f, 4},  {0.999f, 4}, {1.0f, 7},
                                                    {1.5f, 7},  {2.0f, -1}, {9.0f, -1},  {1.999f, 7}};
    for (const auto& [time, value] : cases)
    {
        track.SetTime(time);
        EXPECT_EQ(track.GetValue(), value) << time;
    }
}

TEST(SteppedIntegerTrack, IsNotMovedByArithmetic)
{
    TEV2_ANIMATABLE_INT32_RLE track;
    track.Append(0.0f, 5);
    EXPECT_EQ(&track.Add(1).Subtract(3).Scale(2.0f).Divide(0.0f), &track);
    EXPECT_EQ(track.m_values, std::vector<std::int32_t>{5});
}

} // namespace
