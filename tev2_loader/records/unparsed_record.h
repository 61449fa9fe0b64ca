#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/object_bases.h"

#include <cstdint>
#include <vector>

namespace TEV2_LOADER
{

/// The bytes of a record whose layout this library does not read: from the cursor to the end of the chunk.
class UnparsedBody
{
public:
    std::vector<std::uint8_t> bytes;

    /// Takes everything from the cursor to the end of its chunk. Bytes of a version other than the one they
    /// will be saved under get a warning, since their meaning may have changed.
    void Load(TEV2_MEMORY_CURSOR& cursor, float version);

    /// True when all bytes were written.
    bool Save(TEV2_FILE_WRITER& writer) const;
};

/// A chunk class of the given bases whose body is kept as bytes and written back unchanged, so that no scene
/// loses anything by passing through. The fields of the bases stay as constructed, and nothing of it moves
/// with time.
template <std::uint32_t kChunkId, typename... Bases>
class UnparsedRecord : public Bases...
{
public:
    UnparsedBody body;

    template <typename Self, typename Archive>
    static void Fields(Self& record, Archive& archive)
    {
        archive.Body("body", record.body);
    }

    // Not every set of bases declares all of these.
    // NOLINTBEGIN(modernize-use-override)
    virtual std::uint32_t GetChunkId() const { return kChunkId; }

    /// Always true.
    virtual bool Load(TEV2_MEMORY_CURSOR& cursor, float version)
    {
        body.Load(cursor, version);
        return true;
    }

    /// True when the whole body was written.
    virtual bool Save(TEV2_FILE_WRITER& writer) const { return body.Save(writer); }

    virtual void Update(float /*delta_time*/) {}
    virtual void SetTime(float /*time*/) {}
    // NOLINTEND(modernize-use-override)
};

} // namespace TEV2_LOADER
