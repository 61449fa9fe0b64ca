#pragma once

#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/memory_cursor.h"

#include <cstdint>
#include <memory>
#include <string>

namespace TEV2_LOADER
{

/// Writes an object that may be absent: u32 0, or u32 1, u32 type and the object's record. True when all of
/// it was written; an absent object is true whatever became of its zero.
template <typename Object>
bool SaveOptionalTrack(TEV2_FILE_WRITER& writer, const std::unique_ptr<Object>& object,
                       std::uint32_t (Object::*type)() const = &Object::GetType)
{
    if (!object)
    {
        writer.WriteU32(0);
        return true;
    }
    bool saved = writer.WriteU32(1);
    saved &= writer.WriteU32((object.get()->*type)());
    saved &= object->Save(writer);
    return saved;
}

/// Reads what SaveOptionalTrack wrote into object, replacing what it held; Object::Create makes the object of
/// a type. A type that Create does not know fails the cursor with the given code.
template <typename Object>
bool LoadOptionalTrack(TEV2_MEMORY_CURSOR& cursor, float version, const char* label,
                       std::unique_ptr<Object>& object,
                       TEV2_LOAD_CODE unknownType = TEV2_LOAD_CODE::UnknownTrackKind,
                       std::size_t index = RecordScope::kNoIndex)
{
    const RecordScope scope(cursor, label, index);
    object.reset();
    if (cursor.ReadU32() == 0)
        return !cursor.Failed();

    const std::uint32_t type = cursor.ReadU32();
    constexpr std::size_t kObjectBytes =
        96; // the largest class of them all, with a little for its allocation
    if (cursor.Failed() || !cursor.TakeMemory(kObjectBytes))
        return false;
    object = Object::Create(type);
    if (!object)
    {
        constexpr std::uint32_t kMostTypes = 12; // there are no higher numbers, of tracks or of effects
        std::string known;
        for (std::uint32_t candidate = 0; candidate < kMostTypes; ++candidate)
        {
            if (Object::Create(candidate))
                known += (known.empty() ? "" : " or ") + std::to_string(candidate);
        }
        return cursor.Fail(unknownType, known, std::to_string(type), sizeof type);
    }
    return object->Load(cursor, version);
}

} // namespace TEV2_LOADER
