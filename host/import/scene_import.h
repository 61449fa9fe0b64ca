#pragma once

// Reads a scene file into the one scene of the headless SDK.
//
//     const mobu_host::SceneImportResult result = mobu_host::ImportScene("walk.bvh");
//     if (!result.ok)
//         std::cerr << result.error << '\n';
//
// The content of the file decides its format, not its name:
//
//   FBX        6.0 to 7.x, binary and text: models, cameras, takes with their layers and curves, user properties; its own
//              unit, axes and rate. Constraints are listed and not solved.
//   BVH        joints and end sites; one unit is one centimetre; the rate is 1 / frame time
//   glTF, GLB  2.0: nodes, cameras, extras as user properties, animations with their exact splines; metres
//   Collada    1.4 and 1.5: nodes, cameras, user properties, animations with their exact curves; its own unit and up axis
//
// Meshes, materials, skins and blend shapes are passed over.
//
// The scene of a BVH, glTF or Collada file has:
//
//   Models     below the scene's root, in centimetres, Y up. A duplicate name gets a number ("Hips 1"); where a joint and
//              its mesh share a name, the joint keeps it. A mirrored model gets one axis reversed, so that its frame is a
//              rotation; the models below it stay where they are.
//   Cameras    that look along their own +X, with +Y up; the models below them stay where they are. Their field of view is
//              the horizontal angle.
//   Takes      one for each animation, in file order; unnamed ones are "Take 001" and so on. A file without animation
//              gives "Take 001" from 0 to 0. The first take is current. Values hold before the first and after the last
//              key.
//   Rate       ImportOptions::scene_rate; else the one that the file states; else the lowest common rate at which all keys
//              and ends of takes are whole frames (transport_rate.h); else 30, with a note. Takes that do not start and
//              stop on whole frames are widened to them, with a note.
//
// That of an FBX file has its models as they are, and its takes with their own spans and the file's current one. All
// details: docs/scene_files.md.

#include "host/import/import_options.h"

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
