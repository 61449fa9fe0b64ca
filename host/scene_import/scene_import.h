#pragma once

// Scene files into the one scene of the headless SDK.
//
//     const mobu_host::SceneImportResult result = mobu_host::ImportScene("walk.bvh");
//     if (!result.ok)
//         std::cerr << result.error << '\n';
//
// What is read, decided by the content of the file rather than by its name:
//
//   FBX        6.0 to 7.x, binary and text: models, cameras, takes, layers, curves, user properties, constraints as
//              listed; its own unit, axes and rate
//   BVH        every joint and end site; one unit is one centimetre; rate 1 / frame time
//   glTF, GLB  2.0: nodes, cameras, extras as user properties, animations with their exact splines; metres
//   Collada    1.4 and 1.5: nodes, cameras, animations with their exact curves; its own unit and up axis
//
// Meshes, materials, skins and blend shapes are passed over. docs/scene_files.md has it all.
//
// What the scene holds afterwards (FBX differs: models stay as the file has them, with its takes' own spans and current
// take):
//
//   Models     centimetres, Y up, below the scene's root. A duplicate name gets a number (" 1"); where a joint and the
//              mesh on it share a name, the joint keeps it. A mirrored model gets one axis reversed, so that its frame
//              is a rotation; what is below it stays where it is.
//   Cameras    look along their own +X, +Y up; the turn is undone for what is below them.
//              Horizontal aperture; the field of view is the horizontal angle.
//   Takes      one for each animation in file order, unnamed ones "Take 001" and so on; a file without animation
//              gives "Take 001" from 0 to 0. The first take is current. Values hold outside their keys.
//   Rate       ImportOptions::scene_rate, else the one that the file states, else the lowest common one that meets all
//              keys and ends (transport_rate.h), else 30. Takes are widened to whole frames of it, with a note.

#include "host/scene_import/import_options.h"

#include <string>
#include <vector>

namespace mobu_host
{

struct SceneImportResult
{
    bool ok = false;
    std::string error; // when not ok: names the file and the cause, one line
    std::vector<std::string>
        notes; // what the file holds and the scene does not, or holds differently; one line each
    std::vector<std::string>
        source_files; // further files that were read, as paths: an export must not replace them
};

// Empties the scene and opens the file at `path` (bytes as the system takes them) into it. When that fails
// the scene is left as it was; where memory ran out, it is a new one.
SceneImportResult ImportScene(const std::string& path, const ImportOptions& options = {});

} // namespace mobu_host
