#include "gltf/accessor.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace gltf
{
namespace
{

constexpr std::size_t kMemoryPerByte = 16;
constexpr std::size_t kMemoryAtLeast = std::size_t{4} << 20;
constexpr std::size_t kMostElements = 0xFFFFFFFF;

enum ComponentType : std::size_t
{
    kByte = 5120,
    kUnsignedByte = 5121,
    kShort = 5122,
    kUnsignedShort = 5123,
    kUnsignedInt = 5125,
    kFloat = 5126
};

std::size_t SizeOf(std::size_t component_type)
{
    if (component_type == kByte || component_type == kUnsignedByte)
        return 1;
    return component_type == kShort || component_type == kUnsignedShort ? 2 : 4;
}

std::size_t ComponentTypeIn(JsonValue json, const Place& place)
{
    const std::size_t type = SizeIn(json, "componentType", 0, std::nullopt, place);
    for (const std::size_t known : {kByte, kUnsignedByte, kShort, kUnsignedShort, kUnsignedInt, kFloat})
        if (type == known)
            return type;
    place.Fail("componentType", "is " + std::to_string(type) + ", which is none");
}

struct ElementType
{
    const char* name;
    std::size_t rows;
    std::size_t columns; // above 1 of a matrix: each starts at a multiple of 4 bytes
};

const ElementType& ElementTypeIn(JsonValue json, const Place& place)
{
    static constexpr ElementType kTypes[] = {{"SCALAR", 1, 1}, {"VEC2", 2, 1}, {"VEC3", 3, 1}, {"VEC4", 4, 1},
                                             {"MAT2", 2, 2},   {"MAT3", 3, 3}, {"MAT4", 4, 4}};
    for (const ElementType& type : kTypes)
        if (json["type"].Text() == type.name)
            return type;
    place.Fail("type", "is none of SCALAR, VEC2, VEC3, VEC4, MAT2, MAT3 and MAT4");
}

std::uint32_t LittleEndian(const char* bytes, std::size_t size)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value |= std::uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    return value;
}

double Component(const char* bytes, std::size_t type, bool normalised)
{
    const std::uint32_t raw = LittleEndian(bytes, SizeOf(type));
    switch (type)
    {
    case kByte:
    {
        const double value = static_cast<std::int8_t>(raw);
        return normalised ? std::max(value / 127.0, -1.0) : value;
    }
    case kUnsignedByte:
        return normalised ? raw / 255.0 : raw;
    case kShort:
    {
        const double value = static_cast<std::int16_t>(raw);
        return normalised ? std::max(value / 32767.0, -1.0) : value;
    }
    case kUnsignedShort:
        return normalised ? raw / 65535.0 : raw;
    case kFloat:
        return static_cast<double>(std::bit_cast<float>(raw));
    default:
        return raw;
    }
}

// Elements in a buffer view.
struct Span
{
    std::string_view bytes;
    std::size_t stride;
};

// `owner` names the view and the offset in it. A stride of 0 is that of elements without gaps.
Span SpanOf(Document& document, JsonValue owner, std::size_t count, std::size_t element_size,
            bool may_have_stride, const Place& place)
{
    const std::size_t view = IndexIn(owner, "bufferView", document.Count("bufferViews"), place);
    const std::size_t offset = SizeIn(owner, "byteOffset", 0, 0, place);
    std::size_t stride = element_size;
    if (may_have_stride)
        stride = SizeIn(document.Root()["bufferViews"][view], "byteStride", element_size, element_size,
                        document.PlaceOf("bufferViews", view));
    const std::string_view bytes = document.ViewBytes(view);
    if (count > 0 && (offset > bytes.size() || element_size > bytes.size() - offset ||
                      count - 1 > (bytes.size() - offset - element_size) / stride))
        place.Fail("its " + std::to_string(count) + " elements reach beyond the " +
                   std::to_string(bytes.size()) + " bytes of bufferViews[" + std::to_string(view) + "]");
    return {count > 0 ? bytes.substr(offset) : std::string_view(), stride};
}

// Where the components of an element are.
class ElementReader
{
public:
    ElementReader(JsonValue json, const Place& place)
        : component_type_(ComponentTypeIn(json, place)),
          type_(ElementTypeIn(json, place)),
          normalised_(json["normalized"].Truth().value_or(false))
    {
        column_size_ = type_.rows * SizeOf(component_type_);
        if (type_.columns > 1)
            column_size_ = (column_size_ + 3) / 4 * 4;
    }

    std::size_t Width() const { return type_.rows * type_.columns; }
    std::size_t Size() const
    {
        return (type_.columns - 1) * column_size_ + type_.rows * SizeOf(component_type_);
    }

    void Read(const char* element, std::size_t index, double* numbers, const Place& place) const
    {
        for (std::size_t column = 0; column < type_.columns; ++column)
        {
            const char* component = element + column * column_size_;
            for (std::size_t row = 0; row < type_.rows; ++row, component += SizeOf(component_type_))
            {
                *numbers = Component(component, component_type_, normalised_);
                if (!std::isfinite(*numbers))
                    place.Fail("element " + std::to_string(index) + " is not a finite number");
                ++numbers;
            }
        }
    }

private:
    std::size_t component_type_;
    const ElementType& type_;
    bool normalised_;
    std::size_t column_size_ = 0; // bytes from one column of a matrix to the next
};

} // namespace

AccessorShape ShapeOf(const Document& document, std::size_t accessor)
{
    const Place place = document.PlaceOf("accessors", accessor);
    const JsonValue json = document.Root()["accessors"][accessor];
    const ElementType& type = ElementTypeIn(json, place);
    AccessorShape shape;
    shape.count = SizeIn(json, "count", 0, std::nullopt, place);
    shape.width = type.rows * type.columns;
    if (shape.count > kMostElements)
        place.Fail("count", "is more than any scene has");
    if (ComponentTypeIn(json, place) != kFloat)
        shape.components =
            json["normalized"].Truth().value_or(false) ? Components::Normalised : Components::Whole;
    return shape;
}

Numbers AccessorReader::Read(std::size_t accessor)
{
    Numbers& numbers = read_[accessor];
    if (numbers)
        return numbers;
    const Place place = document_.PlaceOf("accessors", accessor);
    const JsonValue json = document_.Root()["accessors"][accessor];
    const AccessorShape shape = ShapeOf(document_, accessor);
    std::vector<double> values;
    if (json["bufferView"])
    {
        ReadElements(json, shape, values, place);
    }
    else
    {
        TakeMemory(shape, place);
        values.resize(shape.count * shape.width);
    }
    if (json["sparse"])
        ReplaceSparse(json, shape, values, place);
    numbers = std::make_shared<const std::vector<double>>(std::move(values));
    return numbers;
}

void AccessorReader::TakeMemory(const AccessorShape& shape, const Place& place)
{
    const std::size_t most = kMemoryAtLeast + kMemoryPerByte * document_.BytesRead();
    const std::size_t bytes = shape.count * shape.width * sizeof(double);
    if (bytes > most - taken_)
        place.Fail("the accessors hold far more numbers than the file has bytes");
    taken_ += bytes;
}

void AccessorReader::ReadElements(JsonValue json, const AccessorShape& shape, std::vector<double>& numbers,
                                  const Place& place)
{
    const ElementReader element(json, place);
    const Span span = SpanOf(document_, json, shape.count, element.Size(), true, place);
    TakeMemory(shape, place);
    numbers.resize(shape.count * shape.width);
    for (std::size_t i = 0; i < shape.count; ++i)
        element.Read(span.bytes.data() + i * span.stride, i, numbers.data() + i * shape.width, place);
}

void AccessorReader::ReplaceSparse(JsonValue json, const AccessorShape& shape, std::vector<double>& numbers,
                                   const Place& place)
{
    const ElementReader element(json, place);
    const JsonValue sparse = json["sparse"];
    const JsonValue indices = sparse["indices"];
    const std::size_t count = SizeIn(sparse, "count", 0, std::nullopt, place);
    const std::size_t index_type = ComponentTypeIn(indices, place);
    if (index_type != kUnsignedByte && index_type != kUnsignedShort && index_type != kUnsignedInt)
        place.Fail("sparse.indices", "are not unsigned whole numbers");
    if (count > shape.count)
        place.Fail("sparse.count", "is more than the accessor has elements");
    const Span where = SpanOf(document_, indices, count, SizeOf(index_type), false, place);
    const Span what = SpanOf(document_, sparse["values"], count, element.Size(), false, place);
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::uint32_t index = LittleEndian(where.bytes.data() + i * where.stride, SizeOf(index_type));
        if (index >= shape.count)
            place.Fail("sparse.indices",
                       "lead to element " + std::to_string(index) + " of " + std::to_string(shape.count));
        element.Read(what.bytes.data() + i * what.stride, index, numbers.data() + index * shape.width, place);
    }
}

} // namespace gltf
