#include "tests/support/scratch_folder.h"
#include "tests/tools/command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sys/stat.h>

namespace
{

constexpr double kMostSeconds = 1.0;
constexpr long kMostKilobytes = 64 << 10;

// The sanitizers take time and memory of their own.
constexpr bool kMeasures = !TV2_SANITIZED;

struct HostileScene
{
    const char* file;
    std::string text;        // in the file; empty: the file as it is
    std::string replacement; // instead of the text
    const char* cause;       // part of the message
};

const HostileScene kScenes[] = {
    {"cubicspline_short_output.gltf", "", "",
     "animations[0] \"Walk\": samplers[0].output (accessors[1]) has 3 values where 3 keys of CUBICSPLINE "
     "need 3 each"},
    {"orthographic_camera.dae", "\"a1-out-a\" count=\"3\"", "\"a1-out-a\" count=\"0\"",
     "<float_array> \"a1-out-a\" holds 3 numbers"},
    {"orthographic_camera.dae", "\"a1-out-a\" count=\"3\"", "\"a1-out-a\" count=\"1\"",
     "<float_array> \"a1-out-a\" holds 3 numbers"},
    {"orthographic_camera.dae", "\"a2-in-a\" count=\"2\"", "\"a2-in-a\" count=\"inf\"",
     "\"a2-in-a\" has the count \"inf\""},
    {"no_channels.bvh", "", "", "50000000 frames, but no joint has a channel (line 12)"},
    {"uri_fifo.gltf", "", "", "buffers[0] \"fifo.bin\": uri is not a regular file"},
    {"uri_fifo.gltf", "fifo.bin", "../../../../../../../etc/passwd", "uri leads out of the scene's folder"},
    {"text_overflow.fbx", "", "", "\"Lcl Translation\" is not a finite number (byte 137)"},
};

std::string SceneIn(const tv2_tests::ScratchFolder& folder, const HostileScene& scene)
{
    std::string content =
        tv2_tests::ReadText(std::filesystem::path(TV2_FIXTURES_DIR) / "hostile" / scene.file);
    const std::size_t at = content.find(scene.text);
    EXPECT_NE(at, std::string::npos) << scene.text;
    content.replace(at, scene.text.size(), scene.replacement);
    return folder.Make(scene.file, content);
}

TEST(HostileScenes, AreRefusedInOneLineAtOnceAndInLittleMemory)
{
    const tv2_tests::ScratchFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("fifo.bin").c_str(), 0600), 0);
    for (const HostileScene& scene : kScenes)
    {
        const auto start = std::chrono::steady_clock::now();
        const CommandResult run = RunTv2({"export", SceneIn(folder, scene), folder.Path("out.tv2")});
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(run.exit_code, 2) << scene.cause;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_NE(run.err.find(scene.cause), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(folder.Path("out.tv2"))) << scene.cause;
        if (kMeasures)
        {
            EXPECT_LT(seconds.count(), kMostSeconds) << scene.cause;
            EXPECT_LT(run.peak_kilobytes, kMostKilobytes) << scene.cause;
        }
    }
}

TEST(HostileScenes, AnOrthographicCameraHasNoMadeUpAngle)
{
    const tv2_tests::ScratchFolder folder;
    const CommandResult run =
        RunTv2({"export", SceneIn(folder, {"orthographic_camera.dae", "", "", ""}), folder.Path("out.tv2")});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    ExpectParts(run.out, {"1 orthographic camera has no field of view; the host's default stays: Camera2"});
}

} // namespace
