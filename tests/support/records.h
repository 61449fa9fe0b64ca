#pragma once

#include "tests/support/bytes.h"
#include "tests/support/scratch_folder.h"
#include "tev2_loader/format.h"
#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/memory_cursor.h"

#include <string_view>

namespace tv2_tests
{

inline TEV2_LOADER::TEV2_WIDE_STRING Wide(std::u16string_view text)
{
    return TEV2_LOADER::TEV2_WIDE_STRING(text);
}

/// A writer to a file of this path.
inline TEV2_LOADER::TEV2_FILE_WRITER WriterTo(const std::string& path, bool append = false,
                                              bool requireChunk = true)
{
    return {TEV2_LOADER::TEV2_WIDE_STRING::FromBytes(path), append, requireChunk};
}

/// Calls save with a writer that takes everything and returns what it wrote.
template <typename Call>
std::vector<std::uint8_t> WrittenBy(Call save)
{
    const ScratchFolder folder;
    {
        TEV2_LOADER::TEV2_FILE_WRITER writer = WriterTo(folder.Path("written"), false, false);
        save(writer);
        EXPECT_EQ(writer.stream->lastError, 0);
    }
    return ReadBytes(folder.Path("written"));
}

/// What a record or a scene writes; its Save must succeed.
template <typename Record>
std::vector<std::uint8_t> SavedBytes(const Record& record)
{
    return WrittenBy([&record](TEV2_LOADER::TEV2_FILE_WRITER& writer) { EXPECT_TRUE(record.Save(writer)); });
}

/// Loads a record from bytes that something else follows; returns how many bytes it took.
template <typename Record>
std::size_t LoadedBytes(Record& record, const Bytes& bytes, float version)
{
    std::vector<std::uint8_t> image = bytes.data;
    image.insert(image.end(), 256, std::uint8_t{0xEE});
    TEV2_LOADER::TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
    cursor.chunkEnd = cursor.begin + bytes.data.size();
    EXPECT_TRUE(record.Load(cursor, version));
    EXPECT_FALSE(cursor.Failed());
    return cursor.Offset();
}

/// Expects that a record is stored as these bytes, and that another one made of them is, too; returns that one.
template <typename Record>
Record ExpectStoredAs(const Record& record, const Bytes& bytes)
{
    EXPECT_EQ(SavedBytes(record), bytes.data);
    Record loaded;
    EXPECT_EQ(LoadedBytes(loaded, bytes, TEV2_LOADER::kVersion), bytes.data.size());
    EXPECT_EQ(SavedBytes(loaded), bytes.data);
    return loaded;
}

} // namespace tv2_tests
