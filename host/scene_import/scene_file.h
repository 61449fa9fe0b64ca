#pragma once

#include <string>

namespace mobu_host
{

enum class SceneFormat
{
    Bvh,
    GltfText,
    GltfBinary,
    Collada,
    Fbx
};

// A whole scene file in memory, and what it is by its content.
struct SceneFile
{
    std::string path;
    std::string bytes;
    SceneFormat format = SceneFormat::Bvh;
};

// Reads `path`. False with a one-line reason that names the file: it is missing, unreadable, empty, no file, or
// nothing that is known.
bool ReadSceneFile(const std::string& path, SceneFile& file, std::string& error);

} // namespace mobu_host
