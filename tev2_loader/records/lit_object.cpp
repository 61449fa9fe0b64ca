#include "tev2_loader/records/lit_object.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_LIT_OBJECT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_LIT_OBJECT::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

} // namespace TEV2_LOADER
