#include "tev2_loader/records/environment.h"

#include "tev2_loader/io/optional_track.h"

namespace TEV2_LOADER
{

namespace
{

bool LoadMap(TEV2_MEMORY_CURSOR& cursor, float version, std::unique_ptr<TEV2_MATERIAL_MAP>& map)
{
    const RecordScope scope(cursor, "environmentMap");
    map.reset();
    const std::uint32_t present = cursor.ReadU32();
    if (present == 0)
        return true;
    TEV2_MEMORY_CURSOR ahead(cursor.current, cursor.Remaining());
    map = TEV2_MATERIAL_MAP::Create(ahead.ReadU32());
    if (!map)
    {
        return cursor.Fail(TEV2_LOAD_CODE::EnvironmentMapUnsupported, "0", std::to_string(present),
                           sizeof present);
    }
    cursor.ReadU32(); // the type
    return map->Load(cursor, version);
}

} // namespace

std::unique_ptr<TEV2_MATERIAL_MAP> TEV2_MATERIAL_MAP::Create(std::uint32_t /*type*/)
{
    return nullptr;
}

bool TEV2_ENVIRONMENT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    timeRange.Load(cursor, version);
    bool loaded = LoadOptionalTrack(cursor, version, "environmentColour", environmentColour);
    loaded &= LoadMap(cursor, version, environmentMap);
    if (version >= kSinceReservedBytes)
        cursor.ReadBlock(reserved.data(), reserved.size());
    return loaded;
}

bool TEV2_ENVIRONMENT::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = timeRange.Save(writer);
    saved &= SaveOptionalTrack(writer, environmentColour);
    saved &= SaveOptionalTrack(writer, environmentMap);
    writer.WriteBlock(reserved.data(), reserved.size());
    return saved;
}

void TEV2_ENVIRONMENT::Update(float delta_time)
{
    UpdateEach(delta_time, environmentColour, environmentMap);
}

void TEV2_ENVIRONMENT::SetTime(float time)
{
    SetTimeEach(time, environmentColour, environmentMap);
}

} // namespace TEV2_LOADER
