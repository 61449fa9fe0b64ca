#pragma once

#include "exporter/base/script_entry.h"
#include "host/import/scene_import.h"
#include "tests/support/scratch_folder.h"

#include "mobu_host/plugin.h"
#include "mobu_host/scene.h"

/// Skips the test when a scene of TV2_SCENES_DIR is not there; fails when it cannot be opened.
#define OPEN_SCENE(path)                                                                                     \
    if (!std::filesystem::exists(path))                                                                      \
        GTEST_SKIP() << (path) << " is not in TV2_SCENES_DIR";                                               \
    ASSERT_TRUE(mobu_host::ImportScene(path).ok) << (path)

/// Exports the open scene through the plug-in whose clock stands still, as a script does.
class ScriptedExport
{
public:
    ScriptedExport() : plugin_(mobu_host::Plugin::Load(TV2_PLUGIN, error_)) {}

    /// Whole takes into files of the folder, named after the takes.
    bool ExportTakes(const std::filesystem::path& folder, int rate, bool all_takes,
                     bool keep_positive_z = true) const
    {
        const auto entry =
            plugin_ ? plugin_->Symbol<tev2_exporter::ScriptEntry>(tev2_exporter::kScriptEntryName) : nullptr;
        EXPECT_TRUE(entry) << error_;
        return entry && entry((folder / ".tv2").string().c_str(), 0, 0, rate, true, keep_positive_z, true,
                              false, true, all_takes) == 1;
    }

private:
    std::string error_;
    std::unique_ptr<mobu_host::Plugin> plugin_;
};
