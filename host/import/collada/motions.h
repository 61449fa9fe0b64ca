#pragma once

/// A node's transform and a camera's lens over time.

#include "host/import/base/scene_description.h"
#include "host/import/collada/cameras.h"
#include "host/import/collada/key_curve.h"
#include "host/import/collada/transforms.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace mobu_host::collada
{

inline constexpr std::uint32_t kAllValues = 0xFFFFFFFF;

/// A curve that moves one value of a transform, or all of them.
struct TransformCurve
{
    std::uint32_t transform = 0; // of the node's
    std::uint32_t value = kAllValues;
    std::shared_ptr<const KeyCurve> curve;
};

class NodeMotion
{
public:
    /// `curves` ascend by transform. Of two that move the same value the later counts.
    NodeMotion(const std::vector<Transform>& transforms, std::span<const TransformCurve> curves,
               double centimetres);

    /// Local, place in centimetres.
    Affine At(double seconds);

private:
    struct Curve
    {
        std::uint32_t value;
        std::shared_ptr<const KeyCurve> curve;
        std::size_t cursor = 0;
    };

    struct Part
    {
        Affine before; // of all transforms since the part before this one
        Transform moved;
        std::size_t end_curve = 0; // of `curves_`
    };

    static void Apply(Curve& curve, double seconds, Transform& transform);

    std::vector<Curve> curves_;
    std::vector<Part> parts_;
    Affine after_;
    Affine rest_; // where what the curves give is not finite
    double centimetres_;
};

/// A curve that moves one number of a camera.
struct LensCurve
{
    LensNumber number = LensNumber::HorizontalAngle;
    std::shared_ptr<const KeyCurve> curve;
};

class CameraMotion
{
public:
    CameraMotion(const Camera& camera, std::span<const LensCurve> curves, double centimetres);

    /// What its curves move: horizontal angle, near plane, far plane.
    const std::vector<LensNumber>& Moved() const { return moved_; }

    double At(LensNumber value, double seconds);

private:
    Camera camera_;
    std::vector<LensCurve> curves_;
    std::vector<std::size_t> cursors_; // of each curve
    std::vector<LensNumber> moved_;
    double centimetres_;
};

} // namespace mobu_host::collada
