#include "host/import/fbx/arrays.h"

#include "host/import/base/parse_error.h"
#include "host/import/fbx/little_endian.h"

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <new>
#include <optional>
#include <type_traits>

namespace mobu_host::fbx
{
namespace
{

// No deflated stream unpacks to more than this many times its size.
constexpr std::uint64_t kDeflateLimit = 1032;

std::size_t ElementSize(char code)
{
    switch (code)
    {
    case 'd':
    case 'l':
        return 8;
    case 'f':
    case 'i':
        return 4;
    default:
        return 1;
    }
}

template <class Number>
constexpr char CodeOf()
{
    if constexpr (std::is_same_v<Number, double>)
        return 'd';
    else if constexpr (std::is_same_v<Number, float>)
        return 'f';
    else if constexpr (std::is_same_v<Number, std::int64_t>)
        return 'l';
    else
        return 'i';
}

// Numbers of another kind, each by its value; those out of range give the nearest that fits.
template <class Number, class Stored>
void Convert(std::string_view bytes, std::vector<Number>& numbers)
{
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        const auto stored = LittleEndian<Stored>(bytes, i * sizeof(Stored));
        if constexpr (std::is_integral_v<Number> && std::is_floating_point_v<Stored>)
            numbers[i] = static_cast<Number>(std::clamp(stored == stored ? static_cast<double>(stored) : 0.0,
                                                        -2147483648.0, 2147483647.0));
        else
            numbers[i] = static_cast<Number>(stored);
    }
}

// A number of a text file.
template <class Number>
std::optional<Number> NumberOf(const Value& value, TextFloats form)
{
    if constexpr (std::is_same_v<Number, float>)
        if (form == TextFloats::WholeNumbersAreBits)
            if (const auto bits = value.WholeNumber())
                return std::bit_cast<float>(static_cast<std::uint32_t>(*bits));
    if constexpr (std::is_floating_point_v<Number>)
    {
        const auto real = value.Number();
        return real ? std::optional(static_cast<Number>(*real)) : std::nullopt;
    }
    else
    {
        const auto whole = value.Whole();
        return whole ? std::optional(static_cast<Number>(*whole)) : std::nullopt;
    }
}

} // namespace

struct ArrayReader::Stream : z_stream
{
    Stream() : z_stream{}
    {
        if (inflateInit(this) != Z_OK)
            throw std::bad_alloc();
    }
    ~Stream() { inflateEnd(this); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
};

ArrayReader::ArrayReader() = default;
ArrayReader::~ArrayReader() = default;

void ArrayReader::Read(const Record& record, std::vector<double>& numbers, std::uint64_t most)
{
    ReadAs(record, numbers, most);
}
void ArrayReader::Read(const Record& record, std::vector<float>& numbers, std::uint64_t most, TextFloats form)
{
    ReadAs(record, numbers, most, form);
}
void ArrayReader::Read(const Record& record, std::vector<std::int64_t>& numbers, std::uint64_t most)
{
    ReadAs(record, numbers, most);
}
void ArrayReader::Read(const Record& record, std::vector<std::int32_t>& numbers, std::uint64_t most)
{
    ReadAs(record, numbers, most);
}

template <class Number>
void ArrayReader::ReadAs(const Record& record, std::vector<Number>& numbers, std::uint64_t most,
                         TextFloats form)
{
    numbers.clear();
    if (!record)
        return;
    Record list = record;
    ValueCursor cursor(list);
    Value value;
    if (!cursor.Next(value))
        return;
    if (value.IsArray())
    {
        const std::size_t offset = cursor.Offset() - value.Bytes().size();
        ReadBinary(value, cursor.Array(), offset, most, numbers);
        return;
    }
    if (value.Code() == '*')
    {
        list = record.Child("a");
        if (!list)
            throw ParseError(record.Offset(), "an array has no content");
        if (value.Bytes() != std::to_string(list.ValueCount()))
            throw ParseError(record.Offset(), "an array of " + std::string(value.Bytes()) + " holds " +
                                                  std::to_string(list.ValueCount()) + " numbers");
        cursor = ValueCursor(list);
        cursor.Next(value);
    }
    numbers.reserve(static_cast<std::size_t>(list.ValueCount()));
    do
    {
        const std::optional<Number> number = NumberOf<Number>(value, form);
        if (!number)
            throw ParseError(cursor.Offset(), "an array holds something other than numbers");
        numbers.push_back(*number);
    } while (cursor.Next(value));
}

template <class Number>
void ArrayReader::ReadBinary(const Value& value, const ArrayHeader& header, std::size_t offset,
                             std::uint64_t most, std::vector<Number>& numbers)
{
    const char code = value.Code();
    std::string_view bytes = value.Bytes();
    const std::uint64_t size = std::uint64_t{header.count} * ElementSize(code);
    if (header.encoding > 1)
        throw ParseError(offset, "an array has the unknown encoding " + std::to_string(header.encoding));
    const bool packed = header.encoding == 1;
    if (packed ? size > header.size * kDeflateLimit : size != header.size)
        throw ParseError(offset, "an array of " + std::to_string(header.count) +
                                     " elements does not fit in " + std::to_string(header.size) + " bytes");
    if (packed && header.count > most)
        throw ParseError(offset, "a deflated array of " + std::to_string(header.count) +
                                     " elements, where no more than " + std::to_string(most) + " can be");
    numbers.resize(header.count);
    if (code == CodeOf<Number>())
    {
        char* const to = reinterpret_cast<char*>(numbers.data());
        if (packed)
            Inflate(bytes, to, static_cast<std::size_t>(size), offset);
        else
            std::copy(bytes.begin(), bytes.end(), to);
        return;
    }
    if (packed)
    {
        unpacked_.resize(static_cast<std::size_t>(size));
        Inflate(bytes, unpacked_.data(), unpacked_.size(), offset);
        bytes = {unpacked_.data(), unpacked_.size()};
    }
    switch (code)
    {
    case 'd':
        Convert<Number, double>(bytes, numbers);
        break;
    case 'f':
        Convert<Number, float>(bytes, numbers);
        break;
    case 'l':
        Convert<Number, std::int64_t>(bytes, numbers);
        break;
    case 'i':
        Convert<Number, std::int32_t>(bytes, numbers);
        break;
    default:
        Convert<Number, std::uint8_t>(bytes, numbers);
        break;
    }
}

void ArrayReader::Inflate(std::string_view packed, char* to, std::size_t size, std::size_t offset)
{
    if (!stream_)
        stream_ = std::make_unique<Stream>();
    else
        inflateReset(stream_.get());
    Bytef nothing = 0; // an empty array has no place of its own
    // zlib's interface takes its input for writable; it does not write there.
    stream_->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream_->avail_in = static_cast<uInt>(packed.size());
    stream_->next_out = size == 0 ? &nothing : reinterpret_cast<Bytef*>(to);
    stream_->avail_out = static_cast<uInt>(size);
    if (size > 0xFFFFFFFFU)
        throw ParseError(offset, "an array of 4 GiB and more is not read");
    const int result = inflate(stream_.get(), Z_FINISH);
    if (result != Z_STREAM_END || stream_->avail_out != 0)
        throw ParseError(offset, "a deflated array is damaged or not of the stated length");
}

} // namespace mobu_host::fbx
