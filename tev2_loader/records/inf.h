#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/object_bases.h"

namespace TEV2_LOADER
{

/// The first record of every file: its version and who made it.
class TEV2_INF : public TEV2_CHUNK_OBJECT
{
public:
    /// The version of the file that was loaded. Save always writes kVersion.
    float version = kVersion;
    TEV2_WIDE_STRING creatorText{kDefaultCreator};

    /// Lines that each end in "\r\n".
    TEV2_WIDE_STRING infoText;

    template <typename Self, typename Archive>
    static void Fields(Self& information, Archive& archive)
    {
        archive.Constant("version", information.version, kVersion, Counts::kNever);
        archive.Text("creatorText", information.creatorText);
        archive.Text("infoText", information.infoText);
    }

    /// False, and the cursor failed, for a version above kVersion. The version passed in is ignored.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version_before);

    /// Always true.
    bool Save(TEV2_FILE_WRITER& writer) const;

    std::uint32_t GetChunkId() const override { return kInformationChunk; }
};

} // namespace TEV2_LOADER
