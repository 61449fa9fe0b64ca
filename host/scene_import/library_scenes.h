#pragma once

// The formats that are read with the import library. Where that library is not to be had they are refused.

#include "host/scene_import/import_notes.h"
#include "host/scene_import/scene_file.h"

#include <string>

namespace mobu_host
{

// Each empties the scene and puts the file's content in its place. False with a one-line cause when that fails; the
// scene is then as it was.
bool ImportGltf(const SceneFile& file, ImportNotes& notes, std::string& cause);

} // namespace mobu_host
