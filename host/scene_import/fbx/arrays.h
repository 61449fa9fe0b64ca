#pragma once

#include "host/scene_import/fbx/record_tree.h"

#include <memory>
#include <string>
#include <vector>

namespace mobu_host::fbx
{

// Unpacks the arrays of records. One serves many arrays; it keeps its working memory.
class ArrayReader
{
public:
    ArrayReader();
    ~ArrayReader();
    ArrayReader(const ArrayReader&) = delete;
    ArrayReader& operator=(const ArrayReader&) = delete;

    // The numbers of a record, in whichever of the three forms it holds them: a binary array, deflated or not; a text
    // array with its child "a"; a plain list. Replaces what `numbers` held. Throws Damage when the array and its
    // stated length or size do not agree, and for what is not a number.
    void Read(const Record& record, std::vector<double>& numbers);
    void Read(const Record& record, std::vector<float>& numbers);
    void Read(const Record& record, std::vector<std::int64_t>& numbers);
    void Read(const Record& record, std::vector<std::int32_t>& numbers);

private:
    template <class Number>
    void ReadAs(const Record& record, std::vector<Number>& numbers);
    template <class Number>
    void ReadBinary(char code, const ArrayHeader& header, std::string_view bytes, std::size_t offset,
                    std::vector<Number>& numbers);
    void Inflate(std::string_view packed, char* to, std::size_t size, std::size_t offset);

    struct Stream;
    std::unique_ptr<Stream> stream_;
    std::vector<char> unpacked_;
};

} // namespace mobu_host::fbx
