#pragma once

#include "tev2_loader/archive/boxed.h"
#include "tev2_loader/archive/fields.h"
#include "tev2_loader/format.h"
#include "tev2_loader/io/file_writer.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <tuple>
#include <type_traits>
#include <vector>

namespace TEV2_LOADER
{

/// Writes the fields of records in the newest layout; goes on after a failed write.
class SaveArchive
{
public:
    explicit SaveArchive(TEV2_FILE_WRITER& writer) : writer_(writer) {}

    /// Whether everything that counts was written.
    bool Result() const { return result_; }

    static constexpr bool Since(float /*version*/) { return true; }
    static constexpr bool UpTo(float /*version*/) { return false; }

    void Text(const char* /*label*/, const TEV2_WIDE_STRING& text) { WriteWideString(*writer_.stream, text); }

    /// The count alone counts.
    void Texts(const char* label, const std::vector<TEV2_WIDE_STRING>& texts, Counts counts = Counts::kBoth)
    {
        Count(counts, WriteCount(texts));
        for (const TEV2_WIDE_STRING& text : texts)
            Text(label, text);
    }

    template <typename Number>
    void Value(const char* /*label*/, const Number& value, Counts counts = Counts::kBoth)
    {
        Count(counts, Write(value));
    }

    template <typename Number>
    void Constant(const char* /*label*/, const Number& /*value*/, Number always,
                  Counts counts = Counts::kBoth)
    {
        Count(counts, Write(always));
    }

    void Bool(const char* /*label*/, bool flag, Counts counts = Counts::kBoth)
    {
        Count(counts, Write(std::uint32_t{flag}));
    }

    template <ChoiceEnum Enum>
    void Choice(const char* label, Enum choice, Counts counts = Counts::kBoth)
    {
        const auto number = static_cast<std::uint32_t>(choice);
        Count(counts, Write(number));
        Require(number < kChoiceCount<Enum>, label, "not among the choices");
    }

    void Layout() { Count(Counts::kBoth, Write(kLayout)); }

    void Bytes(const char* /*label*/, std::span<const std::uint8_t> bytes, Counts counts = Counts::kBoth)
    {
        Count(counts, writer_.WriteBlock(bytes.data(), bytes.size()) == bytes.size());
    }

    /// Of plain numbers the count alone counts, of other values every byte.
    template <typename Element>
    void Values(const char* /*label*/, const std::vector<Element>& values, Counts counts = Counts::kBoth)
    {
        Count(counts, WriteCount(values));
        if constexpr (BlockElement<Element>)
        {
            const std::size_t size = values.size() * sizeof(Element);
            const bool written = writer_.WriteBlock(values.data(), size) == size;
            if constexpr (!std::is_arithmetic_v<Element>)
                Count(counts, written);
        }
        else
        {
            for (const Element& value : values)
                Count(counts, Write(value));
        }
    }

    template <typename Object>
    void Record(const char* /*label*/, const Object& record, Counts counts = Counts::kBoth)
    {
        SaveArchive inner(writer_);
        Object::Fields(record, inner);
        Count(counts, inner.Result());
    }

    template <typename Object, typename... Examine>
    void Records(const char* label, const std::vector<Object>& records, Counts counts = Counts::kBoth,
                 const Examine&...)
    {
        Count(counts, WriteCount(records));
        for (const Object& record : records)
            Record(label, record, counts);
    }

    /// An absent object counts as written, even if its zero was not.
    template <typename Object>
    void Track(const char* label, const std::unique_ptr<Object>& object, Counts counts = Counts::kBoth)
    {
        if (!object)
        {
            Write(std::uint32_t{0});
            return;
        }
        Count(counts, Write(std::uint32_t{1}));
        Typed(label, object, counts);
    }

    /// An object that is missing does not count as written, nor does one that is kept as bytes: what it is in would be
    /// kept, too, when it is loaded.
    template <typename Object>
    void Typed(const char* label, const std::unique_ptr<Object>& object, Counts counts = Counts::kBoth)
    {
        WriteTyped(label, object, counts);
        if constexpr (requires { object->IsTyped(); })
            Require(!object || object->IsTyped(), label, "kept as bytes");
    }

    template <typename Object>
    void TypedObjects(const char* label, const std::vector<std::unique_ptr<Object>>& objects,
                      Counts counts = Counts::kBoth)
    {
        Count(counts, WriteCount(objects));
        for (const auto& object : objects)
            Typed(label, object, counts);
    }

    template <typename Object>
    void Optional(const char* label, const std::unique_ptr<Object>& record, Counts counts = Counts::kBoth)
    {
        Count(counts, Write(std::uint32_t{record != nullptr}));
        if (record)
            Record(label, *record, counts);
    }

    template <typename Number>
    void OptionalValue(const char* label, const std::optional<Number>& value)
    {
        Bool(label, value.has_value());
        if (value)
            Value(label, *value);
    }

    template <typename Object, typename... More>
    void Boxed(const char* /*label*/, const TEV2_BOXED<Object>& box, const More&... more)
    {
        Object::Fields(*box, *this, more...);
    }

    /// The write of the count does not count.
    template <typename Object, typename Kept>
    void Effects(const char* label, const std::vector<std::unique_ptr<Object>>& effects, const Kept& kept,
                 Counts counts = Counts::kBoth)
    {
        Write(static_cast<std::uint32_t>(effects.size()) + kept.count);
        for (const auto& effect : effects)
            Track(label, effect, counts);
        Bytes(label, kept.bytes, counts);
    }

    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>& map, Counts counts = Counts::kBoth)
    {
        Count(counts, Write(std::uint32_t{map != nullptr}));
        if (map)
            WriteTyped(label, map, counts);
    }

    template <typename Matrix>
    static void LegacyMatrix(const char* /*label*/, const Matrix& /*matrix*/)
    {
    }

    void VertexCount(const char* /*label*/, std::uint32_t count, std::size_t /*least*/)
    {
        Count(Counts::kBoth, Write(count));
    }

    /// A column of another length than the count is filled up with zeros, or cut, and does not count as written.
    template <BlockElement Element>
    void Column(const char* label, const std::vector<Element>& values, std::size_t count)
    {
        const std::size_t size = std::min(values.size(), count) * sizeof(Element);
        Count(Counts::kBoth, writer_.WriteBlock(values.data(), size) == size);
        Require(values.size() == count, label, kNotOneEach);
        for (std::size_t missing = values.size(); missing < count; ++missing)
        {
            const Element zero{};
            writer_.WriteBlock(&zero, sizeof zero);
        }
    }

    template <typename Element>
    void OptionalColumn(const char* label, const std::vector<Element>& values, std::size_t count)
    {
        Bool(label, !values.empty());
        if (!values.empty())
            Column(label, values, count);
    }

    /// More than can be read back do not count as written.
    void ColumnCount(const char* label, std::uint32_t number)
    {
        Count(Counts::kBoth, Write(number));
        Require(number <= kMostColumns, label, "more than can be read back");
    }

    template <typename Element>
    void ColumnGroup(const char* label, const std::vector<std::vector<Element>>& columns, std::size_t count)
    {
        ColumnCount(label, static_cast<std::uint32_t>(columns.size()));
        for (const auto& column : columns)
            Column(label, column, count);
    }

    template <typename Object>
    void Run(const char* label, const std::vector<Object>& records, std::size_t count)
    {
        Require(records.size() == count, label, kNotOneEach);
        for (const Object& record : records)
            Record(label, record, Counts::kBoth);
    }

private:
    static constexpr const char* kNotOneEach = "not one for each vertex";

    /// Refuses a field that does not hold what the format needs there.
    void Require(bool fulfilled, const char* label, const char* reason)
    {
        Count(Counts::kBoth, fulfilled || writer_.Refuse(label, reason));
    }

    void Count(Counts counts, bool written) { result_ &= written || !InSave(counts); }

    /// The type and the record of an object.
    template <typename Object>
    void WriteTyped(const char* label, const std::unique_ptr<Object>& object, Counts counts)
    {
        Count(counts, Write(object ? object->GetType() : kNone));
        Count(counts, object ? object->Save(writer_) : writer_.Refuse(label, "missing"));
    }

    template <typename Element>
    bool WriteCount(const std::vector<Element>& elements)
    {
        return Write(static_cast<std::uint32_t>(elements.size()));
    }

    template <typename Number>
    bool Write(const Number& value)
    {
        if constexpr (std::is_arithmetic_v<Number>)
        {
            static_assert(sizeof value == 4);
            return writer_.Write(&value, sizeof value) == sizeof value;
        }
        else
        {
            bool written = true;
            std::apply([&](const auto&... component) { ((written &= Write(component)), ...); },
                       value.Components());
            return written;
        }
    }

    TEV2_FILE_WRITER& writer_;
    bool result_ = true;
};

/// Writes a record; its Save is this one call.
template <typename Record>
bool SaveFields(const Record& record, TEV2_FILE_WRITER& writer)
{
    SaveArchive archive(writer);
    Record::Fields(record, archive);
    return archive.Result();
}

} // namespace TEV2_LOADER
