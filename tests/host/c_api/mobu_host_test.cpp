// The host's C functions, as a foreign language calls them.

#include "host/c_api/mobu_host.h"

#include <mobu_host/scene.h>

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace
{

constexpr const char* kRobot = TV2_SAMPLES_DIR "/robot_14_takes.glb";

class MobuHostTest : public testing::Test
{
protected:
    MobuHostTest() { EXPECT_EQ(mobu_host_open_scene(kRobot, text_.data(), text_.size()), 1) << text_.data(); }
    ~MobuHostTest() override { mobu_host_new_scene(); }

    std::string TakeName(int take)
    {
        EXPECT_EQ(mobu_host_take_name(take, text_.data(), text_.size()), 1) << take;
        return text_.data();
    }

    std::array<char, 256> text_{};
};

TEST_F(MobuHostTest, ItsSceneIsTheOneOfTheSdk)
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    ASSERT_EQ(takes.GetCount(), 14);
    EXPECT_EQ(mobu_host_take_count(), 14);
    for (int take = 0; take < takes.GetCount(); ++take)
    {
        EXPECT_EQ(TakeName(take), static_cast<const char*>(takes[take]->Name));
        EXPECT_EQ(mobu_host_choose_take(take), 1);
        EXPECT_EQ(mobu_host_current_take(), take);
        EXPECT_EQ(static_cast<FBTake*>(FBSystem().CurrentTake), takes[take]);
    }
}

TEST_F(MobuHostTest, SelectsByLongNameUntilCleared)
{
    FBModel* const model = mobu_host::ModelsInPreOrder().back();
    EXPECT_EQ(mobu_host_select_model(model->LongName), 1);
    EXPECT_TRUE(model->Selected);
    mobu_host_clear_selection();
    EXPECT_FALSE(model->Selected);
    EXPECT_EQ(mobu_host_select_model("nobody"), 0);
    EXPECT_EQ(mobu_host_select_model(nullptr), 0);
}

TEST_F(MobuHostTest, NumbersOfNoTakeChangeNothing)
{
    EXPECT_EQ(mobu_host_choose_take(3), 1);
    const std::string before = text_.data();
    for (const int take : {-1, 14, 1 << 30})
    {
        EXPECT_EQ(mobu_host_choose_take(take), 0) << take;
        EXPECT_EQ(mobu_host_take_name(take, text_.data(), text_.size()), 0) << take;
    }
    EXPECT_EQ(mobu_host_current_take(), 3);
    EXPECT_EQ(text_.data(), before);
}

TEST_F(MobuHostTest, TextIsCutToTheBufferAndTerminated)
{
    const std::string name = TakeName(0);
    std::array<char, 5> small{'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(mobu_host_take_name(0, small.data(), 4), 1);
    EXPECT_EQ(std::string(small.data()), name.substr(0, 3));
    EXPECT_EQ(small[4], 'x');
    EXPECT_EQ(mobu_host_take_name(0, small.data(), 0), 1);
    EXPECT_EQ(small[0], name[0]);
    EXPECT_EQ(mobu_host_take_name(0, nullptr, 5), 1);
}

TEST_F(MobuHostTest, ASceneThatCannotBeOpenedLeavesTheOldOne)
{
    for (const char* path : {"gone.bvh", "", static_cast<const char*>(nullptr)})
    {
        text_.fill('\0');
        EXPECT_EQ(mobu_host_open_scene(path, text_.data(), text_.size()), 0);
        EXPECT_NE(text_[0], '\0');
        EXPECT_EQ(std::string(text_.data()).find('\n'), std::string::npos) << text_.data();
        EXPECT_EQ(mobu_host_open_scene(path, nullptr, 0), 0);
    }
    EXPECT_EQ(mobu_host_take_count(), 14);
}

TEST_F(MobuHostTest, ANewSceneHasOneTake)
{
    EXPECT_EQ(mobu_host_new_scene(), 1);
    EXPECT_EQ(mobu_host_take_count(), 1);
    EXPECT_EQ(TakeName(0), "Take 001");
    EXPECT_EQ(mobu_host_current_take(), 0);
    mobu_host::ClearTakes();
    EXPECT_EQ(mobu_host_current_take(), -1);
}

TEST_F(MobuHostTest, TellsWhatTheSceneLacksALineEach)
{
    EXPECT_EQ(mobu_host_open_scene(TV2_SAMPLES_DIR "/mocap_walk_cameras.dae", text_.data(), text_.size()), 1);
    EXPECT_NE(std::string(text_.data()).find("mirrored nodes"), std::string::npos) << text_.data();
    EXPECT_EQ(std::string(text_.data()).back(), '\n');
}

} // namespace
