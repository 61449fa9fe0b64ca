#include "tev2_playback/camera.h"

#include <cmath>

namespace TEV2_PLAYBACK
{

ProjectionMatrix CameraView::Projection(Depth depth, float aspect) const
{
    // By the ratio of the planes, so that the far one may be infinite.
    const double ratio = static_cast<double>(nearPlane) / static_cast<double>(farPlane);
    const double scale = 1.0 / (1.0 - ratio);
    double a = scale;
    double b = -static_cast<double>(nearPlane) * scale;
    if (depth == Depth::OneToZero)
    {
        a = -ratio * scale;
        b = -b;
    }
    else if (depth != Depth::ZeroToOne)
    {
        const double sign = depth == Depth::MinusOneToOne ? 1.0 : -1.0;
        a = sign * (1.0 + ratio) * scale;
        b *= 2.0 * sign;
    }
    const double along = rightHanded ? -1.0 : 1.0;
    const double width = 1.0 / std::tan(0.5 * static_cast<double>(fieldOfView));
    const double stretch =
        aspect != 0.0f ? static_cast<double>(aspect) : 1.0 / static_cast<double>(inverseAspect);
    ProjectionMatrix matrix;
    matrix.m[0][0] = static_cast<float>(width);
    matrix.m[1][1] = static_cast<float>(width * stretch);
    matrix.m[2][2] = static_cast<float>(along * a);
    matrix.m[2][3] = static_cast<float>(b);
    matrix.m[3][2] = static_cast<float>(along);
    return matrix;
}

} // namespace TEV2_PLAYBACK
