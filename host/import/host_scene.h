#pragma once

// From what a file says to models, cameras and takes of the host.

#include "host/import/import_notes.h"
#include "host/import/import_options.h"
#include "host/import/scene_description.h"

namespace mobu_host
{

// Empties the host's scene and builds this one. Throws ParseError, with the host's scene as it was, for more models than
// the options allow, and for what no scene can hold: a transform, a lens or a property
// that is not finite in single precision, a time out of range. Texts that an export cuts are noted.
//
// Names become unique, unnamed models "Node", unnamed takes "Take 001" and so on. Where a joint and the mesh on it share
// a name, the joint keeps it. A camera is turned so that its +X looks. A mirrored model gets one axis reversed, so that
// its frame is a rotation. What is below either stays where it is. Takes are widened to whole frames of the scene's rate;
// the first one is current.
void BuildHostScene(SceneDescription&& scene, const ImportOptions& options, ImportNotes& notes);

} // namespace mobu_host
