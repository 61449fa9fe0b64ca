#include "tev2_loader/records/camera_effects.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

std::unique_ptr<TEV2_CAMERA_EFFECT> TEV2_CAMERA_EFFECT::Create(std::uint32_t type)
{
    return decltype(ClassesOf(std::declval<TEV2_CAMERA_EFFECT&>()))::Create(type);
}

bool TEV2_CAMERA_MOTION_BLUR_EFFECT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_CAMERA_MOTION_BLUR_EFFECT::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
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
    return LoadFields(*this, cursor, version);
}

bool TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
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
