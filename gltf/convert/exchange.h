#pragma once

/// The change of axes between TEV2 and glTF.
///
/// Both use metres, radians and quaternions x, y, z, w; the world of TEV2 is a mirror image of that of glTF. Each node
/// has an exchange of its own, a mirroring that is its own inverse, and the same table leads both ways:
///
/// - world (nodes at top level have it as their parent's), and nodes with a camera: NegateZ
/// - nodes with a light: NegateX
/// - all other nodes: SwapYZ
///
/// A node's transform in the other format is parent x transform x own, as matrices. What lies in a node (vertices,
/// normals, spline points) takes the node's own exchange.

#include "tev2_loader/math/matrix.h"
#include "tev2_loader/math/quaternion.h"
#include "tev2_loader/math/vectors.h"

namespace tev2_gltf
{

using TEV2_LOADER::TEV2_MATRIX_3X4;
using TEV2_LOADER::TEV2_QUATERNION;
using TEV2_LOADER::TEV2_VECTOR_3;

enum class Exchange
{
    NegateX,
    SwapYZ,
    NegateZ,
};

/// Of the world, for nodes at top level.
inline constexpr Exchange kWorldExchange = Exchange::NegateZ;

/// Of a point, a direction or an offset in a space with `own`; of a translation with the exchange of the node's parent.
/// Exact.
TEV2_VECTOR_3 Exchanged(const TEV2_VECTOR_3& vector, Exchange own);

/// Of factors along a node's own axes. Exact.
TEV2_VECTOR_3 ExchangedScale(const TEV2_VECTOR_3& scale, Exchange own);

/// Of a node's rotation. Exact for an ordinary node below an ordinary node, up to the sign of the whole quaternion;
/// otherwise calculated in double precision and rounded once.
TEV2_QUATERNION ExchangedRotation(const TEV2_QUATERNION& rotation, Exchange parent, Exchange own);

/// to x matrix x from: of a bind matrix, `to` is the bone's exchange, `from` that of bind space. Exact.
TEV2_MATRIX_3X4 Exchanged(const TEV2_MATRIX_3X4& matrix, Exchange to, Exchange from);

} // namespace tev2_gltf
