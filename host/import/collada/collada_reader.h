#pragma once

/// Collada 1.4 and 1.5: the visual scene that the file shows, its cameras and what is animated of both. Opens no other
/// file.

#include "host/import/base/import_notes.h"
#include "host/import/base/import_options.h"
#include "host/import/base/scene_description.h"

#include <string_view>

namespace mobu_host::collada
{

/// Throws ParseError.
SceneDescription ReadScene(std::string_view bytes, const ImportOptions& options, ImportNotes& notes);

} // namespace mobu_host::collada
