#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_loader/up_axis.h"

#include <cstdint>

namespace TEV2_PLAYBACK
{

/// The axes that a clip delivers transforms in.
enum class Frame : std::uint8_t
{
    /// Those of the file: left-handed, and up is Clip::UpAxis.
    AsStored,

    /// Right-handed, with +Y up. The world is turned by UpMatrix and mirrored in z, and so are the axes of every node:
    /// with S = diag(1, 1, -1), world = S * UpMatrix * stored world * S. Local translations are (x, y, -z), rotations
    /// (-x, -y, z, w), scale is as stored. Vertices in a node's axes are mirrored too: (x, y, -z). Cameras look along
    /// -Z of their node. User properties are as stored. Where Clip::UpAxis is Unknown nothing says which way is up: the
    /// world is mirrored and not turned.
    RightHandedYUp,
};

/// The rotation that turns the world of a file so that up is +Y; the identity for an unknown axis. Left of world
/// matrices as stored.
TEV2_LOADER::TEV2_MATRIX_3X4 UpMatrix(TEV2_LOADER::TEV2_UP_AXIS axis);

/// S * matrix * S with S = diag(1, 1, -1): the same transform where both its axes and the world's are mirrored in z.
TEV2_LOADER::TEV2_MATRIX_3X4 MirroredInZ(TEV2_LOADER::TEV2_MATRIX_3X4 matrix);

} // namespace TEV2_PLAYBACK
