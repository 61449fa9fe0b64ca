#pragma once

#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/memory_cursor.h"

#include <cstdint>
#include <type_traits>
#include <vector>

namespace TEV2_LOADER
{

template <typename Element>
bool SaveCount(TEV2_FILE_WRITER& writer, const std::vector<Element>& elements)
{
    return writer.WriteU32(static_cast<std::uint32_t>(elements.size()));
}

/// An element whose memory is its disk form: nothing but 4-byte numbers, without padding.
template <typename Element>
concept BlockElement = std::is_trivially_copyable_v<Element> && sizeof(Element) % 4 == 0 &&
                       alignof(Element) == 4;

/// Writes the elements, without their count, as one block. True when all bytes were written.
template <BlockElement Element>
bool SaveBlock(TEV2_FILE_WRITER& writer, const std::vector<Element>& elements)
{
    const std::size_t size = elements.size() * sizeof(Element);
    return writer.WriteBlock(elements.data(), size) == size;
}

/// Writes u32 count and plain numbers. The count alone decides the result; a short write of the numbers is
/// latched.
template <BlockElement Number>
requires std::is_arithmetic_v<Number>
bool SaveNumbers(TEV2_FILE_WRITER& writer, const std::vector<Number>& numbers)
{
    const bool saved = SaveCount(writer, numbers);
    SaveBlock(writer, numbers);
    return saved;
}

/// Reads u32 count and that many elements, replacing what the array held.
template <BlockElement Element>
void LoadBlock(TEV2_MEMORY_CURSOR& cursor, std::vector<Element>& elements)
{
    elements.clear();
    const std::size_t count = cursor.ReadCount(sizeof(Element));
    if (!cursor.TakeMemory(count * sizeof(Element)))
        return;
    elements.resize(count);
    cursor.ReadBlock(elements.data(), elements.size() * sizeof(Element));
}

/// Writes u32 count and the record of each element. True when all of it was written.
template <typename Record>
bool SaveRecords(TEV2_FILE_WRITER& writer, const std::vector<Record>& records)
{
    bool saved = SaveCount(writer, records);
    for (const Record& record : records)
        saved &= record.Save(writer);
    return saved;
}

/// Reads u32 count and that many records of at least leastSize bytes each, replacing what the array held. The
/// array grows with what is read, never ahead of it. After each record, examine(record, begin, count) is called with
/// the byte where the record begins. True when every record was read.
template <typename Record, typename Examine>
bool LoadRecords(TEV2_MEMORY_CURSOR& cursor, float version, const char* label, std::vector<Record>& records,
                 std::size_t leastSize, Examine examine)
{
    records.clear();
    bool loaded = true;
    const std::uint32_t count = cursor.ReadCount(leastSize);
    for (std::uint32_t index = 0; index < count && !cursor.Failed(); ++index)
    {
        const RecordScope scope(cursor, label, index);
        if (!cursor.TakeMemory(sizeof(Record)))
            return false;
        const std::size_t begin = cursor.Offset();
        loaded &= records.emplace_back().Load(cursor, version);
        if (!cursor.Failed())
            examine(records.back(), begin, count);
    }
    return loaded && !cursor.Failed();
}

template <typename Record>
bool LoadRecords(TEV2_MEMORY_CURSOR& cursor, float version, const char* label, std::vector<Record>& records,
                 std::size_t leastSize)
{
    return LoadRecords(cursor, version, label, records, leastSize,
                       [](const Record&, std::size_t, std::uint32_t) {});
}

} // namespace TEV2_LOADER
