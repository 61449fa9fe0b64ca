#include "tev2_loader/records/positional_object.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_POSITIONAL_OBJECT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_POSITIONAL_OBJECT::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
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
