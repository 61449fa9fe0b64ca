#pragma once

#include "host/import/fbx/record_tree.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace mobu_host::fbx
{

/// How text files write floats. A number with a point or an exponent is a decimal in either.
enum class TextFloats
{
    Decimal,
    WholeNumbersAreBits
};

/// Unpacks the arrays of records. One serves many arrays; it keeps its working memory.
class ArrayReader
{
public:
    ArrayReader();
    ~ArrayReader();
    ArrayReader(const ArrayReader&) = delete;
    ArrayReader& operator=(const ArrayReader&) = delete;

    static constexpr std::uint64_t kAny = std::numeric_limits<std::uint64_t>::max();

    /// The numbers of a record, in whichever of the three forms it holds them: a binary array, deflated or not; a
    /// text array with its child "a"; a plain list. Replaces what `numbers` held. Throws ParseError when the array and
    /// its stated length or size do not agree, for what is not a number, and for a deflated array of more numbers
    /// than `most`, before it takes memory.
    void Read(const Record& record, std::vector<double>& numbers, std::uint64_t most = kAny);
    void Read(const Record& record, std::vector<float>& numbers, std::uint64_t most = kAny,
              TextFloats form = TextFloats::Decimal);
    void Read(const Record& record, std::vector<std::int64_t>& numbers, std::uint64_t most = kAny);
    void Read(const Record& record, std::vector<std::int32_t>& numbers, std::uint64_t most = kAny);

private:
    template <class Number>
    void ReadAs(const Record& record, std::vector<Number>& numbers, std::uint64_t most,
                TextFloats form = TextFloats::Decimal);
    template <class Number>
    void ReadBinary(const Value& value, const ArrayHeader& header, std::size_t offset, std::uint64_t most,
                    std::vector<Number>& numbers);
    void Inflate(std::string_view packed, char* to, std::size_t size, std::size_t offset);

    struct Stream;
    std::unique_ptr<Stream> stream_;
    std::vector<char> unpacked_;
};

} // namespace mobu_host::fbx
