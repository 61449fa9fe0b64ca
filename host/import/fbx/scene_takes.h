#pragma once

#include "host/import/fbx/scene_models.h"

namespace mobu_host::fbx
{

/// The takes of a document and what moves in each, into `scene`.
void ReadTakes(const Document& document, const ModelList& models, SceneData& data, ImportNotes& notes);

} // namespace mobu_host::fbx
