#pragma once

/// The local transform of a node over one animation: three tracks of keys, each where the file has one.

#include "gltf/document.h"
#include "host/import/base/scene_description.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace mobu_host::gltf_import
{

/// Keys of one component, which many tracks may share. The first and the last key hold outside of them. Values are as
/// in the file: one element a key, or three (tangent in, value, tangent out) of a cubic spline.
struct KeyTrack
{
    KeyTimes times; // one at least
    std::shared_ptr<const std::vector<double>> values;
    gltf::Interpolation interpolation = gltf::Interpolation::Linear;
    mutable std::size_t cursor = 0; // the key before the time that was asked for last

    /// The element at a time.
    std::array<double, 3> VectorAt(double seconds) const;
    std::array<double, 4> RotationAt(double seconds) const; // x, y, z, w, of length 1
};

struct NodeMotion
{
    gltf::Trs rest; // where there is no track
    std::optional<KeyTrack> translation, rotation, scale;

    Affine At(double seconds) const;
};

/// Centimetres from metres. A rotation need not have length 1; without length it is none.
Affine ToAffine(const gltf::Trs& trs);
Affine ToAffine(const gltf::ColumnMatrix& matrix);

/// Shear is lost; of a mirrored matrix all three scales are negative.
gltf::Trs ToTrs(const gltf::ColumnMatrix& matrix);

} // namespace mobu_host::gltf_import
