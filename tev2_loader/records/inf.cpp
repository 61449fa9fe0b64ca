#include "tev2_loader/records/inf.h"

namespace TEV2_LOADER
{

bool TEV2_INF::Load(TEV2_MEMORY_CURSOR& cursor, float /*version_before*/)
{
    const std::uint8_t* const start = cursor.current;
    version = cursor.ReadF32();
    ReadWideString(cursor, creatorText);
    ReadWideString(cursor, infoText);
    if (kVersion >= version)
        return true;
    return cursor.Fail(TEV2_LOAD_CODE::UnsupportedVersion, "at most " + NumberText(kVersion),
                       NumberText(version), static_cast<std::size_t>(cursor.current - start));
}

bool TEV2_INF::Save(TEV2_FILE_WRITER& writer) const
{
    writer.WriteF32(kVersion);
    WriteWideString(*writer.stream, creatorText);
    WriteWideString(*writer.stream, infoText);
    return true;
}

} // namespace TEV2_LOADER
