// The host's C functions, as a foreign language calls them. What a script sees of a scene and of an export is tested
// through the Python wrapper, which uses all of them.

#include "host/c_api/mobu_host.h"

#include "tests/support/scratch_folder.h"

#include <mobu_host/scene.h>

#include <array>
#include <dlfcn.h>
#include <limits>
#include <string>

namespace
{

constexpr const char* kRobot = TV2_SAMPLES_DIR "/robot_14_takes.glb";

class MobuHostTest : public testing::Test
{
protected:
    MobuHostTest() { EXPECT_EQ(Open(kRobot), 1) << Told(); }
    ~MobuHostTest() override { mobu_host_new_scene(); }

    int Open(const char* path) { return mobu_host_open_scene(path, text_.data(), text_.size()); }
    int TakeName(int take) { return mobu_host_take_name(take, text_.data(), text_.size()); }
    int ModelName(int model) { return mobu_host_model_name(model, text_.data(), text_.size()); }
    int Export(const mobu_host_export_call& call, mobu_host_progress progress = nullptr, void* user = nullptr)
    {
        return mobu_host_export(&call, progress, user, text_.data(), text_.size());
    }
    std::string Told() const { return text_.data(); }

    std::array<char, 256> text_{};
};

TEST_F(MobuHostTest, ItsSceneIsTheOneOfTheSdk)
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    ASSERT_EQ(mobu_host_take_count(), 14);
    for (int take = 0; take < takes.GetCount(); ++take)
    {
        EXPECT_EQ(TakeName(take), 1);
        EXPECT_EQ(Told(), static_cast<const char*>(takes[take]->Name));
        EXPECT_EQ(mobu_host_choose_take(take), 1);
        EXPECT_EQ(mobu_host_current_take(), take);
        EXPECT_EQ(static_cast<FBTake*>(FBSystem().CurrentTake), takes[take]);
    }
    FBModel* const model = mobu_host::ModelsInPreOrder().back();
    EXPECT_EQ(mobu_host_select_model(model->LongName), 1);
    EXPECT_TRUE(model->Selected);
    mobu_host_clear_selection();
    EXPECT_FALSE(model->Selected);
    mobu_host::ClearTakes();
    EXPECT_EQ(mobu_host_current_take(), -1);
}

TEST_F(MobuHostTest, WhatIsNotThereIsAFailureThatChangesNothing)
{
    ASSERT_EQ(mobu_host_choose_take(3), 1);
    const int models = mobu_host_model_count();
    text_[0] = '\0';
    double start = -1.0, stop = -1.0;
    mobu_host_model model{};
    for (const int index : {-1, std::numeric_limits<int>::max(), 14})
    {
        EXPECT_EQ(mobu_host_choose_take(index), 0) << index;
        EXPECT_EQ(TakeName(index), 0) << index;
        EXPECT_EQ(mobu_host_take_span(index, &start, &stop), 0) << index;
        EXPECT_EQ(mobu_host_scene_file(index, text_.data(), text_.size()), 0) << index;
        const int no_model = index == 14 ? models : index;
        EXPECT_EQ(mobu_host_model_at(no_model, &model), 0) << no_model;
        EXPECT_EQ(ModelName(no_model), 0) << no_model;
    }
    EXPECT_EQ(mobu_host_take_span(0, nullptr, &stop), 0);
    EXPECT_EQ(mobu_host_model_at(0, nullptr), 0);
    EXPECT_EQ(mobu_host_select_model("nobody"), 0);
    EXPECT_EQ(mobu_host_select_model(nullptr), 0);
    EXPECT_EQ(mobu_host_current_take(), 3);
    EXPECT_EQ(Told(), "");
    mobu_host_new_scene();
    EXPECT_EQ(mobu_host_scene_file_count(), 0);
    EXPECT_EQ(ModelName(0), 0) << "not counted yet";
}

TEST_F(MobuHostTest, TextIsCutToTheBufferAndTerminated)
{
    TakeName(0);
    std::array<char, 5> small{'x', 'x', 'x', 'x', 'x'};
    EXPECT_EQ(mobu_host_take_name(0, small.data(), 4), 1);
    EXPECT_EQ(std::string(small.data()), Told().substr(0, 3));
    EXPECT_EQ(small[4], 'x');
    EXPECT_EQ(mobu_host_take_name(0, small.data(), 0), 1);
    EXPECT_EQ(small[0], text_[0]);
    EXPECT_EQ(mobu_host_take_name(0, nullptr, 5), 1);
}

TEST_F(MobuHostTest, ASceneThatCannotBeOpenedLeavesTheOldOne)
{
    for (const char* path : {"gone.bvh", "", static_cast<const char*>(nullptr)})
    {
        text_.fill('\0');
        EXPECT_EQ(Open(path), 0);
        EXPECT_NE(Told(), "");
        EXPECT_EQ(Told().find('\n'), std::string::npos) << Told();
        EXPECT_EQ(mobu_host_open_scene(path, nullptr, 0), 0);
    }
    EXPECT_EQ(mobu_host_take_count(), 14);
}

// The plug-in may be loaded already: then it is used as it is.
TEST_F(MobuHostTest, ExportsAtAnyRateAndStopsWhenAsked)
{
    void* const loaded_before = dlopen(TV2_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(loaded_before, nullptr);
    const tv2_tests::ScratchFolder folder;
    FBConstraint* const constraint = mobu_host::AddConstraint("Floor", true);
    mobu_host_export_call call{};
    call.size = sizeof call;
    call.plugin = TV2_PLUGIN;
    call.whole_take = 1;
    call.disable_constraints = 1;
    const auto stop = [](int, double, void* asked) { return ++*static_cast<int*>(asked), 0; };
    for (const double rate : {30.0, 29.97})
    {
        SCOPED_TRACE(rate);
        const std::string path = folder.Path(std::to_string(rate) + ".tv2");
        call.path = path.c_str();
        call.rate = rate;
        EXPECT_EQ(mobu_host_choose_take(3), 1);
        int asked = 0;
        EXPECT_EQ(Export(call, stop, &asked), -1) << Told();
        EXPECT_EQ(asked, 1);
        EXPECT_FALSE(std::filesystem::exists(path));
        EXPECT_TRUE(constraint->Active);
        EXPECT_EQ(mobu_host_current_take(), 3);
        EXPECT_EQ(Export(call), 1) << Told();
        EXPECT_TRUE(std::filesystem::exists(path));
    }
    call.plugin = "gone.so";
    EXPECT_EQ(Export(call), 0);
    EXPECT_NE(Told().find("gone.so"), std::string::npos) << Told();
    call.size = 8;
    EXPECT_EQ(Export(call), 0);
    dlclose(loaded_before);
}

} // namespace
