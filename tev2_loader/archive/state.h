#pragma once

#include "tev2_loader/archive/boxed.h"
#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/wide_string.h"

#include <bit>
#include <cstdint>
#include <memory>
#include <tuple>
#include <type_traits>
#include <vector>

namespace TEV2_LOADER
{

/// Notes what the fields of a record hold: values, texts, which parts are there and the lengths of arrays, but not what
/// such parts and arrays hold. A record as constructed has none of them, so equal notes mean that nothing was changed.
class StateArchive
{
public:
    std::vector<std::uint32_t> notes;

    static constexpr bool Since(float /*version*/) { return true; }
    static constexpr bool UpTo(float /*version*/) { return false; }

    void Text(const char*, const TEV2_WIDE_STRING& text)
    {
        NoteSize(text.Text());
        notes.insert(notes.end(), text.Text().begin(), text.Text().end());
    }

    template <typename Number>
    void Value(const char*, const Number& value, Counts = Counts::kBoth)
    {
        if constexpr (std::is_arithmetic_v<Number>)
            notes.push_back(std::bit_cast<std::uint32_t>(value));
        else
            std::apply([this](const auto&... component) { (Value("", component), ...); }, value.Components());
    }

    template <typename Object>
    void Record(const char*, const Object& record, Counts = Counts::kBoth)
    {
        Object::Fields(record, *this);
    }

    template <typename Object, typename... More>
    void Boxed(const char*, const TEV2_BOXED<Object>& box, const More&... more)
    {
        Object::Fields(*box, *this, more...);
    }

    static void Layout() {}
    void Bool(const char*, bool flag, Counts = Counts::kBoth) { notes.push_back(flag); }
    void Choice(const char*, ChoiceEnum auto choice, Counts = Counts::kBoth)
    {
        notes.push_back(static_cast<std::uint32_t>(choice));
    }
    void Texts(const char*, const auto& texts, Counts = Counts::kBoth) { NoteSize(texts); }
    void Values(const char*, const auto& values, Counts = Counts::kBoth) { NoteSize(values); }
    void Records(const char*, const auto& records, Counts = Counts::kBoth, const auto&...)
    {
        NoteSize(records);
    }
    void Track(const char*, const auto& track, Counts = Counts::kBoth) { notes.push_back(track != nullptr); }
    void Optional(const char*, const auto& record, Counts = Counts::kBoth)
    {
        notes.push_back(record != nullptr);
    }
    void OptionalValue(const char*, const auto& value) { notes.push_back(value.has_value()); }
    void Typed(const char*, const auto& object, Counts = Counts::kBoth)
    {
        notes.push_back(object != nullptr);
    }
    void TypedObjects(const char*, const auto& objects, Counts = Counts::kBoth) { NoteSize(objects); }
    void VertexCount(const char*, std::uint32_t count, std::size_t) { notes.push_back(count); }
    void ColumnCount(const char*, std::uint32_t number) { notes.push_back(number); }
    void Column(const char*, const auto& values, std::size_t) { NoteSize(values); }
    void OptionalColumn(const char*, const auto& values, std::size_t) { NoteSize(values); }
    void ColumnGroup(const char*, const auto& columns, std::size_t) { NoteSize(columns); }
    void Run(const char*, const auto& records, std::size_t) { NoteSize(records); }

private:
    void NoteSize(const auto& elements) { notes.push_back(static_cast<std::uint32_t>(elements.size())); }
};

} // namespace TEV2_LOADER
