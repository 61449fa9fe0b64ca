#pragma once

#include "tev2_loader/file.h"
#include "tev2_loader/io/file_image.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

// The scenes that the benchmarks of the format library work on, made by code.

namespace bench
{

struct Workload
{
    const char* name;
    int nodes;
    int keys; // of each of a node's two tracks
};

inline constexpr Workload kW1{"W1", 100, 300};
inline constexpr Workload kW2{"W2", 1000, 1000};
inline constexpr float kRate = 30.0f; // keys a second

inline float TwoSines(float time, float phase)
{
    return 0.6f * std::sin(1.7f * time + phase) + 0.4f * std::sin(4.1f * time + 2.0f * phase);
}

// A tree of nodes, three children each; every track a sum of two sines with all its keys.
inline void Fill(TEV2_LOADER::TEV2& scene, const Workload& workload)
{
    using namespace TEV2_LOADER;
    auto& nodes = scene.matrixHierarchy.nodes;
    nodes.resize(static_cast<std::size_t>(workload.nodes));
    for (int n = 0; n < workload.nodes; ++n)
    {
        TEV2_MATRIX_NODE& node = nodes[static_cast<std::size_t>(n)];
        node.name = TEV2_WIDE_STRING(u"Joint");
        node.parentIndex = (n - 1) / 3 - (n == 0 ? 1 : 0);
        auto translation = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
        auto rotation = std::make_unique<TEV2_ANIMATABLE_QUATERNION_SLERP>();
        const auto keys = static_cast<std::size_t>(workload.keys);
        translation->Reserve(keys);
        rotation->Reserve(keys);
        for (int k = 0; k < workload.keys; ++k)
        {
            const float time = static_cast<float>(k) / kRate;
            const float phase = 0.37f * static_cast<float>(n);
            translation->Append(time, {TwoSines(time, phase), TwoSines(time, phase + 1.0f), 0.5f * time});
            const float half = 0.5f * TwoSines(time, phase + 2.0f);
            rotation->Append(time, {std::sin(half), 0.0f, 0.0f, std::cos(half)});
        }
        node.translation = std::move(translation);
        node.rotation = std::move(rotation);
    }
    scene.environment.timeRange = {0.0f, static_cast<float>(workload.keys - 1) / kRate};
    scene.matrixHierarchy.LinkParents();
}

// Where the benchmarks keep their files while they run.
inline std::string ScratchFile(const std::string& name)
{
    return "tev2_bench_" + name;
}

// The same for files that are written to be measured: in memory, where the system has a place for that, since a disk
// would measure itself.
inline std::string MemoryFile(const std::string& name)
{
    const std::string folder = "/dev/shm/";
    return (std::filesystem::is_directory(folder) ? folder : "") + ScratchFile(name);
}

inline TEV2_LOADER::TEV2_WIDE_STRING Wide(const std::string& path)
{
    return TEV2_LOADER::TEV2_WIDE_STRING(std::u16string(path.begin(), path.end()));
}

// Reads a whole file; throws when it cannot.
inline std::vector<std::uint8_t> ReadWhole(const std::string& path)
{
    std::vector<std::uint8_t> image;
    if (const auto read = TEV2_LOADER::ReadFileImage(path, image); !read)
        throw std::runtime_error(path + ": " + read.Reason());
    return image;
}

// The bytes of a saved scene.
inline std::vector<std::uint8_t> Saved(const TEV2_LOADER::TEV2& scene)
{
    const std::string path = ScratchFile("image.tv2");
    if (const auto saved = TEV2_LOADER::SaveFile(scene, path); !saved)
        throw std::runtime_error(path + ": " + saved.Reason());
    std::vector<std::uint8_t> image = ReadWhole(path);
    std::remove(path.c_str());
    return image;
}

// The scenes of a workload and the bytes of each as a file.
struct Scenes
{
    std::vector<std::unique_ptr<TEV2_LOADER::TEV2>> scenes;
    std::vector<std::vector<std::uint8_t>> images;

    void Add(std::unique_ptr<TEV2_LOADER::TEV2> scene)
    {
        images.push_back(Saved(*scene));
        scenes.push_back(std::move(scene));
    }

    std::size_t Bytes() const
    {
        std::size_t bytes = 0;
        for (const auto& image : images)
            bytes += image.size();
        return bytes;
    }

    std::size_t Nodes() const
    {
        std::size_t nodes = 0;
        for (const auto& scene : scenes)
            nodes += scene->matrixHierarchy.nodes.size();
        return nodes;
    }
};

// W1 and W2, made by code, and as W3 the scenes of the files that the command line names.
inline std::map<std::string, Scenes> AllScenes(int argc, char** argv)
{
    using namespace TEV2_LOADER;
    std::map<std::string, Scenes> workloads;
    for (const Workload& made : {kW1, kW2})
    {
        auto scene = std::make_unique<TEV2>();
        Fill(*scene, made);
        workloads[made.name].Add(std::move(scene));
    }
    for (int i = 1; i < argc; ++i)
    {
        const std::vector<std::uint8_t> image = ReadWhole(argv[i]);
        TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
        auto scene = std::make_unique<TEV2>();
        if (!scene->Load(cursor, true))
            throw std::runtime_error(std::string(argv[i]) + ": does not load");
        workloads["W3"].Add(std::move(scene));
    }
    return workloads;
}

// A benchmark function(state, workload, arguments...) under a name. The workload must outlive the run.
template <typename... Arguments>
benchmark::internal::Benchmark* Register(const std::string& name,
                                         void (*function)(benchmark::State&, const Scenes&, Arguments...),
                                         const Scenes& workload, Arguments... arguments)
{
    return benchmark::RegisterBenchmark(name.c_str(), [=, &workload](benchmark::State& state)
                                        { function(state, workload, arguments...); });
}

} // namespace bench
