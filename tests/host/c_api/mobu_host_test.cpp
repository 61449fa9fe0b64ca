// The host's C functions, as a foreign language calls them.

#include "host/c_api/mobu_host.h"

#include <mobu_host/scene.h>

#include "tests/support/scratch_folder.h"

#include <array>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace
{

constexpr const char* kRobot = TV2_SAMPLES_DIR "/robot_14_takes.glb";
constexpr const char* kCollada = TV2_SAMPLES_DIR "/mocap_walk_cameras.dae";

class MobuHostTest : public testing::Test
{
protected:
    MobuHostTest() { EXPECT_EQ(Open(kRobot), 1) << text_.data(); }
    ~MobuHostTest() override { mobu_host_new_scene(); }

    int Open(const char* path) { return mobu_host_open_scene(path, text_.data(), text_.size()); }
    int Export(mobu_host_progress progress = nullptr, void* user = nullptr)
    {
        return mobu_host_export(&call_, progress, user, text_.data(), text_.size());
    }
    std::string Told() const { return text_.data(); }

    std::string TakeName(int take)
    {
        EXPECT_EQ(mobu_host_take_name(take, text_.data(), text_.size()), 1) << take;
        return Told();
    }

    std::array<char, 256> text_{};
    mobu_host_export_call call_{};
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
        EXPECT_EQ(Open(path), 0);
        EXPECT_NE(Told(), "");
        EXPECT_EQ(Told().find('\n'), std::string::npos) << Told();
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
    EXPECT_EQ(mobu_host_scene_file_count(), 0);
    EXPECT_EQ(mobu_host_model_name(0, text_.data(), text_.size()), 0) << "not counted yet";
    mobu_host::ClearTakes();
    EXPECT_EQ(mobu_host_current_take(), -1);
}

TEST_F(MobuHostTest, ListsWhatTheSceneLacksALineEach)
{
    EXPECT_EQ(mobu_host_open_scene_at(kCollada, 48.0, text_.data(), text_.size()), 1);
    EXPECT_NE(Told().find("mirrored"), std::string::npos) << Told();
    EXPECT_TRUE(Told().ends_with('\n'));
    EXPECT_EQ(mobu_host_transport_rate(), 48.0);
}

TEST_F(MobuHostTest, SaysWhatIsInTheScene)
{
    ASSERT_GE(mobu_host_scene_file_count(), 1);
    EXPECT_EQ(mobu_host_scene_file(0, text_.data(), text_.size()), 1);
    EXPECT_STREQ(text_.data(), kRobot);
    EXPECT_EQ(mobu_host_scene_file(99, text_.data(), text_.size()), 0);

    double start = -1.0, stop = -1.0;
    ASSERT_EQ(mobu_host_take_span(2, &start, &stop), 1);
    const FBTimeSpan span = mobu_host::Scene().Takes[2]->LocalTimeSpan;
    EXPECT_EQ(start, span.GetStart().GetSecondDouble());
    EXPECT_EQ(stop, span.GetStop().GetSecondDouble());
    EXPECT_EQ(mobu_host_take_span(14, &start, &stop), 0);

    const std::vector<FBModel*> models = mobu_host::ModelsInPreOrder();
    models[3]->Selected = true;
    ASSERT_EQ(mobu_host_model_count(), static_cast<int>(models.size()));
    for (int i = 0; i < static_cast<int>(models.size()); ++i)
    {
        FBModel* const model = models[static_cast<std::size_t>(i)];
        mobu_host_model found{};
        ASSERT_EQ(mobu_host_model_at(i, &found), 1);
        FBModel* const parent = found.parent < 0 ? nullptr : models[static_cast<std::size_t>(found.parent)];
        EXPECT_EQ(parent, static_cast<FBModel*>(model->Parent)) << i;
        EXPECT_EQ(found.selected, i == 3 ? 1 : 0);
        EXPECT_EQ(found.camera, 0);
        EXPECT_EQ(mobu_host_model_name(i, text_.data(), text_.size()), 1);
        EXPECT_STREQ(text_.data(), model->LongName);
    }
    mobu_host_model none{};
    EXPECT_EQ(mobu_host_model_at(-1, &none), 0);
    EXPECT_EQ(mobu_host_model_at(static_cast<int>(models.size()), &none), 0);
}

// The plug-in may be loaded already: then it is used as it is.
TEST_F(MobuHostTest, ExportsAtAnyRateAndStopsWhenAsked)
{
    void* const loaded_before = dlopen(TV2_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(loaded_before, nullptr);
    const tv2_tests::ScratchFolder folder;
    FBConstraint* const constraint = mobu_host::AddConstraint("Floor", true);
    call_.size = sizeof call_;
    call_.plugin = TV2_PLUGIN;
    call_.whole_take = 1;
    call_.disable_constraints = 1;
    const auto stop = [](int, double, void* asked) { return ++*static_cast<int*>(asked), 0; };
    for (const double rate : {30.0, 29.97})
    {
        SCOPED_TRACE(rate);
        const std::string name = std::to_string(rate) + ".tv2";
        const std::string path = folder.Path(name);
        call_.path = path.c_str();
        call_.rate = rate;
        EXPECT_EQ(mobu_host_choose_take(3), 1);
        int asked = 0;
        EXPECT_EQ(Export(stop, &asked), -1) << Told();
        EXPECT_EQ(asked, 1);
        EXPECT_FALSE(folder.Has(name));
        EXPECT_TRUE(constraint->Active);
        EXPECT_EQ(mobu_host_current_take(), 3);
        EXPECT_EQ(Export(), 1) << Told();
        EXPECT_TRUE(folder.Has(name));
    }
    call_.plugin = "gone.so";
    EXPECT_EQ(Export(), 0);
    EXPECT_NE(Told().find("gone.so"), std::string::npos) << Told();
    call_.size = 8;
    EXPECT_EQ(Export(), 0);
    dlclose(loaded_before);
}

} // namespace
