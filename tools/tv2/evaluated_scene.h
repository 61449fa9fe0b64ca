#pragma once

#include "compare/rewound_scene.h"
#include "tev2_loader/tev2.h"

#include <array>
#include <optional>

namespace tv2
{

/// A scene at one time after another, each as TEV2::SetTime shows it when it is called for the first time: nodes, the
/// lenses of cameras and the switcher; besides, the user properties of nodes.
class EvaluatedScene
{
public:
    /// The scene must outlive it and keep its nodes.
    explicit EvaluatedScene(TEV2_LOADER::TEV2& scene) : scene_(scene), nodes_(scene) {}

    void SetTime(float time);

    /// To the first keys, without evaluating nodes.
    void Rewind();

    const TEV2_LOADER::TEV2& Scene() const { return scene_; }

    /// What the switcher shows: an index of a camera, or any other number of the file; none without a switcher.
    std::optional<std::int32_t> ActiveCamera() const;

private:
    void MoveOthers(float time);

    TEV2_LOADER::TEV2& scene_;
    tev2_compare::RewoundScene nodes_;
};

/// The transform of a node relative to its parent, as it is evaluated.
struct LocalPose
{
    TEV2_LOADER::TEV2_VECTOR_3 translation; ///< metres
    TEV2_LOADER::TEV2_QUATERNION rotation;  ///< as the file has it, of length 1 or not
    TEV2_LOADER::TEV2_VECTOR_3 scale{1.0f, 1.0f, 1.0f};
};

LocalPose LocalPoseOf(const TEV2_LOADER::TEV2_MATRIX_NODE& node);

/// Three angles that people can read: the rotation is that by the first about the X axis, then by the second about the
/// Y axis, then by the third about the Z axis, all of them axes that stay where they are; the second is within 90
/// degrees. Rounded to 0.0001 degrees.
using EulerDegrees = std::array<double, 3>;

/// The length of the quaternion does not matter; one of length 0 is no rotation. NaN where it is not finite.
EulerDegrees DegreesOf(const TEV2_LOADER::TEV2_QUATERNION& rotation);

/// A transform taken apart, for reading.
struct WorldPose
{
    TEV2_LOADER::TEV2_VECTOR_3 translation;
    EulerDegrees degrees{};
    std::array<double, 3> scale{}; ///< lengths of the axes; the first is negative in a mirrored transform
};

WorldPose WorldPoseOf(const TEV2_LOADER::TEV2_MATRIX_3X4& world);

} // namespace tv2
