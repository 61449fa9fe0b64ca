#include "tests/support/sample_scenes.h"
#include "tev2_playback/player.h"

#include <gtest/gtest.h>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

TEST(Evaluation, OfTheSoundSceneIsThatOfItsSetTime)
{
    TEV2 scene;
    tv2_tests::FillSoundScene(scene);
    scene.matrixHierarchy.LinkParents();
    const Clip clip(scene);
    Player player(clip);
    scene.SetTime(0.5f);
    player.SetTime(0.5f);
    ASSERT_EQ(player.World().size(), scene.matrixHierarchy.nodes.size());
    for (std::size_t node = 0; node < player.World().size(); ++node)
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
                EXPECT_EQ(player.World()[node].m[row][column],
                          scene.matrixHierarchy.nodes[node].worldMatrix.m[row][column]);
}

} // namespace
