#include "tests/support/memory_file.h"
#include "tev2_loader/tev2.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <span>
#include <vector>

// What was loaded is saved, what was saved loads and is saved again as it is, byte by byte. Bodies of
// the newest version that are typed or kept are saved as they were loaded.

using namespace TEV2_LOADER;

namespace
{

constexpr std::uint32_t kFirstList = 1000; ///< no chunk has such a number

/// Whether Save was true. What it wrote must have reached the file in any case.
bool Save(const TEV2& scene, tv2_tests::MemoryFile& file)
{
    file.Clear();
    TEV2_FILE_WRITER writer = tv2_tests::WriterInto(file);
    const bool saved = scene.Save(writer);
    if (!writer.stream->Flush() || writer.stream->lastError != 0)
        __builtin_trap();
    writer.stream->handle = nullptr; // it stays open for the next one
    return saved;
}

using Chunk = std::span<const std::uint8_t>;

/// The chunks of each kind whose bodies are typed or kept, in their order; of instances those of each list, and the
/// last of a kind that a scene has once.
std::map<std::uint32_t, std::vector<Chunk>> BodiesIn(Chunk file, const TEV2_LOAD_REPORT& report)
{
    std::map<std::uint32_t, std::vector<Chunk>> bodies;
    for (const auto& [id, size, offset] : report.chunks)
    {
        const Chunk chunk = file.subspan(offset, size);
        if (TEV2_INSTANCE::FindKind(id) != nullptr)
        {
            std::uint32_t list = 0;
            std::memcpy(&list, &chunk[kChunkHeader], sizeof list);
            if (list != 7 && list != 9) // these are never saved
                bodies[kFirstList + list].push_back(chunk);
            continue;
        }
        switch (id)
        {
        case kInformationChunk:
        case kArrayLengthsChunk:
        case kEnvironmentChunk:
        case kCameraChunk:
        case kCameraManChunk:
        case kMatrixHierarchyChunk:
            break;
        case kGlobalLightTintChunk:
        case kAmbientLightChunk:
            bodies[id] = {chunk};
            break;
        default:
            if (FindChunkKind(id) != nullptr)
                bodies[id].push_back(chunk);
        }
    }
    return bodies;
}

/// Whether all chunks behind the information are of the newest version.
bool IsAllNewest(const TEV2_LOAD_REPORT& report)
{
    const auto is_information = [](const TEV2_CHUNK_SPAN& chunk) { return chunk.id == kInformationChunk; };
    return report.version == kVersion && is_information(report.chunks.front()) &&
           std::ranges::count_if(report.chunks, is_information) == 1;
}

bool AreSame(const std::map<std::uint32_t, std::vector<Chunk>>& one,
             const std::map<std::uint32_t, std::vector<Chunk>>& other)
{
    const auto same = [](Chunk a, Chunk b) { return std::ranges::equal(a, b); };
    const auto same_all = [&](const auto& a, const auto& b)
    { return a.first == b.first && std::ranges::equal(a.second, b.second, same); };
    return std::ranges::equal(one, other, same_all);
}

bool HasCode(const TEV2_LOAD_REPORT& report, TEV2_LOAD_CODE code)
{
    const auto has = [code](const TEV2_LOAD_FINDING& finding) { return finding.code == code; };
    return std::ranges::any_of(report.findings, has);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static tv2_tests::MemoryFile first(std::size_t{1} << 16);
    static tv2_tests::MemoryFile second(std::size_t{1} << 16);

    TEV2 scene;
    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR cursor(data, size, &report);
    if (!scene.Load(cursor, false))
        return 0;
    for (const std::size_t never_saved : {7u, 9u}) // but counted among the lengths
        scene.instanceLists[never_saved].clear();
    if (!Save(scene, first))
    {
        // Nobody could read such bodies under the version that is saved.
        if (!HasCode(report, TEV2_LOAD_CODE::UnparsedOtherVersion) &&
            !HasCode(report, TEV2_LOAD_CODE::MoreWarnings))
            __builtin_trap();
        return 0;
    }

    TEV2_LOAD_REPORT second_report;
    TEV2_MEMORY_CURSOR again(first.bytes.data(), first.bytes.size(), &second_report);
    TEV2 second_scene;
    if (!second_scene.Load(again, false))
        __builtin_trap();
    for (const TEV2_LOAD_FINDING& finding : second_report.findings)
        if (finding.code != TEV2_LOAD_CODE::ParentOutside && finding.code != TEV2_LOAD_CODE::BodyKept &&
            finding.code != TEV2_LOAD_CODE::MoreWarnings)
            __builtin_trap();
    if (!Save(second_scene, second) || second.bytes != first.bytes)
        __builtin_trap();
    if (IsAllNewest(report) && !AreSame(BodiesIn({data, size}, report), BodiesIn(first.bytes, second_report)))
        __builtin_trap();
    return 0;
}
