#include "tests/support/sample_scenes.h"

#include "tev2_loader/tev2.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <functional>
#include <limits>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// One track of every kind with the same two keys in time, and its values in the file.
struct KindCase
{
    std::uint32_t kind;
    std::unique_ptr<TEV2_ANIMATABLE> track;
    Bytes values;
};

std::vector<KindCase> EveryKind()
{
    std::vector<KindCase> cases;
    const auto add = [&cases](std::uint32_t kind, std::unique_ptr<TEV2_ANIMATABLE> track, const Bytes& values)
    {
        cases.push_back({kind, std::move(track), values});
    };
    add(0, SampleTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(1.5f, -2.0f), Bytes().F32({1.5f, -2.0f}));
    add(1,
        SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(TEV2_FLOAT32_RANGE{1, 2}, TEV2_FLOAT32_RANGE{3, 4}),
        Bytes().F32({1, 2, 3, 4}));
    add(2, SampleTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>(TEV2_COLOUR{1, 2, 3, 4}, TEV2_COLOUR{5, 6, 7, 8}),
        Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8}));
    add(3, SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(TEV2_VECTOR_3{1, 2, 3}, TEV2_VECTOR_3{4, 5, 6}),
        Bytes().F32({1, 2, 3, 4, 5, 6}));
    add(4, SampleTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR>(TEV2_VECTOR_2{1, 2}, TEV2_VECTOR_2{3, 4}),
        Bytes().F32({1, 2, 3, 4}));
    add(5,
        SampleTrack<TEV2_ANIMATABLE_QUATERNION_LERP>(TEV2_QUATERNION{0, 0, 0, 1},
                                                     TEV2_QUATERNION{1, 2, 3, 4}),
        Bytes().F32({0, 0, 0, 1, 1, 2, 3, 4}));
    add(6,
        SampleTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(TEV2_QUATERNION{0, 0, 0, 1},
                                                      TEV2_QUATERNION{1, 0, 0, 0}),
        Bytes().F32({0, 0, 0, 1, 1, 0, 0, 0}));
    add(7, SampleTrack<TEV2_ANIMATABLE_RECTF_LINEAR>(TEV2_RECTF{{1, 2}, {3, 4}}, TEV2_RECTF{{5, 6}, {7, 8}}),
        Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8}));
    add(8, SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(-1, 7), Bytes().U32({0xFFFFFFFFu, 7}));
    add(9, SampleTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(TEV2_VECTOR_4{1, 2, 3, 4}, TEV2_VECTOR_4{5, 6, 7, 8}),
        Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8}));
    add(10,
        SampleTrack<TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR>(TEV2_BINORMAL_TANGENT{{1, 2, 3}, {4, 5, 6}},
                                                             TEV2_BINORMAL_TANGENT{{7, 8, 9}, {10, 11, 12}}),
        Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    add(11,
        SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>(TEV2_BOUNDING_BOX{{1, 2, 3}, {4, 5, 6}},
                                                         TEV2_BOUNDING_BOX{{7, 8, 9}, {10, 11, 12}}),
        Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    return cases;
}

/// The record of a track with SampleTrack's cursor and times.
Bytes Record(const Bytes& values)
{
    return Bytes().U32(0).F32({0.25f}).U32(2).F32({0.5f, 2.5f}).U32(2).Append(values);
}

TEST(TrackRecord, IsCursorTimesAndValues)
{
    for (const KindCase& item : EveryKind())
    {
        item.track->m_fraction = 0.25f;
        EXPECT_EQ(item.track->GetType(), item.kind);
        EXPECT_EQ(SavedBytes(*item.track), Record(item.values).data) << "kind " << item.kind;
    }
}

TEST(TrackRecord, ComesBackWithItsCursor)
{
    for (const KindCase& item : EveryKind())
    {
        const std::unique_ptr<TEV2_ANIMATABLE> loaded = item.track->Clone();
        loaded->m_times.clear();
        loaded->m_current_key = 9;
        const Bytes record = Record(item.values);
        EXPECT_EQ(LoadedBytes(*loaded, record, kVersion), record.data.size());
        EXPECT_EQ(loaded->m_current_key, 0u);
        EXPECT_EQ(loaded->m_fraction, 0.25f);
        EXPECT_TRUE(loaded->IsEqual(*item.track)) << "kind " << item.kind;
        EXPECT_EQ(SavedBytes(*loaded), record.data) << "kind " << item.kind;
    }
}

TEST(TrackRecord, LoadIsTrueAndFailsTheCursorWhereTheRecordIsCut)
{
    for (const KindCase& item : EveryKind())
    {
        Bytes record = Record(item.values);
        record.data.pop_back();
        TEV2_MEMORY_CURSOR cursor(record.data.data(), record.data.size());
        EXPECT_TRUE(item.track->Load(cursor, kVersion)) << "kind " << item.kind;
        EXPECT_TRUE(cursor.Failed()) << "kind " << item.kind;
    }
}

TEST(TrackRecord, IsVisitedWithoutItsClass)
{
    for (const KindCase& item : EveryKind())
    {
        Bytes visited;
        VisitKeys(*item.track,
                  [&visited](std::span<const float> times, auto values)
                  {
                      EXPECT_TRUE(std::ranges::equal(times, std::array{0.5f, 2.5f}));
                      for (const auto& value : values)
                      {
                          if constexpr (requires { value.Components(); })
                              std::apply([&](auto... part) { visited.F32({part...}); }, value.Components());
                          else
                              visited.U32(std::bit_cast<std::uint32_t>(value));
                      }
                  });
        EXPECT_EQ(visited.data, item.values.data) << "kind " << item.kind;
    }
}

TEST(TrackRecord, IsSixteenZerosWithoutKeys)
{
    TEV2_ANIMATABLE_VECTOR_3_LINEAR track;
    EXPECT_EQ(SavedBytes(track), Bytes().Zeros(16).data);
    track.Append(1.0f, {});
    EXPECT_EQ(LoadedBytes(track, Bytes().Zeros(16), kVersion), 16u);
    EXPECT_TRUE(track.m_values.empty());
    EXPECT_TRUE(track.m_times.empty());
}

TEST(TrackRecord, SaveReportsWhatCouldNotBeWritten)
{
    const ScratchFolder folder;
    for (const KindCase& item : EveryKind())
    {
        TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(folder.Path("guard")), false, true);
        EXPECT_FALSE(item.track->Save(writer)) << "kind " << item.kind;
    }
}

TEST(TrackFamily, TakesItsOwnKindsOnly)
{
    using Make = std::function<std::unique_ptr<TEV2_ANIMATABLE>(std::uint32_t)>;
    const std::pair<Make, std::vector<std::uint32_t>> families[] = {
        {&TEV2_ANIMATABLE_FLOAT32::Create, {0}},       {&TEV2_ANIMATABLE_FLOAT32_RANGE::Create, {1}},
        {&TEV2_ANIMATABLE_COLOUR::Create, {2}},        {&TEV2_ANIMATABLE_VECTOR_3::Create, {3}},
        {&TEV2_ANIMATABLE_VECTOR_2::Create, {4}},      {&TEV2_ANIMATABLE_QUATERNION::Create, {5, 6}},
        {&TEV2_ANIMATABLE_RECTF::Create, {7}},         {&TEV2_ANIMATABLE_INT32::Create, {8}},
        {&TEV2_ANIMATABLE_VECTOR_4::Create, {9}},      {&TEV2_ANIMATABLE_BINORMAL_TANGENT::Create, {10}},
        {&TEV2_ANIMATABLE_BOUNDING_BOX::Create, {11}},
    };
    for (const auto& [create, kinds] : families)
    {
        for (const std::uint32_t kind : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 0xFFFFFFFFu})
        {
            const std::unique_ptr<TEV2_ANIMATABLE> track = create(kind);
            const bool own = std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
            ASSERT_EQ(track != nullptr, own) << kind;
            if (track)
            {
                EXPECT_EQ(track->GetType(), kind);
            }
        }
    }
}

TEST(TrackComparison, SeesKindTimesAndValuesButNotTheCursor)
{
    const std::vector<KindCase> cases = EveryKind();
    for (const KindCase& item : cases)
    {
        for (const KindCase& other : cases)
            EXPECT_EQ(item.track->IsEqual(*other.track), item.kind == other.kind);

        std::unique_ptr<TEV2_ANIMATABLE> clone = item.track->Clone();
        clone->m_fraction = 0.75f;
        EXPECT_TRUE(clone->IsEqual(*item.track));
        clone->m_times[1] += 1.0f;
        EXPECT_FALSE(clone->IsEqual(*item.track));

        clone = item.track->Clone();
        clone->m_times.push_back(9.0f);
        EXPECT_FALSE(clone->IsEqual(*item.track));

        // One bit of the last value.
        Bytes changed = Record(item.values);
        changed.data.back() ^= 0x40;
        LoadedBytes(*clone, changed, kVersion);
        EXPECT_FALSE(clone->IsEqual(*item.track)) << "kind " << item.kind;
    }
}

TEST(TrackComparison, ANanEqualsNothing)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    TEV2_ANIMATABLE_VECTOR_3_LINEAR value;
    value.Append(0.0f, {1.0f, nan, 2.0f});
    EXPECT_FALSE(value.IsEqual(value));
    TEV2_ANIMATABLE_FLOAT32_LINEAR time;
    time.Append(nan, 1.0f);
    EXPECT_FALSE(time.IsEqual(time));
}

TEST(TrackClone, IsOfTheSameClassWithItsOwnCopies)
{
    for (const KindCase& item : EveryKind())
    {
        item.track->m_current_key = 5;
        item.track->m_fraction = 0.5f;
        const std::unique_ptr<TEV2_ANIMATABLE> clone = item.track->Clone();
        const TEV2_ANIMATABLE& original = *item.track;
        const TEV2_ANIMATABLE& copy = *clone;
        EXPECT_EQ(typeid(copy), typeid(original));
        EXPECT_EQ(clone->m_current_key, 5u);
        EXPECT_EQ(clone->m_fraction, 0.5f);
        item.track->m_times[0] = -1.0f;
        EXPECT_EQ(clone->m_times[0], 0.5f);
    }
}

} // namespace
