#include "tev2_loader/io/scene_file.h"

#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/whole_file.h"

#include <cstring>

namespace TEV2_LOADER
{

int WriteSceneFile(const TEV2& scene, const std::string& path)
{
    const std::string kept = path.substr(0, kMostPathBytes);
    char magic[sizeof kMagic];
    std::memcpy(magic, &kMagic, sizeof magic);
    return WriteWholeFile(kept,
                          [&](std::unique_ptr<TEV2_FILE_STREAM>& stream)
                          {
                              TEV2_FILE_WRITER writer(std::move(stream), TEV2_WIDE_STRING::FromBytes(kept),
                                                      true);
                              const bool saved = scene.Save(writer);
                              stream = std::move(writer.stream);
                              return saved;
                          },
                          {magic, sizeof magic});
}

} // namespace TEV2_LOADER
