#include "bench/format_workloads.h"
#include "tev2_playback/clip_file.h"
#include "tev2_playback/player.h"
#include "tev2_playback/pose.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <random>

// Playing clips beside SetTime of the scenes that they come from.

namespace
{

using namespace TEV2_LOADER;
using bench::Scenes;
using TEV2_PLAYBACK::Clip;
using TEV2_PLAYBACK::Player;
using TEV2_PLAYBACK::Transform;

constexpr std::size_t kCrowd = 1000;

enum class Motion
{
    Forward,
    Backward,
    Random
};

// Times of a scene in steps of a 60th of a second, or anywhere. The steps begin off the keys: a scene is slow exactly
// at a key's time, where it tries two segments.
class Path
{
public:
    Path(const TEV2_FLOAT32_RANGE& range, Motion motion)
    {
        constexpr float kStep = 1.0f / 60.0f;
        constexpr float kOffTheKeys = 0.37f;
        const float length = range.maximum - range.minimum;
        const std::size_t steps = std::clamp<std::size_t>(static_cast<std::size_t>(length / kStep), 1, 4000);
        std::mt19937 generator(1);
        std::uniform_real_distribution<float> anywhere(range.minimum, range.maximum);
        for (std::size_t step = 0; step < steps; ++step)
        {
            const float way = std::min((static_cast<float>(step) + kOffTheKeys) * kStep, length);
            times_.push_back(motion == Motion::Forward    ? range.minimum + way
                             : motion == Motion::Backward ? range.maximum - way
                                                          : anywhere(generator));
        }
    }

    float Next()
    {
        next_ = next_ + 1 < times_.size() ? next_ + 1 : 0;
        return times_[next_];
    }

private:
    std::vector<float> times_;
    std::size_t next_ = 0;
};

std::vector<Path> PathsOf(const Scenes& workload, Motion motion)
{
    std::vector<Path> paths;
    for (const auto& scene : workload.scenes)
        paths.emplace_back(scene->environment.timeRange, motion);
    return paths;
}

void CountNodes(benchmark::State& state, std::size_t nodes)
{
    const auto visited = static_cast<double>(state.iterations()) * static_cast<double>(nodes);
    state.counters["s/node"] =
        benchmark::Counter(visited, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void CountBytes(benchmark::State& state, std::size_t bytes)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(bytes));
}

void MoveScenes(benchmark::State& state, const Scenes& workload, Motion motion)
{
    std::vector<Path> paths = PathsOf(workload, motion);
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < paths.size(); ++i)
        {
            TEV2_MATRIX_HIERARCHY& hierarchy = workload.scenes[i]->matrixHierarchy;
            hierarchy.SetTime(paths[i].Next());
            benchmark::DoNotOptimize(hierarchy.nodes.data());
        }
    }
    CountNodes(state, workload.Nodes());
}

std::vector<Clip> ClipsOf(const Scenes& workload)
{
    std::vector<Clip> clips;
    for (const auto& scene : workload.scenes)
        clips.emplace_back(*scene);
    return clips;
}

template <typename Step>
void Play(benchmark::State& state, const Scenes& workload, Motion motion, Step step)
{
    const std::vector<Clip> clips = ClipsOf(workload);
    std::vector<Player> players;
    for (const Clip& clip : clips)
        players.emplace_back(clip);
    std::vector<Path> paths = PathsOf(workload, motion);
    for (auto _ : state)
    {
        for (std::size_t i = 0; i < players.size(); ++i)
        {
            players[i].SetTime(paths[i].Next());
            step(players[i]);
        }
    }
    CountNodes(state, workload.Nodes());
}

void PlayWorld(benchmark::State& state, const Scenes& workload, Motion motion)
{
    Play(state, workload, motion, [](Player& player) { benchmark::DoNotOptimize(player.World().data()); });
}

void PlayPose(benchmark::State& state, const Scenes& workload, Motion motion)
{
    std::size_t most = 0;
    for (const auto& scene : workload.scenes)
        most = std::max(most, scene->matrixHierarchy.nodes.size());
    std::vector<Transform> pose(most);
    Play(state, workload, motion,
         [&pose](Player& player)
         {
             player.Sample(pose);
             benchmark::DoNotOptimize(pose.data());
         });
}

// Two poses of the first scene into one.
void BlendPoses(benchmark::State& state, const Scenes& workload)
{
    const Clip clip(*workload.scenes.front());
    Player player(clip);
    std::vector<Transform> from(clip.NodeCount());
    std::vector<Transform> to(clip.NodeCount());
    player.Sample(to);
    player.SetTime(clip.TimeRange().maximum * 0.5f);
    player.Sample(from);
    for (auto _ : state)
    {
        TEV2_PLAYBACK::Blend(to, from, 0.01f);
        benchmark::DoNotOptimize(to.data());
    }
    CountNodes(state, clip.NodeCount());
}

// A heap that keeps what was freed, and has seen the step once.
template <typename Step>
void RunWarm(benchmark::State& state, const Scenes& workload, Step step)
{
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2000 << 20);
    step();
    for (auto _ : state)
        step();
    CountBytes(state, workload.Bytes());
}

void ClipFromScene(benchmark::State& state, const Scenes& workload)
{
    RunWarm(state, workload,
            [&workload]
            {
                for (const auto& scene : workload.scenes)
                    benchmark::DoNotOptimize(Clip(*scene).NodeCount());
            });
}

void ClipFromImage(benchmark::State& state, const Scenes& workload)
{
    RunWarm(state, workload,
            [&]
            {
                for (const auto& image : workload.images)
                {
                    Clip clip;
                    if (!TEV2_PLAYBACK::LoadClipMemory(image.data(), image.size(), clip))
                        state.SkipWithError("load failed");
                    benchmark::DoNotOptimize(clip.NodeCount());
                }
            });
}

// Bytes of the clips for each byte of keys in the scenes.
void ClipMemory(benchmark::State& state, const Scenes& workload)
{
    std::size_t keys = 0;
    const auto add = [&keys](const auto& track)
    {
        if (track)
            VisitKeys(*track,
                      [&keys](auto times, auto values) { keys += times.size_bytes() + values.size_bytes(); });
    };
    for (const auto& scene : workload.scenes)
    {
        for (const TEV2_MATRIX_NODE& node : scene->matrixHierarchy.nodes)
        {
            add(node.translation);
            add(node.rotation);
            add(node.scale);
        }
    }
    std::size_t bytes = 0;
    for (auto _ : state)
    {
        bytes = 0;
        for (const Clip& clip : ClipsOf(workload))
            bytes += clip.Size();
    }
    state.counters["share"] = static_cast<double>(bytes) / static_cast<double>(keys);
}

// A thousand characters of W1, dealt out to the threads; each character is played by one of them.
class Crowd
{
public:
    explicit Crowd(const TEV2& scene) : clip_(scene), path_(scene.environment.timeRange, Motion::Forward)
    {
        for (std::size_t i = 0; i < kCrowd; ++i)
        {
            players_.emplace_back(clip_);
            starts_.push_back(path_.Next());
        }
        length_ = scene.environment.timeRange.maximum;
    }

    void Play(std::size_t begin, std::size_t end, float time)
    {
        for (std::size_t i = begin; i < end; ++i)
        {
            players_[i].SetTime(std::fmod(starts_[i] + time, length_));
            benchmark::DoNotOptimize(players_[i].World().data());
        }
    }

private:
    Clip clip_;
    Path path_;
    std::vector<Player> players_;
    std::vector<float> starts_;
    float length_ = 0.0f;
};

void PlayCrowd(benchmark::State& state, Crowd& crowd)
{
    const auto threads = static_cast<std::size_t>(state.threads());
    const auto thread = static_cast<std::size_t>(state.thread_index());
    const std::size_t begin = kCrowd * thread / threads;
    const std::size_t end = kCrowd * (thread + 1) / threads;
    float time = 0.0f;
    for (auto _ : state)
        crowd.Play(begin, end, time += 1.0f / 60.0f);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(end - begin));
}

// As many threads with nothing to share, not even memory: what two processors can do at the time.
void Spin(benchmark::State& state)
{
    const int steps = (1 << 20) / state.threads();
    for (auto _ : state)
    {
        std::uint32_t value = 1;
        for (int i = 0; i < steps; ++i)
        {
            value ^= value << 13;
            value ^= value >> 17;
            value ^= value << 5;
        }
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations() * steps);
}

void RegisterAll(const std::string& name, const Scenes& workload)
{
    for (const auto& [motion_name, motion] :
         {std::pair("forward", Motion::Forward), std::pair("backward", Motion::Backward),
          std::pair("random", Motion::Random)})
    {
        const std::string suffix = "/" + name + "/" + motion_name;
        Register("MoveScenes" + suffix, MoveScenes, workload, motion);
        Register("PlayWorld" + suffix, PlayWorld, workload, motion);
        Register("PlayPose" + suffix, PlayPose, workload, motion);
    }
    Register("ClipFromScene/" + name, ClipFromScene, workload);
    Register("ClipFromImage/" + name, ClipFromImage, workload);
    Register("ClipMemory/" + name, ClipMemory, workload)->Iterations(1);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    const std::map<std::string, Scenes> workloads = bench::AllScenes(argc, argv);
    for (const auto& [name, workload] : workloads)
        RegisterAll(name, workload);
    Register("BlendPoses/W1", BlendPoses, workloads.at("W1"));
    Crowd crowd(*workloads.at("W1").scenes.front());
    for (const int threads : {1, 2})
    {
        benchmark::RegisterBenchmark("PlayCrowd", PlayCrowd, std::ref(crowd))
            ->Threads(threads)
            ->UseRealTime();
        benchmark::RegisterBenchmark("Spin", Spin)->Threads(threads)->UseRealTime();
    }
    benchmark::RunSpecifiedBenchmarks();
}
