#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/archive/size.h"
#include "tev2_loader/io/memory_cursor.h"
#include "tev2_loader/io/wide_string.h"

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace TEV2_LOADER
{

/// Reads u32 count and that many elements as one block, replacing what the array held.
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

/// Reads the fields of records in the layout of a version, replacing what they held. Arrays grow with what is read,
/// never ahead of it.
class LoadArchive
{
public:
    LoadArchive(TEV2_MEMORY_CURSOR& cursor, float version) : cursor_(cursor), version_(version) {}

    /// Whether everything that counts was read.
    bool Result() const { return result_; }

    bool Since(float version) const { return version_ >= version; }
    bool UpTo(float version) const { return version_ <= version; }

    void Text(const char* /*label*/, TEV2_WIDE_STRING& text) { ReadWideString(cursor_, text); }

    void Texts(const char* label, std::vector<TEV2_WIDE_STRING>& texts, Counts counts)
    {
        texts.clear();
        const std::uint32_t count = cursor_.ReadCount(DiskSize(TEV2_WIDE_STRING()));
        for (std::uint32_t index = 0; index < count && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            if (cursor_.TakeMemory(sizeof(TEV2_WIDE_STRING)))
                ReadWideString(cursor_, texts.emplace_back());
        }
        Count(counts, !cursor_.Failed());
    }

    template <typename Number>
    void Value(const char* /*label*/, Number& value, Counts /*counts*/)
    {
        Read(value);
    }

    template <typename Number>
    void Constant(const char* /*label*/, Number& value, Number /*always*/, Counts /*counts*/)
    {
        Read(value);
    }

    template <std::size_t kSize>
    void Bytes(const char* /*label*/, std::array<std::uint8_t, kSize>& bytes, Counts /*counts*/)
    {
        cursor_.ReadBlock(bytes.data(), kSize);
    }

    template <typename Element>
    void Values(const char* label, std::vector<Element>& values, Counts counts)
    {
        if constexpr (BlockElement<Element>)
        {
            LoadBlock(cursor_, values);
        }
        else
        {
            LoadEach(Unprefixed(label), values, ValueSize<Element>(), counts,
                     [this](Element& value, std::uint32_t)
                     {
                         Read(value);
                         return true;
                     });
        }
    }

    template <typename Object>
    void Record(const char* label, Object& record, Counts counts)
    {
        const RecordScope scope(cursor_, label);
        LoadArchive inner(cursor_, version_);
        Object::Fields(record, inner);
        Count(counts, inner.Result());
    }

    /// examine(cursor, record, begin, count) is called after each record, with the byte where the record begins.
    template <typename Object, typename... Examine>
    void Records(const char* label, std::vector<Object>& records, Counts counts, const Examine&... examine)
    {
        LoadEach(label, records, LeastSize<Object>(), counts,
                 [&](Object& record, [[maybe_unused]] std::uint32_t count)
                 {
                     [[maybe_unused]] const std::size_t begin = cursor_.Offset();
                     LoadArchive inner(cursor_, version_);
                     Object::Fields(record, inner);
                     if (!cursor_.Failed())
                         (examine(cursor_, record, begin, count), ...);
                     return inner.Result();
                 });
    }

    template <typename Object>
    void Track(const char* label, std::unique_ptr<Object>& object, Counts counts)
    {
        Count(counts, LoadObject(label, object, RecordScope::kNoIndex));
    }

    template <typename Object>
    void Objects(const char* label, std::vector<std::unique_ptr<Object>>& objects, Counts counts)
    {
        objects.clear();
        const std::uint32_t count = cursor_.ReadCount(sizeof(std::uint32_t));
        for (std::uint32_t index = 0; index < count && !cursor_.Failed(); ++index)
            Count(counts,
                  cursor_.TakeMemory(sizeof objects[0]) && LoadObject(label, objects.emplace_back(), index));
    }

    /// A map of a type that has no class, which every type is, is refused.
    template <typename Object>
    void Map(const char* label, std::unique_ptr<Object>& map, Counts counts)
    {
        const RecordScope scope(cursor_, label);
        map.reset();
        const std::uint32_t present = cursor_.ReadU32();
        if (present == 0)
            return;
        TEV2_MEMORY_CURSOR ahead(cursor_.current, cursor_.Remaining());
        map = Object::Create(ahead.ReadU32());
        if (!map)
        {
            Count(counts, cursor_.Fail(TEV2_LOAD_CODE::EnvironmentMapUnsupported, "0",
                                       std::to_string(present), sizeof present));
            return;
        }
        cursor_.ReadU32(); // the type
        Count(counts, map->Load(cursor_, version_));
    }

    /// A 4x4 matrix column by column; the last row is ignored.
    template <typename Matrix>
    void LegacyMatrix(const char* /*label*/, Matrix& matrix)
    {
        for (int column = 0; column < 4; ++column)
        {
            for (auto& row : matrix.m)
                Read(row[column]);
            cursor_.ReadF32();
        }
    }

private:
    void Count(Counts counts, bool read) { result_ &= read || !InLoad(counts); }

    template <typename Number>
    void Read(Number& value)
    {
        if constexpr (std::is_arithmetic_v<Number>)
        {
            static_assert(sizeof value == 4);
            value = std::bit_cast<Number>(cursor_.ReadU32());
        }
        else
        {
            std::apply([this](auto&... component) { (this->Read(component), ...); }, value.Components());
        }
    }

    /// Elements of m_values are called values[0] and so on.
    static const char* Unprefixed(const char* label)
    {
        return label[0] == 'm' && label[1] == '_' ? label + 2 : label;
    }

    /// Reads u32 count and that many elements of at least leastSize bytes each.
    template <typename Element, typename ReadOne>
    void LoadEach(const char* label, std::vector<Element>& elements, std::size_t leastSize, Counts counts,
                  const ReadOne& read)
    {
        elements.clear();
        const std::uint32_t count = cursor_.ReadCount(leastSize);
        bool loaded = true;
        for (std::uint32_t index = 0; index < count && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            if (cursor_.TakeMemory(sizeof(Element)))
                loaded &= read(elements.emplace_back(), count);
        }
        Count(counts, loaded && !cursor_.Failed());
    }

    /// Reads a flag and, where it is set, the type and the record of an object. A type that its family does not know
    /// fails the cursor.
    template <typename Object>
    bool LoadObject(const char* label, std::unique_ptr<Object>& object, std::size_t index)
    {
        const RecordScope scope(cursor_, label, index);
        object.reset();
        if (cursor_.ReadU32() == 0)
            return !cursor_.Failed();

        const std::uint32_t type = cursor_.ReadU32();
        constexpr std::size_t kObjectBytes = 96; // the largest of all classes, and its allocation
        if (cursor_.Failed() || !cursor_.TakeMemory(kObjectBytes))
            return false;
        object = Object::Create(type);
        return object ? object->Load(cursor_, version_) : FailForType<Object>(type);
    }

    template <typename Object>
    bool FailForType(std::uint32_t type)
    {
        constexpr std::uint32_t kMostTypes = 12; // no family has a type beyond
        std::string known;
        for (std::uint32_t candidate = 0; candidate < kMostTypes; ++candidate)
            if (Object::Create(candidate))
                known += (known.empty() ? "" : " or ") + std::to_string(candidate);
        return cursor_.Fail(Object::kUnknownType, known, std::to_string(type), sizeof type);
    }

    TEV2_MEMORY_CURSOR& cursor_;
    float version_;
    bool result_ = true;
};

/// Reads a record; its Load is this one call.
template <typename Record>
bool LoadFields(Record& record, TEV2_MEMORY_CURSOR& cursor, float version)
{
    LoadArchive archive(cursor, version);
    Record::Fields(record, archive);
    return archive.Result();
}

} // namespace TEV2_LOADER
