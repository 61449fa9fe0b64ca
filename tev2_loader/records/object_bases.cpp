#include "tev2_loader/records/object_bases.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_ENTITY::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_ENTITY::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

} // namespace TEV2_LOADER
