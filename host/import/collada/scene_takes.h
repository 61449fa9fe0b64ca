#pragma once

/// From animations and clips to takes.

#include "host/import/base/import_notes.h"
#include "host/import/base/scene_description.h"
#include "host/import/collada/document_index.h"
#include "host/import/collada/scene_models.h"

#include <cstddef>
#include <vector>

namespace mobu_host::collada
{

/// With clips, each is a take. Without, all animations are one take, for they have one time; only where two of the
/// outermost animations move the same number is each of these a take of its own. Throws ParseError for animation of the
/// scene's models that cannot be right.
std::vector<TakeDescription> ReadTakes(const XmlDocument& document, const DocumentIndex& index,
                                       SceneModels& models, double centimetres, std::size_t file_size,
                                       ImportNotes& notes);

} // namespace mobu_host::collada
