#include <gtest/gtest.h>

#include "mobu_host/plugin.h"
#include "mobu_host/scene.h"
#include "mobu_host/ui.h"

namespace mobu_host
{
namespace
{

#if defined(_WIN32)
constexpr const char* kNotThere = "not";
#else
constexpr const char* kNotThere = "No such file";
#endif

class PluginTest : public testing::Test
{
protected:
    PluginTest()
    {
        NewScene();
        phases_ = AddUserProperty(*FBSystem::TheOne().SceneRootModel, "Phases", kFBPT_charptr, false);
    }

    std::string Phases() { return phases_->AsString(); }

    std::string error_;

private:
    FBProperty* phases_;
};

TEST_F(PluginTest, RunsThePhasesInOrderAndUnloads)
{
    auto plugin = Plugin::Load(TEST_PLUGIN, error_);
    ASSERT_TRUE(plugin) << error_;
    EXPECT_EQ(Phases(), "load init open ready ");
    ASSERT_EQ(MenuItems().size(), 1u);

    FBMenuItem* item = MenuItems()[0];
    EXPECT_STREQ(item->Extension, "*.rec");
    EXPECT_STREQ(item->Label, "Recorder");
    EXPECT_EQ(item->Type, kFBMenuItemMotionExport);
    EXPECT_STREQ(item->ClassName(), "RecordingTool");
    EXPECT_TRUE(FBIS(item, FBVisualComponent));
    EXPECT_TRUE(item->Execute("file"));
    EXPECT_DOUBLE_EQ(EvaluatedTime().GetSecondDouble(), 2.5);

    auto* twice = plugin->Symbol<int(const char*)>("RecordTwice");
    ASSERT_TRUE(twice);
    EXPECT_EQ(twice("x"), 2);
    EXPECT_TRUE(plugin->Symbol<void(kFBDllOperation)>("_Z26EntryPointrecording_plugin15kFBDllOperation"));
    EXPECT_FALSE(plugin->Symbol<void()>("NotThere"));

    plugin.reset();
    EXPECT_EQ(Phases(), "load init open ready file x x close release ");
    EXPECT_TRUE(MenuItems().empty());
}

TEST_F(PluginTest, LoadsTwoModulesSideBySide)
{
    auto first = Plugin::Load(TEST_PLUGIN, error_);
    ASSERT_TRUE(first) << error_;
    EXPECT_FALSE(Plugin::Load(TEST_PLUGIN_NOT_READY, error_));
    EXPECT_EQ(MenuItems().size(), 1u); // the first one's is left
    auto again = Plugin::Load(TEST_NO_PLUGIN, error_);
    EXPECT_FALSE(again);
}

TEST_F(PluginTest, NamesFileAndCauseOfAFailure)
{
    const struct
    {
        const char* path;
        const char* cause;
        const char* phases;
    } cases[] = {
        {"/nowhere/plugin.so", kNotThere, ""},
        {TEST_NO_PLUGIN, "declares no library object", ""},
        {TEST_PLUGIN_NOT_READY, "LibReady failed", "load init open ready close release "},
    };
    for (const auto& failing : cases)
    {
        SCOPED_TRACE(failing.path);
        FBSystem::TheOne().SceneRootModel->PropertyList.Find("Phases")->SetString("");
        EXPECT_FALSE(Plugin::Load(failing.path, error_));
        EXPECT_NE(error_.find(failing.path), std::string::npos) << error_;
        EXPECT_NE(error_.find(failing.cause), std::string::npos) << error_;
        EXPECT_EQ(Phases(), failing.phases);
        EXPECT_TRUE(MenuItems().empty());
    }
}

} // namespace
} // namespace mobu_host
