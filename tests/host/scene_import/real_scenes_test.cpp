#include "tests/host/scene_import/import_fixture.h"

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
};

// Scenes of other people's making; they lie beside the project where somebody put them there.
class RealScenesTest : public SceneImportTest, public testing::WithParamInterface<RealScene>
{
};

TEST_P(RealScenesTest, IsReadWhole)
{
    const RealScene& scene = GetParam();
    const std::string path = std::string(TV2_SCENES_DIR) + "/" + scene.file;
    if (!std::filesystem::exists(path))
        GTEST_SKIP() << path << " is not there";
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

INSTANTIATE_TEST_SUITE_P(Files, RealScenesTest,
                         testing::Values(RealScene{"mocap_01_03.bvh", 38, 1, "Motion", 4510, 120.0005, 0},
                                         RealScene{"tpose_173_joints.bvh", 222, 1, "Motion", 0, 23.9998, 0},
                                         RealScene{"robot_14_takes.glb", 74, 14, "Dance", 100, 30, 0},
                                         RealScene{"extras_property.glb", 1, 1, "Take 001", 0, 30, 0},
                                         RealScene{"mocap_walk_cameras.dae", 77, 1, "Camera01", 57, 30, 3}),
                         [](const auto& scene)
                         {
                             std::string name = scene.param.file;
                             for (char& c : name)
                                 c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                             return name;
                         });

} // namespace
