#pragma once

/// FBX scenes, 6.0 to 7.x, binary and text.

#include "host/import/base/import_notes.h"
#include "host/import/base/import_options.h"
#include "host/import/base/scene_description.h"

#include <string_view>

namespace mobu_host::fbx
{

/// Throws ParseError for damaged files, and for what no scene can hold: numbers that are not finite, times out of
/// range, models nested too deep.
SceneDescription ReadFbx(std::string_view file, const ImportOptions& options, ImportNotes& notes);

} // namespace mobu_host::fbx
