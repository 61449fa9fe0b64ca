#include "tev2_loader/tracks/animatable.h"

#include "tev2_loader/tracks/detail/track_mover.h"

namespace TEV2_LOADER
{

void TEV2_ANIMATABLE::Update(float delta_time)
{
    TrackMover(m_current_key).Update(*this, delta_time);
}

void TEV2_ANIMATABLE::SetTime(float time)
{
    TrackMover(m_current_key).SetTime(*this, time);
}

} // namespace TEV2_LOADER
