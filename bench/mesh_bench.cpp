#include "bench/format_workloads.h"
#include "tev2_loader/skinning.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <malloc.h>

// Meshes: reading them against one copy of their bytes, and what a frame costs. Everything is made by code.

namespace
{

using namespace TEV2_LOADER;

constexpr std::size_t kInfluences = 4;

TEV2_VECTOR_3 OnSphere(std::size_t vertex)
{
    const auto way = static_cast<float>(vertex);
    return {std::sin(0.1f * way), std::cos(0.1f * way), std::sin(0.37f * way)};
}

// Positions, normals, one set of texture coordinates and four weights for each vertex; two triangles a vertex.
void FillMesh(TEV2_WEIGHTED_MESH& mesh, std::size_t vertices, std::size_t bones, std::size_t nodes)
{
    TEV2_RIGID_VERTICES& columns = *mesh.vertices;
    std::vector<TEV2_VECTOR_2>& uvs = columns.uvs.emplace_back();
    std::vector<TEV2_TRIANGLE>& triangles = mesh.subObjects.emplace_back().triangles;
    mesh.skin->influences = kInfluences;
    for (std::size_t vertex = 0; vertex < vertices; ++vertex)
    {
        columns.positions.push_back(OnSphere(vertex));
        columns.normals.push_back(OnSphere(vertex));
        uvs.push_back({OnSphere(vertex).x, OnSphere(vertex).y});
        const auto corner = [&](std::size_t step)
        { return static_cast<std::uint32_t>((vertex + step) % vertices); };
        triangles.push_back({corner(0), corner(1), corner(2)});
        triangles.push_back({corner(0), corner(2), corner(3)});
        for (std::size_t entry = 0; entry < kInfluences; ++entry)
        {
            mesh.skin->boneIndices.push_back(static_cast<std::uint32_t>((vertex / 7 + entry * 3) % bones));
            mesh.skin->weights.push_back(1.0f / kInfluences);
        }
    }
    for (std::size_t bone = 0; bone < bones; ++bone)
        mesh.skin->bones.push_back(static_cast<std::uint32_t>(bone * 7 % nodes));
    mesh.skin->bindMatrices.resize(bones);
}

// A target that moves every twentieth vertex.
void AddTarget(TEV2_WEIGHTED_MESH& mesh)
{
    TEV2_MORPH_TARGET& target = mesh.targets.emplace_back();
    target.name = TEV2_WIDE_STRING(u"Target");
    for (std::size_t vertex = mesh.targets.size(); vertex < mesh.vertices->positions.size(); vertex += 20)
    {
        target.offsets.vertices.push_back(static_cast<std::uint32_t>(vertex));
        target.offsets.positions.push_back(OnSphere(vertex) * 0.01f);
        target.offsets.normals.push_back(OnSphere(vertex + 1) * 0.01f);
    }
}

// The file of a character of 200,000 vertices with 8 targets and the skeleton of W1, without its keys.
const std::vector<std::uint8_t>& CharacterFile()
{
    static const std::vector<std::uint8_t> image = []
    {
        TEV2 scene;
        scene.matrixHierarchy.nodes.resize(bench::kW1.nodes);
        TEV2_WEIGHTED_MESH& mesh = *scene.weightedMeshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>());
        FillMesh(mesh, 200'000, 100, bench::kW1.nodes);
        for (int target = 0; target < 8; ++target)
            AddTarget(mesh);
        return bench::Saved(scene);
    }();
    return image;
}

// Freed memory stays with the process, and a step has been done once before it is measured.
template <typename Step>
void RunWarm(benchmark::State& state, Step step)
{
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 2000 << 20);
    step();
    for (auto _ : state)
        step();
}

void CopyCharacter(benchmark::State& state)
{
    const std::vector<std::uint8_t>& image = CharacterFile();
    RunWarm(state,
            [&]
            {
                std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[image.size()]);
                std::memcpy(copy.get(), image.data(), image.size());
                benchmark::DoNotOptimize(copy.get());
            });
    state.counters["bytes"] = static_cast<double>(image.size());
}
BENCHMARK(CopyCharacter)->Unit(benchmark::kMillisecond);

void LoadCharacter(benchmark::State& state)
{
    const std::vector<std::uint8_t>& image = CharacterFile();
    RunWarm(state,
            [&]
            {
                TEV2 scene;
                TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
                if (!scene.Load(cursor, true) || scene.HasKeptBodies())
                    state.SkipWithError("load failed");
            });
}
BENCHMARK(LoadCharacter)->Unit(benchmark::kMillisecond);

// What one of the things that a step works on takes.
void CountEach(benchmark::State& state, const char* name, std::size_t things)
{
    const auto all = static_cast<double>(state.iterations()) * static_cast<double>(things);
    state.counters[name] = benchmark::Counter(all, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// The palettes of 100 meshes on the skeleton of W1, at one of its times.
void FormPalettes(benchmark::State& state, bool own_matrices)
{
    constexpr std::size_t kMeshes = 100;
    const auto bones = static_cast<std::size_t>(state.range(0));
    TEV2 scene;
    bench::Fill(scene, bench::kW1);
    scene.SetTime(1.0f);
    scene.inverseBindMatrices.resize(scene.matrixHierarchy.nodes.size());
    for (std::size_t i = 0; i < kMeshes; ++i)
    {
        TEV2_WEIGHTED_MESH& mesh = *scene.weightedMeshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>());
        FillMesh(mesh, 1, bones, scene.matrixHierarchy.nodes.size());
        if (!own_matrices)
            mesh.skin->bindMatrices.clear();
    }
    for (auto _ : state)
    {
        for (const auto& mesh : scene.weightedMeshes)
        {
            mesh->Bind(scene.matrixHierarchy, scene.inverseBindMatrices);
            benchmark::DoNotOptimize(mesh->skin->palette.data());
            benchmark::ClobberMemory();
        }
    }
    CountEach(state, "s/bone", kMeshes * bones);
}
BENCHMARK_CAPTURE(FormPalettes, own, true)->Arg(24)->Arg(100);
BENCHMARK_CAPTURE(FormPalettes, table, false)->Arg(24)->Arg(100);

// Positions and normals with four bones each.
void SkinMesh(benchmark::State& state)
{
    constexpr std::size_t kVertices = 20'000;
    TEV2 scene;
    bench::Fill(scene, bench::kW1);
    FillMesh(*scene.weightedMeshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>()), kVertices, 100,
             scene.matrixHierarchy.nodes.size());
    scene.SetTime(1.0f);
    std::vector<TEV2_VECTOR_3> positions(kVertices);
    std::vector<TEV2_VECTOR_3> normals(kVertices);
    for (auto _ : state)
    {
        SkinVertices(*scene.weightedMeshes[0], {.positions = positions, .normals = normals});
        benchmark::ClobberMemory();
    }
    CountEach(state, "s/vertex", kVertices);
}
BENCHMARK(SkinMesh);

// A flag: a track of 100 keys for the position of each vertex.
void MoveAnimMesh(benchmark::State& state)
{
    constexpr std::size_t kVertices = 5'000;
    constexpr int kKeys = 100;
    TEV2_ANIM_MESH mesh;
    for (std::size_t vertex = 0; vertex < kVertices; ++vertex)
    {
        auto position = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
        for (int key = 0; key < kKeys; ++key)
        {
            position->Append(static_cast<float>(key) / bench::kRate,
                             OnSphere(vertex) + OnSphere(static_cast<std::size_t>(key)) * 0.1f);
        }
        mesh.vertices->tracks.emplace_back().position = std::move(position);
    }
    int step = 0;
    for (auto _ : state)
    {
        mesh.SetTime(static_cast<float>(step++ % (4 * kKeys)) / (4.0f * bench::kRate));
        benchmark::DoNotOptimize(mesh.vertices->positions.data());
        benchmark::ClobberMemory();
    }
    CountEach(state, "s/vertex", kVertices);
}
BENCHMARK(MoveAnimMesh);

} // namespace

BENCHMARK_MAIN();
