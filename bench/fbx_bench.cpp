#include "host/import/fbx/fbx_reader.h"
#include "host/import/host_scene.h"

#include <benchmark/benchmark.h>
#include <mobu_host/scene.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// Opening FBX scenes whose bytes are in memory.

namespace
{

std::string Bytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void Count(benchmark::State& state, const std::string& file)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * file.size()));
}

// From bytes to the host's scene, evaluated once.
void OpenInHost(benchmark::State& state, const std::string& path)
{
    const std::string file = Bytes(path);
    for ([[maybe_unused]] auto _ : state)
    {
        mobu_host::ImportNotes notes;
        mobu_host::BuildHostScene(mobu_host::fbx::ReadFbx(file, {}, notes), {}, notes);
    }
    Count(state, file);
}

// From bytes to models, takes and curves, without the host.
void Read(benchmark::State& state, const std::string& path)
{
    const std::string file = Bytes(path);
    for ([[maybe_unused]] auto _ : state)
    {
        mobu_host::ImportNotes notes;
        benchmark::DoNotOptimize(mobu_host::fbx::ReadFbx(file, {}, notes));
    }
    Count(state, file);
}

void Register(const std::filesystem::path& path)
{
    const std::string name = path.filename().string();
    const std::string file = path.string();
    const struct
    {
        const char* what;
        void (*run)(benchmark::State&, const std::string&);
    } ways[] = {{"host/", OpenInHost}, {"read/", Read}};
    for (const auto& way : ways)
        benchmark::RegisterBenchmark((way.what + name).c_str(), way.run, file)->Unit(benchmark::kMillisecond);
}

// The samples; and the largest of other people's scenes where somebody put them beside the project.
void RegisterAll()
{
    Register(std::filesystem::path(TV2_SAMPLES_DIR) / "mocap_walk_cameras.fbx");
    std::error_code none;
    std::filesystem::path largest;
    std::uintmax_t size = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TV2_SCENES_DIR, none))
    {
        if (entry.path().extension() == ".fbx" && entry.file_size() > size)
        {
            size = entry.file_size();
            largest = entry.path();
        }
    }
    if (!largest.empty())
        Register(largest);
}

} // namespace

int main(int argc, char** argv)
{
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
