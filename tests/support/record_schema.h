#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/load_report.h"
#include "tev2_loader/tev2.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cxxabi.h>
#include <optional>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace tv2_tests
{

/// The name of a class of the format library.
template <typename Class>
std::string ClassName()
{
    int failed = 0;
    char* const demangled = abi::__cxa_demangle(typeid(Class).name(), nullptr, nullptr, &failed);
    std::string name = demangled;
    std::free(demangled); // NOLINT(cppcoreguidelines-no-malloc): the function allocates so
    for (const std::string part : {"TEV2_LOADER::", "u>"}) // "u>": of a number among the arguments
        for (std::size_t at = name.find(part); at != std::string::npos; at = name.find(part))
            name.replace(at, part.size(), part == "u>" ? ">" : "");
    return name;
}

/// What docs/format.md calls the type of a value in a file.
template <typename Value>
std::string TypeName()
{
    return ClassName<Value>();
}

// clang-format off
template <> inline std::string TypeName<float>() { return "f32"; }
template <> inline std::string TypeName<std::int32_t>() { return "i32"; }
template <> inline std::string TypeName<std::uint32_t>() { return "u32"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_WIDE_STRING>() { return "string"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_FLOAT32_RANGE>() { return "range"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_VECTOR_2>() { return "vec2"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_VECTOR_3>() { return "vec3"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_VECTOR_4>() { return "vec4"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_VERTEX_FRAME>() { return "frame"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_MATRIX_3X4>() { return "matrix"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_TRIANGLE>() { return "TEV2_CARD32_TRIPLE"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_BEZIER_POINTS>() { return "TEV2_RIGID_BEZIER_CURVE"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_IBEZIER_SPLINE>() { return "spline"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_MATERIAL_MAP>() { return "map"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_BITMAP_MATERIAL_MAP>() { return "bitmap map"; }
template <> inline std::string TypeName<TEV2_LOADER::TEV2_CAMERA_EFFECT>() { return "effect"; }
// clang-format on

/// An archive that notes what a record says of its fields: "scale since 1.15", its type in the words of docs/format.md,
/// and the results that it counts in.
class RecordSchema
{
    using Counts = TEV2_LOADER::Counts;

public:
    std::vector<std::string> fields;
    std::vector<std::string> types;   ///< "track (3)"
    std::vector<std::string> choices; ///< "0 none; 1 inverse", empty where the field is no choice
    std::vector<std::string> counted; ///< "scale Save Load"; "name" where it never counts

    /// The fields of a record that has nothing in it.
    template <typename Record>
    static RecordSchema Of(const Record& record = {})
    {
        RecordSchema schema;
        Record::Fields(record, schema);
        return schema;
    }

    bool Since(float version) { return Gate(" since ", version); }
    bool UpTo(float version) { return Gate(" up to ", version); }

    void Text(const char* label, const auto&) { Add(label, "string", Counts::kNever); }
    void LegacyMatrix(const char* label, const auto&) { Add(label, "16 f32", Counts::kNever); }

    template <typename Number>
    void Value(const char* label, const Number&, Counts counts = Counts::kBoth)
    {
        Add(label, TypeName<Number>(), counts);
    }
    template <typename Number>
    void Constant(const char* label, const Number& value, const Number&, Counts counts = Counts::kBoth)
    {
        Value(label, value, counts);
    }
    void Texts(const char* label, const auto&, Counts counts = Counts::kBoth)
    {
        Add(label, "array of string", counts);
    }
    void Bytes(const char* label, const auto& bytes, Counts counts = Counts::kBoth)
    {
        Add(label, std::to_string(bytes.size()) + " bytes", counts);
    }
    template <typename Element>
    void Values(const char* label, const std::vector<Element>&, Counts counts = Counts::kBoth)
    {
        constexpr bool kBlock = TEV2_LOADER::BlockElement<Element>;
        Add(label, (kBlock ? "block of " : "array of ") + TypeName<Element>(), counts);
    }
    template <typename Object>
    void Record(const char* label, const Object&, Counts counts = Counts::kBoth)
    {
        Add(label, TypeName<Object>(), counts);
    }
    template <typename Object>
    void Records(const char* label, const std::vector<Object>&, Counts counts = Counts::kBoth, const auto&...)
    {
        Add(label, "array of " + TypeName<Object>(), counts);
    }
    template <typename Object>
    void Track(const char* label, const std::unique_ptr<Object>&, Counts counts = Counts::kBoth)
    {
        if constexpr (std::is_base_of_v<TEV2_LOADER::TEV2_ANIMATABLE, Object>)
            Add(label, "track (" + KindsOf<Object>() + ")", counts);
        else
            Add(label, "optional " + TypeName<Object>(), counts);
    }
    void Bool(const char* label, bool, Counts counts = Counts::kBoth) { Add(label, "bool", counts); }
    template <TEV2_LOADER::ChoiceEnum Enum>
    void Choice(const char* label, Enum choice, Counts counts = Counts::kBoth)
    {
        std::string names;
        int number = 0;
        for (const char* name : ChoiceNames(choice))
        {
            names += (number == 0 ? "" : "; ") + std::to_string(number) + " " + name;
            ++number;
        }
        Add(label, "choice", counts);
        choices.back() = names;
    }
    void Layout() { Add("layout", "layout " + std::to_string(TEV2_LOADER::kLayout & 0xFFFFu)); }
    template <typename Object>
    void Optional(const char* label, const std::unique_ptr<Object>&, Counts counts = Counts::kBoth)
    {
        Add(label, "optional " + TypeName<Object>(), counts);
    }
    template <typename Object>
    void Typed(const char* label, const std::unique_ptr<Object>&, Counts counts = Counts::kBoth)
    {
        Add(label, TypeName<Object>(), counts);
    }
    template <typename Object>
    void TypedObjects(const char* label, const std::vector<std::unique_ptr<Object>>&,
                      Counts counts = Counts::kBoth)
    {
        Add(label, "array of " + TypeName<Object>(), counts);
    }
    template <typename Object>
    void Effects(const char* label, const std::vector<std::unique_ptr<Object>>&, const auto&,
                 Counts counts = Counts::kBoth)
    {
        Add(label, "array of optional " + TypeName<Object>(), counts);
    }
    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>&, Counts counts = Counts::kBoth)
    {
        Add(label, "optional " + TypeName<Object>(), counts);
    }
    void VertexCount(const char* label, std::uint32_t, std::size_t) { Add(label, "u32 N"); }
    template <typename Element>
    void Column(const char* label, const std::vector<Element>&, std::size_t)
    {
        Add(label, "N " + TypeName<Element>());
    }
    template <typename Element>
    void OptionalColumn(const char* label, const std::vector<Element>&, std::size_t)
    {
        Add(label, "optional N " + TypeName<Element>());
    }
    template <typename Element>
    void ColumnGroup(const char* label, const std::vector<std::vector<Element>>&, std::size_t)
    {
        Add(label, "columns of N " + TypeName<Element>());
    }
    template <typename Object>
    void Run(const char* label, const std::vector<Object>&, std::size_t)
    {
        Add(label, "N " + TypeName<Object>());
    }
    template <typename Number>
    void OptionalValue(const char* label, const std::optional<Number>&)
    {
        Add(label, "optional " + TypeName<Number>());
    }
    template <typename Object>
    void Boxed(const char* label, const TEV2_LOADER::TEV2_BOXED<Object>&, const auto&...)
    {
        Add(label, TypeName<Object>());
    }
    void ColumnCount(const char* label, std::uint32_t) { Add(label, "u32"); }

private:
    bool Gate(const char* word, float version)
    {
        gate_ = word + TEV2_LOADER::NumberText(version);
        return true;
    }

    template <typename Family>
    static std::string KindsOf()
    {
        std::string kinds;
        for (const std::uint32_t kind : TEV2_LOADER::kTrackKinds)
            if (Family::Create(kind))
                kinds += (kinds.empty() ? "" : " or ") + std::to_string(kind);
        return kinds;
    }

    void Add(const std::string& label, const std::string& type, Counts counts = Counts::kBoth)
    {
        fields.push_back(label + gate_);
        types.push_back(type);
        choices.emplace_back();
        gate_.clear();
        counted.push_back(label + (InSave(counts) ? " Save" : "") + (InLoad(counts) ? " Load" : ""));
    }

    std::string gate_;
};

} // namespace tv2_tests
