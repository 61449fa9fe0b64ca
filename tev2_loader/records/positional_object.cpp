#include "tev2_loader/records/positional_object.h"

#include "tev2_loader/format.h"

namespace TEV2_LOADER
{

bool TEV2_POSITIONAL_OBJECT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    const bool loaded = TEV2_ENTITY::Load(cursor, version);
    ReadWideString(cursor, secondText);
    ReadWideString(cursor, thirdText);
    value = cursor.ReadU32();
    if (version >= kSinceProperties)
        properties.Load(cursor, version);
    if (version >= kSinceBounds)
        LoadOptionalTrack(cursor, version, "bounds", bounds);
    return loaded;
}

bool TEV2_POSITIONAL_OBJECT::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = TEV2_ENTITY::Save(writer);
    WriteWideString(*writer.stream, secondText);
    WriteWideString(*writer.stream, thirdText);
    writer.WriteU32(value);
    properties.Save(writer);
    saved &= SaveOptionalTrack(writer, bounds);
    return saved;
}

void TEV2_POSITIONAL_OBJECT::Update(float delta_time)
{
    UpdateEach(delta_time, bounds);
}

void TEV2_POSITIONAL_OBJECT::SetTime(float time)
{
    SetTimeEach(time, bounds);
}

} // namespace TEV2_LOADER
