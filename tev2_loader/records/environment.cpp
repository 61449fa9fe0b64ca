#include "tev2_loader/records/environment.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_ENVIRONMENT::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_ENVIRONMENT::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
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
