#pragma once

#include "host/import/base/import_notes.h"
#include "host/import/fbx/document.h"
#include "host/math/affine.h"

namespace mobu_host::fbx
{

/// Frames a second by GlobalSettings, or by what files of 6.0 state in their place.
double TransportRate(const Document& document);

/// Centimetres in one unit of length.
double UnitOfLength(const Document& document);

/// From the file's axes to Y up, Z to the front, X to the right; a mirroring one where the file is left-handed.
Matrix3 AxesToHost(const Document& document, ImportNotes& notes);

} // namespace mobu_host::fbx
