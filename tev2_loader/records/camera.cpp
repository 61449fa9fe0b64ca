#include "tev2_loader/records/camera.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_CAMERA::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_CAMERA::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

void TEV2_CAMERA::Update(float delta_time)
{
    UpdateEach(delta_time, distance, fieldOfView, secondaryRange, clipRange);
    for (const auto& effect : effects)
        UpdateEach(delta_time, effect);
}

void TEV2_CAMERA::SetTime(float time)
{
    SetTimeEach(time, distance, fieldOfView, secondaryRange, clipRange);
    for (const auto& effect : effects)
        SetTimeEach(time, effect);
}

} // namespace TEV2_LOADER
