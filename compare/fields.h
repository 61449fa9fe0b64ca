#pragma once

#include "compare/components.h"
#include "tev2_loader/archive/boxed.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace tev2_compare
{

/// Elements of one or more numbers of 4 bytes in the memory of a record.
struct NumberBlock
{
    const std::byte* bytes = nullptr;
    std::size_t elements = 0;
    std::size_t width = 1; ///< numbers of one element
    bool whole = false;    ///< unsigned integers, otherwise floats

    double operator[](std::size_t number) const
    {
        if (whole)
            return static_cast<double>(Read<std::uint32_t>(number));
        return static_cast<double>(Read<float>(number));
    }

private:
    template <typename Number>
    Number Read(std::size_t number) const
    {
        Number value;
        std::memcpy(&value, bytes + number * sizeof value, sizeof value);
        return value;
    }
};

/// What one field of a record holds.
struct FieldValue
{
    std::string path;  ///< in the record: "subObjects[2].triangles"
    const char* label; ///< its last part, without the index: "triangles"

    /// Numbers of one value, a block of many, a word (of a choice, of a flag, of a text), a track (null: absent), or
    /// bytes.
    std::variant<std::vector<double>, NumberBlock, std::string, TEV2_LOADER::TEV2_ANIMATABLE*,
                 std::span<const std::uint8_t>>
        value;
};

/// Lists what the fields of a record hold, those of the records inside it, too, but not user properties. The record
/// must outlive the list.
class FieldArchive
{
public:
    std::vector<FieldValue> fields;

    static constexpr bool Since(float /*version*/) { return true; }
    static constexpr bool UpTo(float /*version*/) { return false; }

    void Text(const char* label, const TEV2_LOADER::TEV2_WIDE_STRING& text)
    {
        Add(label, '"' + TEV2_LOADER::ReadableText(text.Text()) + '"');
    }

    void Texts(const char* label, const std::vector<TEV2_LOADER::TEV2_WIDE_STRING>& texts,
               TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        for (const auto& text : texts)
            Text(label, text);
    }

    template <typename Number>
    void Value(const char* label, const Number& value, TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        Add(label, ComponentsOf(value));
    }

    static void Constant(const char*, auto, auto, TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth) {}
    static void Layout() {}

    void Bool(const char* label, bool flag, TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        Add(label, std::string(flag ? "yes" : "no"));
    }

    template <TEV2_LOADER::ChoiceEnum Enum>
    void Choice(const char* label, Enum choice, TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        const auto names = ChoiceNames(choice);
        const auto number = static_cast<std::size_t>(choice);
        Add(label, number < names.size() ? std::string(names[number]) : std::to_string(number));
    }

    void Bytes(const char* label, std::span<const std::uint8_t> bytes,
               TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        Add(label, bytes);
    }

    template <typename Element>
    void Values(const char* label, const std::vector<Element>& values,
                TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        static_assert(TEV2_LOADER::BlockElement<Element>);
        constexpr std::size_t kNumber = sizeof(std::uint32_t);
        Add(label, NumberBlock{reinterpret_cast<const std::byte*>(values.data()), values.size(),
                               sizeof(Element) / kNumber, IsWhole<Element>()});
    }

    template <typename Object>
    void Record(const char* label, const Object& record, TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        if constexpr (!std::is_same_v<Object, TEV2_LOADER::TEV2_EXTENDED_PROPERTIES>)
        {
            const Scope scope(*this, label);
            Object::Fields(record, *this);
        }
    }

    template <typename Object, typename... Examine>
    void Records(const char* label, const std::vector<Object>& records,
                 TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth, const Examine&...)
    {
        for (std::size_t index = 0; index < records.size(); ++index)
        {
            const Scope scope(*this, label, index);
            Object::Fields(records[index], *this);
        }
    }

    template <typename Object>
    void Run(const char* label, const std::vector<Object>& records, std::size_t /*count*/)
    {
        Records(label, records);
    }

    template <typename Object, typename... More>
    void Boxed(const char* label, const TEV2_LOADER::TEV2_BOXED<Object>& box, const More&... more)
    {
        const Scope scope(*this, label);
        Object::Fields(*box, *this, more...);
    }

    template <typename Object>
    void Optional(const char* label, const std::unique_ptr<Object>& record,
                  TEV2_LOADER::Counts counts = TEV2_LOADER::Counts::kBoth)
    {
        if (record)
            Record(label, *record, counts);
    }

    template <typename Number>
    void OptionalValue(const char* label, const std::optional<Number>& value)
    {
        if (value)
            Value(label, *value);
    }

    template <typename Object>
    void Track(const char* label, const std::unique_ptr<Object>& object,
               TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        if constexpr (std::is_base_of_v<TEV2_LOADER::TEV2_ANIMATABLE, Object>)
            Add(label, static_cast<TEV2_LOADER::TEV2_ANIMATABLE*>(object.get()));
        else
            Typed(label, object);
    }

    template <typename Object>
    void Typed(const char* label, const std::unique_ptr<Object>& object,
               TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        if (!object)
            return;
        const Scope scope(*this, label);
        Value("type", object->GetType());
        const bool known = decltype(ClassesOf(*object))::VisitAs(
            *object, [this](const auto& concrete) { TEV2_LOADER::VisitFields(concrete, *this); });
        if constexpr (requires { object->Bytes(); })
            if (!known)
                Bytes("body", object->Bytes());
    }

    template <typename Object>
    void TypedObjects(const char* label, const std::vector<std::unique_ptr<Object>>& objects,
                      TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        for (std::size_t index = 0; index < objects.size(); ++index)
            Typed((std::string(label) + '[' + std::to_string(index) + ']').c_str(), objects[index]);
    }

    template <typename Object, typename Kept>
    void Effects(const char* label, const std::vector<std::unique_ptr<Object>>& effects, const Kept& kept,
                 TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        TypedObjects(label, effects);
        Bytes("keptEffects", kept.bytes);
    }

    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>& map,
             TEV2_LOADER::Counts = TEV2_LOADER::Counts::kBoth)
    {
        Typed(label, map);
    }

    /// The lengths of the columns say it.
    static void VertexCount(const char*, std::uint32_t, std::size_t) {}
    void ColumnCount(const char* label, std::uint32_t number) { Value(label, number); }

    template <typename Element>
    void Column(const char* label, const std::vector<Element>& values, std::size_t /*count*/)
    {
        Values(label, values);
    }

    template <typename Element>
    void OptionalColumn(const char* label, const std::vector<Element>& values, std::size_t /*count*/)
    {
        Values(label, values);
    }

    template <typename Element>
    void ColumnGroup(const char* label, const std::vector<std::vector<Element>>& columns,
                     std::size_t /*count*/)
    {
        for (std::size_t index = 0; index < columns.size(); ++index)
        {
            const Scope scope(*this, label, index);
            Values("values", columns[index]);
        }
    }

    static void LegacyMatrix(const char*, const auto&) {}

private:
    /// Lengthens the path while it lives.
    class Scope
    {
    public:
        Scope(FieldArchive& archive, const char* label) : archive_(archive), length_(archive.prefix_.size())
        {
            archive_.prefix_ += label;
            archive_.prefix_ += '.';
        }
        Scope(FieldArchive& archive, const char* label, std::size_t index)
            : Scope(archive, (std::string(label) + '[' + std::to_string(index) + ']').c_str())
        {
        }
        ~Scope() { archive_.prefix_.resize(length_); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        FieldArchive& archive_;
        std::size_t length_;
    };

    template <typename Element>
    static constexpr bool IsWhole()
    {
        if constexpr (requires { typename Element::value_type; })
            return std::is_integral_v<typename Element::value_type>;
        else
            return std::is_integral_v<Element>;
    }

    template <typename Held>
    void Add(const char* label, Held value)
    {
        fields.push_back({prefix_ + label, label, std::move(value)});
    }

    std::string prefix_;
};

/// The fields of an object; of one whose body is kept, its bytes instead.
template <typename Object>
std::vector<FieldValue> FieldsOf(const Object& object)
{
    FieldArchive archive;
    TEV2_LOADER::VisitAsClass(object, [&archive](const auto& concrete)
                              { TEV2_LOADER::VisitFields(concrete, archive); });
    return std::move(archive.fields);
}

} // namespace tev2_compare
