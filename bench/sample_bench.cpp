// The C++ player doing the work of clip.sample, for bench/python_bench.py: writes the workload W2, then for each line
// of standard input samples it into an array that is there and into a new one, and prints the seconds of both.
//     sample_bench W2.tv2 TIMES

#include "bench/format_workloads.h"
#include "tev2_playback/clip_file.h"
#include "tev2_playback/player.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace
{

// Times as numpy.linspace makes them from 0 to the end of the clip.
std::vector<float> Times(std::size_t count, float end)
{
    std::vector<float> times(count);
    const double step = static_cast<double>(end) / static_cast<double>(count - 1);
    for (std::size_t i = 0; i < count; ++i)
        times[i] = static_cast<float>(static_cast<double>(i) * step);
    return times;
}

void Sample(const TEV2_PLAYBACK::Clip& clip, const std::vector<float>& times, float* to)
{
    constexpr float kLastRow[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    TEV2_PLAYBACK::Player player(clip);
    for (const float time : times)
    {
        player.SetTime(time);
        for (const TEV2_LOADER::TEV2_MATRIX_3X4& matrix : player.World())
        {
            std::memcpy(to, matrix.m, sizeof(matrix.m));
            std::memcpy(to + 12, kLastRow, sizeof(kLastRow));
            to += 16;
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    TEV2_LOADER::TEV2 scene;
    bench::Fill(scene, bench::kW2);
    TEV2_PLAYBACK::Clip clip;
    if (!TEV2_LOADER::SaveFile(scene, argv[1]) || !TEV2_PLAYBACK::LoadClip(argv[1], clip))
        return 1;
    const std::vector<float> times =
        Times(static_cast<std::size_t>(std::atoi(argv[2])), clip.TimeRange().maximum);
    std::vector<float> poses(times.size() * clip.NodeCount() * 16);
    std::cout << "ready" << std::endl;
    for (std::string line; std::getline(std::cin, line);)
    {
        const auto start = std::chrono::steady_clock::now();
        Sample(clip, times, poses.data());
        const auto middle = std::chrono::steady_clock::now();
        Sample(clip, times, std::make_unique_for_overwrite<float[]>(poses.size()).get());
        const auto end = std::chrono::steady_clock::now();
        std::cout << std::chrono::duration<double>(middle - start).count() << ' '
                  << std::chrono::duration<double>(end - middle).count() << std::endl;
    }
    return 0;
}
