#pragma once

#include <string>

namespace mobu_host
{

/// A whole scene file in memory.
struct SceneFile
{
    std::string path;
    std::string bytes;
};

/// Reads `path`. False with a one-line reason that names the file: it is missing, unreadable, empty or no file.
bool ReadSceneFile(const std::string& path, SceneFile& file, std::string& error);

} // namespace mobu_host
