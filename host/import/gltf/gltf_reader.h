#pragma once

/// glTF 2.0 and GLB: the nodes that the scene shows, cameras, extras and animations.

#include "host/import/base/import_notes.h"
#include "host/import/base/import_options.h"
#include "host/import/base/scene_description.h"
#include "host/import/base/scene_file.h"

namespace mobu_host
{

/// Buffers beside the file are read from its folder and from below it. Throws ParseError.
SceneDescription ReadGltf(const SceneFile& file, const ImportOptions& options, ImportNotes& notes);

} // namespace mobu_host
