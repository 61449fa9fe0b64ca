#include "tests/exporter/export_fixture.h"

#include <limits>
#if !defined(_WIN32)
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#endif

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;
using platform::TestPlatform;

using ExportDriver = ExportTest;
using Names = std::vector<std::string>;

void MoveAlongX(FBModel& model, FBTake& take, double centimetres_a_second)
{
    mobu_host::AnimateTransform(
        model, take,
        [=](double seconds) {
            return mobu_host::LocalTransform{FBVector3d(centimetres_a_second * seconds, 0, 0), {}};
        });
}

TEST_F(ExportDriver, WritesTitleLinesAndWindow)
{
    OneTake(1.0);
    mobu_host::SetSceneFilePath("C:\\scenes\\walk.fbx");
    const auto scene = Export();
    ASSERT_TRUE(scene);
    EXPECT_EQ(Text(scene->information.creatorText), "MotionBuilder v17.00  Tev2 Exporter v1.14");
    EXPECT_EQ(Text(scene->information.infoText),
              "USERNAME:\ttester\r\nEXPORTED:\t05/03/2024,09:07:02\r\nTEV_NAME:\t" +
                  (folder_ / "run.tv2").string() + "\r\nFBX_FILE:\tC:\\scenes\\walk.fbx\r\n");
    EXPECT_EQ(scene->environment.timeRange.minimum, 0.0f);
    EXPECT_EQ(scene->environment.timeRange.maximum, 1.0f);
}

TEST_F(ExportDriver, TellsUnknownUsersAndUnsavedScenes)
{
    OneTake(1.0);
    TestPlatform::Get().user.reset();
    auto scene = Export();
    ASSERT_TRUE(scene);
    EXPECT_EQ(Text(scene->information.infoText).find("USERNAME:\tUnknown User\r\n"), 0u);
    EXPECT_NE(Text(scene->information.infoText).find("FBX_FILE:\tUnsaved FBX\r\n"), std::string::npos);

    // Only a name that is absent is replaced, not one that is empty.
    mobu_host::SceneBehaviour().empty_path_when_unsaved = true;
    scene = Export();
    mobu_host::SceneBehaviour().empty_path_when_unsaved = false;
    EXPECT_NE(Text(scene->information.infoText).find("FBX_FILE:\t\r\n"), std::string::npos);
}

TEST_F(ExportDriver, KeyReductionCanBeTurnedOff)
{
    OneTake(1.0);
    mobu_host::AddModel("Rock"); // does not move
    for (const bool reduce : {false, true, false, true})
    {
        SetKeyReduction(reduce);
        const auto scene = Export();
        ASSERT_TRUE(scene);
        for (const TEV2_MATRIX_NODE& node : scene->matrixHierarchy.nodes)
        {
            EXPECT_EQ(Translation(node).m_times.size(), reduce ? 1u : 5u);
            EXPECT_EQ(Rotation(node).m_times.size(), reduce ? 1u : 5u);
        }
    }
}

TEST_F(ExportDriver, WritesOneFileForEachTake)
{
    mobu_host::ClearTakes();
    FBTake* walk = mobu_host::AddTake("Walk fast", 0.0, 1.0);
    FBTake* run = mobu_host::AddTake("Run", 1.0, 3.0);
    FBModel* hips = mobu_host::AddModel("Hips");
    MoveAlongX(*hips, *walk, 100.0);
    MoveAlongX(*hips, *run, 200.0);
    FBSystem().CurrentTake = walk;
    options_.AllTakes = 1;
    ASSERT_EQ(Run(), 1u);
    EXPECT_EQ(scratch_.Names(), (Names{"run_Run.tv2", "run_Walk_fast.tv2"}));

    // A take exported with others, and after them, is the take exported alone but for the name of its file.
    const auto together = Load("run_Run.tv2");
    options_.AllTakes = 0;
    FBSystem().CurrentTake = run;
    const auto alone = Export();
    ASSERT_TRUE(together && alone);
    EXPECT_EQ(together->environment.timeRange.minimum, 1.0f);
    ASSERT_EQ(together->matrixHierarchy.nodes.size(), 2u);
    EXPECT_TRUE(together->matrixHierarchy.nodes[1].translation->IsEqual(
        *alone->matrixHierarchy.nodes[1].translation));
    EXPECT_EQ(Translation(together->matrixHierarchy.nodes[1]).m_values.front().x, 2.0f);
}

TEST_F(ExportDriver, AsksBeforeItWritesOverReadOnlyFiles)
{
    mobu_host::ClearTakes();
    mobu_host::AddTake("A", 0.0, 1.0);
    mobu_host::AddTake("B", 0.0, 1.0);
    options_.AllTakes = 1;
    const std::string kept = (folder_ / "run_A.tv2").string();
    for (const bool answer : {false, true})
    {
        TestPlatform& machine = TestPlatform::Get();
        machine = {};
        machine.answer = answer;
        machine.read_only = {kept};
        EXPECT_EQ(Run(), 1u);
        ASSERT_EQ(machine.questions.size(), 1u);
        EXPECT_EQ(machine.questions[0].caption, u"Read Only File!");
        EXPECT_EQ(machine.questions[0].text, Widen(kept) +
                                                 u" already exists and has read-only file properties!  "
                                                 u"Are you sure that you wish to over-write "
                                                 u"this file?");
        EXPECT_EQ(machine.read_only.contains(kept), !answer);
        EXPECT_EQ(std::filesystem::exists(folder_ / "run_A.tv2"), answer);
        EXPECT_TRUE(std::filesystem::exists(folder_ / "run_B.tv2"));
    }
}

TEST_F(ExportDriver, PutsTakeTimeAndConstraintsBack)
{
    mobu_host::ClearTakes();
    FBTake* first = mobu_host::AddTake("A", 0.0, 1.0);
    mobu_host::AddTake("B", 0.0, 2.0);
    FBModel* held = mobu_host::AddModel("Held");
    const auto effect = [](double) { return mobu_host::LocalTransform{FBVector3d(500, 0, 0), {}}; };
    FBConstraint* active = mobu_host::AddConstraint("Active", true, held, effect);
    FBConstraint* inactive = mobu_host::AddConstraint("Inactive", false);
    mobu_host::AddForeignConstraint("Foreign", true);
    FBSystem system;
    system.CurrentTake = first;
    FBTime before;
    before.SetSecondDouble(0.123456789012);
    FBPlayerControl().Goto(before);

    options_.AllTakes = 1;
    options_.DisableConstraints = 1;
    ASSERT_EQ(Run(), 1u);
    EXPECT_EQ(static_cast<FBTake*>(system.CurrentTake), first);
    const FBTime after = system.LocalTime;
    FBTime single_precision;
    single_precision.SetSecondDouble(static_cast<double>(0.123456789012f));
    EXPECT_EQ(after.Get(), single_precision.Get());
    EXPECT_EQ(mobu_host::EvaluatedTime().Get(), single_precision.Get());
    EXPECT_TRUE(active->Active);
    EXPECT_FALSE(inactive->Active);

    // Meanwhile the constraint did not act; left alone, it does.
    EXPECT_EQ(Translation(Load("run_A.tv2")->matrixHierarchy.nodes[1]).m_values.front().x, 0.0f);
    options_.DisableConstraints = 0;
    ASSERT_EQ(Run(), 1u);
    EXPECT_EQ(Translation(Load("run_A.tv2")->matrixHierarchy.nodes[1]).m_values.front().x, 5.0f);
}

TEST_F(ExportDriver, ExportsTheTopmostSelectedModels)
{
    OneTake(1.0);
    FBModel* hips = mobu_host::AddModel("Hips");
    FBModel* spine = mobu_host::AddModel("Spine", hips);
    FBModel* prop = mobu_host::AddModel("Prop");
    mobu_host::AddModel("Unselected");
    const auto names = [&]
    {
        Names found;
        const auto scene = Export();
        for (const TEV2_MATRIX_NODE& node : scene->matrixHierarchy.nodes)
            found.push_back(Text(node.name) + " " + std::to_string(node.parentIndex));
        return found;
    };
    EXPECT_EQ(names(), (Names{"Scene -1", "Hips 0", "Spine 1", "Prop 0", "Unselected 0"}));
    prop->Selected = true;
    hips->Selected = true;
    spine->Selected = true; // exported through its parent, not once more
    EXPECT_EQ(names(), (Names{"Exporter Inserted Root -1", "Hips 0", "Spine 1", "Prop 0"}));
    FBModel* root = FBSystem().SceneRootModel;
    root->Selected = true;
    EXPECT_EQ(names().front(), "Scene -1");
}

TEST_F(ExportDriver, FinishesTheRunWhenFilesCannotBeWritten)
{
    OneTake(1.0);
    ExportContext context;
    EXPECT_EQ(ExportScene(context, options_, (folder_ / "missing" / "run.tv2").string().c_str()), 1u);
    EXPECT_EQ(ExportScene(context, options_, "/dev/full"), 1u); // no "." in it: named after the take
    EXPECT_TRUE(scratch_.Names().empty());
}

#if !defined(_WIN32)
TEST_F(ExportDriver, KeepsTheOldFileWhenTheNewOneCannotBeWritten)
{
    OneTake(1.0);
    ASSERT_EQ(Run(), 1u);
    const std::vector<std::uint8_t> old = Bytes("run.tv2");
    mobu_host::AddModel("Hips");
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t bytes : {rlim_t{0}, rlim_t{100}, rlim_t{old.size()}})
    {
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_EQ(Run(), 1u);
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(Bytes("run.tv2"), old);
        EXPECT_EQ(scratch_.Names(), Names{"run.tv2"});
    }
    std::signal(SIGXFSZ, handler);
    ASSERT_EQ(Run(), 1u);
    EXPECT_GT(Bytes("run.tv2").size(), old.size());
}

TEST_F(ExportDriver, DoesNotWaitForAPipe)
{
    OneTake(1.0);
    ASSERT_EQ(mkfifo((folder_ / "run.tv2").c_str(), 0600), 0);
    EXPECT_EQ(Run(), 1u);
    EXPECT_TRUE(std::filesystem::is_fifo(folder_ / "run.tv2"));
}
#endif

TEST_F(ExportDriver, RefusesWhatCannotBeSampledAndChangesNothing)
{
    mobu_host::ClearTakes();
    FBTake* first = mobu_host::AddTake("A", 0.0, 1.0);
    mobu_host::AddTake("Long", 0.0, 1000.0);
    FBConstraint* constraint = mobu_host::AddConstraint("Active", true);
    for (int i = 0; i < 999; ++i)
        mobu_host::AddModel("Model");
    FBSystem().CurrentTake = first;
    options_.DisableConstraints = 1;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    const struct
    {
        const char* what;
        float rate;
        std::uint32_t all_takes;
        unsigned result;
    } cases[] = {
        {"the step is lost beside 1 s", 1e9f, 0, 0},
        {"it is lost beside the 1000 s of another take", 40000.0f, 1, 0},
        {"NaN", nan, 0, 0},
        {"endless", inf, 0, 0},
        {"backward", -25.0f, 0, 0},
        // 1000 nodes x 36 bytes x 60,001 samples are more than 2^31 bytes, x 59,001 are fewer; of 1 s both are.
        {"too many samples for a file", 60.0f, 1, 0},
        {"the same in a short take", 60.0f, 0, 1},
        {"an infinite step", 0.0f, 0, 1}};
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.what);
        options_.SamplingRate = item.rate;
        options_.AllTakes = item.all_takes;
        int changes = 0;
        mobu_host::ObserverCalls calls;
        calls.on_goto = [&](FBTime, FBTake*) { ++changes; };
        const mobu_host::SceneObserver observer(std::move(calls));
        EXPECT_EQ(Run(), item.result);
        EXPECT_EQ(changes == 0, item.result == 0);
        EXPECT_EQ(scratch_.Names().empty(), item.result == 0);
        EXPECT_EQ(static_cast<FBTake*>(FBSystem().CurrentTake), first);
        EXPECT_TRUE(constraint->Active);
        std::filesystem::remove(folder_ / "run.tv2");
    }
}

TEST_F(ExportDriver, SurvivesACallerWithoutPathOrTake)
{
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder_);
    ExportContext context;
    OneTake(1.0);
    EXPECT_EQ(ExportScene(context, options_, nullptr), 1u); // like an empty path: named after the take
    mobu_host::ClearTakes();
    EXPECT_EQ(ExportScene(context, options_, "never.tv2"), 1u);
    EXPECT_EQ(FillOptionsFromScript(context, {}).CustomEnd, 0.0f);
    std::filesystem::current_path(before);
    EXPECT_EQ(scratch_.Names(), Names{"Take_001"});
}

TEST_F(ExportDriver, TakesOptionsFromTheScriptAsTheyAre)
{
    OneTake(2.0);
    mobu_host::SetTransportRate(25.0);
    ExportContext context;
    const ExportOptions options =
        FillOptionsFromScript(context, {"", 0.0, false, 50, -25, {false, true, false, true, true, true}});
    ExpectOptions(options, {.CustomStart = 2.0f,
                            .CustomEnd = -1.0f,
                            .FilenameSpacesToUnderscores = 0,
                            .RemoveNamespaceFromNames = 0,
                            .DisableConstraints = 1,
                            .UseCustomRange = 1,
                            .AllTakes = 1});
}

} // namespace
} // namespace tev2_exporter
