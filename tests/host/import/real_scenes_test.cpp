#include "tests/host/import/import_fixture.h"

namespace
{

struct RealScene
{
    const char* file;
    std::size_t models; // below the root
    int takes;
    const char* first_take;
    long last_frame; // of the first take
    double rate;
    int cameras; // of the file's own

    friend std::ostream& operator<<(std::ostream& out, const RealScene& scene) { return out << scene.file; }
};

// Scenes of others, in TV2_SCENES_DIR.
class RealScenesTest : public SceneImportTest, public testing::WithParamInterface<RealScene>
{
};

TEST_P(RealScenesTest, IsReadWhole)
{
    const RealScene& scene = GetParam();
    const std::string path = std::string(TV2_SCENES_DIR) + "/" + scene.file;
    if (!std::filesystem::exists(path))
        GTEST_SKIP() << path << " is not in TV2_SCENES_DIR";
    const auto result = mobu_host::ImportScene(path);
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_EQ(ModelNames().size() - 1, scene.models);
    EXPECT_EQ(mobu_host::Scene().Takes.GetCount(), scene.takes);
    EXPECT_EQ(TakeNames().front(), scene.first_take);
    EXPECT_EQ(LastFrame(0), scene.last_frame);
    EXPECT_NEAR(FBPlayerControl().GetTransportFpsValue(), scene.rate, 1e-3);
    int cameras = 0;
    for (FBModel* model : mobu_host::ModelsInPreOrder())
        cameras += model->Is(FBCamera::TypeInfo) ? 1 : 0;
    EXPECT_EQ(cameras, scene.cameras);
}

INSTANTIATE_TEST_SUITE_P(
    Files, RealScenesTest,
    testing::Values(RealScene{"mocap_01_03.bvh", 38, 1, "Motion", 4510, 120.0005, 0},
                    RealScene{"tpose_173_joints.bvh", 222, 1, "Motion", 0, 23.9998, 0},
                    RealScene{"robot_14_takes.glb", 74, 14, "Dance", 80, 24, 0},
                    RealScene{"extras_property.glb", 1, 1, "Take 001", 0, 30, 0},
                    RealScene{"mocap_walk_cameras.dae", 77, 1, "Camera01", 57, 30, 3},
                    RealScene{"animated_pivots.fbx", 3, 1, "Take 001", 120, 24, 0},
                    RealScene{"hand_two_takes_rig.fbx", 147, 2, "splay", 1, 30, 0},
                    RealScene{"mocap_55_01.fbx", 39, 1, "55_01|55_01", 1806, 120, 0},
                    RealScene{"mocap_atlas.fbx", 68, 1, "atlas", 450, 30, 0},
                    RealScene{"mocap_walk_cameras.fbx", 76, 1, "walk", 40, 30, 3},
                    RealScene{"non_ascii_name_inches_zup.fbx", 1, 1, "Take 001", 100, 30, 0},
                    RealScene{"optical_18_cameras_v6000.fbx", 33, 1, "Take 001", 500, 100, 18},
                    RealScene{"robot_user_channels.fbx", 23, 1, "Take 001", 440, 30, 0},
                    RealScene{"spring_camera_interest.fbx", 4, 1, "Take 001", 120, 24, 1},
                    RealScene{"three_takes_later_starts.fbx", 5, 3, "wiggle", 20, 24, 0},
                    RealScene{"user_property_kinds.fbx", 2, 1, "Take 001", 150, 30, 0},
                    RealScene{"view360_seven_cameras.fbx", 8, 1, "Take 001", 600, 120, 7}),
    [](const auto& scene)
    {
        std::string name = scene.param.file;
        for (char& c : name)
            c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
        return name;
    });

} // namespace
