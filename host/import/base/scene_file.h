#pragma once

#include "host/import/base/import_options.h"

#include <string>
#include <string_view>

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

/// What was read of a file, for ImportOptions::sources.
SourceBytes SourceOf(const std::string& path, std::string_view bytes);

} // namespace mobu_host
