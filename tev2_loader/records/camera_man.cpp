#include "tev2_loader/records/camera_man.h"

#include "tev2_loader/io/optional_track.h"

namespace TEV2_LOADER
{

bool TEV2_CAMERA_MAN::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadOptionalTrack(cursor, version, "cameraIndex", cameraIndex);
}

bool TEV2_CAMERA_MAN::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveOptionalTrack(writer, cameraIndex);
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
