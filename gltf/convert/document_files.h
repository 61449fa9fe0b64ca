#pragma once

/// The files and names of conversions.

#include "gltf/convert/from_gltf.h"
#include "gltf/document_builder.h"

#include <string>
#include <string_view>
#include <vector>

namespace tev2_gltf
{

/// Whether a path ends so, in letters of either case.
bool HasExtension(const std::string& path, std::string_view extension);

/// Whether a path ends in .glb or .gltf.
bool IsGltfPath(const std::string& path);

/// The name of a file, UTF-8, without folder and extension.
std::string StemOf(const std::string& path);

/// What leads from the folder of one file to that of another, with a / at its end; empty in the same folder.
std::string WayBetween(const std::string& from, const std::string& to);

/// A file of a document, complete in memory.
struct DocumentFile
{
    std::string path;
    std::string bytes;
    bool is_buffer = false;
};

/// The files of a finished document: one for a .glb file; for a .gltf file its buffer, if it has one, and itself.
/// Throws gltf::Error where it is larger than such a file can be.
std::vector<DocumentFile> DocumentFiles(const std::string& path, gltf::DocumentBuilder& builder);

/// The name of each animation as part of a file name on every system, the repeated ones numbered; "animation" for those
/// without a name.
std::vector<std::string> TakeNames(const FromGltf& from);

} // namespace tev2_gltf
