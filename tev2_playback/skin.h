#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_loader/records/meshes.h"
#include "tev2_playback/block.h"
#include "tev2_playback/clip.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <span>

namespace TEV2_PLAYBACK
{

/// How a weighted mesh follows the nodes of a clip. Never changes, so any number of players on any threads may use it.
///
///     const TEV2_LOADER::TEV2_WEIGHTED_MESH& mesh = *scene.weightedMeshes[0];
///     const TEV2_PLAYBACK::Skin skin(clip, mesh, scene.inverseBindMatrices); // once
///     std::vector<TEV2_LOADER::TEV2_MATRIX_3X4> palette(skin.BoneCount());   // one for each player
///     skin.FormPalette(player.World(), palette);                             // each frame
///
/// Palettes are what shaders and SkinVertices (tev2_loader/skinning.h) take. Those of a clip as stored are what SetTime
/// leaves in the mesh, to the last bit. Those of a clip in Frame::RightHandedYUp bring mirrored vertices, positions and
/// directions (x, y, -z), to the clip's world. Corners of triangles stay clockwise, seen from the front.
class Skin
{
public:
    /// Pass scene.inverseBindMatrices: a mesh without bind matrices of its own takes those of its nodes from there. A
    /// load makes them; in a scene that was not loaded there are none, and such a mesh is bound with the identity.
    /// Neither mesh, matrices nor clip are needed afterwards. A mesh that is kept as bytes (IsTyped is false) or has no
    /// skin has no bones. `memory` as in ClipOptions, taken once.
    Skin(const Clip& clip, const TEV2_LOADER::TEV2_WEIGHTED_MESH& mesh,
         std::span<const TEV2_LOADER::TEV2_MATRIX_3X4> inverse_bind_matrices,
         std::pmr::memory_resource* memory = nullptr);

    std::size_t BoneCount() const { return bones_.size(); }

    /// Writes the matrix of each bone, from bind space to the world, as far as there is room. `world` has the world
    /// matrices of all nodes: Player::World, or what ToWorld has made of a pose. A bone whose node does not exist
    /// leaves vertices where the file has them.
    void FormPalette(std::span<const TEV2_LOADER::TEV2_MATRIX_3X4> world,
                     std::span<TEV2_LOADER::TEV2_MATRIX_3X4> palette) const;

private:
    struct Bone
    {
        TEV2_LOADER::TEV2_MATRIX_3X4 bind;
        std::uint32_t node = 0;
        bool hasBind = false;
    };

    Block block_;
    std::span<Bone> bones_;
    TEV2_LOADER::TEV2_MATRIX_3X4 unmoved_; ///< from the file's world to the clip's
};

} // namespace TEV2_PLAYBACK
