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
//   BVH        every joint and end site; one unit is one centimetre; transport rate 1 / frame time
//   glTF, GLB  nodes, cameras, node and camera extras as user properties; metres; 30 frames a second
//   Collada    nodes, cameras; its own unit and up axis; 30 frames a second
//
// Meshes, materials, skins and blend shapes are passed over.
//
// What the scene holds afterwards (FBX differs: models stand as the file has them, with its takes' own spans, curves and
// current take; docs/scene_files.md has it all):
//
//   Models     centimetres, Y up, below the scene's root. A label that is taken already gets a number (" 1"); where a
//              joint and the mesh on it share a name, the joint keeps it. A mirrored node gets one axis reversed, so
//              that its frame is a rotation; what hangs on it stays where it is.
//   Cameras    look along their own +X, +Y up; the turn is taken off again for what hangs on them.
//              Horizontal aperture; the field of view is the horizontal angle.
//   Takes      one for each animation in file order, unnamed ones "Take 001" and so on; a file without animation
//              gives "Take 001" from 0 to 0. A take spans 0 to the last key. The first take is current.
//   Animation  translation and scale in straight lines between keys, rotation along the shortest arc, constant
//              outside the keys. glTF steps hold their value; cubic glTF splines and Bezier curves of Collada
//              keep their keys and become straight lines between them.
//
// The end of a take within a hundredth of a frame of a whole frame is set onto that frame: formats store times in
// single precision or as short decimals, and the last frame of a take must not be lost to that.

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
