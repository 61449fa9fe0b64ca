#include "tev2_loader/records/inf.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_INF::Load(TEV2_MEMORY_CURSOR& cursor, float version_before)
{
    const std::uint8_t* const start = cursor.current;
    const bool loaded = LoadFields(*this, cursor, version_before);
    if (kVersion >= version)
        return loaded;
    return cursor.Fail(TEV2_LOAD_CODE::UnsupportedVersion, "at most " + NumberText(kVersion),
                       NumberText(version), static_cast<std::size_t>(cursor.current - start));
}

bool TEV2_INF::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

} // namespace TEV2_LOADER
