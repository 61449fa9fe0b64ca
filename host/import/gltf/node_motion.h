#pragma once

/// The local transform of a node over one animation: three tracks of keys, each where the file has one.

#include "gltf/document.h"
#include "gltf/key_track.h"
#include "host/import/base/scene_description.h"

#include <array>
#include <cstddef>
#include <optional>

namespace mobu_host::gltf_import
{

/// Keys of one component. The first and the last key, one at least, hold outside of them.
struct KeyTrack
{
    gltf::KeyTrack keys;
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

} // namespace mobu_host::gltf_import
