#include "bench/format_workloads.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstring>
#include <malloc.h>
#include <map>
#include <random>

// The format library against the floor of the machine: copying, reading and writing the same bytes. Workloads are
// made by code; scenes named on the command line, files of real motion, are one more workload, W3.

namespace
{

using namespace TEV2_LOADER;

using bench::Scenes;

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

// Measures a step, which a warm heap has seen once before.
template <typename Step>
void Run(benchmark::State& state, const Scenes& workload, Heap heap, Step step)
{
    SetHeap(heap);
    if (heap == Heap::Warm)
        step();
    for (auto _ : state)
        step();
    CountBytes(state, workload.Bytes());
}

void CopyImage(benchmark::State& state, const Scenes& workload, Heap heap)
{
    Run(state, workload, heap,
        [&]
        {
            for (const auto& image : workload.images)
            {
                std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[image.size()]);
                std::memcpy(copy.get(), image.data(), image.size());
                benchmark::DoNotOptimize(copy.get());
            }
        });
}

void Load(benchmark::State& state, const std::vector<std::uint8_t>& image)
{
    TEV2 scene;
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(image.data(), image.size(), &report);
    if (!scene.Load(cursor, true))
        state.SkipWithError("load failed");
}

void LoadImage(benchmark::State& state, const Scenes& workload, Heap heap)
{
    Run(state, workload, heap,
        [&]
        {
            for (const auto& image : workload.images)
                Load(state, image);
        });
}

// What to do with the bytes of a file.
enum class Then
{
    Load,
    Forget
};

void ReadFile(benchmark::State& state, const Scenes& workload, Heap heap, Then then)
{
    const std::string path = bench::ScratchFile("load.tv2");
    {
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
        for (const auto& image : workload.images)
            std::fwrite(image.data(), 1, image.size(), file.get());
    }
    Run(state, workload, heap,
        [&]
        {
            const std::vector<std::uint8_t> image = bench::ReadWhole(path);
            if (then == Then::Load)
                Load(state, image);
            benchmark::DoNotOptimize(image.data());
        });
    std::remove(path.c_str());
}

// What the nodes of a workload take, a time.
void CountNodes(benchmark::State& state, const Scenes& workload)
{
    const auto nodes = static_cast<double>(state.iterations()) * static_cast<double>(workload.Nodes());
    state.counters["s/node"] =
        benchmark::Counter(nodes, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

enum class Motion
{
    Forward,
    Backward,
    Random,
    Update
};

// Times all over a range, in the order of the motion.
class Path
{
public:
    Path(const TEV2_FLOAT32_RANGE& range, Motion motion)
    {
        std::mt19937 generator(1);
        std::uniform_real_distribution<float> anywhere(range.minimum, range.maximum);
        delta_ = (range.maximum - range.minimum) / static_cast<float>(kSteps);
        for (std::size_t i = 0; i < kSteps; ++i)
        {
            const float way = delta_ * static_cast<float>(i);
            times_.push_back(motion == Motion::Forward    ? range.minimum + way
                             : motion == Motion::Backward ? range.maximum - way
                                                          : anywhere(generator));
        }
    }

    float Next()
    {
        next_ = next_ + 1 < kSteps ? next_ + 1 : 0;
        return times_[next_];
    }

    float Delta() const { return delta_; }

private:
    static constexpr std::size_t kSteps = 1021;
    std::vector<float> times_;
    float delta_ = 0.0f;
    std::size_t next_ = 0;
};

void Evaluate(benchmark::State& state, const Scenes& workload, Motion motion)
{
    std::vector<Path> paths;
    for (const auto& scene : workload.scenes)
    {
        paths.emplace_back(scene->environment.timeRange, motion);
        scene->matrixHierarchy.SetTime(scene->environment.timeRange.minimum);
    }
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < paths.size(); ++i)
        {
            TEV2_MATRIX_HIERARCHY& hierarchy = workload.scenes[i]->matrixHierarchy;
            if (motion == Motion::Update)
                hierarchy.Update(paths[i].Delta());
            else
                hierarchy.SetTime(paths[i].Next());
            benchmark::DoNotOptimize(hierarchy.nodes.back().worldMatrix);
        }
    }
    CountNodes(state, workload);
}

// Nothing but reading the keys around a time: of every node, two times, a translation and a rotation each. The times
// lie a 30th of a second apart.
void ReadKeys(benchmark::State& state, const Scenes& workload, Motion motion)
{
    struct Keys
    {
        const float* translation_times;
        const TEV2_VECTOR_3* translations;
        const float* rotation_times;
        const TEV2_QUATERNION* rotations;
    };
    TEV2& scene = *workload.scenes.front();
    std::vector<Keys> nodes;
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        const auto& translation = dynamic_cast<const TEV2_ANIMATABLE_VECTOR_3_LINEAR&>(*node.translation);
        const auto& rotation = dynamic_cast<const TEV2_ANIMATABLE_QUATERNION_SLERP&>(*node.rotation);
        nodes.push_back({translation.m_times.data(), translation.m_values.data(), rotation.m_times.data(),
                         rotation.m_values.data()});
    }
    Path path(scene.environment.timeRange, motion);
    float sum = 0.0f;
    for (auto _ : state)
    {
        const float place = std::min(path.Next(), scene.environment.timeRange.maximum - 0.5f / bench::kRate);
        const auto key = static_cast<std::size_t>(place * bench::kRate);
        for (const Keys& keys : nodes)
        {
            sum += keys.translation_times[key] + keys.translation_times[key + 1] + keys.translations[key].x +
                   keys.translations[key + 1].z + keys.rotation_times[key] + keys.rotation_times[key + 1] +
                   keys.rotations[key].x + keys.rotations[key + 1].w;
        }
        benchmark::DoNotOptimize(sum);
    }
    CountNodes(state, workload);
}

void SaveFile(benchmark::State& state, const Scenes& workload)
{
    const std::string path = bench::MemoryFile("save.tv2");
    for (auto _ : state)
    {
        for (const auto& scene : workload.scenes)
        {
            TEV2_FILE_WRITER writer(bench::Wide(path), false, true);
            if (!scene->Save(writer) || !writer.stream->Close())
                state.SkipWithError("save failed");
        }
    }
    std::remove(path.c_str());
    CountBytes(state, workload.Bytes());
}

void WriteImage(benchmark::State& state, const Scenes& workload)
{
    const std::string path = bench::MemoryFile("floor.tv2");
    for (auto _ : state)
    {
        for (const auto& image : workload.images)
        {
            std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
            if (std::fwrite(image.data(), 1, image.size(), file.get()) != image.size())
                state.SkipWithError("write failed");
        }
    }
    std::remove(path.c_str());
    CountBytes(state, workload.Bytes());
}

// How fast the processor goes while it is measured: additions that wait for one another, one a cycle.
void Clock(benchmark::State& state)
{
    constexpr int kAdditions = 1 << 20;
    std::uint64_t sum = 0;
    for (auto _ : state)
    {
        for (int i = 0; i < kAdditions; ++i)
        {
            sum += 1;
            benchmark::DoNotOptimize(sum);
        }
    }
    state.counters["cycles"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kAdditions, benchmark::Counter::kIsRate);
}
BENCHMARK(Clock);

void RegisterAll(const std::string& name, const Scenes& workload)
{
    const bool real = name == "W3";
    for (const auto& [heap_name, heap] : {std::pair("warm", Heap::Warm), std::pair("fresh", Heap::Fresh)})
    {
        const std::string suffix = "/" + name + "/" + heap_name;
        Register("CopyImage" + suffix, CopyImage, workload, heap);
        Register("LoadImage" + suffix, LoadImage, workload, heap);
        if (!real)
        {
            Register("ReadFile" + suffix, ReadFile, workload, heap, Then::Forget)->UseRealTime();
            Register("LoadFile" + suffix, ReadFile, workload, heap, Then::Load)->UseRealTime();
        }
    }
    for (const auto& [motion_name, motion] :
         {std::pair("forward", Motion::Forward), std::pair("backward", Motion::Backward),
          std::pair("random", Motion::Random), std::pair("update", Motion::Update)})
    {
        const std::string suffix = "/" + name + "/" + motion_name;
        if (!real && motion != Motion::Update)
            Register("ReadKeys" + suffix, ReadKeys, workload, motion);
        Register("Evaluate" + suffix, Evaluate, workload, motion);
    }
    if (name != "W1")
    {
        Register("WriteImage/" + name, WriteImage, workload)->UseRealTime();
        Register("SaveFile/" + name, SaveFile, workload)->UseRealTime();
    }
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const std::map<std::string, Scenes> workloads = bench::AllScenes(argc, argv);
    for (const auto& [name, workload] : workloads)
        RegisterAll(name, workload);
    benchmark::RunSpecifiedBenchmarks();
}
