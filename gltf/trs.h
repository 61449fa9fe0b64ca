#pragma once

#include "gltf/document.h"

namespace gltf
{

/// A matrix as translation, rotation and scale. Of a mirrored matrix all three scales are negative. A matrix without an
/// extent along an axis has no rotation.
Trs Decomposed(const ColumnMatrix& matrix);

/// The matrix of translation x rotation x scale; the rotation is used as it is.
ColumnMatrix Composed(const Trs& trs);

/// Whether Decomposed loses something of a matrix: shear, or a last row that is not 0, 0, 0, 1. Rounding of single
/// precision does not count.
bool IsSheared(const ColumnMatrix& matrix);

} // namespace gltf
