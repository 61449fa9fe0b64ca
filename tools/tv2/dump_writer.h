#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/wide_string.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace tv2
{

/// Elements of one or more numbers of 4 bytes, whole or not, such as triangles and positions.
class NumberTable
{
public:
    template <TEV2_LOADER::BlockElement Element>
    explicit NumberTable(const std::vector<Element>& elements)
        : bytes_(reinterpret_cast<const char*>(elements.data())),
          count_(elements.size()),
          width_(sizeof(Element) / kNumberBytes),
          whole_(kWhole<Element>)
    {
    }

    std::size_t Count() const { return count_; }
    std::size_t Width() const { return width_; }
    bool Whole() const { return whole_; }
    std::uint32_t Integer(std::size_t element, std::size_t component) const
    {
        return Read<std::uint32_t>(element, component);
    }
    float Float(std::size_t element, std::size_t component) const { return Read<float>(element, component); }

private:
    static constexpr std::size_t kNumberBytes = 4;

    template <typename Element>
    static constexpr bool kWhole = []
    {
        if constexpr (requires { typename Element::value_type; })
            return std::is_integral_v<typename Element::value_type>;
        else
            return std::is_integral_v<Element>;
    }();

    template <typename Number>
    Number Read(std::size_t element, std::size_t component) const
    {
        Number number;
        std::memcpy(&number, bytes_ + (element * width_ + component) * sizeof number, sizeof number);
        return number;
    }

    const char* bytes_;
    std::size_t count_;
    std::size_t width_;
    bool whole_;
};

/// Receives the contents of a file value by value and writes them out at once, so that a dump needs no memory
/// of its own. Inside an array the keys are ignored.
class DumpWriter
{
public:
    virtual ~DumpWriter() = default;

    virtual void BeginObject(std::string_view key) = 0;
    virtual void EndObject() = 0;
    virtual void BeginArray(std::string_view key, std::size_t count) = 0;
    virtual void EndArray() = 0;

    virtual void Integer(std::string_view key, std::int64_t value) = 0;
    virtual void Float(std::string_view key, float value) = 0;
    virtual void Boolean(std::string_view key, bool value) = 0;
    virtual void String(std::string_view key, const TEV2_LOADER::TEV2_WIDE_STRING& string) = 0;
    virtual void Strings(std::string_view key, std::span<const TEV2_LOADER::TEV2_WIDE_STRING> strings) = 0;
    virtual void Text(std::string_view key, std::string_view text) = 0;
    virtual void Bytes(std::string_view key, std::span<const std::uint8_t> bytes) = 0;
    virtual void Numbers(std::string_view key, const NumberTable& numbers) = 0;
    virtual void Absent(std::string_view key) = 0;
    /// A track with all its keys; a null track is absent.
    virtual void Track(std::string_view key, const TEV2_LOADER::TEV2_ANIMATABLE* track) = 0;
};

/// JSON; numbers are f32 in their shortest form, non-finite ones strings (FloatText). A string whose text
/// does not tell its UTF-16 units is followed by a member "<key>Units" with them as numbers; in the units of
/// a list of strings, those that need none have null.
std::unique_ptr<DumpWriter> MakeJsonDump(std::ostream& out);

/// An indented tree. At most `limit` keys of a track and lines of bytes are printed.
std::unique_ptr<DumpWriter> MakeTreeDump(std::ostream& out, std::size_t limit);

} // namespace tv2
