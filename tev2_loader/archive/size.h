#pragma once

#include "tev2_loader/archive/boxed.h"
#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/wide_string.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

namespace TEV2_LOADER
{

/// Bytes of a value in a file.
template <typename Value>
constexpr std::size_t ValueSize()
{
    if constexpr (BlockElement<Value>)
        return sizeof(Value);
    else
        return sizeof(float) * std::tuple_size_v<decltype(std::declval<const Value&>().Components())>;
}

/// Measures the fields of a record in the layout of a version.
class SizeArchive
{
public:
    explicit SizeArchive(float version) : version_(version) {}

    std::size_t Size() const { return size_; }

    bool Since(float version) { return Gate(version, version_ >= version); }
    bool UpTo(float version) { return Gate(version, version_ <= version); }

    void Text(const char*, const TEV2_WIDE_STRING& text) { size_ += DiskSize(text); }

    void Texts(const char* label, const std::vector<TEV2_WIDE_STRING>& texts, Counts = Counts::kBoth)
    {
        size_ += kCount;
        for (const TEV2_WIDE_STRING& text : texts)
            Text(label, text);
    }

    template <typename Number>
    void Value(const char*, const Number&, Counts = Counts::kBoth)
    {
        size_ += ValueSize<Number>();
    }

    template <typename Number>
    void Constant(const char*, const Number&, Number, Counts = Counts::kBoth)
    {
        size_ += ValueSize<Number>();
    }

    void Bool(const char*, bool, Counts = Counts::kBoth) { size_ += kCount; }

    template <ChoiceEnum Enum>
    void Choice(const char*, Enum, Counts = Counts::kBoth)
    {
        size_ += kCount;
    }

    void Layout() { size_ += kCount; }

    void Bytes(const char*, std::span<const std::uint8_t> bytes, Counts) { size_ += bytes.size(); }

    template <typename Element>
    void Values(const char*, const std::vector<Element>& values, Counts = Counts::kBoth)
    {
        size_ += kCount + values.size() * ValueSize<Element>();
    }

    template <typename Object>
    void Record(const char*, const Object& record, Counts = Counts::kBoth)
    {
        Object::Fields(record, *this);
    }

    template <typename Object, typename... Examine>
    void Records(const char* label, const std::vector<Object>& records, Counts counts = Counts::kBoth,
                 const Examine&...)
    {
        size_ += kCount;
        for (const Object& record : records)
            Record(label, record, counts);
    }

    template <typename Object>
    void Track(const char*, const std::unique_ptr<Object>& object, Counts = Counts::kBoth)
    {
        size_ += kCount;
        if (!object)
            return;
        size_ += kCount;
        VisitConcrete(*object);
    }

    template <typename Object>
    void Objects(const char* label, const std::vector<std::unique_ptr<Object>>& objects,
                 Counts counts = Counts::kBoth)
    {
        size_ += kCount;
        for (const auto& object : objects)
            Track(label, object, counts);
    }

    template <typename Object>
    void Optional(const char*, const std::unique_ptr<Object>& record, Counts = Counts::kBoth)
    {
        size_ += kCount;
        if (record)
            Object::Fields(*record, *this);
    }

    template <typename Number>
    void OptionalValue(const char*, const std::optional<Number>& value)
    {
        size_ += kCount + (value ? ValueSize<Number>() : 0);
    }

    template <typename Object, typename... More>
    void Boxed(const char*, const TEV2_BOXED<Object>& box, const More&... more)
    {
        Object::Fields(*box, *this, more...);
    }

    template <typename Object>
    void Typed(const char*, const std::unique_ptr<Object>& object, Counts = Counts::kBoth)
    {
        size_ += kCount;
        if (object)
            VisitConcrete(*object);
    }

    template <typename Object>
    void TypedObjects(const char* label, const std::vector<std::unique_ptr<Object>>& objects,
                      Counts counts = Counts::kBoth)
    {
        size_ += kCount;
        for (const auto& object : objects)
            Typed(label, object, counts);
    }

    template <typename Object, typename Kept>
    void Effects(const char* label, const std::vector<std::unique_ptr<Object>>& effects, const Kept& kept,
                 Counts counts = Counts::kBoth)
    {
        Objects(label, effects, counts);
        size_ += kept.bytes.size();
    }

    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>& map, Counts counts = Counts::kBoth)
    {
        Track(label, map, counts);
    }

    void VertexCount(const char*, std::uint32_t, std::size_t /*least*/) { size_ += kCount; }

    template <typename Element>
    void Column(const char*, const std::vector<Element>&, std::size_t count)
    {
        size_ += count * sizeof(Element);
    }

    template <typename Element>
    void OptionalColumn(const char* label, const std::vector<Element>& values, std::size_t count)
    {
        size_ += kCount;
        if (!values.empty())
            Column(label, values, count);
    }

    void ColumnCount(const char*, std::uint32_t) { size_ += kCount; }

    template <typename Element>
    void ColumnGroup(const char* label, const std::vector<std::vector<Element>>& columns, std::size_t count)
    {
        size_ += kCount;
        for (const auto& column : columns)
            Column(label, column, count);
    }

    template <typename Object>
    void Run(const char* label, const std::vector<Object>& records, std::size_t /*count*/)
    {
        for (const Object& record : records)
            Record(label, record);
    }

    template <typename Matrix>
    void LegacyMatrix(const char*, const Matrix&)
    {
        size_ += 16 * sizeof(float);
    }

private:
    template <typename Record>
    friend std::size_t LeastSize();

    static constexpr std::size_t kCount = sizeof(std::uint32_t); ///< a count, flag or type
    static constexpr std::size_t kMostGates = 16;

    template <typename Object>
    void VisitConcrete(const Object& object)
    {
        decltype(ClassesOf(object))::VisitAs(object, [this](const auto& concrete)
                                             { concrete.Fields(concrete, *this); });
    }

    bool Gate(float version, bool open)
    {
        if (gates_ < kMostGates)
            versions_[gates_++] = version;
        return open;
    }

    float version_;
    std::size_t size_ = 0;
    std::size_t gates_ = 0;
    std::array<float, kMostGates> versions_{}; ///< where the layout changes
};

/// Bytes of a record in a file of a version.
template <typename Record>
std::size_t RecordSize(const Record& record, float version)
{
    SizeArchive archive(version);
    Record::Fields(record, archive);
    return archive.Size();
}

/// The fewest bytes that a record takes in any version: texts and arrays empty, tracks absent.
template <typename Record>
std::size_t LeastSize()
{
    static const std::size_t least = []
    {
        const Record empty{};
        SizeArchive oldest(0.0f);
        Record::Fields(empty, oldest);
        std::size_t fewest = oldest.Size();
        for (std::size_t gate = 0; gate < oldest.gates_; ++gate)
        {
            const float at = oldest.versions_[gate];
            const float after = std::nextafter(at, std::numeric_limits<float>::infinity());
            fewest = std::min({fewest, RecordSize(empty, at), RecordSize(empty, after)});
        }
        return fewest;
    }();
    return least;
}

} // namespace TEV2_LOADER
