#include "tests/support/sample_scenes.h"
#include "tests/support/scratch_folder.h"
#include "tev2_loader/status.h"
#include "tev2_playback/tev2_playback.h"

#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace tv2_tests;

// Values are those of the sound scene: three nodes in a chain whose keys are at 0, 0.5 and 1 s.

namespace
{

class CInterface : public ::testing::Test
{
protected:
    tev2_clip* clip = nullptr;
    tev2_player* player = nullptr;
    const std::vector<std::uint8_t> image = SoundImage();

    void SetUp() override
    {
        ASSERT_EQ(tev2_clip_load_memory(image.data(), image.size(), nullptr, &clip, nullptr, 0), TEV2_OK);
        ASSERT_EQ(tev2_player_create(clip, &player), TEV2_OK);
    }
    void TearDown() override
    {
        tev2_clip_destroy(clip); // before its player, which keeps it
        tev2_player_destroy(player);
    }

    int Property(const char* name, int type, int node = 1) const
    {
        return tev2_clip_find_property(clip, 0, node, name, type);
    }
};

int Collect(const tev2_event* event, void* events)
{
    static_cast<std::vector<tev2_event>*>(events)->push_back(*event);
    return 1;
}

int Stop(const tev2_event*, void*)
{
    return 0;
}

TEST_F(CInterface, LoadsFilesAndSaysWhatIsWrong)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("walk.tv2");
    const std::string missing = folder.Path("none.tv2");
    WriteBytes(path, image);
    tev2_clip* loaded = nullptr;
    char reason[300] = "before";
    EXPECT_EQ(tev2_clip_load(path.c_str(), nullptr, &loaded, reason, sizeof reason), TEV2_OK);
    EXPECT_STREQ(reason, "");
    EXPECT_EQ(tev2_clip_node_count(loaded), 3);
    tev2_clip_destroy(loaded);

    EXPECT_EQ(tev2_clip_load(missing.c_str(), nullptr, &loaded, reason, sizeof reason), TEV2_ERROR_FILE);
    EXPECT_EQ(reason, missing + ": " + TEV2_LOADER::Status::FromErrno(ENOENT).Reason());
    EXPECT_EQ(loaded, nullptr);
    EXPECT_EQ(tev2_clip_load(missing.c_str(), nullptr, &loaded, reason, 5), TEV2_ERROR_FILE);
    EXPECT_EQ(reason, missing.substr(0, 4));
    EXPECT_EQ(tev2_clip_load(missing.c_str(), nullptr, &loaded, nullptr, 0), TEV2_ERROR_FILE);

    tev2_load_options options = {};
    options.size = sizeof options;
    options.most_file_bytes = image.size() - 1;
    EXPECT_EQ(tev2_clip_load(path.c_str(), &options, &loaded, reason, sizeof reason), TEV2_ERROR_FILE);
    EXPECT_EQ(reason, path + ": larger than " + std::to_string(image.size() - 1) + " bytes");
    options.size = offsetof(tev2_load_options, most_file_bytes); // of a program that is older than the limits
    EXPECT_EQ(tev2_clip_load(path.c_str(), &options, &loaded, nullptr, 0), TEV2_OK);
    tev2_clip_destroy(loaded);
    options.size = sizeof options;
    options.most_nodes = 2;
    EXPECT_EQ(tev2_clip_load_memory(image.data(), image.size(), &options, &loaded, nullptr, 0),
              TEV2_ERROR_FILE);
    options.most_nodes = 3;
    options.frame = 2;
    EXPECT_EQ(tev2_clip_load_memory(image.data(), image.size(), &options, &loaded, nullptr, 0),
              TEV2_ERROR_ARGUMENT);
    options.frame = 0;
    options.size = 0;
    EXPECT_EQ(tev2_clip_load_memory(image.data(), image.size(), &options, &loaded, nullptr, 0),
              TEV2_ERROR_ARGUMENT);
    tev2_clip_destroy(nullptr);
    tev2_player_destroy(nullptr);
}

TEST_F(CInterface, SaysWhatIsInAClip)
{
    EXPECT_EQ(tev2_playback_abi_version(), TEV2_PLAYBACK_ABI_VERSION);
    EXPECT_GT(tev2_clip_size(clip), 0u);
    float begin = 9.0f, end = 9.0f;
    tev2_clip_time_range(clip, &begin, &end);
    EXPECT_EQ(begin, 0.0f);
    EXPECT_EQ(end, 1.0f);
    EXPECT_EQ(tev2_clip_up_axis(clip), TEV2_UP_UNKNOWN);

    const char* const names[] = {nullptr, "Scene", "Hips", "Camera", nullptr};
    const int parents[] = {-1, -1, 0, 1, -1};
    for (int node = -1; node < 4; ++node)
    {
        EXPECT_STREQ(tev2_clip_node_name(clip, node), names[node + 1]);
        EXPECT_EQ(tev2_clip_node_parent(clip, node), parents[node + 1]);
    }
    EXPECT_EQ(tev2_clip_find_node(clip, "Hips"), 1);
    EXPECT_EQ(tev2_clip_find_node(clip, "hips"), -1);

    EXPECT_EQ(tev2_clip_camera_count(clip), 1);
    EXPECT_STREQ(tev2_clip_camera_name(clip, 0), "Camera");
    EXPECT_EQ(tev2_clip_camera_name(clip, 1), nullptr);
    EXPECT_EQ(tev2_clip_camera_node(clip, 0), 2);
    EXPECT_EQ(tev2_clip_camera_node(clip, -1), -1);
    EXPECT_EQ(tev2_clip_find_camera(clip, "Camera"), 0);
    EXPECT_EQ(tev2_clip_find_camera(clip, "Hips"), -1);
}

TEST_F(CInterface, PlaysAsTheClockSays)
{
    EXPECT_EQ(tev2_player_time(player), 0.0f);
    EXPECT_EQ(tev2_player_set_repeat(player, 3), TEV2_ERROR_ARGUMENT);
    EXPECT_EQ(tev2_player_set_repeat(player, TEV2_REPEAT_LOOP), TEV2_OK);
    tev2_player_set_speed(player, 2.0);
    tev2_player_advance(player, 1.125);
    EXPECT_EQ(tev2_player_time(player), 0.25f);
    EXPECT_EQ(tev2_player_wraps(player), 2u);
    EXPECT_EQ(tev2_player_has_ended(player), 0);

    // Half of the way from (0, 1, 0) to (1, 1, 0); the rotation about Z is half of the one whose cosine is 0.28.
    const tev2_matrix* const world = tev2_player_world(player);
    EXPECT_EQ(world[0].m[0][3], 0.5f);
    EXPECT_EQ(world[0].m[1][3], 1.0f);
    EXPECT_NEAR(world[0].m[0][0], 0.8f, 1e-6f);
    EXPECT_NEAR(world[0].m[1][0], 0.6f, 1e-6f);
    EXPECT_NEAR(world[1].m[0][3], 0.5f + 0.8f * 0.5f - 0.6f, 1e-6f); // the child has the same transform

    tev2_player* copy = nullptr;
    ASSERT_EQ(tev2_player_copy(player, &copy), TEV2_OK);
    tev2_player_set_repeat(player, TEV2_REPEAT_ONCE);
    tev2_player_advance(player, 5.0);
    EXPECT_EQ(tev2_player_time(player), 1.0f);
    EXPECT_EQ(tev2_player_has_ended(player), 1);
    EXPECT_EQ(tev2_player_time(copy), 0.25f);
    EXPECT_EQ(tev2_player_world(copy)[0].m[0][3], 0.5f);
    tev2_player_set_time(copy, -3.0f);
    EXPECT_EQ(tev2_player_world(copy)[0].m[0][3], 0.0f);
    tev2_player_destroy(copy);
}

TEST_F(CInterface, AFrameIsOfTheClip)
{
    tev2_load_options options = {};
    options.size = sizeof options;
    options.frame = TEV2_FRAME_RIGHT_HANDED_Y_UP;
    tev2_clip* turned = nullptr;
    tev2_player* other = nullptr;
    ASSERT_EQ(tev2_clip_load_memory(image.data(), image.size(), &options, &turned, nullptr, 0), TEV2_OK);
    ASSERT_EQ(tev2_player_create(turned, &other), TEV2_OK);
    tev2_player_set_time(other, 1.0f);
    EXPECT_EQ(tev2_player_world(other)[0].m[2][3], 2.0f); // -2 in the file
    tev2_camera camera;
    EXPECT_EQ(tev2_player_camera(other, 0, &camera), TEV2_OK);
    EXPECT_EQ(camera.right_handed, 1);
    tev2_clip_destroy(turned);
    tev2_player_destroy(other);
}

TEST_F(CInterface, ShowsCameras)
{
    tev2_camera camera;
    EXPECT_EQ(tev2_player_camera(player, 1, &camera), TEV2_ERROR_ARGUMENT);
    tev2_player_set_time(player, 1.0f);
    ASSERT_EQ(tev2_player_camera(player, 0, &camera), TEV2_OK);
    EXPECT_EQ(std::memcmp(&camera.world, &tev2_player_world(player)[2], sizeof camera.world), 0);
    EXPECT_EQ(camera.view.m[2][3], -camera.world.m[2][3]); // nothing is turned at 1 s
    EXPECT_EQ(camera.distance, 5.0f);
    EXPECT_EQ(camera.field_of_view, 0.7f);
    EXPECT_EQ(camera.near_plane, 0.1f);
    EXPECT_EQ(camera.far_plane, 40.0f);
    EXPECT_EQ(camera.inverse_aspect, 0.75f);
    EXPECT_EQ(camera.right_handed, 0);

    float projection[16];
    EXPECT_EQ(tev2_camera_projection(&camera, 4, 0.0f, projection), TEV2_ERROR_ARGUMENT);
    ASSERT_EQ(tev2_camera_projection(&camera, TEV2_DEPTH_ZERO_TO_ONE, 2.0f, projection), TEV2_OK);
    EXPECT_NEAR(projection[0], 1.0f / std::tan(0.35f), 1e-5f);
    EXPECT_NEAR(projection[5], 2.0f / std::tan(0.35f), 1e-5f);
    EXPECT_EQ(projection[14], 1.0f);

    const std::pair<float, int> cuts[] = {{0.0f, 0}, {0.75f, -1}, {1.5f, 0}};
    for (const auto& [time, active] : cuts)
    {
        tev2_player_set_time(player, time);
        EXPECT_EQ(tev2_player_active_camera(player), active) << time;
    }
}

TEST_F(CInterface, ReadsProperties)
{
    const int texts = Property("Quality", TEV2_PROPERTY_TEXTS);
    const int visible = Property("Visible", TEV2_PROPERTY_INT);
    const int offset = Property("Offset", TEV2_PROPERTY_VECTOR3);
    EXPECT_EQ(tev2_clip_property_count(clip), 5);
    EXPECT_EQ(Property("Visible", TEV2_PROPERTY_FLOAT), -1);
    EXPECT_EQ(Property("Visible", 5), -1);
    EXPECT_EQ(Property("Visible", TEV2_PROPERTY_INT, 0), -1);
    EXPECT_EQ(Property("Visible", TEV2_PROPERTY_INT, 3), -1);

    tev2_property_info info;
    EXPECT_EQ(tev2_clip_property_info(clip, 5, &info), TEV2_ERROR_ARGUMENT);
    ASSERT_EQ(tev2_clip_property_info(clip, texts, &info), TEV2_OK);
    EXPECT_STREQ(info.name, "Quality");
    EXPECT_EQ(info.type, TEV2_PROPERTY_TEXTS);
    EXPECT_EQ(info.of_camera, 0);
    EXPECT_EQ(info.owner, 1);
    EXPECT_EQ(info.text_count, 2);
    EXPECT_STREQ(tev2_clip_property_text(clip, texts, 1), "High");
    EXPECT_EQ(tev2_clip_property_text(clip, texts, 2), nullptr);
    EXPECT_EQ(tev2_clip_property_text(clip, visible, 0), nullptr);

    tev2_player_set_time(player, 0.75f);
    EXPECT_EQ(tev2_player_int(player, visible), -7);
    EXPECT_EQ(tev2_player_int(player, offset), 0);
    float values[4] = {9, 9, 9, 9};
    EXPECT_EQ(tev2_player_floats(player, offset, values), 3);
    EXPECT_EQ(values[2], 3.0f);
    EXPECT_EQ(tev2_player_floats(player, Property("Tint", TEV2_PROPERTY_VECTOR4), values), 4);
    EXPECT_EQ(values[1], 0.5f);
    EXPECT_EQ(tev2_player_floats(player, Property("Blend", TEV2_PROPERTY_FLOAT), values), 1);
    EXPECT_EQ(values[0], 0.25f);
    for (const int none : {-1, 5, visible, texts, std::numeric_limits<int>::max()})
        EXPECT_EQ(tev2_player_floats(player, none, values), 0) << none;
}

TEST_F(CInterface, ReportsEvents)
{
    const int visible = Property("Visible", TEV2_PROPERTY_INT);
    std::vector<tev2_event> events;
    tev2_player_advance(player, 0.75);
    EXPECT_EQ(tev2_player_events(player, visible, Collect, &events), 1u);
    EXPECT_EQ(tev2_player_camera_cuts(player, Collect, &events), 1u);
    EXPECT_EQ(tev2_player_events(player, Property("Tint", TEV2_PROPERTY_VECTOR4), Collect, &events), 0u);
    EXPECT_EQ(tev2_player_events(player, -1, Collect, &events), 0u);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].time, 0.5f);
    EXPECT_EQ(events[0].type, TEV2_PROPERTY_INT);
    EXPECT_EQ(events[0].before.i, 1);
    EXPECT_EQ(events[0].after.i, -7);
    EXPECT_EQ(events[1].after.i, -1);

    tev2_player_set_repeat(player, TEV2_REPEAT_LOOP);
    tev2_player_advance(player, 10.0);
    EXPECT_GT(tev2_player_events(player, visible, Collect, &events), 10u);
    EXPECT_EQ(tev2_player_events(player, visible, Stop, nullptr), 1u);
}

TEST_F(CInterface, MixesPoses)
{
    tev2_transform start[3], middle[3], pose[3], delta[3];
    EXPECT_EQ(tev2_player_sample(player, start, 2), TEV2_ERROR_ARGUMENT);
    ASSERT_EQ(tev2_player_sample(player, start, 3), TEV2_OK);
    tev2_player_set_time(player, 0.5f);
    ASSERT_EQ(tev2_player_sample(player, middle, 3), TEV2_OK);
    EXPECT_EQ(middle[2].translation[0], 1.0f);
    EXPECT_EQ(middle[2].scale[1], 1.0f);
    EXPECT_NEAR(middle[2].rotation[2], 0.6f, 1e-6f);

    float mask[3] = {0.0f, 0.0f, 0.0f};
    EXPECT_EQ(tev2_clip_mask_below(clip, 3, 1.0f, mask, 3), TEV2_ERROR_ARGUMENT);
    EXPECT_EQ(tev2_clip_mask_below(clip, 1, 0.5f, mask, 3), TEV2_OK);
    std::memcpy(pose, start, sizeof pose);
    tev2_pose_blend(pose, middle, 3, 0.5f, mask);
    EXPECT_EQ(pose[0].translation[0], 0.0f);
    EXPECT_EQ(pose[1].translation[0], 0.25f);
    tev2_pose_blend(pose, middle, 2, 1.0f, nullptr);
    EXPECT_EQ(pose[1].translation[0], 1.0f);
    EXPECT_EQ(pose[2].translation[0], 0.25f);

    tev2_pose_difference(middle, start, delta, 3);
    std::memcpy(pose, start, sizeof pose);
    tev2_pose_add(pose, delta, 3, 0.5f, nullptr);
    EXPECT_EQ(pose[0].translation[0], 0.5f);

    tev2_matrix world[3];
    tev2_clip_to_world(clip, middle, world, 3);
    EXPECT_EQ(std::memcmp(world, tev2_player_world(player), sizeof world), 0);
}

TEST_F(CInterface, FormsPalettes)
{
    tev2_player_set_time(player, 1.0f); // nothing is turned, each node is at (0, 1, -2) of its parent
    const tev2_matrix* const world = tev2_player_world(player);
    const std::int32_t bones[] = {2, -1, 3, 1};
    tev2_matrix bind[4] = {}, palette[4];
    for (tev2_matrix& matrix : bind)
        matrix.m[0][0] = matrix.m[1][1] = matrix.m[2][2] = 2.0f;
    bind[0].m[1][3] = -5.0f;
    tev2_form_palette(world, 3, bones, bind, 4, palette);
    EXPECT_EQ(palette[0].m[0][0], 2.0f);
    EXPECT_EQ(palette[0].m[1][3], -2.0f);
    EXPECT_EQ(palette[0].m[2][3], -6.0f);
    for (const int none : {1, 2})
    {
        EXPECT_EQ(palette[none].m[1][1], 1.0f);
        EXPECT_EQ(palette[none].m[1][3], 0.0f);
    }
    EXPECT_EQ(palette[3].m[2][3], -4.0f);
    tev2_form_palette(world, 3, bones, nullptr, 1, palette);
    EXPECT_EQ(std::memcmp(&palette[0], &world[2], sizeof palette[0]), 0);
}

TEST_F(CInterface, TakesRootMotionOut)
{
    tev2_root_motion* motion = nullptr;
    EXPECT_EQ(tev2_root_motion_create(clip, 3, &motion), TEV2_ERROR_ARGUMENT);
    EXPECT_EQ(motion, nullptr);
    ASSERT_EQ(tev2_root_motion_create(clip, 0, &motion), TEV2_OK);
    tev2_transform pose[3], step;
    tev2_player_set_repeat(player, TEV2_REPEAT_LOOP);
    tev2_player_advance(player, 3.0); // three times from (0, 1, 0) to (0, 1, -2)
    ASSERT_EQ(tev2_player_sample(player, pose, 3), TEV2_OK);
    EXPECT_EQ(tev2_root_motion_movement(motion, player, pose, 0, &step), TEV2_ERROR_ARGUMENT);
    ASSERT_EQ(tev2_root_motion_movement(motion, player, pose, 3, &step), TEV2_OK);
    EXPECT_NEAR(step.translation[2], -6.0f, 1e-5f);
    EXPECT_NEAR(step.translation[0], 0.0f, 1e-5f);

    tev2_player_set_time(player, 0.5f);
    ASSERT_EQ(tev2_player_sample(player, pose, 3), TEV2_OK);
    EXPECT_EQ(tev2_root_motion_restart(motion, pose, 3), TEV2_OK);
    EXPECT_EQ(tev2_root_motion_restart(motion, pose, 0), TEV2_ERROR_ARGUMENT);
    ASSERT_EQ(tev2_root_motion_movement(motion, player, pose, 3, &step), TEV2_OK);
    EXPECT_NEAR(step.translation[2], 0.0f, 1e-5f);
    EXPECT_EQ(pose[0].translation[0], 1.0f);
    EXPECT_EQ(tev2_root_motion_hold(motion, pose, 3), TEV2_OK);
    EXPECT_EQ(tev2_root_motion_hold(motion, pose, 0), TEV2_ERROR_ARGUMENT);
    EXPECT_EQ(pose[0].translation[0], 0.0f);
    tev2_root_motion_destroy(motion);
    tev2_root_motion_destroy(nullptr);
}

} // namespace
