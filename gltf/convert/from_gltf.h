#pragma once

/// glTF documents as scenes.
///
///     gltf::FolderFiles files(folder);
///     gltf::Document document(bytes, files);
///     tev2_gltf::ConversionReport report;
///     tev2_gltf::FromGltf from(document, {.image_stem = "walk"}, report);
///     for (std::size_t i = 0; i < from.SceneCount(); ++i)
///         TEV2_LOADER::SaveFile(*from.MakeScene(i), NameOf(from.SceneName(i)));
///     for (const tev2_gltf::InsideImage& image : from.InsideImages())
///         TEV2_LOADER::WriteWholeFile(image.file_name, image.bytes);

#include "gltf/convert/report.h"
#include "gltf/document.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tev2_gltf
{

struct FromGltfOptions
{
    /// Materials become standard materials, for engines that know no others, instead of shader materials.
    bool standard_materials = false;

    /// UTF-8. Image n inside the document becomes the file image_stem + "_image" + n + ".png" (or ".jpg", ...) in
    /// the folder of the result.
    std::string image_stem = "scene";

    /// What leads from the result's folder to that of the document, which the paths of images are relative to: empty or
    /// with a / at its end.
    std::string image_folder = {};
};

/// An image inside the document, to be written beside the result.
struct InsideImage
{
    std::string file_name;  // UTF-8, without folder
    std::string_view bytes; // stay as long as the document and the converter
};

/// Makes one scene for each animation of a document; one where it has none. Only the nodes of the scene that the
/// document shows are converted. What is lost or changed goes into the report: of what all scenes share, once.
///
/// Its functions throw gltf::Error, with the place, for a document that cannot be converted: damaged, with a required
/// extension that is not known, or with content that would take far more memory than the document has bytes.
class FromGltf
{
public:
    /// All three must outlive it.
    FromGltf(gltf::Document& document, FromGltfOptions options, ConversionReport& report);
    ~FromGltf();

    FromGltf(const FromGltf&) = delete;
    FromGltf& operator=(const FromGltf&) = delete;

    std::size_t SceneCount() const;

    /// The name of the animation, UTF-8; empty where it has none, and without animations.
    std::string_view SceneName(std::size_t scene) const;

    /// The scene at the start of its time range. Throws std::bad_alloc where memory runs out. Any number of times, in
    /// any order; a scene made again is not reported again.
    std::unique_ptr<TEV2_LOADER::TEV2> MakeScene(std::size_t scene);

    /// The images inside the document that its materials use.
    std::vector<InsideImage> InsideImages();

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace tev2_gltf
