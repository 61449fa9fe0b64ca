#include "tev2_playback/player.h"

#include "tev2_playback/detail/block_plan.h"
#include "tev2_playback/detail/clip_data.h"
#include "tev2_playback/detail/evaluate.h"
#include "tev2_playback/detail/seek.h"

#include <algorithm>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

struct Arrays
{
    std::span<TEV2_MATRIX_3X4> worlds;
    std::span<Place> places;
};

Arrays TakeArrays(BlockPlan& plan, const ClipData& clip)
{
    Arrays arrays;
    arrays.worlds = plan.Take<TEV2_MATRIX_3X4>(clip.skeleton.worlds.size());
    arrays.places = plan.Take<Place>(clip.clocks.size());
    return arrays;
}

std::size_t SizeFor(const ClipData& clip)
{
    BlockPlan plan;
    TakeArrays(plan, clip);
    return plan.Size();
}

} // namespace

Player::Player(const Clip& clip, std::pmr::memory_resource* memory)
    : clip_(&clip.Data()),
      block_(SizeFor(*clip_), memory != nullptr ? memory : std::pmr::new_delete_resource())
{
    BlockPlan plan(block_.Begin());
    const Arrays arrays = TakeArrays(plan, *clip_);
    worlds_ = arrays.worlds;
    places_ = arrays.places.data();
    std::ranges::copy(clip_->skeleton.worlds, worlds_.begin());
    std::ranges::fill(arrays.places, Place());
    SetTime(clip_->begin);
}

void Player::SetTime(float seconds)
{
    time_ = seconds;
    sought_ = false;
    has_worlds_ = false;
}

void Player::Seek()
{
    if (sought_)
        return;
    for (std::uint32_t at = 0; at < clip_->nodeClocks; ++at)
    {
        const Clock& clock = clip_->clocks[at];
        places_[at] =
            TEV2_PLAYBACK::Seek(clip_->TimesOf(clock), time_, clock.ascending ? places_[at].key : 0);
    }
    sought_ = true;
}

std::span<const TEV2_MATRIX_3X4> Player::World()
{
    if (!has_worlds_)
    {
        Seek();
        const SkeletonData& skeleton = clip_->skeleton;
        const Evaluation evaluation(skeleton, places_);
        MatrixSink sink{worlds_.data()};
        const WorldProduct* product = skeleton.products.data();
        for (const Group& group : skeleton.groups)
        {
            evaluation.Evaluate(group, sink);
            for (const WorldProduct* const end = skeleton.products.data() + group.products; product < end;
                 ++product)
            {
                const TEV2_MATRIX_3X4& local =
                    product->resting == kNobody ? worlds_[product->node] : skeleton.locals[product->resting];
                worlds_[product->node] = FastProduct(worlds_[product->parent], local);
            }
        }
        has_worlds_ = true;
    }
    return worlds_.first(clip_->skeleton.parents.size());
}

void Player::Sample(std::span<Transform> pose)
{
    Seek();
    std::ranges::copy(clip_->skeleton.transforms, pose.begin());
    const Evaluation evaluation(clip_->skeleton, places_);
    TransformSink sink{pose.data()};
    for (const Group& group : clip_->skeleton.groups)
        evaluation.Evaluate(group, sink);
}

} // namespace TEV2_PLAYBACK
