#pragma once

#include "host/import/base/import_options.h"

#include <string>
#include <vector>

/// Reads a scene file into the one scene of the headless SDK.
///
///     const mobu_host::SceneImportResult result = mobu_host::ImportScene("walk.bvh");
///     if (!result.ok)
///         std::cerr << result.error << '\n';
///
/// The content of the file decides its format, not its name. The formats are the rows of formats.h; what the scene has
/// of each is in docs/scene_files.md.

namespace mobu_host
{

struct SceneImportResult
{
    bool ok = false;
    std::string error; // when not ok: names the file and the cause, one line

    /// What the file holds and the scene does not, or holds differently; one line each.
    std::vector<std::string> notes;

    /// Further files that were read, as paths: an export must not replace them.
    std::vector<std::string> source_files;
};

/// Empties the scene and opens the file at `path` (bytes as the system takes them) into it. When that fails the scene
/// is as it was; when memory ran out, it is a new one.
SceneImportResult ImportScene(const std::string& path, const ImportOptions& options = {});

} // namespace mobu_host
