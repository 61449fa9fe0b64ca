#include "bench/format_workloads.h"
#include "exporter/export_driver.h"
#include "exporter/sampling/key_reduction.h"

#include "mobu_host/scene.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>

// Whole exports of scenes built in code, beside the floor: the same host moved through the same instants, and every
// model's matrix asked for once. What the exporter itself takes is the difference.

namespace
{

using Clock = std::chrono::steady_clock;

constexpr double kRate = 30.0; // instants a second

double Seconds(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// A tree of moving models, three children each, animated by matrices that cost the host little.
void BuildScene(int models, int instants)
{
    mobu_host::NewScene();
    mobu_host::ClearTakes();
    mobu_host::SetTransportRate(kRate);
    FBTake* take = mobu_host::AddTake("Take", 0.0, (instants - 1) / kRate);
    std::vector<FBModel*> made;
    for (int i = 0; i < models; ++i)
    {
        FBModel* parent = i == 0 ? nullptr : made[static_cast<std::size_t>((i - 1) / 3)];
        made.push_back(mobu_host::AddModel("Joint" + std::to_string(i), parent));
        mobu_host::AnimateLocalMatrix(
            *made.back(), *take,
            [i](double seconds)
            {
                const double x = 0.6 * std::sin(1.7 * seconds + 0.37 * i);
                const double sine = 2.0 * x / (1.0 + x * x); // of an angle whose half has the tangent x
                const double cosine = (1.0 - x * x) / (1.0 + x * x);
                const double rows[16] = {cosine, sine, 0, 0, -sine,  cosine, 0,       0,
                                         0,      0,    1, 0, 10 * x, 5,      seconds, 1};
                return FBMatrix(rows);
            });
    }
    FBSystem().Scene->Evaluate();
}

void MoveHost(int instants)
{
    FBSystem system;
    FBPlayerControl player;
    const std::vector<FBModel*> models = mobu_host::ModelsInPreOrder();
    for (int i = 0; i < instants; ++i)
    {
        FBTime time;
        time.SetSecondDouble(i / kRate);
        player.Goto(time);
        system.Scene->Evaluate();
        for (FBModel* model : models)
        {
            FBMatrix matrix;
            model->GetMatrix(matrix);
            benchmark::DoNotOptimize(matrix);
        }
    }
}

// Time is the exporter's own; "host" is what the floor took, in seconds a run.
void Export(benchmark::State& state)
{
    const auto models = static_cast<int>(state.range(0));
    const auto instants = static_cast<int>(state.range(1));
    BuildScene(models, instants);
    tev2_exporter::ExportContext context;
    tev2_exporter::ExportOptions options;
    options.SamplingRate = static_cast<float>(kRate);
    const char* const path = "tev2_bench_export.tv2";
    double host = 0.0;
    for (auto _ : state)
    {
        auto start = Clock::now();
        MoveHost(instants);
        const double floor = Seconds(start);
        host += floor;
        start = Clock::now();
        if (tev2_exporter::ExportScene(context, options, path) != 1)
            state.SkipWithError("export failed");
        state.SetIterationTime(std::max(Seconds(start) - floor, 1e-9));
    }
    std::remove(path);
    const double samples = static_cast<double>(state.iterations()) * (models + 1) * instants;
    state.counters["samples"] = benchmark::Counter(samples, benchmark::Counter::kIsRate);
    state.counters["host"] = benchmark::Counter(host, benchmark::Counter::kAvgIterations);
}

// Tracks that keep every key.
void ReduceAllKept(benchmark::State& state)
{
    TEV2_LOADER::TEV2 scene;
    bench::Fill(scene, bench::kW1);
    for (auto _ : state)
    {
        tev2_exporter::ReduceKeys(scene.matrixHierarchy);
        benchmark::DoNotOptimize(scene.matrixHierarchy.nodes.data());
    }
    const double keys = 2.0 * bench::kW1.nodes * bench::kW1.keys;
    state.counters["keys"] =
        benchmark::Counter(keys * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

BENCHMARK(ReduceAllKept);

BENCHMARK(Export)
    ->ArgNames({"nodes", "frames"})
    ->Args({1000, 1000})
    ->Args({250, 250})
    ->Args({500, 250})
    ->Args({1000, 250})
    ->Args({2000, 250})
    ->Args({250, 500})
    ->Args({250, 1000})
    ->Args({250, 2000})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
