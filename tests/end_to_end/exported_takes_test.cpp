// All takes of a scene at once, and each of them alone: the same files.

#include "tests/end_to_end/opened_scene.h"

#include <map>

namespace
{

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

std::map<std::string, std::string> FilesIn(const tv2_tests::ScratchFolder& folder)
{
    std::map<std::string, std::string> files;
    for (const std::string& name : folder.Names())
        files.emplace(name, tv2_tests::ReadText(folder.Path(name)));
    return files;
}

using ExportedTakes = testing::TestWithParam<std::pair<std::string, Names>>; // scene and files

TEST_P(ExportedTakes, AreTheSameAloneAndTogether)
{
    OPEN_SCENE(GetParam().first);
    const ScriptedExport plugin;
    const tv2_tests::ScratchFolder folder;
    ASSERT_TRUE(plugin.ExportTakes(folder.Folder(), 30, true));
    EXPECT_EQ(folder.Names(), GetParam().second);
    const auto together = FilesIn(folder);

    // One by one, the last take first, into files of the same names.
    for (const std::string& name : folder.Names())
        fs::remove(folder.Path(name));
    FBScene& scene = mobu_host::Scene();
    for (int i = scene.Takes.GetCount() - 1; i >= 0; --i)
    {
        FBSystem().CurrentTake = scene.Takes[i];
        ASSERT_TRUE(plugin.ExportTakes(folder.Folder(), 30, false));
    }
    EXPECT_TRUE(FilesIn(folder) == together);
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, ExportedTakes,
    testing::Values(std::pair(TV2_SAMPLES_DIR "/robot_14_takes.glb",
                              Names{"Dance.tv2", "Death.tv2", "Idle.tv2", "Jump.tv2", "No.tv2", "Punch.tv2",
                                    "Running.tv2", "Sitting.tv2", "Standing.tv2", "ThumbsUp.tv2",
                                    "WalkJump.tv2", "Walking.tv2", "Wave.tv2", "Yes.tv2"}),
                    std::pair(TV2_SCENES_DIR "/hand_two_takes_rig.fbx", Names{"curl.tv2", "splay.tv2"}),
                    std::pair(TV2_SCENES_DIR "/three_takes_later_starts.fbx",
                              Names{"deform.tv2", "spin.tv2", "wiggle.tv2"})),
    [](const auto& scene) { return fs::path(scene.param.first).stem().string(); });

} // namespace
