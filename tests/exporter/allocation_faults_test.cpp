#include "exporter/base/script_entry.h"
#include "exporter/export_tool.h"
#include "mobu_host/plugin.h"
#include "mobu_host/ui.h"
#include "tests/exporter/export_fixture.h"
#include "tests/support/allocation_watch.h"
#include "tests/support/dialog_regions.h"

#include <new>

namespace tev2_exporter
{
namespace
{

// Memory that runs out at each allocation of an export, those of the host included: nothing leaks (a sanitizer sees
// to that), the caller gets the exception or its code, and the next export is as good as any.
class AllocationFaults : public ExportTest
{
protected:
    void SetUp() override
    {
        ExportTest::SetUp();
        take_ = &OneTake(1.0);
        FBModel* hips = mobu_host::AddModel("Hips");
        FBModel* spine = mobu_host::AddModel("A name that is too long to be kept in place", hips);
        mobu_host::AddCamera("Camera", hips);
        mobu_host::AddCameraSwitcher();
        mobu_host::AddUserProperty(*spine, "Weight", kFBPT_double, true);
        mobu_host::AnimateTransform(*hips, *take_,
                                    [](double seconds) {
                                        return mobu_host::LocalTransform{FBVector3d(100 * seconds, 0, 0), {}};
                                    });
        constraint_ = mobu_host::AddConstraint("Held", true, spine);
        options_.DisableConstraints = 1;
        options_.RemoveNamespaceFromNames = 1;
        ASSERT_EQ(Run(), 1u);
        complete_ = Bytes("run.tv2");
        ASSERT_GT(complete_.size(), 1000u);
    }

    /// What must be so after an export that memory ran out in.
    void ExpectSound()
    {
        constraint_->Active = true; // an export that failed leaves constraints and take as they stand
        FBSystem system;
        system.CurrentTake = take_;
        EXPECT_EQ(Run(), 1u);
        EXPECT_EQ(Bytes("run.tv2"), complete_);
        EXPECT_TRUE(constraint_->Active);
    }

    /// Calls `run` again and again, with memory running out one allocation later each time, until it does not run out
    /// any more. `run` returns whether the export completed.
    template <typename Run>
    void FailEachAllocation(long fewest, int sound_every, Run&& run)
    {
        bool struck = true;
        long before = 0;
        int survived = 0;
        for (; struck && !HasFailure(); ++before)
        {
            bool completed = false;
            {
                const tv2_tests::AllocationFailure failure(before);
                completed = run();
                struck = failure.Struck();
            }
            EXPECT_TRUE(struck || completed) << "allocation " << before;
            survived += struck && completed ? 1 : 0;
            if (before % sound_every == 0)
                ExpectSound();
        }
        EXPECT_GT(before, fewest);
        EXPECT_EQ(survived, 1); // the large buffer of the file, which the stream does without
    }

    FBTake* take_ = nullptr;
    FBConstraint* constraint_ = nullptr;
    std::vector<std::uint8_t> complete_;
};

TEST_F(AllocationFaults, AreThrownByTheDriver)
{
    const std::string path = (folder_ / "run.tv2").string();
    FailEachAllocation(50, 1,
                       [&]
                       {
                           try
                           {
                               ExportContext context;
                               EXPECT_EQ(ExportScene(context, options_, path.c_str()), 1u);
                               return true;
                           }
                           catch (const std::bad_alloc&)
                           {
                               return false;
                           }
                       });
}

TEST_F(AllocationFaults, GiveTheScriptNoSuccess)
{
    std::string error;
    const auto plugin = mobu_host::Plugin::Load(TV2_PLUGIN, error);
    ASSERT_TRUE(plugin) << error;
    const auto export_tv2 = plugin->Symbol<ScriptEntry>(kScriptEntryName);
    ASSERT_NE(export_tv2, nullptr);
    const std::string path = (folder_ / "script.tv2").string();
    FailEachAllocation(
        50, 16,
        [&] { return export_tv2(path.c_str(), 0, 30, 4, true, false, true, true, true, false) == 1; });
}

TEST_F(AllocationFaults, LetThePlugInSayThatItIsNotReady)
{
    int not_ready = 0;
    bool struck = true;
    for (long before = 0; struck && !HasFailure(); ++before)
    {
        std::string error;
        std::unique_ptr<mobu_host::Plugin> plugin;
        {
            const tv2_tests::AllocationFailure failure(before);
            try
            {
                plugin = mobu_host::Plugin::Load(TV2_PLUGIN, error);
            }
            catch (const std::bad_alloc&)
            {
                error = "the host itself had no memory";
            }
            struck = failure.Struck();
        }
        EXPECT_EQ(plugin == nullptr, struck) << error;
        not_ready += error.find("LibReady failed") != std::string::npos ? 1 : 0;
        plugin.reset();
        EXPECT_TRUE(mobu_host::Plugin::Load(TV2_PLUGIN, error)) << error;
    }
    EXPECT_GT(not_ready, 0);
}

TEST_F(AllocationFaults, GiveTheMenuFalse)
{
    Tev2MotionBuilderExportTool tool;
    const std::string path = (folder_ / "menu.tv2").string();
    mobu_host::SetPopupPlayer([](FBPopup& popup) { mobu_host::Click(popup, tv2_tests::regions::kExport); });
    FailEachAllocation(100, 16, [&] { return tool.Execute(path.c_str()); });
    mobu_host::SetPopupPlayer({});
}

} // namespace
} // namespace tev2_exporter
