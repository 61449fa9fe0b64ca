#pragma once

#include "tev2_loader/math/matrix.h"

#include <cstdint>

// Cameras at a player's present time.
//
//     const int active = player.ActiveCamera();
//     if (active >= 0)
//     {
//         const TEV2_PLAYBACK::CameraView camera = player.Camera(static_cast<std::size_t>(active));
//         const auto projection = camera.Projection(TEV2_PLAYBACK::Depth::ZeroToOne, 16.0f / 9.0f);
//         std::printf("%g %g\n", static_cast<double>(camera.view.m[0][3]), static_cast<double>(projection.m[0][0]));
//     }

namespace TEV2_PLAYBACK
{

/// The depth that a projection gives to the near plane and to the far plane.
enum class Depth : std::uint8_t
{
    ZeroToOne,     ///< near 0, far 1
    OneToZero,     ///< near 1, far 0: reversed, even precision with floating-point depth
    MinusOneToOne, ///< near -1, far 1
    OneToMinusOne, ///< near 1, far -1
};

/// Four rows of four; points are column vectors, as with TEV2_MATRIX_3X4.
struct ProjectionMatrix
{
    float m[4][4] = {};
};

/// A camera at one time. The picture has +X to the right and +Y up in the axes of the camera; it looks along its +Z, or
/// along its -Z in a clip with right-handed axes.
struct CameraView
{
    TEV2_LOADER::TEV2_MATRIX_3X4 world; ///< from the axes of the camera to the world: the matrix of its node
    TEV2_LOADER::TEV2_MATRIX_3X4 view;  ///< from the world to the axes of the camera: the inverse

    // The lens as the file has it, 0 where it has nothing. All may be changed before Projection is called.
    float distance = 0.0f;      ///< to what the camera looks at, metres
    float fieldOfView = 0.0f;   ///< across the width of the picture, radians
    float nearPlane = 0.0f;     ///< metres
    float farPlane = 0.0f;      ///< metres; infinity is allowed
    float inverseAspect = 0.0f; ///< height of the picture over its width
    bool rightHanded = false;   ///< looks along -Z

    /// From the axes of the camera to clip space: visible is what has |x| <= w, |y| <= w and the depth z / w between
    /// those of the planes. `aspect` is the width of the viewport over its height; the field of view is across the
    /// width whatever it is. 0: 1 / inverseAspect. With f = 1 / tan(fieldOfView / 2), n and r the near and far plane:
    ///
    ///     f  0         0  0     ZeroToOne:      A = r / (r - n)         B = -n r / (r - n)
    ///     0  f aspect  0  0     OneToZero:      A = -n / (r - n)        B = n r / (r - n)
    ///     0  0         A  B     MinusOneToOne:  A = (r + n) / (r - n)   B = -2 n r / (r - n)
    ///     0  0         1  0     OneToMinusOne:  A = -(r + n) / (r - n)  B = 2 n r / (r - n)
    ///
    /// With right-handed axes the third column, A and 1, is negated. Not finite where the lens is none: a field of view
    /// or an aspect of 0, equal planes.
    ProjectionMatrix Projection(Depth depth, float aspect = 0.0f) const;
};

} // namespace TEV2_PLAYBACK
