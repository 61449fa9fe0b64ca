#pragma once

/// glTF 2.0 and GLB: the nodes that the scene shows, cameras, extras and animations.

#include "host/import/import_notes.h"
#include "host/import/import_options.h"
#include "host/import/scene_description.h"
#include "host/import/scene_file.h"

namespace mobu_host
{

/// Buffers beside the file are read from its folder and from below it. Throws ParseError.
SceneDescription ReadGltf(const SceneFile& file, const ImportOptions& options, ImportNotes& notes);

} // namespace mobu_host
