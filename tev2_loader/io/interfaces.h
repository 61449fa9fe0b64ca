#pragma once

#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/memory_cursor.h"

#include <cstdint>
#include <memory>

namespace TEV2_LOADER
{

/// A record of the file. It writes no length of its own: Load takes exactly what Save wrote, in the layout of
/// the given file version; Save always writes the newest layout.
class TEV2_SERIALISABLE_OBJECT
{
public:
    virtual ~TEV2_SERIALISABLE_OBJECT() = default;

    /// Reads the record at the cursor. Whether all of it was there shows in the result or in cursor.Failed().
    virtual bool Load(TEV2_MEMORY_CURSOR& cursor, float version) = 0;

    /// Writes the record; goes on after a failed write. False when one of the writes that the record counts
    /// fell short; every short write is latched in the writer's stream.
    virtual bool Save(TEV2_FILE_WRITER& writer) const = 0;
};

/// A record that is a chunk of its own.
class TEV2_CHUNK_OBJECT
{
public:
    virtual ~TEV2_CHUNK_OBJECT() = default;

    virtual std::uint32_t GetChunkId() const = 0;
};

/// An object that moves with time. Tracks move their cursor; all others pass the call on to the tracks they hold.
class TEV2_INTERNAL_ANIM_OBJECT
{
public:
    virtual ~TEV2_INTERNAL_ANIM_OBJECT() = default;

    /// Moves on by `delta_time` seconds; tracks wrap past their end.
    virtual void Update(float delta_time) = 0;

    /// Seeks to `time` (seconds), clamped to the key range of each track.
    virtual void SetTime(float time) = 0;
};

/// Pass a call on to each object that is not null.
template <typename... Objects>
void UpdateEach(float delta_time, const std::unique_ptr<Objects>&... objects)
{
    ((objects ? objects->Update(delta_time) : void()), ...);
}

template <typename... Objects>
void SetTimeEach(float time, const std::unique_ptr<Objects>&... objects)
{
    ((objects ? objects->SetTime(time) : void()), ...);
}

} // namespace TEV2_LOADER
