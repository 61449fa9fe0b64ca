// The plug-in as a DLL, loaded as the application loads it.

#include "exporter/base/script_entry.h"
#include "tests/windows/scratch_folder.h"

#include "mobu_host/plugin.h"
#include "mobu_host/scene.h"
#include "mobu_host/ui.h"
#include "tev2_loader/tev2.h"

namespace
{

using tev2_tests::ScratchFolder;

class EntryPoints : public testing::Test
{
protected:
    EntryPoints()
    {
        mobu_host::NewScene();
        std::string error;
        plugin_ = mobu_host::Plugin::Load(TV2_PLUGIN, error);
        EXPECT_TRUE(plugin_) << error;
    }
    ~EntryPoints() override { mobu_host::NewScene(); }

    std::unique_ptr<mobu_host::Plugin> plugin_;
};

TEST_F(EntryPoints, AreThereFromLoadToUnload)
{
    ASSERT_EQ(mobu_host::MenuItems().size(), 1u);
    FBMenuItem* const item = mobu_host::MenuItems()[0];
    EXPECT_STREQ(item->Label, "QN - TV2 Exporter");
    EXPECT_STREQ(item->ClassName(), "Tev2MotionBuilderExportTool");
    EXPECT_TRUE(dynamic_cast<FBVisualComponent*>(static_cast<FBPlug*>(item)));
    EXPECT_TRUE(plugin_->Symbol<bool()>("LIBRARY_INIT")());
    auto* const entry = plugin_->Symbol<void(kFBDllOperation)>(
        "_Z40EntryPointtev2_motionbuilder_export_tool15kFBDllOperation");
    entry(kFBDllLoad); // has nothing to register
    entry(kFBDllUnLoad);
    EXPECT_EQ(mobu_host::MenuItems().size(), 1u);
    EXPECT_TRUE(GetModuleHandleA("tv2_motionbuilder_export_tool.dll"));
    plugin_.reset();
    EXPECT_TRUE(mobu_host::MenuItems().empty());
    EXPECT_FALSE(GetModuleHandleA("tv2_motionbuilder_export_tool.dll"));
}

TEST_F(EntryPoints, ExportForAScriptAndForTheMenu)
{
    const ScratchFolder folder;
    mobu_host::ClearTakes();
    mobu_host::AddTake("Walk fast", 0.0, 1.0);
    mobu_host::AddTake("Run", 0.0, 2.0);
    mobu_host::AddModel("ns:Hips");
    auto* const script = plugin_->Symbol<tev2_exporter::ScriptEntry>(tev2_exporter::kScriptEntryName);
    ASSERT_TRUE(script);
    EXPECT_EQ(script(folder.BytePath(u"run.tv2").c_str(), 0, 0, 25, true, true, true, false, true, true), 1u);
    for (const std::u16string name : {u"run_Walk_fast.tv2", u"run_Run.tv2"})
    {
        const std::string bytes = folder.Content(name);
        TEV2_LOADER::TEV2_MEMORY_CURSOR cursor(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                               bytes.size());
        TEV2_LOADER::TEV2 scene;
        ASSERT_TRUE(scene.Load(cursor, false)) << bytes.size();
        ASSERT_EQ(scene.matrixHierarchy.nodes.size(), 2u);
        EXPECT_EQ(scene.matrixHierarchy.nodes[1].name.Text(), u"Hips");
        EXPECT_NE(scene.information.infoText.Text().find(folder.Path(name)), std::u16string::npos);
    }

    mobu_host::SetPopupPlayer({}); // closes the dialog: cancelled
    EXPECT_TRUE(mobu_host::MenuItems()[0]->Execute(folder.BytePath(u"menu.tv2").c_str()));
    EXPECT_FALSE(folder.Has(u"menu.tv2"));
}

} // namespace
