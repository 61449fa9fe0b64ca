#pragma once

// FBX scenes, 6.0 to 7.x, binary and text, into the host's scene.

#include "host/import/import_notes.h"
#include "host/import/import_options.h"

#include <string>
#include <string_view>

namespace mobu_host::fbx
{

// Empties the host's scene and builds the one that `file` holds. False, with a one-line cause and the host's scene as
// it was, when it cannot be read.
bool ImportFbx(std::string_view file, ImportNotes& notes, std::string& cause,
               const ImportOptions& options = {});

} // namespace mobu_host::fbx
