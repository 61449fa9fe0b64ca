#include "bench/format_workloads.h"

#include "tev2_loader/serialisation/file_image.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <random>

// The format library against the floor of the machine: copying and writing the same bytes.

namespace
{

using namespace TEV2_LOADER;
using bench::Workload;

// Warm: freed memory stays with the process. Fresh: every large block comes from the system and goes back.
enum class Heap
{
    Warm,
    Fresh
};

void SetHeap(Heap heap)
{
    const bool warm = heap == Heap::Warm;
    mallopt(M_MMAP_THRESHOLD, warm ? 1 << 30 : 64 << 10);
    mallopt(M_TRIM_THRESHOLD, warm ? 2000 << 20 : 64 << 10);
    if (!warm)
        malloc_trim(0);
}

void CountBytes(benchmark::State& state, std::size_t bytes)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
}

void CopyImage(benchmark::State& state, Workload workload, Heap heap)
{
    SetHeap(heap);
    const auto image = bench::Image(workload);
    for (auto _ : state)
    {
        std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[image.size()]);
        std::memcpy(copy.get(), image.data(), image.size());
        benchmark::DoNotOptimize(copy.get());
    }
    CountBytes(state, image.size());
}

void LoadImage(benchmark::State& state, Workload workload, Heap heap)
{
    SetHeap(heap);
    const auto image = bench::Image(workload);
    for (auto _ : state)
    {
        TEV2 scene;
        TEV2_LOAD_REPORT report;
        TEV2_MEMORY_CURSOR cursor(image.data(), image.size(), &report);
        if (!scene.Load(cursor, true))
            state.SkipWithError("load failed");
    }
    CountBytes(state, image.size());
}

void LoadFile(benchmark::State& state, Workload workload, Heap heap)
{
    SetHeap(heap);
    const std::string path = bench::ScratchFile("load.tv2");
    const std::size_t size = [&]
    {
        const auto image = bench::Image(workload);
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
        return std::fwrite(image.data(), 1, image.size(), file.get());
    }();
    for (auto _ : state)
    {
        std::vector<std::uint8_t> image;
        std::string error;
        TEV2 scene;
        if (!ReadFileImage(path, image, error))
            state.SkipWithError(error.c_str());
        TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
        if (!scene.Load(cursor, true))
            state.SkipWithError("load failed");
    }
    std::remove(path.c_str());
    CountBytes(state, size);
}

enum class Motion
{
    Forward,
    Backward,
    Random,
    Update
};

void Evaluate(benchmark::State& state, Workload workload, Motion motion)
{
    TEV2 scene;
    bench::Fill(scene, workload);
    const float length = scene.environment.timeRange.maximum;
    constexpr std::size_t kSteps = 1021;
    std::vector<float> times(kSteps);
    std::mt19937 generator(1);
    std::uniform_real_distribution<float> anywhere(0.0f, length);
    for (std::size_t i = 0; i < kSteps; ++i)
    {
        const float step = length * static_cast<float>(i) / static_cast<float>(kSteps);
        times[i] = motion == Motion::Forward    ? step
                   : motion == Motion::Backward ? length - step
                                                : anywhere(generator);
    }
    const float delta = length / static_cast<float>(kSteps);
    std::size_t i = 0;
    for (auto _ : state)
    {
        if (motion == Motion::Update)
            scene.matrixHierarchy.Update(delta);
        else
            scene.matrixHierarchy.SetTime(times[i]);
        i = i + 1 < kSteps ? i + 1 : 0;
        benchmark::DoNotOptimize(scene.matrixHierarchy.nodes.back().worldMatrix);
    }
    state.counters["s/node"] = benchmark::Counter(static_cast<double>(state.iterations()) * workload.nodes,
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void SaveFile(benchmark::State& state, Workload workload)
{
    TEV2 scene;
    bench::Fill(scene, workload);
    const std::size_t size = bench::Image(workload).size();
    const std::string path = bench::ScratchFile("save.tv2");
    for (auto _ : state)
    {
        TEV2_FILE_WRITER writer(bench::Wide(path), false, true);
        if (!scene.Save(writer) || !writer.stream->Close())
            state.SkipWithError("save failed");
    }
    std::remove(path.c_str());
    CountBytes(state, size);
}

void WriteImage(benchmark::State& state, Workload workload)
{
    const auto image = bench::Image(workload);
    const std::string path = bench::ScratchFile("floor.tv2");
    for (auto _ : state)
    {
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
        if (std::fwrite(image.data(), 1, image.size(), file.get()) != image.size())
            state.SkipWithError("write failed");
    }
    std::remove(path.c_str());
    CountBytes(state, image.size());
}

#define EACH_WORKLOAD(function, label, ...)                                                                  \
    BENCHMARK_CAPTURE(function, W1_##label, bench::kW1, __VA_ARGS__);                                        \
    BENCHMARK_CAPTURE(function, W2_##label, bench::kW2, __VA_ARGS__)

EACH_WORKLOAD(CopyImage, warm, Heap::Warm);
EACH_WORKLOAD(LoadImage, warm, Heap::Warm);
EACH_WORKLOAD(CopyImage, fresh, Heap::Fresh);
EACH_WORKLOAD(LoadImage, fresh, Heap::Fresh);
EACH_WORKLOAD(LoadFile, warm, Heap::Warm);
EACH_WORKLOAD(LoadFile, fresh, Heap::Fresh);
EACH_WORKLOAD(Evaluate, forward, Motion::Forward);
EACH_WORKLOAD(Evaluate, backward, Motion::Backward);
EACH_WORKLOAD(Evaluate, random, Motion::Random);
EACH_WORKLOAD(Evaluate, update, Motion::Update);
BENCHMARK_CAPTURE(WriteImage, W2, bench::kW2);
BENCHMARK_CAPTURE(SaveFile, W2, bench::kW2);

} // namespace

BENCHMARK_MAIN();
