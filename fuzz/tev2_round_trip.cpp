#include "tests/support/memory_file.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>

// What was loaded is saved, what was saved loads without a finding and is saved again as it is, byte by byte.

using namespace TEV2_LOADER;

namespace
{

const std::vector<std::uint8_t>& Saved(const TEV2& scene, tv2_tests::MemoryFile& file)
{
    file.Clear();
    TEV2_FILE_WRITER writer = tv2_tests::WriterInto(file);
    if (!scene.Save(writer) || !writer.stream->Flush() || writer.stream->lastError != 0)
        __builtin_trap();
    writer.stream->handle = nullptr; // it stays open for the next one
    return file.bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static tv2_tests::MemoryFile first_file(std::size_t{1} << 16);
    static tv2_tests::MemoryFile second_file(std::size_t{1} << 16);

    TEV2 scene;
    TEV2_MEMORY_CURSOR cursor(data, size);
    if (!scene.Load(cursor, false))
        return 0;
    for (const std::size_t never_saved : {7u, 9u}) // but counted among the lengths
        scene.instanceLists[never_saved].clear();
    const std::vector<std::uint8_t>& first = Saved(scene, first_file);

    TEV2_LOAD_REPORT report;
    TEV2_MEMORY_CURSOR again(first.data(), first.size(), &report);
    TEV2 second;
    if (!second.Load(again, false))
        __builtin_trap();
    for (const TEV2_LOAD_FINDING& finding : report.findings)
        if (finding.code != TEV2_LOAD_CODE::ParentOutside && finding.code != TEV2_LOAD_CODE::MoreWarnings)
            __builtin_trap();
    if (Saved(second, second_file) != first)
        __builtin_trap();
    return 0;
}
