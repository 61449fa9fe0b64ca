#include "tev2_loader/records/object_bases.h"

namespace TEV2_LOADER
{

bool TEV2_ENTITY::Load(TEV2_MEMORY_CURSOR& cursor, float /*version*/)
{
    ReadWideString(cursor, name);
    return true;
}

bool TEV2_ENTITY::Save(TEV2_FILE_WRITER& writer) const
{
    WriteWideString(*writer.stream, name);
    return true;
}

} // namespace TEV2_LOADER
