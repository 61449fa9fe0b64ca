#pragma once

/// What `tv2 convert` makes of files, before anything is written.

#include "gltf/convert/report.h"
#include "gltf/convert/to_gltf.h"
#include "tev2_loader/status.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tv2
{

struct ConvertRequest
{
    std::vector<std::string> inputs; // UTF-8 paths
    std::string output;
    std::optional<float> at;
    std::optional<tev2_gltf::World> world;
    bool standard_materials = false;
};

/// A file of the result, complete in memory.
struct ConvertedFile
{
    struct Count
    {
        std::size_t number;
        const char* one;
        const char* more;
    };

    std::string path;
    std::string_view holds;    // "scene", "buffer", "image"
    std::vector<Count> counts; // of what a scene has
    std::function<TEV2_LOADER::Status()> write;
};

struct Converted
{
    std::vector<ConvertedFile> files;
    std::vector<std::string> beside; // files that the input refers to, which a result may not replace either
    std::vector<tev2_gltf::World> worlds; // of the inputs of a conversion to glTF
    tev2_gltf::ConversionReport report;
    std::vector<std::string> notes;
};

bool IsTev2Path(const std::string& path);

/// The direction follows from the names. A failure names the file.
TEV2_LOADER::Status ConvertToGltf(const ConvertRequest& request, Converted& converted);
TEV2_LOADER::Status ConvertFromGltf(const ConvertRequest& request, Converted& converted);

} // namespace tv2
