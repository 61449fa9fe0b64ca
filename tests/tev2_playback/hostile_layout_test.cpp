#include "tev2_playback/detail/block_plan.h"
#include "tev2_playback/detail/channel_data.h"
#include "tev2_playback/detail/clock_table.h"
#include "tev2_playback/detail/extras_layout.h"
#include "tev2_playback/detail/hash.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <vector>

using namespace TEV2_PLAYBACK;

namespace
{

/// The eight bytes that have a hash: HashOf backwards.
std::uint64_t BytesOfHash(std::uint64_t hash)
{
    constexpr std::uint64_t kPrime = 0x9E3779B97F4A7C15u;
    std::uint64_t inverse = kPrime;
    for (int doubled = 0; doubled < 5; ++doubled)
        inverse *= 2 - kPrime * inverse;
    hash ^= hash >> 29 ^ hash >> 58;
    return hash * inverse ^ sizeof(std::uint64_t) * kPrime;
}

} // namespace

TEST(ClockTable, IsNotSlowWhereAllHashesAgree)
{
    // A million pairs of times that all want the same slot. Searched one by one, they would take most of an hour.
    constexpr std::size_t kCount = 1'000'000;
    std::vector<std::uint64_t> pairs(kCount);
    for (std::size_t at = 0; at < kCount; ++at)
    {
        pairs[at] = BytesOfHash(std::uint64_t{at} << 32);
        ASSERT_EQ(HashOf(&pairs[at], sizeof pairs[at]), std::uint64_t{at} << 32);
    }
    ClockTable table;
    for (std::size_t at = 0; at < kCount; ++at)
        ASSERT_EQ(table.Add({&pairs[at], 2}), at);
    EXPECT_EQ(table.Add({&pairs[3], 2}), 3u);
    EXPECT_EQ(table.Entries()[3].tracks, 2u);
    table.PutFirst(3);
    EXPECT_EQ(table.Add({&pairs[3], 2}), 0u);
    EXPECT_EQ(table.Add({&pairs[0], 2}), 3u);
}

TEST(ClipLimits, AreNeverPassedSilently)
{
    EXPECT_EQ(IndexOf(0xFFFFFFFEu), 0xFFFFFFFEu);
    EXPECT_THROW(IndexOf(TEV2_LOADER::kNone), std::bad_alloc);
    BlockPlan plan;
    plan.Take<float>(3);
    EXPECT_EQ(plan.Size(), 64u);
    EXPECT_THROW(plan.Take<float>(std::numeric_limits<std::size_t>::max() / 4), std::bad_alloc);
    EXPECT_THROW(plan.Take<char>(std::numeric_limits<std::size_t>::max() - 64), std::bad_alloc);

    ClipSource source; // whose values are not looked at yet
    source.properties.resize(2);
    for (PropertySource& property : source.properties)
        property.track = {true, TEV2_LOADER::kVector4Track, {}, nullptr, 0, 0x60000000};
    ClockTable clocks;
    EXPECT_THROW(ExtrasLayout(source, clocks), std::bad_alloc);
}
