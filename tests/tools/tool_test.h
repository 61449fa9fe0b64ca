#pragma once

#include "tests/support/sample_scenes.h"
#include "tests/tools/command.h"

#include <functional>

/// A folder with .tv2 files for the command.
class ToolTest : public testing::Test
{
protected:
    std::string Path(const std::string& name) const { return folder_.Path(name); }

    std::string Save(const TEV2_LOADER::TEV2& scene, const std::string& name = "a.tv2") const
    {
        return Write(tv2_tests::SceneImage(scene), name);
    }

    std::string Write(const std::vector<std::uint8_t>& bytes, const std::string& name = "a.tv2") const
    {
        tv2_tests::WriteBytes(Path(name), bytes);
        return Path(name);
    }

    /// The sound scene, after `change`.
    std::string SaveSound(const std::function<void(TEV2_LOADER::TEV2&)>& change,
                          const std::string& name = "a.tv2") const
    {
        TEV2_LOADER::TEV2 scene;
        tv2_tests::FillSoundScene(scene);
        change(scene);
        return Save(scene, name);
    }

    ScratchFolder folder_;
};
