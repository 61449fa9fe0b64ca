#pragma once

/// BVH motion capture files.

#include "host/import/base/import_notes.h"
#include "host/import/base/import_options.h"
#include "host/import/base/scene_description.h"

#include <string_view>

namespace mobu_host::bvh
{

/// Every joint and end site ("EndSite_" and the name of its joint). One unit is one centimetre. One take, "Motion",
/// from 0 to the last frame: between frames places go in straight lines and rotations along the shorter arc. Keywords
/// in any case, any line ends, several roots.
///
/// Throws ParseError with the line, for anything else than the above.
SceneDescription ReadBvh(std::string_view file, const ImportOptions& options, ImportNotes& notes);

} // namespace mobu_host::bvh
