#include "tev2_playback/skin.h"

#include "tev2_loader/math/detail/fast_math.h"
#include "tev2_playback/axes.h"

#include <algorithm>
#include <new>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

Skin::Skin(const Clip& clip, const TEV2_WEIGHTED_MESH& mesh,
           std::span<const TEV2_MATRIX_3X4> inverse_bind_matrices, std::pmr::memory_resource* memory)
{
    const bool mirrored = clip.WorldFrame() == Frame::RightHandedYUp;
    if (mirrored)
        unmoved_ = MirroredInZ(UpMatrix(clip.UpAxis()));
    if (!mesh.IsTyped() || mesh.skin.Empty())
        return;
    const TEV2_SKIN& skin = *mesh.skin;
    const std::size_t count = skin.bones.size();
    const bool own = skin.bindMatrices.size() == count;
    const std::span<const TEV2_MATRIX_3X4> binds = own ? skin.bindMatrices : inverse_bind_matrices;
    block_ = Block(count * sizeof(Bone), memory != nullptr ? memory : std::pmr::new_delete_resource());
    bones_ = {reinterpret_cast<Bone*>(block_.Begin()), count};
    for (std::size_t at = 0; at < count; ++at)
    {
        Bone& bone = *new (&bones_[at]) Bone;
        bone.node = skin.bones[at];
        const std::size_t place = own ? at : bone.node;
        if (place >= binds.size())
            continue;
        bone.bind = mirrored ? MirroredInZ(binds[place]) : binds[place];
        bone.hasBind = true;
    }
}

void Skin::FormPalette(std::span<const TEV2_MATRIX_3X4> world, std::span<TEV2_MATRIX_3X4> palette) const
{
    const std::size_t count = std::min(bones_.size(), palette.size());
    for (std::size_t at = 0; at < count; ++at)
    {
        const Bone& bone = bones_[at];
        if (bone.node >= world.size())
            palette[at] = unmoved_;
        else
            palette[at] = bone.hasBind ? FastProduct(world[bone.node], bone.bind) : world[bone.node];
    }
}

} // namespace TEV2_PLAYBACK
