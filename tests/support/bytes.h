#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace tv2_tests
{

/// Bytes of a file, put together by hand: Bytes().U32(kMagic).Chunk(0, Bytes::Of(1.16f, u"", u"")).
class Bytes
{
public:
    std::vector<std::uint8_t> data;

    Bytes() = default;
    explicit Bytes(std::vector<std::uint8_t> bytes) : data(std::move(bytes)) {}

    /// Texts, numbers of 4 bytes and other bytes one after another: Bytes::Of(u"node", 7u, 0.5f, Bytes().Zeros(8)).
    template <typename... Items>
    static Bytes Of(const Items&... items)
    {
        Bytes all;
        (all.Add(items), ...);
        return all;
    }

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
    void Add(std::u16string_view text) { Text(text); }
    void Add(std::uint32_t number) { Number(number); }
    void Add(float number) { Number(number); }
    void Add(const Bytes& other) { Append(other); }

    template <typename Value>
    Bytes& Number(Value value)
    {
        std::uint8_t bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        data.insert(data.end(), bytes, bytes + sizeof value);
        return *this;
    }
};

/// The number that bodies of ours have in front.
inline constexpr std::uint32_t kOurLayout = 0x4C590001u;

/// The bits of an f32.
inline std::uint32_t Bits(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

/// The u32 at an offset; 0 and a failed test when it is not inside the bytes.
inline std::uint32_t WordAt(const std::vector<std::uint8_t>& bytes, std::size_t offset)
{
    std::uint32_t word = 0;
    EXPECT_LE(offset + sizeof word, bytes.size());
    if (offset + sizeof word <= bytes.size())
        std::memcpy(&word, bytes.data() + offset, sizeof word);
    return word;
}

/// Replaces the u32 at an offset, which must be inside the bytes.
inline void SetWordAt(std::vector<std::uint8_t>& bytes, std::size_t offset, std::uint32_t word)
{
    ASSERT_LE(offset + sizeof word, bytes.size());
    std::memcpy(bytes.data() + offset, &word, sizeof word);
}

} // namespace tv2_tests
