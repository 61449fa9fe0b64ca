#pragma once

// The import library, held to what this importer uses of it.

#include "host/scene_import/import_notes.h"
#include "host/scene_import/scene_file.h"

#include <assimp/Importer.hpp>
#include <assimp/scene.h>

#include <string>

namespace mobu_host
{

// Reads `bytes` as a scene file of the format with this extension; what it refers to is looked for beside `path`. The scene belongs
// to `importer`. Null with a one-line cause when it cannot be read; never throws, and never ends the process.
const aiScene* ReadWithAssimp(Assimp::Importer& importer, const std::string& path, const std::string& bytes,
                              const char* extension, ImportNotes& notes, std::string& cause);

} // namespace mobu_host
