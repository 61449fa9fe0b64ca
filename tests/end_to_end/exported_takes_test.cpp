// All takes of a scene at once, and each of them alone: the same files.

#include "host/import/scene_import.h"
#include "mobu_host/plugin.h"
#include "mobu_host/scene.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

namespace
{

namespace fs = std::filesystem;

std::map<std::string, std::vector<std::uint8_t>> FilesIn(const fs::path& folder)
{
    std::map<std::string, std::vector<std::uint8_t>> files;
    for (const auto& entry : fs::directory_iterator(folder))
        files[entry.path().filename()] = tv2_tests::ReadBytes(entry.path());
    return files;
}

struct SceneOfTakes
{
    std::string path;
    std::vector<std::string> files; // in the order of their names
};

std::ostream& operator<<(std::ostream& stream, const SceneOfTakes& scene)
{
    return stream << scene.path;
}

class ExportedTakes : public testing::TestWithParam<SceneOfTakes>
{
};

TEST_P(ExportedTakes, AreTheSameAloneAndTogether)
{
    const fs::path path = GetParam().path;
    if (!fs::exists(path))
        GTEST_SKIP() << path << " is not in TV2_SCENES_DIR";
    ASSERT_TRUE(mobu_host::ImportScene(path).ok);
    std::string error;
    const auto plugin = mobu_host::Plugin::Load(TV2_PLUGIN, error);
    ASSERT_TRUE(plugin) << error;
    const auto export_tv2 =
        plugin->Symbol<unsigned(const char*, int, int, int, bool, bool, bool, bool, bool, bool)>(
            "python_export_tv2");
    ASSERT_TRUE(export_tv2);
    const fs::path folder = fs::path(testing::TempDir()) / ("tv2_takes_" + path.filename().string());
    fs::remove_all(folder);
    fs::create_directories(folder);

    const std::string named_after_takes = folder / ".tv2";
    ASSERT_EQ(export_tv2(named_after_takes.c_str(), 0, 0, 30, true, true, true, false, true, true), 1u);
    const auto together = FilesIn(folder);
    std::vector<std::string> names;
    for (const auto& [name, bytes] : together)
        names.push_back(name);
    EXPECT_EQ(names, GetParam().files);

    // One by one, the last take first, into files of the same names; the clock of this plug-in stands still.
    fs::remove_all(folder);
    fs::create_directories(folder);
    FBScene& scene = mobu_host::Scene();
    for (int i = scene.Takes.GetCount() - 1; i >= 0; --i)
    {
        FBSystem().CurrentTake = scene.Takes[i];
        ASSERT_EQ(export_tv2(named_after_takes.c_str(), 0, 0, 30, true, true, true, false, true, false), 1u);
    }
    EXPECT_EQ(FilesIn(folder), together);
    fs::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, ExportedTakes,
    testing::Values(SceneOfTakes{TV2_SAMPLES_DIR "/robot_14_takes.glb",
                                 {"Dance.tv2", "Death.tv2", "Idle.tv2", "Jump.tv2", "No.tv2", "Punch.tv2",
                                  "Running.tv2", "Sitting.tv2", "Standing.tv2", "ThumbsUp.tv2",
                                  "WalkJump.tv2", "Walking.tv2", "Wave.tv2", "Yes.tv2"}},
                    SceneOfTakes{TV2_SCENES_DIR "/hand_two_takes_rig.fbx", {"curl.tv2", "splay.tv2"}},
                    SceneOfTakes{TV2_SCENES_DIR "/three_takes_later_starts.fbx",
                                 {"deform.tv2", "spin.tv2", "wiggle.tv2"}}),
    [](const auto& scene) { return fs::path(scene.param.path).stem().string(); });

} // namespace
