#pragma once

/// From a scene description to models, cameras and takes of the host. Nothing else in import/ depends on the SDK, but
/// for scene_import.cpp, which opens files into its scene.

#include "host/import/base/import_notes.h"
#include "host/import/base/import_options.h"
#include "host/import/base/scene_description.h"

namespace mobu_host
{

/// Empties the host's scene and builds this one. Throws ParseError, with the host's scene as it was, for more models
/// than the options allow, and for what no scene can hold: a transform, a lens or a property that is not finite in
/// single precision, a time out of range. Texts that an export cuts are noted.
///
/// Names become unique: unnamed models are "Node", unnamed takes "Take 001" and so on. Where a joint and the mesh on
/// it share a name, the joint keeps it. A camera with a lens is turned so that its +X looks; a mirrored model without
/// parts gets one axis reversed, so that its frame is a rotation. What is below either stays where it is. Ends of takes
/// are set onto frames of the scene's rate, and takes widened to whole frames unless they keep their ends.
void BuildHostScene(SceneDescription&& scene, const ImportOptions& options, ImportNotes& notes);

} // namespace mobu_host
