#pragma once

#include "tev2_loader/archive/boxed.h"
#include "tev2_loader/archive/fields.h"
#include "tev2_loader/format.h"

#include <memory>
#include <type_traits>
#include <vector>

namespace TEV2_LOADER
{

class TEV2_EXTENDED_PROPERTIES;

/// Calls move(object) for each track, and each object that holds tracks, among the fields of a record and of the
/// records inside it. The user's own properties are left alone.
template <typename Move>
class MoveArchive
{
public:
    explicit MoveArchive(const Move& move) : move_(move) {}

    static constexpr bool Since(float /*version*/) { return true; }
    static constexpr bool UpTo(float /*version*/) { return false; }

    template <typename Object>
    void Track(const char* /*label*/, const std::unique_ptr<Object>& object, Counts = Counts::kBoth)
    {
        if (object)
            move_(*object);
    }

    template <typename Object>
    void Typed(const char* label, const std::unique_ptr<Object>& object, Counts = Counts::kBoth)
    {
        Track(label, object);
    }

    template <typename Object>
    void Map(const char* label, const std::unique_ptr<Object>& map, Counts = Counts::kBoth)
    {
        Track(label, map);
    }

    template <typename Object>
    void TypedObjects(const char* /*label*/, const std::vector<std::unique_ptr<Object>>& objects,
                      Counts = Counts::kBoth)
    {
        for (const auto& object : objects)
            if (object)
                MoveOne(*object);
    }

    template <typename Object>
    void Record(const char* /*label*/, Object& record, Counts = Counts::kBoth)
    {
        if constexpr (!std::is_same_v<std::remove_const_t<Object>, TEV2_EXTENDED_PROPERTIES>)
            record.Fields(record, *this);
    }

    template <typename Object>
    void Optional(const char* label, const std::unique_ptr<Object>& record, Counts = Counts::kBoth)
    {
        if (record)
            Record(label, *record);
    }

    /// A box that is empty stays so.
    template <typename Object, typename... More>
    void Boxed(const char* /*label*/, TEV2_BOXED<Object>& box, const More&... more)
    {
        if (!box.Empty())
            Object::Fields(*box, *this, more...);
    }

    template <typename Object>
    void Records(const char* label, std::vector<Object>& records, Counts = Counts::kBoth)
    {
        for (Object& record : records)
            Record(label, record);
    }

    template <typename Object>
    void Run(const char* label, std::vector<Object>& records, std::size_t /*count*/)
    {
        Records(label, records);
    }

    static void Layout() {}
    static void Text(const char*, const auto&) {}
    static void Texts(const char*, const auto&, Counts = Counts::kBoth) {}
    static void Value(const char*, const auto&, Counts = Counts::kBoth) {}
    static void Bool(const char*, bool, Counts = Counts::kBoth) {}
    static void Choice(const char*, ChoiceEnum auto, Counts = Counts::kBoth) {}
    static void Bytes(const char*, const auto&, Counts = Counts::kBoth) {}
    static void Values(const char*, const auto&, Counts = Counts::kBoth) {}
    static void OptionalValue(const char*, const auto&) {}
    static void ColumnCount(const char*, std::uint32_t) {}
    static void VertexCount(const char*, std::uint32_t, std::size_t) {}
    static void Column(const char*, const auto&, std::size_t) {}
    static void OptionalColumn(const char*, const auto&, std::size_t) {}
    static void ColumnGroup(const char*, const auto&, std::size_t) {}

private:
    /// Of a family that does not move as such, some classes may.
    template <typename Object>
    void MoveOne(Object& object)
    {
        if constexpr (requires { move_(object); })
        {
            move_(object);
        }
        else
        {
            decltype(ClassesOf(object))::VisitAs(object,
                                                 [this](auto& concrete)
                                                 {
                                                     if constexpr (requires { move_(concrete); })
                                                         move_(concrete);
                                                 });
        }
    }

    const Move& move_;
};

} // namespace TEV2_LOADER
