#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/file_writer.h"

#include <array>
#include <cstdint>
#include <memory>
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
    void Texts(const char* label, const std::vector<TEV2_WIDE_STRING>& texts, Counts counts)
    {
        Count(counts, WriteCount(texts));
        for (const TEV2_WIDE_STRING& text : texts)
            Text(label, text);
    }

    template <typename Number>
    void Value(const char* /*label*/, const Number& value, Counts counts)
    {
        Count(counts, Write(value));
    }

    template <typename Number>
    void Constant(const char* /*label*/, const Number& /*value*/, Number always, Counts counts)
    {
        Count(counts, Write(always));
    }

    template <std::size_t kSize>
    void Bytes(const char* /*label*/, const std::array<std::uint8_t, kSize>& bytes, Counts counts)
    {
        Count(counts, writer_.WriteBlock(bytes.data(), kSize) == kSize);
    }

    /// Of plain numbers the count alone counts, of other values every byte.
    template <typename Element>
    void Values(const char* /*label*/, const std::vector<Element>& values, Counts counts)
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
    void Record(const char* /*label*/, const Object& record, Counts counts)
    {
        SaveArchive inner(writer_);
        Object::Fields(record, inner);
        Count(counts, inner.Result());
    }

    template <typename Object, typename... Examine>
    void Records(const char* label, const std::vector<Object>& records, Counts counts, const Examine&...)
    {
        Count(counts, WriteCount(records));
        for (const Object& record : records)
            Record(label, record, counts);
    }

    /// An absent object counts as written, even if its zero was not.
    template <typename Object>
    void Track(const char* /*label*/, const std::unique_ptr<Object>& object, Counts counts)
    {
        if (!object)
        {
            Write(std::uint32_t{0});
            return;
        }
        Count(counts, Write(std::uint32_t{1}));
        Count(counts, Write(object->GetType()));
        Count(counts, object->Save(writer_));
    }

    /// The write of the count does not count.
    template <typename Object>
    void Objects(const char* label, const std::vector<std::unique_ptr<Object>>& objects, Counts counts)
    {
        WriteCount(objects);
        for (const auto& object : objects)
            Track(label, object, counts);
    }

    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>& map, Counts counts)
    {
        Track(label, map, counts);
    }

    template <typename Matrix>
    static void LegacyMatrix(const char* /*label*/, const Matrix& /*matrix*/)
    {
    }

private:
    void Count(Counts counts, bool written) { result_ &= written || !InSave(counts); }

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
