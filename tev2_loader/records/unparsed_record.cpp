#include "tev2_loader/records/unparsed_record.h"

#include "tev2_loader/format.h"

namespace TEV2_LOADER
{

void UnparsedBody::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    if (version != kVersion)
    {
        cursor.Warn(TEV2_LOAD_CODE::UnparsedOtherVersion, "version " + NumberText(kVersion),
                    "version " + NumberText(version));
    }
    bytes.clear();
    if (cursor.current < cursor.chunkEnd &&
        cursor.TakeMemory(static_cast<std::size_t>(cursor.chunkEnd - cursor.current)))
        bytes.assign(cursor.current, cursor.chunkEnd);
    cursor.current += bytes.size();
}

bool UnparsedBody::Save(TEV2_FILE_WRITER& writer) const
{
    return writer.WriteBlock(bytes.data(), bytes.size()) == bytes.size();
}

} // namespace TEV2_LOADER
