#include "check/loaded_file.h"

#include "tev2_loader/file.h"
#include "tev2_loader/io/memory_cursor.h"

#include <algorithm>

namespace tev2_check
{

using namespace TEV2_LOADER;

void LoadSceneOf(LoadedFile& file)
{
    file.scene = std::make_unique<TEV2>();
    const LoadOptions options = {.applyStartTime = false, .report = &file.report};
    file.loaded = LoadMemory(file.image.data(), file.image.size(), *file.scene, options).Ok();
}

const TEV2_CHUNK_SPAN* LastChunk(const LoadedFile& file, std::uint32_t id)
{
    const auto& chunks = file.report.chunks;
    const auto found = std::find_if(chunks.rbegin(), chunks.rend(),
                                    [id](const TEV2_CHUNK_SPAN& chunk) { return chunk.id == id; });
    return found == chunks.rend() ? nullptr : &*found;
}

std::optional<TEV2_ARRAY_LENGTH_HELPER> AnnouncedLengths(const LoadedFile& file)
{
    const TEV2_CHUNK_SPAN* lengths = LastChunk(file, kArrayLengthsChunk);
    if (lengths == nullptr)
        return std::nullopt;
    const TEV2_CHUNK_SPAN* information = LastChunk(file, kInformationChunk);
    const bool has_version = information != nullptr && information->offset < lengths->offset;
    TEV2_MEMORY_CURSOR cursor(file.image.data(), file.image.size());
    cursor.current += lengths->offset + kChunkHeader;
    TEV2_ARRAY_LENGTH_HELPER announced;
    announced.Load(cursor, has_version ? file.report.version : 0.0F);
    return announced;
}

std::string WhyNotLoaded(const LoadedFile& file)
{
    return TEV2_LOADER::WhyNotLoaded(file.title, file.report);
}

} // namespace tev2_check
