#pragma once

#include "tev2_loader/archive/boxed.h"
#include "tev2_loader/archive/fields.h"
#include "tev2_loader/archive/size.h"
#include "tev2_loader/archive/views.h"
#include "tev2_loader/format.h"
#include "tev2_loader/io/memory_cursor.h"
#include "tev2_loader/io/wide_string.h"

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace TEV2_LOADER
{

/// Appends `count` elements of the image, which must have them, to an empty array. In pieces: resize writes zeros
/// first, and what is read replaces them while they are in the first-level cache.
template <BlockElement Element>
void ReadElements(TEV2_MEMORY_CURSOR& cursor, std::vector<Element>& elements, std::size_t count)
{
    constexpr std::size_t kPiece = 16384 / sizeof(Element);
    if (count > kPiece)
        elements.reserve(count);
    while (elements.size() < count)
    {
        const std::size_t begin = elements.size();
        elements.resize(std::min(count, begin + kPiece));
        cursor.ReadBlock(&elements[begin], (elements.size() - begin) * sizeof(Element));
    }
}

/// Reads u32 count and that many elements as one block, replacing what the array held.
template <BlockElement Element>
void LoadBlock(TEV2_MEMORY_CURSOR& cursor, std::vector<Element>& elements)
{
    elements.clear();
    const std::size_t count = cursor.ReadCount(sizeof(Element));
    if (cursor.TakeMemory(count * sizeof(Element)))
        ReadElements(cursor, elements, count);
}

/// Notes where the elements are.
template <BlockElement Element>
void LoadBlock(TEV2_MEMORY_CURSOR& cursor, TEV2_VIEW<Element>& elements)
{
    const std::uint32_t count = cursor.ReadCount(sizeof(Element));
    elements = {cursor.current, count};
    cursor.current += count * sizeof(Element);
}

/// Reads a body that may be of another layout, on a cursor of its own.
class BodyAttempt
{
public:
    TEV2_MEMORY_CURSOR cursor;

    BodyAttempt(TEV2_MEMORY_CURSOR& outer, float version)
        : cursor(outer.Attempt(outer.Report() != nullptr ? &reasons_ : nullptr)),
          outer_(outer),
          version_(version)
    {
    }

    /// Whether bodies of the file's version are read at all; a warning where not.
    bool Allowed()
    {
        if (version_ == kVersion)
            return true;
        outer_.Warn(TEV2_LOAD_CODE::UnparsedOtherVersion, "version " + NumberText(kVersion),
                    "version " + NumberText(version_));
        return false;
    }

    /// Refuses a type in front of the body that has no class.
    void RefuseType(std::uint32_t type)
    {
        cursor.Fail(TEV2_LOAD_CODE::BodyKept, "a type that has a class", std::to_string(type), sizeof type);
    }

    /// Whether the body was read and ends `bytes` before the end of its chunk; if so, the outer cursor continues
    /// there.
    bool EndsBefore(std::size_t bytes)
    {
        if (!cursor.Failed() && cursor.Remaining() != bytes)
        {
            cursor.Fail(TEV2_LOAD_CODE::BodyKept, std::to_string(bytes) + " bytes after the body",
                        std::to_string(cursor.Remaining()));
        }
        return Accepted();
    }

    /// Whether the body was read; if so the outer cursor continues where it ends.
    bool Accepted()
    {
        if (outer_.Accept(cursor))
            return true;
        if (!outer_.Failed() && Allowed() && !reasons_.findings.empty())
            outer_.Warn(TEV2_LOAD_CODE::BodyKept, reasons_.findings.front());
        return false;
    }

private:
    TEV2_LOAD_REPORT reasons_;
    TEV2_MEMORY_CURSOR& outer_;
    float version_;
};

template <typename Record>
bool LoadFields(Record& record, TEV2_MEMORY_CURSOR& cursor, float version);

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

    template <typename String>
    void Text(const char* /*label*/, String& text)
    {
        ReadWideString(cursor_, text);
    }

    template <typename String>
    void Texts(const char* label, std::vector<String>& texts, Counts counts = Counts::kBoth)
    {
        texts.clear();
        const std::uint32_t count = cursor_.ReadCount(DiskSize(TEV2_WIDE_STRING()));
        for (std::uint32_t index = 0; index < count && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            if (cursor_.TakeMemory(sizeof(String)))
                ReadWideString(cursor_, texts.emplace_back());
        }
        Count(counts, !cursor_.Failed());
    }

    template <typename Number>
    void Value(const char* /*label*/, Number& value, Counts /*counts*/ = Counts::kBoth)
    {
        Read(value);
    }

    template <typename Number>
    void Constant(const char* /*label*/, Number& value, Number /*always*/, Counts /*counts*/ = Counts::kBoth)
    {
        Read(value);
    }

    void Bool(const char* label, bool& flag, Counts /*counts*/ = Counts::kBoth) { flag = ReadFlag(label); }

    template <ChoiceEnum Enum>
    void Choice(const char* label, Enum& choice, Counts /*counts*/ = Counts::kBoth)
    {
        const std::uint32_t number = cursor_.ReadU32();
        if (number < kChoiceCount<Enum>)
            choice = static_cast<Enum>(number);
        else
            Refuse(label, "below " + std::to_string(kChoiceCount<Enum>), number);
    }

    void Layout()
    {
        const std::uint32_t layout = cursor_.ReadU32();
        if (layout != kLayout)
        {
            const RecordScope scope(cursor_, "layout");
            cursor_.Fail(TEV2_LOAD_CODE::BodyKept, HexText(kLayout), HexText(layout), sizeof layout);
        }
    }

    template <std::size_t kSize>
    void Bytes(const char* /*label*/, std::array<std::uint8_t, kSize>& bytes,
               Counts /*counts*/ = Counts::kBoth)
    {
        cursor_.ReadBlock(bytes.data(), kSize);
    }

    template <typename Array>
    void Values(const char* label, Array& values, [[maybe_unused]] Counts counts = Counts::kBoth)
    {
        using Element = typename Array::value_type;
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
    void Record(const char* label, Object& record, Counts counts = Counts::kBoth)
    {
        const RecordScope scope(cursor_, label);
        LoadArchive inner(cursor_, version_);
        ViewedBy<Object>::Fields(record, inner);
        Count(counts, inner.Result());
    }

    /// examine(cursor, record, begin, count) is called after each record, with the byte where the record begins.
    template <typename Array, typename... Examine>
    void Records(const char* label, Array& records, Counts counts = Counts::kBoth, const Examine&... examine)
    {
        using Object = ViewedBy<typename Array::value_type>;
        LoadEach(label, records, LeastSize<Object>(), counts,
                 [&](auto& record, [[maybe_unused]] std::uint32_t count)
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
    void Track(const char* label, std::unique_ptr<Object>& object, Counts counts = Counts::kBoth)
    {
        const RecordScope scope(cursor_, label);
        object.reset();
        Count(counts, ReadFlag() ? LoadTyped(object) : !cursor_.Failed());
    }

    template <typename Family>
    void Track(const char* label, TEV2_TRACK_VIEW<Family>& track, Counts counts = Counts::kBoth)
    {
        const RecordScope scope(cursor_, label);
        track = {};
        Count(counts, ReadFlag() ? LoadTyped(track) : !cursor_.Failed());
    }

    template <typename Object>
    void Typed(const char* label, std::unique_ptr<Object>& object, Counts counts = Counts::kBoth)
    {
        const RecordScope scope(cursor_, label);
        Count(counts, LoadTyped(object));
    }

    template <typename Object>
    void TypedObjects(const char* label, std::vector<std::unique_ptr<Object>>& objects,
                      Counts counts = Counts::kBoth)
    {
        objects.clear();
        const std::uint32_t count = cursor_.ReadCount(sizeof(std::uint32_t));
        for (std::uint32_t index = 0; index < count && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            Count(counts, cursor_.TakeMemory(sizeof objects[0]) && LoadTyped(objects.emplace_back()));
        }
    }

    template <typename Object>
    void Optional(const char* label, std::unique_ptr<Object>& record, Counts counts = Counts::kBoth)
    {
        record.reset();
        if (!ReadFlag(label) || !cursor_.TakeMemory(sizeof(Object)))
            return;
        record = std::make_unique<Object>();
        Record(label, *record, counts);
    }

    template <typename Number>
    void OptionalValue(const char* /*label*/, std::optional<Number>& value)
    {
        value.reset();
        if (ReadFlag())
            Read(value.emplace());
    }

    template <typename Object, typename... More>
    void Boxed(const char* label, TEV2_BOXED<Object>& box, const More&... more)
    {
        const RecordScope scope(cursor_, label);
        LoadArchive inner(cursor_, version_);
        if (cursor_.TakeMemory(sizeof(Object)))
            Object::Fields(*box, inner, more...);
        Count(Counts::kBoth, inner.Result());
    }

    /// Effects of a layout that is not ours are kept as bytes, and with them all that follow.
    template <typename Object, typename Kept>
    void Effects(const char* label, std::vector<std::unique_ptr<Object>>& effects, Kept& kept,
                 Counts counts = Counts::kBoth)
    {
        effects.clear();
        kept = {};
        const std::size_t place = cursor_.Offset();
        const std::uint32_t count = cursor_.ReadCount(sizeof(std::uint32_t));
        for (std::uint32_t index = 0; index < count && kept.count == 0 && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            const std::uint8_t* const begin = cursor_.current;
            if (!cursor_.TakeMemory(sizeof effects[0]))
                break;
            effects.emplace_back();
            if (!ReadFlag() || LoadEffect(effects.back()) || cursor_.Failed())
                continue;
            effects.pop_back();
            kept.count = count - index;
            cursor_.current = begin;
            cursor_.TakeRest(kept.bytes);
        }
        // Nothing that follows these bytes in a file once saved could make up for what they lack.
        const std::size_t most = kept.bytes.size() / sizeof(std::uint32_t);
        if (kept.count > most)
        {
            cursor_.Fail(TEV2_LOAD_CODE::CountExceedsFile, "at most " + std::to_string(effects.size() + most),
                         std::to_string(count), cursor_.Offset() - place);
        }
        Count(counts, !cursor_.Failed());
    }

    /// A map of the environment, which the reserved bytes follow. One of another layout is kept as bytes.
    template <typename Object>
    void Map(const char* label, std::unique_ptr<Object>& map, Counts counts = Counts::kBoth)
    {
        const RecordScope scope(cursor_, label);
        map.reset();
        if (ReadFlag())
        {
            const std::uint32_t type = cursor_.ReadU32();
            const std::size_t after = Since(kSinceReservedBytes) ? kReservedBytes : 0;
            if (!cursor_.Failed() && cursor_.TakeMemory(Object::kMostBytes) && !TryMap(map, type, after))
                KeepMap(map, type, after);
        }
        Count(counts, !cursor_.Failed());
    }

    void VertexCount(const char* /*label*/, std::uint32_t& count, std::size_t least)
    {
        count = cursor_.ReadCount(least);
    }

    template <BlockElement Element>
    void Column(const char* label, std::vector<Element>& values, std::size_t count)
    {
        values.clear();
        const std::size_t most = cursor_.Remaining() / sizeof(Element);
        if (count > most)
            Refuse(label, "at most " + std::to_string(most), count, 0);
        else if (cursor_.TakeMemory(count * sizeof(Element)))
            ReadElements(cursor_, values, count);
    }

    /// A column without values is absent.
    template <typename Element>
    void OptionalColumn(const char* label, std::vector<Element>& values, std::size_t count)
    {
        values.clear();
        if (!ReadFlag(label))
            return;
        if (count == 0)
            Refuse(label, "0 where there are no vertices", 1);
        else
            Column(label, values, count);
    }

    void ColumnCount(const char* label, std::uint32_t& number)
    {
        number = cursor_.ReadU32();
        if (number > kMostColumns)
            Refuse(label, "at most " + std::to_string(kMostColumns), number);
    }

    template <typename Element>
    void ColumnGroup(const char* label, std::vector<std::vector<Element>>& columns, std::size_t count)
    {
        columns.clear();
        std::uint32_t number = 0;
        ColumnCount(label, number);
        for (std::uint32_t index = 0; index < number && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            if (cursor_.TakeMemory(sizeof(std::vector<Element>)))
                Column("values", columns.emplace_back(), count);
        }
    }

    template <typename Object>
    void Run(const char* label, std::vector<Object>& records, std::size_t count)
    {
        records.clear();
        for (std::size_t index = 0; index < count && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            LoadArchive inner(cursor_, version_);
            if (cursor_.TakeMemory(sizeof(Object)))
                Object::Fields(records.emplace_back(), inner);
        }
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
    template <typename Array, typename ReadOne>
    void LoadEach(const char* label, Array& elements, std::size_t leastSize, Counts counts,
                  const ReadOne& read)
    {
        elements.clear();
        const std::uint32_t count = cursor_.ReadCount(leastSize);
        if (count != 0)
            LoadSome(label, elements, count, counts, read);
        else
            Count(counts, !cursor_.Failed());
    }

    template <typename Array, typename ReadOne>
    void LoadSome(const char* label, Array& elements, std::uint32_t count, Counts counts, const ReadOne& read)
    {
        if (count > 1)
            Reserve(elements, count);
        bool loaded = true;
        for (std::uint32_t index = 0; index < count && !cursor_.Failed(); ++index)
        {
            const RecordScope scope(cursor_, label, index);
            if (cursor_.TakeMemory(sizeof(typename Array::value_type)))
                loaded &= read(elements.emplace_back(), count);
        }
        Count(counts, loaded && !cursor_.Failed());
    }

    /// Makes room for elements that are going to be read, as long as it takes no more than twice the bytes that are
    /// left: the others may not be there.
    template <typename Array>
    void Reserve(Array& elements, std::size_t count)
    {
        const std::size_t most = std::min(2 * cursor_.Remaining(), cursor_.Allowance());
        elements.reserve(std::min(count, most / sizeof(typename Array::value_type)));
    }

    bool ReadFlag(const char* label = "")
    {
        const std::uint32_t flag = cursor_.ReadU32();
        if (flag > 1 && cursor_.Strict()) [[unlikely]]
            RefuseFlag(label, flag);
        return flag != 0 && !cursor_.Failed();
    }

    void RefuseFlag(const char* label, std::uint32_t flag) { Refuse(label, "0 or 1", flag); }

    /// Fails the cursor: a number of a body is not one that this layout has there.
    void Refuse(const char* label, const std::string& expected, std::uint64_t found, std::size_t back = 4)
    {
        const RecordScope scope(cursor_, label);
        cursor_.Fail(TEV2_LOAD_CODE::BodyKept, expected, std::to_string(found), back);
    }

    /// Reads the type and the record of an object. A type that its family does not know fails the cursor.
    template <typename Object>
    bool LoadTyped(std::unique_ptr<Object>& object)
    {
        const std::uint32_t type = cursor_.ReadU32();
        if (cursor_.Failed() || !cursor_.TakeMemory(Object::kMostBytes))
            return false;
        object = Object::Create(type);
        return object ? object->Load(cursor_, version_) : FailForType<Object>(type);
    }

    template <typename Family>
    bool LoadTyped(TEV2_TRACK_VIEW<Family>& track)
    {
        track.type = cursor_.ReadU32();
        if (cursor_.Failed())
            return false;
        track.present = Family::Has(track.type);
        return track.present ? LoadFields(track, cursor_, version_) : FailForType<Family>(track.type);
    }

    /// False when the effect is of another layout. Effects are read in files of every version: what is kept of one
    /// could else be taken for ours, and what follows it for effects, once it is saved as the newest.
    template <typename Object>
    bool LoadEffect(std::unique_ptr<Object>& effect)
    {
        if (cursor_.chunkEnd - cursor_.current < static_cast<std::ptrdiff_t>(sizeof(std::uint32_t)))
            return cursor_.Fail(TEV2_LOAD_CODE::RecordOverrun, "an effect inside the chunk", "its end");
        const std::uint32_t type = cursor_.ReadU32();
        if (!cursor_.TakeMemory(Object::kMostBytes))
            return false;
        effect = Object::Create(type);
        if (!effect)
            return FailForType<Object>(type);
        BodyAttempt attempt(cursor_, version_);
        effect->Load(attempt.cursor, version_);
        return attempt.Accepted();
    }

    /// False, and a warning, when the map is not one of ours that ends where the environment goes on.
    template <typename Object>
    bool TryMap(std::unique_ptr<Object>& map, std::uint32_t type, std::size_t after)
    {
        BodyAttempt attempt(cursor_, version_);
        if (!attempt.Allowed())
            return false;
        map = Object::Create(type);
        if (map)
            map->Load(attempt.cursor, version_);
        else
            attempt.RefuseType(type);
        return attempt.EndsBefore(after);
    }

    /// Keeps the bytes of a map up to where the environment goes on.
    template <typename Object>
    void KeepMap(std::unique_ptr<Object>& map, std::uint32_t type, std::size_t after)
    {
        map = Object::MakeKept(type);
        std::vector<std::uint8_t> bytes;
        if (!cursor_.Failed() && cursor_.TakeRest(bytes, after))
            map->Keep(std::move(bytes), version_);
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
    ViewedBy<Record>::Fields(record, archive);
    return archive.Result();
}

} // namespace TEV2_LOADER
