#include "tev2_loader/records/camera_effects.h"

#include "tev2_loader/io/optional_track.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_CAMERA_EFFECT> TEV2_CAMERA_EFFECT::Create(std::uint32_t type)
{
    switch (type)
    {
    case 0:
        return std::make_unique<TEV2_CAMERA_MOTION_BLUR_EFFECT>();
    case 1:
        return std::make_unique<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>();
    default:
        return nullptr;
    }
}

bool TEV2_CAMERA_MOTION_BLUR_EFFECT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadOptionalTrack(cursor, version, "shutterTime", shutterTime);
}

bool TEV2_CAMERA_MOTION_BLUR_EFFECT::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveOptionalTrack(writer, shutterTime);
}

std::unique_ptr<TEV2_CAMERA_EFFECT> TEV2_CAMERA_MOTION_BLUR_EFFECT::Clone() const
{
    auto clone = std::make_unique<TEV2_CAMERA_MOTION_BLUR_EFFECT>();
    clone->shutterTime = CloneTrack(shutterTime);
    return clone;
}

void TEV2_CAMERA_MOTION_BLUR_EFFECT::Update(float delta_time)
{
    UpdateEach(delta_time, shutterTime);
}

void TEV2_CAMERA_MOTION_BLUR_EFFECT::SetTime(float time)
{
    SetTimeEach(time, shutterTime);
}

bool TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    bool loaded = LoadOptionalTrack(cursor, version, "focusDistance", focusDistance);
    loaded &= LoadOptionalTrack(cursor, version, "fNumber", fNumber);
    return loaded;
}

bool TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = SaveOptionalTrack(writer, focusDistance);
    saved &= SaveOptionalTrack(writer, fNumber);
    return saved;
}

std::unique_ptr<TEV2_CAMERA_EFFECT> TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT::Clone() const
{
    auto clone = std::make_unique<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>();
    clone->focusDistance = CloneTrack(focusDistance);
    clone->fNumber = CloneTrack(fNumber);
    return clone;
}

void TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT::Update(float delta_time)
{
    UpdateEach(delta_time, focusDistance, fNumber);
}

void TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT::SetTime(float time)
{
    SetTimeEach(time, focusDistance, fNumber);
}

} // namespace TEV2_LOADER
