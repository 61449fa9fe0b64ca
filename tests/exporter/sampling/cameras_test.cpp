#include "tests/exporter/export_fixture.h"

#include <cmath>
#include <numbers>

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

using Cameras = ExportTest;

const std::vector<float>& Values(const std::unique_ptr<TEV2_ANIMATABLE_FLOAT32>& track)
{
    return Keys<TEV2_ANIMATABLE_FLOAT32_LINEAR>(track).m_values;
}

TEST_F(Cameras, ConvertsTheLens)
{
    OneTake(0.5);
    FBCamera* camera = mobu_host::AddCamera("Cam");
    camera->ApertureMode = kFBApertureVertical;
    camera->FieldOfView = 40.0;
    camera->FilmAspectRatio = 1.5;
    camera->NearPlaneDistance = 10.0;
    camera->FarPlaneDistance = 4000.0;
    camera->FocusSpecificDistance = 250.0;
    const auto scene = Export();
    ASSERT_EQ(scene->cameras.size(), 1u);
    const TEV2_CAMERA& entity = *scene->cameras[0];
    EXPECT_EQ(entity.value, 1u);
    EXPECT_EQ(entity.inverseAspect, static_cast<float>(1.0 / 1.5));
    // One key for each of the three instants; camera tracks are never thinned.
    EXPECT_EQ(entity.distance->m_times, (std::vector<float>{0.0f, 0.25f, 0.5f}));
    EXPECT_EQ(Values(entity.distance), (std::vector<float>(3, 250.0f * 0.01f)));
    const float angle = static_cast<float>(40.0 * 3.1415927410125732 / 180.0);
    EXPECT_EQ(Values(entity.fieldOfView),
              (std::vector<float>(3, static_cast<float>(static_cast<double>(angle) * 1.5))));
    EXPECT_EQ(entity.secondaryRange, nullptr);
    const auto& clip = Keys<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(entity.clipRange).m_values;
    ASSERT_EQ(clip.size(), 3u);
    EXPECT_EQ(clip[2].minimum, 10.0f * 0.01f);
    EXPECT_EQ(clip[2].maximum, 4000.0f * 0.01f);
    // A horizontal angle stays as it is; every other mode is scaled.
    for (const auto mode : {kFBApertureHorizontal, kFBApertureVertHoriz, kFBApertureFocalLength})
    {
        camera->ApertureMode = mode;
        const float expected = mode == kFBApertureHorizontal ? 1.0f : 1.5f;
        const auto other = Export();
        EXPECT_FLOAT_EQ(Values(other->cameras[0]->fieldOfView)[0] / angle, expected);
    }
}

TEST_F(Cameras, FollowAnimatedLenses)
{
    FBTake& take = OneTake(0.5);
    FBCamera* camera = mobu_host::AddCamera("Cam");
    camera->ApertureMode = kFBApertureHorizontal;
    mobu_host::AnimateProperty(camera->FieldOfView, take,
                               [](double seconds, int) { return 30.0 + 40.0 * seconds; });
    const auto scene = Export();
    const auto& values = Values(scene->cameras[0]->fieldOfView);
    ASSERT_EQ(values.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(values[i], (30.0 + 10.0 * static_cast<double>(i)) * std::numbers::pi / 180.0, 1e-6);
}

// The world rotation of the camera's node in a file, column by column: right, up, view.
TEV2_MATRIX_3X4 CameraWorld(TEV2& scene)
{
    scene.SetTime(0.0f);
    return scene.matrixHierarchy.nodes[scene.cameras[0]->value].worldMatrix;
}

void ExpectColumn(const TEV2_MATRIX_3X4& matrix, int column, float x, float y, float z)
{
    ExpectVector({matrix.m[0][column], matrix.m[1][column], matrix.m[2][column]}, x, y, z, 1e-5f);
}

TEST_F(Cameras, TurnTheirAxesIntoTheFile)
{
    OneTake(0.5);
    FBCamera* camera = mobu_host::AddCamera("Cam"); // looks along X, Y up, Z right
    camera->Translation = FBVector3d(100, 200, 300);
    camera->Selected = true;
    TEV2_MATRIX_3X4 world = CameraWorld(*Export());
    ExpectColumn(world, 0, 0, 0, -1); // the camera's Z, mirrored
    ExpectColumn(world, 1, 0, 1, 0);
    ExpectColumn(world, 2, 1, 0, 0); // the view axis
    ExpectColumn(world, 3, 1, 2, -3);

    // Roll turns about the view axis by its negative; up goes where the right hand then takes it.
    camera->Roll = 90.0;
    world = CameraWorld(*Export());
    ExpectColumn(world, 2, 1, 0, 0);
    ExpectColumn(world, 1, 0, 0, -1);
    camera->Roll = 0.0;

    // The turn goes about the up axis, around the interest.
    FBModel* interest = mobu_host::AddModel("Interest");
    interest->Translation = FBVector3d(100, 0, 200);
    camera->Interest = interest;
    camera->TurnTable = 90.0;
    world = CameraWorld(*Export());
    ExpectColumn(world, 1, 0, 1, 0);
    ExpectColumn(world, 2, 0, 0, 1);      // X turned by -90 degrees about Y
    ExpectColumn(world, 3, 1 + 1, 2, -2); // (0, 2, -1) from the interest becomes (1, 2, 0)

    // Without one, around the origin.
    camera->Interest = nullptr;
    world = CameraWorld(*Export());
    ExpectColumn(world, 3, 3, 2, 1);
}

TEST_F(Cameras, RecordTheSwitcherByExportedIndex)
{
    FBTake& take = OneTake(1.0);
    FBModel* rig = mobu_host::AddModel("Rig");
    mobu_host::AddCamera("Outside");
    mobu_host::AddCamera("First", rig);
    mobu_host::AddCamera("Second", rig);
    rig->Selected = true;
    EXPECT_EQ(Export()->cameraMan.cameraIndex, nullptr);

    FBCameraSwitcher* switcher = mobu_host::AddCameraSwitcher();
    const int indices[] = {2, 3, 1, 0, 4};
    mobu_host::AnimateProperty(switcher->CurrentCameraIndex, take,
                               [&](double seconds, int)
                               { return indices[static_cast<int>(seconds * 4.0 + 0.5)]; });
    auto scene = Export();
    const auto& track = Keys<TEV2_ANIMATABLE_INT32_RLE>(scene->cameraMan.cameraIndex);
    EXPECT_EQ(track.m_times, (std::vector<float>{0.0f, 0.25f, 0.5f, 0.75f, 1.0f}));
    // First, second, the camera that is not exported, the last system camera, none.
    EXPECT_EQ(track.m_values, (std::vector<std::int32_t>{0, 1, -1, -1, -1}));

    rig->Selected = false;
    scene = Export();
    EXPECT_EQ(Keys<TEV2_ANIMATABLE_INT32_RLE>(scene->cameraMan.cameraIndex).m_values,
              (std::vector<std::int32_t>{0, 1, 2, -1, -1}))
        << "indices follow the tree: children of the rig come before the camera outside";
}

class StereoCamera : public FBCamera
{
    FBClassDeclare(StereoCamera, FBCamera);

public:
    explicit StereoCamera(const char* name) : FBCamera(name) {}
};
FBClassImplementation(StereoCamera);

TEST_F(Cameras, OfADerivedClassKeepTheirFirstKeysAndShiftTheOthers)
{
    FBTake& take = OneTake(0.5);
    mobu_host::AddModelOf<StereoCamera>("Stereo");
    FBCamera* plain = mobu_host::AddCamera("Plain");
    plain->ApertureMode = kFBApertureHorizontal;
    FBProperty* user = mobu_host::AddUserProperty(*plain, "Shutter", kFBPT_double, true);
    mobu_host::AnimateProperty(*user, take, [](double seconds, int) { return seconds; });
    const auto scene = Export();
    ASSERT_EQ(scene->cameras.size(), 2u);
    EXPECT_EQ(Text(scene->cameras[0]->name), "Stereo");
    EXPECT_EQ(Values(scene->cameras[0]->distance).size(), 3u) << "its own first key, then the plain camera's";
    EXPECT_EQ(Values(scene->cameras[1]->distance).size(), 1u);
}

} // namespace
} // namespace tev2_exporter
