#include "tev2_loader/file.h"

#include "tev2_loader/io/file_image.h"
#include "tev2_loader/io/whole_file.h"

#include <algorithm>
#include <cstring>

namespace TEV2_LOADER
{

Status LoadFile(const std::string& path, TEV2& scene, const LoadOptions& options)
{
    scene.Clear();
    std::vector<std::uint8_t> image;
    if (Status read = ReadFileImage(path, image, options.mostFileBytes); !read)
        return read;
    return LoadMemory(image.data(), image.size(), scene, options);
}

Status LoadMemory(const void* bytes, std::size_t size, TEV2& scene, const LoadOptions& options)
{
    scene.Clear(); // Load does not when the magic is wrong
    TEV2_LOAD_REPORT own;
    TEV2_LOAD_REPORT& report = options.report != nullptr ? *options.report : own;
    TEV2_MEMORY_CURSOR cursor(bytes, size, &report, options.limits);
    if (scene.Load(cursor, options.applyStartTime))
        return {};
    return FailureOf(report);
}

Status FailureOf(const TEV2_LOAD_REPORT& report)
{
    const auto error =
        std::ranges::find(report.findings, TEV2_LOAD_SEVERITY::Error, &TEV2_LOAD_FINDING::severity);
    return Status::Failure(error != report.findings.end() ? FindingText(*error) : "not a sound scene file");
}

std::string WhyNotLoaded(const std::string& title, const TEV2_LOAD_REPORT& report)
{
    return title + ": not a sound .tv2 file: " + FailureOf(report).Reason();
}

Status SaveFile(const TEV2& scene, const std::string& path, TEV2_SAVE_REPORT* report)
{
    TEV2_SAVE_REPORT own;
    TEV2_SAVE_REPORT& said = report != nullptr ? *report : own;
    said = {};
    char magic[sizeof kMagic];
    std::memcpy(magic, &kMagic, sizeof magic);
    bool refused = false;
    const Status written = WriteWholeFile(path,
                                          [&](std::unique_ptr<TEV2_FILE_STREAM>& stream)
                                          {
                                              TEV2_FILE_WRITER writer(
                                                  std::move(stream), TEV2_WIDE_STRING::FromBytes(path), true);
                                              const bool saved = scene.Save(writer, &said);
                                              refused = !saved && writer.stream->lastError == 0;
                                              stream = std::move(writer.stream);
                                              return saved;
                                          },
                                          {magic, sizeof magic});
    return refused && !said.refused.empty() ? Status::Failure(said.refused) : written;
}

} // namespace TEV2_LOADER
