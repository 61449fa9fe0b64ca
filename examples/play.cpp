// A crowd: characters that play one scene file on all cores, each blending between two times of it.
//
//     play FILE.tv2 [CHARACTERS [FRAMES [THREADS]]]

#include "tev2_playback/clip_file.h"
#include "tev2_playback/player.h"
#include "tev2_playback/pose.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <thread>
#include <vector>

using namespace TEV2_PLAYBACK;

namespace
{

struct Character
{
    Player first, second;
    float weight = 0.0f; // of the second
};

/// Looping, each at a time, a speed and a mixture of its own.
std::vector<Character> MakeCrowd(const Clip& clip, std::size_t count)
{
    Player player(clip);
    player.SetRepeat(Repeat::Loop);
    const Character calm = {player, player};
    std::vector<Character> crowd(count, calm);
    for (std::size_t i = 0; i < count; ++i)
    {
        const double share = static_cast<double>(i) / static_cast<double>(count);
        const auto length = static_cast<double>(clip.TimeRange().maximum - clip.TimeRange().minimum);
        crowd[i].first.SetSpeed(0.8 + 0.4 * share);
        crowd[i].first.Advance(length * share);
        crowd[i].second.Advance(length * (1.0 - share));
        crowd[i].weight = static_cast<float>(share);
    }
    return crowd;
}

/// The work of one thread: the clip is shared, the characters are its own. Returns a checksum of the last frame.
std::uint32_t Play(const Clip& clip, std::span<Character> characters, int frames)
{
    std::vector<Transform> pose(clip.NodeCount()), other(clip.NodeCount());
    std::vector<TEV2_LOADER::TEV2_MATRIX_3X4> world(clip.NodeCount());
    std::uint32_t checksum = 0;
    for (int frame = 1; frame <= frames; ++frame)
        for (Character& character : characters)
        {
            character.first.Advance(1.0 / 60.0);
            character.second.Advance(1.0 / 60.0);
            character.first.Sample(pose);
            character.second.Sample(other);
            Blend(pose, other, character.weight);
            ToWorld(clip, pose, world); // an engine draws these
            if (frame == frames)
                for (const auto& matrix : world)
                    for (const auto& row : matrix.m)
                        for (const float number : row)
                        {
                            std::uint32_t bits;
                            std::memcpy(&bits, &number, sizeof bits);
                            checksum += bits; // in any order
                        }
        }
    return checksum;
}

std::uint32_t PlayOnThreads(const Clip& clip, std::span<Character> crowd, int frames, std::size_t count)
{
    std::vector<std::thread> threads;
    std::vector<std::uint32_t> checksums(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::size_t begin = crowd.size() * i / count;
        const std::size_t end = crowd.size() * (i + 1) / count;
        threads.emplace_back([&, i, begin, end]
                             { checksums[i] = Play(clip, crowd.subspan(begin, end - begin), frames); });
    }
    std::uint32_t checksum = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        threads[i].join();
        checksum += checksums[i];
    }
    return checksum;
}

/// A number from 1 on; of an argument that is none, 1.
std::size_t Argument(int count, char** arguments, int at, std::size_t otherwise)
{
    return at < count ? std::max<std::size_t>(1, std::strtoul(arguments[at], nullptr, 10)) : otherwise;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::fprintf(stderr, "usage: play FILE.tv2 [CHARACTERS [FRAMES [THREADS]]]\n");
        return 2;
    }
    Clip clip;
    if (const TEV2_LOADER::Status loaded = LoadClip(argv[1], clip); !loaded)
    {
        std::fprintf(stderr, "%s: %s\n", argv[1], loaded.Reason().c_str());
        return 1;
    }
    std::vector<Character> crowd = MakeCrowd(clip, Argument(argc, argv, 2, 1000));
    const auto frames = static_cast<int>(Argument(argc, argv, 3, 60));
    const std::size_t threads = Argument(argc, argv, 4, std::max(1u, std::thread::hardware_concurrency()));

    const auto begin = std::chrono::steady_clock::now();
    const std::uint32_t checksum = PlayOnThreads(clip, crowd, frames, threads);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;

    const double nodes = static_cast<double>(crowd.size()) * frames * static_cast<double>(clip.NodeCount());
    std::printf("%zu nodes, %zu characters, %d frames, %zu threads\n", clip.NodeCount(), crowd.size(), frames,
                threads);
    std::printf("%.3f s, %.1f ns a node (two poses, a blend, world matrices)\n", taken.count(),
                taken.count() * 1e9 / nodes);
    std::printf("checksum %08x\n", static_cast<unsigned>(checksum));
    return 0;
}
