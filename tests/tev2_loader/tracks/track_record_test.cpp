#include "tests/support/sample_scenes.h"

#include "tev2_loader/tracks/visit_keys.h"

#include <functional>
#include <limits>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// One track of every kind with SampleTrack's times, and its values in the file; the first is of kind 0, and so on.
struct KindCase
{
    std::uint32_t kind;
    std::unique_ptr<TEV2_ANIMATABLE> track;
    Bytes values;
};

std::vector<KindCase> EveryKind()
{
    std::vector<KindCase> cases;
    const auto add = [&cases]<typename Track>(std::unique_ptr<Track> track, const Bytes& values) {
        cases.push_back({static_cast<std::uint32_t>(cases.size()), std::move(track), values});
    };
    const Bytes four = Bytes().F32({1, 2, 3, 4});
    const Bytes eight = Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8});
    const Bytes twelve = Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    add(SampleTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(1.5f, -2.0f), Bytes().F32({1.5f, -2.0f}));
    add(SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({1, 2}, {3, 4}), four);
    add(SampleTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>({1, 2, 3, 4}, {5, 6, 7, 8}), eight);
    add(SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6}), Bytes().F32({1, 2, 3, 4, 5, 6}));
    add(SampleTrack<TEV2_ANIMATABLE_VECTOR_2_LINEAR>({1, 2}, {3, 4}), four);
    add(SampleTrack<TEV2_ANIMATABLE_QUATERNION_LERP>({1, 2, 3, 4}, {5, 6, 7, 8}), eight);
    add(SampleTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({1, 2, 3, 4}, {5, 6, 7, 8}), eight);
    add(SampleTrack<TEV2_ANIMATABLE_RECTF_LINEAR>({{1, 2}, {3, 4}}, {{5, 6}, {7, 8}}), eight);
    add(SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(-1, 7), Bytes().U32({0xFFFFFFFFu, 7}));
    add(SampleTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>({1, 2, 3, 4}, {5, 6, 7, 8}), eight);
    add(SampleTrack<TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR>({{1, 2, 3}, {4, 5, 6}},
                                                             {{7, 8, 9}, {10, 11, 12}}),
        twelve);
    add(SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({{1, 2, 3}, {4, 5, 6}}, {{7, 8, 9}, {10, 11, 12}}),
        twelve);
    return cases;
}

/// The record of a track with SampleTrack's cursor and times.
Bytes Record(const Bytes& values)
{
    return Bytes().U32(0).F32({0.25f}).U32(2).F32({0.5f, 2.5f}).U32(2).Append(values);
}

TEST(TrackRecord, IsCursorTimesAndValuesAndComesBack)
{
    for (const KindCase& item : EveryKind())
    {
        SCOPED_TRACE(item.kind);
        item.track->m_fraction = 0.25f;
        EXPECT_EQ(item.track->GetType(), item.kind);
        Bytes record = Record(item.values);
        EXPECT_EQ(SavedBytes(*item.track), record.data);

        const std::unique_ptr<TEV2_ANIMATABLE> loaded = item.track->Clone();
        loaded->m_times.clear();
        loaded->m_current_key = 9;
        EXPECT_EQ(LoadedBytes(*loaded, record, kVersion), record.data.size());
        EXPECT_TRUE(loaded->IsEqual(*item.track));
        EXPECT_EQ(SavedBytes(*loaded), record.data);

        record.data.pop_back();
        TEV2_MEMORY_CURSOR cut(record.data.data(), record.data.size());
        EXPECT_TRUE(loaded->Load(cut, kVersion));
        EXPECT_TRUE(cut.Failed());

        const ScratchFolder folder;
        TEV2_FILE_WRITER guarded = WriterTo(folder.Path("guard")); // no chunk is open: nothing can be written
        EXPECT_FALSE(item.track->Save(guarded));
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
        for (const std::uint32_t kind : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 11u, 12u, 0xFFFFFFFFu})
        {
            const std::unique_ptr<TEV2_ANIMATABLE> track = create(kind);
            const bool own = std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
            EXPECT_EQ(track != nullptr, own) << kind;
            EXPECT_TRUE(!track || track->GetType() == kind);
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
        TEV2_ANIMATABLE& original = *item.track;
        original.m_current_key = 5;
        original.m_fraction = 0.5f;
        const std::unique_ptr<TEV2_ANIMATABLE> clone = original.Clone();
        EXPECT_EQ(clone->GetType(), item.kind);
        EXPECT_EQ(SavedBytes(*clone), SavedBytes(original));
        original.m_times[0] = -1.0f;
        EXPECT_EQ(clone->m_times[0], 0.5f);
    }
}

} // namespace
