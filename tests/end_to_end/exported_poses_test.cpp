// Exports real scenes through the plug-in and compares the pose in the file with that of the scene, at every sample,
// and with that of a player.

#include "tests/end_to_end/opened_scene.h"
#include "tests/tev2_playback/player_difference.h"

#include "tev2_loader/file.h"

#include <cmath>
#include <map>

namespace
{

using namespace TEV2_LOADER;
namespace fs = std::filesystem;

// Columns of a rotation and a place, in the frame of the file but in double precision.
struct Pose
{
    double m[3][4];
};

// Pose of a model that the scene has just evaluated: metres, Z mirrored, unit axes in the order of the
// format.
Pose ScenePose(FBModel& model)
{
    FBMatrix global;
    model.GetMatrix(global, kModelTransformation, true, nullptr);
    const bool is_camera = model.Is(FBCamera::TypeInfo);
    const int axis_of_column[2][3] = {{0, 2, 1}, {2, 1, 0}};
    Pose pose{};
    for (int column = 0; column < 3; ++column)
    {
        const int axis = axis_of_column[is_camera][column];
        const double length = std::hypot(global(axis, 0), global(axis, 1), global(axis, 2));
        pose.m[0][column] = global(axis, 0) / length;
        pose.m[1][column] = global(axis, 1) / length;
        pose.m[2][column] = -global(axis, 2) / length;
    }
    pose.m[0][3] = global(3, 0) * 0.01;
    pose.m[1][3] = global(3, 1) * 0.01;
    pose.m[2][3] = -global(3, 2) * 0.01;
    return pose;
}

// The frame in which a whole scene is exported: relative to the converted scene root, which has X, Z and Y
// for axes.
Pose RelativeToSceneRoot(const Pose& p)
{
    Pose relative{};
    for (int column = 0; column < 4; ++column)
    {
        relative.m[0][column] = p.m[0][column];
        relative.m[1][column] = -p.m[2][column];
        relative.m[2][column] = p.m[1][column];
    }
    return relative;
}

using ExportedPoses = testing::TestWithParam<std::string>;

// Key reduction leaves keys away that differ by no more than this from what stays, in metres and in
// components of quaternions.
constexpr double kReductionTolerance = 1e-4;
constexpr double kShift = 1.7320508 * kReductionTolerance; // metres: of three components
constexpr double kTurn = 4.0 * kReductionTolerance;        // radians: twice the length of four components

using Poses = std::map<FBModel*, Pose>;

double Distance(const Pose& a, const Pose& b)
{
    return std::hypot(a.m[0][3] - b.m[0][3], a.m[1][3] - b.m[1][3], a.m[2][3] - b.m[2][3]);
}

// How far key reduction may take a model from its pose: every node between it and the scene's root adds a
// share of its own, and its turn takes along what hangs on it.
struct Allowance
{
    double axis = 0.0;  // components of unit vectors
    double place = 0.0; // metres

    Allowance(FBModel& model, const Poses& poses)
    {
        for (FBModel *node = &model, *parent; (parent = node->Parent) != nullptr; node = parent)
        {
            axis += kTurn;
            place += kShift + kTurn * Distance(poses.at(&model), poses.at(node));
        }
    }
};

// Of a mirrored model no rotation can be expected, since a quaternion mirrors nothing. Nothing hangs on those
// of these scenes, so that its place is that of any other.
bool IsMirrored(const Pose& p)
{
    const auto& m = p.m;
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
               m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
               m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]) <
           0.0;
}

// How far the file's world matrices lie from the scene, at worst.
struct Deviation
{
    double axis = 0.0;     // components of unit vectors
    double place = 0.0;    // metres
    double relative = 0.0; // of either, in parts of what is allowed
    std::size_t poses = 0;

    void Add(const Pose& expected, const TEV2_MATRIX_3X4& actual, const Allowance& allowance)
    {
        ++poses;
        const int first_column = IsMirrored(expected) ? 3 : 0;
        for (int row = 0; row < 3; ++row)
            for (int column = first_column; column < 4; ++column)
            {
                const double off =
                    std::fabs(expected.m[row][column] - static_cast<double>(actual.m[row][column]));
                const double part = off / (column == 3 ? allowance.place : allowance.axis);
                double& worst = column == 3 ? place : axis;
                worst = off > worst || std::isnan(off) ? off : worst;
                relative = part > relative || std::isnan(part) ? part : relative;
            }
    }
};

Deviation CompareTake(FBTake& take, const std::string& path, float rate)
{
    TEV2_LOAD_REPORT report;
    TEV2 file;
    const Status loaded = LoadFile(path, file, {.report = &report});
    EXPECT_TRUE(loaded) << path << ": " << loaded.Reason();
    EXPECT_TRUE(report.findings.empty()) << path;

    const std::vector<FBModel*> models = mobu_host::ModelsInPreOrder();
    EXPECT_EQ(file.matrixHierarchy.nodes.size(), models.size()) << path;

    Deviation deviation;
    FBSystem system;
    FBPlayerControl player;
    system.CurrentTake = &take;
    const auto compare_at = [&](float seconds)
    {
        FBTime time;
        time.SetSecondDouble(static_cast<double>(seconds));
        player.Goto(time);
        system.Scene->Evaluate();
        file.SetTime(seconds);
        Poses poses;
        for (std::size_t i = 1; i < models.size(); ++i)
        {
            FBModel& model = *models[i];
            const Pose& pose = poses[&model] = RelativeToSceneRoot(ScenePose(model));
            EXPECT_TRUE(!IsMirrored(pose) || model.Children.GetCount() == 0);
            deviation.Add(pose, file.matrixHierarchy.nodes[i].worldMatrix, {model, poses});
        }
    };
    const float end = file.environment.timeRange.maximum;
    for (float time = file.environment.timeRange.minimum; time < end; time += 1.0f / rate)
        compare_at(time);
    compare_at(end);
    return deviation;
}

// A player shows what the file shows once it is rewound: at every key, beside them, between and outside.
void ExpectPlayedAlike(const std::string& path)
{
    TEV2 file;
    EXPECT_TRUE(LoadFile(path, file, {.applyStartTime = false})) << path;
    std::vector<float> times = {-1.0f, 0.0f, 1e6f};
    std::size_t most = 0;
    for (const TEV2_MATRIX_NODE& node : file.matrixHierarchy.nodes)
    {
        if (!node.rotation || node.rotation->m_times.size() <= most)
            continue;
        most = node.rotation->m_times.size();
        times.resize(3);
        for (const float key : node.rotation->m_times)
            times.insert(times.end(), {key, std::nextafter(key, 1e9f), key + 0.003f});
    }
    tev2_compare::RewoundScene rewound(file);
    const TEV2_PLAYBACK::Clip clip(file);
    TEV2_PLAYBACK::Player player(clip);
    const std::size_t step = 1 + times.size() / 500;
    for (std::size_t at = 0; at < times.size(); at += step)
        ASSERT_EQ(tv2_tests::Difference(rewound, player, times[at]), "") << path;
}

TEST_P(ExportedPoses, AreThoseOfTheScene)
{
    const fs::path scene = GetParam();
    OPEN_SCENE(scene);
    const tv2_tests::ScratchFolder folder;
    const int rate = static_cast<int>(std::lround(FBPlayerControl().GetTransportFpsValue()));
    ASSERT_TRUE(ScriptedExport().ExportTakes(folder.Folder(), rate, true, false));

    FBScene& open = mobu_host::Scene();
    for (int i = 0; i < open.Takes.GetCount(); ++i)
    {
        FBTake& take = *open.Takes[i];
        std::string name = static_cast<const char*>(take.Name);
        std::replace(name.begin(), name.end(), ' ', '_');
        const Deviation deviation = CompareTake(take, folder.Path(name + ".tv2"), static_cast<float>(rate));
        ExpectPlayedAlike(folder.Path(name + ".tv2"));
        EXPECT_LE(deviation.relative, 1.0) << name;
        EXPECT_GT(deviation.poses, 0u);
        std::cout << scene.filename().string() << " " << name << ": " << deviation.poses
                  << " poses, axes off by " << deviation.axis << ", places by " << deviation.place * 1000.0
                  << " mm: " << deviation.relative << " of what is allowed\n";
    }
}

std::vector<std::string> Scenes()
{
    std::vector<std::string> paths;
    for (const std::string name : {"mocap_walk_cameras.dae", "mocap_walk_cameras.fbx",
                                   "spring_camera_interest.fbx", "robot_14_takes.glb", "extras_property.glb"})
        paths.push_back(TV2_SAMPLES_DIR "/" + name);
    for (const std::string name :
         {"mocap_01_03.bvh", "tpose_173_joints.bvh", "animated_pivots.fbx", "hand_two_takes_rig.fbx",
          "mocap_55_01.fbx", "mocap_atlas.fbx", "non_ascii_name_inches_zup.fbx",
          "optical_18_cameras_v6000.fbx", "robot_user_channels.fbx", "three_takes_later_starts.fbx",
          "user_property_kinds.fbx", "view360_seven_cameras.fbx"})
        paths.push_back(TV2_SCENES_DIR "/" + name);
    return paths;
}

INSTANTIATE_TEST_SUITE_P(Scenes, ExportedPoses, testing::ValuesIn(Scenes()),
                         [](const auto& scene)
                         {
                             std::string name = fs::path(scene.param).filename();
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

} // namespace
