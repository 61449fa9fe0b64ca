#pragma once

#include "tests/support/scene_texts.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/command.h"

#include "tev2_loader/file.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

using Arguments = std::vector<std::string>;
namespace fs = std::filesystem;

/// Exports with the command in a folder that has the scenes walk.bvh (kTwoJoints) and takes.gltf (kThreeTakes).
class ExportCommandTest : public testing::Test
{
protected:
    ExportCommandTest()
    {
        Write("walk.bvh", tv2_tests::kTwoJoints);
        Write("takes.gltf", tv2_tests::kThreeTakes);
    }

    std::string Path(const std::string& name) const { return folder_.Path(name); }
    void Write(const std::string& name, const std::string& text) const { folder_.Make(name, text); }
    std::string Content(const std::string& name) const { return tv2_tests::ReadText(Path(name)); }

    std::set<std::string> NamesIn(const std::string& folder) const
    {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(Path(folder)))
            names.insert(entry.path().filename().string());
        return names;
    }

    CommandResult Export(Arguments arguments) const
    {
        arguments.insert(arguments.begin(), "export");
        return RunTv2(arguments);
    }

    CommandResult ExportWalk(const std::string& output, Arguments options = {}) const
    {
        options.insert(options.end(), {Path("walk.bvh"), Path(output)});
        return Export(options);
    }

    std::unique_ptr<TEV2_LOADER::TEV2> Load(const std::string& name) const
    {
        auto scene = std::make_unique<TEV2_LOADER::TEV2>();
        const TEV2_LOADER::Status loaded =
            TEV2_LOADER::LoadFile(Path(name), *scene, {.applyStartTime = false});
        EXPECT_TRUE(loaded) << name << ": " << loaded.Reason();
        return scene;
    }

    tv2_tests::ScratchFolder folder_;
};

/// Expects an exit code and a part of the messages.
inline void ExpectComplaint(const CommandResult& run, int exit_code, const std::string& part)
{
    EXPECT_EQ(run.exit_code, exit_code) << part;
    EXPECT_NE(run.err.find(part), std::string::npos) << part << "\n" << run.err;
}
