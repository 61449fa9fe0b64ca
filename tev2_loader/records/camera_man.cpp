#include "tev2_loader/records/camera_man.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_CAMERA_MAN::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_CAMERA_MAN::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

void TEV2_CAMERA_MAN::Update(float delta_time)
{
    UpdateEach(delta_time, cameraIndex);
}

void TEV2_CAMERA_MAN::SetTime(float time)
{
    SetTimeEach(time, cameraIndex);
}

} // namespace TEV2_LOADER
