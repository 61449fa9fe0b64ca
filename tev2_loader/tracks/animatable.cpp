#include "tev2_loader/tracks/animatable.h"

#include "tev2_loader/detail/track_mover.h"
#include "tev2_loader/io/arrays.h"

namespace TEV2_LOADER
{

bool TEV2_ANIMATABLE::Load(TEV2_MEMORY_CURSOR& cursor, float /*version*/)
{
    m_current_key = cursor.ReadU32();
    m_fraction = cursor.ReadF32();
    LoadBlock(cursor, m_times);
    return true;
}

bool TEV2_ANIMATABLE::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = writer.WriteU32(m_current_key);
    saved &= writer.WriteF32(m_fraction);
    saved &= SaveNumbers(writer, m_times);
    return saved;
}

void TEV2_ANIMATABLE::Update(float delta_time)
{
    TrackMover(m_current_key).Update(*this, delta_time);
}

void TEV2_ANIMATABLE::SetTime(float time)
{
    TrackMover(m_current_key).SetTime(*this, time);
}

} // namespace TEV2_LOADER
