#pragma once

/// Materials and images of glTF.

#include "gltf/convert/from_context.h"
#include "gltf/convert/from_gltf.h"
#include "gltf/material.h"
#include "tev2_loader/records/materials.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tev2_gltf
{

/// The names of the document's images as materials of a scene use them.
class FromImages
{
public:
    explicit FromImages(FromContext& context) : context_(context) {}

    /// UTF-8, relative to the scene; it does not leave its folder.
    const std::string& FileName(std::size_t image);

    /// The images inside the document among those that were asked for.
    std::vector<InsideImage> Inside();

private:
    std::string InsideName(const gltf::Image& image, std::size_t index, const gltf::Place& place);
    std::string BesideName(std::string_view uri, const gltf::Place& place) const;

    FromContext& context_;
    std::map<std::size_t, std::string> names_;   // by image
    std::map<std::size_t, std::string> decoded_; // bytes of data URIs, by image
    std::map<std::size_t, std::string_view> bytes_;
};

/// All materials of the document, in its order.
std::vector<std::unique_ptr<TEV2_LOADER::TEV2_MATERIAL>> MakeMaterials(FromContext& context,
                                                                       FromImages& images);

} // namespace tev2_gltf
