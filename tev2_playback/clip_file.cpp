#include "tev2_playback/clip_file.h"

#include "tev2_loader/file.h"
#include "tev2_loader/io/file_image.h"
#include "tev2_playback/detail/image_source.h"

#include <cstdint>
#include <vector>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

Status LoadClip(const std::string& path, Clip& clip, const LoadClipOptions& options)
{
    std::vector<std::uint8_t> image;
    if (Status read = ReadFileImage(path, image, options.mostFileBytes); !read)
        return read;
    return LoadClipMemory(image.data(), image.size(), clip, options);
}

Status LoadClipMemory(const void* bytes, std::size_t size, Clip& clip, const LoadClipOptions& options)
{
    TEV2_LOAD_REPORT own;
    TEV2_LOAD_REPORT& report = options.report != nullptr ? *options.report : own;
    TEV2_MEMORY_CURSOR cursor(bytes, size, &report, options.limits);
    ImageSource source;
    if (!source.Load(cursor))
        return FailureOf(report);
    clip = Clip(source.Take(), options.clip);
    return {};
}

} // namespace TEV2_PLAYBACK
