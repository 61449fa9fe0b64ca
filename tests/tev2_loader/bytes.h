#pragma once

#include "tev2_loader/io/file_image.h"
#include "tev2_loader/io/file_writer.h"
#include "tev2_loader/io/memory_cursor.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tev2_tests
{

/// Bytes of a file, put together by hand.
class Bytes
{
public:
    std::vector<std::uint8_t> data;

    Bytes& U8(std::initializer_list<std::uint8_t> values)
    {
        data.insert(data.end(), values);
        return *this;
    }
    Bytes& U16(std::uint16_t value) { return Number(value); }
    Bytes& U32(std::uint32_t value) { return Number(value); }
    Bytes& U32(std::initializer_list<std::uint32_t> values)
    {
        for (const std::uint32_t value : values)
            Number(value);
        return *this;
    }
    Bytes& F32(std::initializer_list<float> values)
    {
        for (const float value : values)
            Number(value);
        return *this;
    }
    Bytes& Text(std::u16string_view text)
    {
        U16(static_cast<std::uint16_t>(text.size()));
        for (const char16_t unit : text)
            Number(unit);
        return *this;
    }
    Bytes& Zeros(std::size_t count)
    {
        data.insert(data.end(), count, std::uint8_t{0});
        return *this;
    }
    Bytes& Append(const Bytes& other)
    {
        data.insert(data.end(), other.data.begin(), other.data.end());
        return *this;
    }

    /// A chunk with its size in front.
    Bytes& Chunk(std::uint32_t id, const Bytes& body = {})
    {
        return U32({static_cast<std::uint32_t>(body.data.size() + 8), id}).Append(body);
    }

private:
    template <typename Value>
    Bytes& Number(Value value)
    {
        for (std::size_t byte = 0; byte < sizeof value; ++byte)
        {
            std::uint64_t bits = 0;
            std::memcpy(&bits, &value, sizeof value);
            data.push_back(static_cast<std::uint8_t>(bits >> (8 * byte)));
        }
        return *this;
    }
};

/// A file name of this process and test alone.
inline std::string TemporaryPath(const std::string& name)
{
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string path = std::string(test->test_suite_name()) + "." + test->name() + "." + name;
    for (char& letter : path)
        letter = letter == '/' ? '-' : letter;
    return testing::TempDir() + path;
}

inline std::vector<std::uint8_t> FileBytes(const std::string& path)
{
    std::vector<std::uint8_t> image;
    std::string error;
    EXPECT_TRUE(TEV2_LOADER::ReadFileImage(path, image, error)) << path << ": " << error;
    return image;
}

/// Calls save with a writer that takes everything and returns what it wrote.
template <typename Call>
std::vector<std::uint8_t> WrittenBy(Call save)
{
    const std::string path = TemporaryPath("written");
    {
        TEV2_LOADER::TEV2_FILE_WRITER writer(TEV2_LOADER::TEV2_WIDE_STRING::FromBytes(path), false, false);
        save(writer);
        EXPECT_EQ(writer.stream->lastError, 0);
    }
    std::vector<std::uint8_t> image = FileBytes(path);
    std::remove(path.c_str());
    return image;
}

/// What a record writes; its Save must succeed.
template <typename Record>
std::vector<std::uint8_t> SavedBytes(const Record& record)
{
    return WrittenBy([&record](TEV2_LOADER::TEV2_FILE_WRITER& writer) { EXPECT_TRUE(record.Save(writer)); });
}

inline TEV2_LOADER::TEV2_WIDE_STRING Wide(std::u16string_view text)
{
    return TEV2_LOADER::TEV2_WIDE_STRING(text);
}

/// Loads a record from bytes that something else follows; returns how many bytes it took.
template <typename Record>
std::size_t LoadedBytes(Record& record, const Bytes& bytes, float version)
{
    std::vector<std::uint8_t> image = bytes.data;
    image.insert(image.end(), 256, std::uint8_t{0xEE});
    TEV2_LOADER::TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
    EXPECT_TRUE(record.Load(cursor, version));
    EXPECT_FALSE(cursor.Failed());
    return cursor.Offset();
}

} // namespace tev2_tests
