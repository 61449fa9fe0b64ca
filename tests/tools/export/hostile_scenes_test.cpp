#include "tests/tools/command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <sys/stat.h>

namespace
{

constexpr double kMostSeconds = 1.0;
constexpr long kMostKilobytes = 64 << 10;

// AddressSanitizer takes time and memory of its own.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMeasures = false;
#else
constexpr bool kMeasures = true;
#endif

struct HostileScene
{
    const char* file;
    const char* cause; // part of the message
};

const HostileScene kScenes[] = {
    {"cubicspline_short_output.gltf", "animations[0] \"Walk\": samplers[0].output (accessors[1]) has 3 "
                                      "values where 3 keys of CUBICSPLINE need 3 each"},
    {"float_array_count_0.dae", "<float_array> \"a1-out-a\" holds 3 numbers"},
    {"float_array_count_1.dae", "<float_array> \"a1-out-a\" holds 3 numbers"},
    {"frame_time_denormal.bvh", "frame time"},
    {"fuzz_segv.dae", "\"a2-in-a\" has the count \"inf\""},
    {"huge_frames.bvh", "Frames is not a whole number from 0 to 2147483647 (line 12)"},
    {"no_channels.bvh", "50000000 frames, but no joint has a channel (line 12)"},
    {"uri_fifo.gltf", "buffers[0] \"fifo.bin\": uri is not a regular file"},
    {"uri_outside.gltf", "uri leads out of the scene's folder"},
    {"text_overflow.fbx", "\"Lcl Translation\" is not a finite number (byte 137)"},
};

std::string CopyOf(const std::string& file, const ScratchFolder& folder)
{
    std::filesystem::copy_file(std::filesystem::path(TV2_FIXTURES_DIR) / "hostile" / file, folder.Path(file));
    return folder.Path(file);
}

TEST(HostileScenes, AreRefusedInOneLineAtOnceAndInLittleMemory)
{
    const ScratchFolder folder;
    ASSERT_EQ(mkfifo(folder.Path("fifo.bin").c_str(), 0600), 0);
    for (const HostileScene& scene : kScenes)
    {
        const auto start = std::chrono::steady_clock::now();
        const CommandResult run = RunTv2({"export", CopyOf(scene.file, folder), folder.Path("out.tv2")});
        const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
        EXPECT_EQ(run.exit_code, 2) << scene.file;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
        EXPECT_NE(run.err.find(scene.cause), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(folder.Path("out.tv2"))) << scene.file;
        if (kMeasures)
        {
            EXPECT_LT(seconds.count(), kMostSeconds) << scene.file;
            EXPECT_LT(run.peak_kilobytes, kMostKilobytes) << scene.file;
        }
    }
}

TEST(HostileScenes, AnOrthographicCameraHasNoMadeUpAngle)
{
    const ScratchFolder folder;
    const CommandResult run =
        RunTv2({"export", CopyOf("orthographic_camera.dae", folder), folder.Path("out.tv2")});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    EXPECT_NE(run.out.find("1 orthographic camera has no field of view; the host's default stays: Camera2"),
              std::string::npos)
        << run.out;
}

} // namespace
