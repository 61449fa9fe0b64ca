#include "tev2_loader/records/lit_object.h"

#include "tev2_loader/io/arrays.h"

namespace TEV2_LOADER
{

bool TEV2_LIT_OBJECT::Load(TEV2_MEMORY_CURSOR& cursor, float /*version*/)
{
    LoadBlock(cursor, lights);
    return true;
}

bool TEV2_LIT_OBJECT::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveNumbers(writer, lights);
}

} // namespace TEV2_LOADER
