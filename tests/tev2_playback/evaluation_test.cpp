#include "tests/support/allocation_watch.h"
#include "tests/tev2_playback/player_difference.h"
#include "tests/tev2_playback/random_skeleton.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;
using namespace tv2_tests;

namespace
{

/// Goes to all times in three orders with one player: what it searched before must not show.
void ExpectSetTime(TEV2& scene, std::vector<float> times, const std::string& what)
{
    tev2_compare::RewoundScene rewound(scene);
    const Clip clip(scene);
    Player player(clip);
    const auto compare = [&]
    {
        for (const float time : times)
            ASSERT_EQ(Difference(rewound, player, time), "") << what;
    };
    compare();
    std::erase_if(times, [](float time) { return std::isnan(time); });
    std::ranges::sort(times);
    compare();
    std::ranges::reverse(times);
    compare();
}

TEST(Evaluation, IsThatOfARewoundSceneToTheLastBit)
{
    for (unsigned seed = 0; seed < 300 && !testing::Test::HasFailure(); ++seed)
    {
        TEV2 scene;
        RandomSkeleton skeleton(scene, seed, seed % 50 == 0 ? seed / 50 : 1 + seed % 61);
        ExpectSetTime(scene, skeleton.ComparedTimes(), "seed " + std::to_string(seed));
    }
}

TEST(Evaluation, IsThatOfDeepAndWideSkeletons)
{
    for (const bool deep : {false, true})
    {
        TEV2 scene;
        RandomSkeleton skeleton(scene, 3, 3000);
        auto& nodes = scene.matrixHierarchy.nodes;
        for (std::size_t node = 1; node < nodes.size(); ++node)
            nodes[node].parentIndex = deep ? static_cast<std::int32_t>(node) - 1 : 0;
        ExpectSetTime(scene, {-1.0f, 0.1f, 0.3f, 0.7f}, deep ? "deep" : "wide");
    }
}

TEST(Evaluation, OfPlayersOfOneClipIsTheirOwnAndAllocatesNothing)
{
    TEV2 scene;
    RandomSkeleton skeleton(scene, 6, 50);
    tev2_compare::RewoundScene rewound(scene);
    const Clip clip(scene);
    Player ahead(clip);
    Player behind(clip);
    std::vector<Transform> pose(clip.NodeCount());
    const long before = AllocationCount();
    for (const float time : {0.1f, 0.2f, -4.0f, 0.15f, 9.0f})
    {
        ahead.SetTime(time + 0.05f);
        ahead.World();
        behind.SetTime(time);
        behind.Sample(pose);
        behind.World();
    }
    EXPECT_EQ(AllocationCount(), before);
    for (const float time : {0.3f, 0.1f})
    {
        EXPECT_EQ(Difference(rewound, ahead, time), "");
        EXPECT_EQ(Difference(rewound, behind, time - 0.2f), "");
    }
}

} // namespace
