#pragma once

#include "tev2_loader/requirements.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

// How records describe themselves. Each record has one template that names its fields in file order:
//
//     template <typename Self, typename Archive>
//     static void Fields(Self& marker, Archive& archive)
//     {
//         TEV2_ENTITY::Fields(marker, archive);                            // the fields of a base come first
//         archive.Value("size", marker.size, Counts::kSave);               // its write counts in Save's result
//         if (archive.Since(kSinceScale))                                  // read from that version on, always written
//             archive.Track("scale", marker.scale, Counts::kBoth);
//     }
//
// Fields is called with an archive: SaveArchive writes, LoadArchive reads, SizeArchive measures, MoveArchive moves
// tracks to a time, StateArchive notes what fields hold, WalkScene reports the byte and the path of each field. An
// archive has these members:
//
//     Since(version), UpTo(version)   whether a field that only some versions have is there
//     Text(label, text)               u16 length, UTF-16; never counts
//     Texts(label, texts)             u32 count, texts
//     Value(label, value)             a number of 4 bytes, or a value of several floats
//     Bool(label, flag)               u32 0 or 1
//     Choice(label, choice)           u32 position of an enumerator among the ChoiceNames of its enum
//     Constant(label, value, always)  a number that is always written as `always`
//     Layout()                        u32 kLayout: the body is one of ours
//     Bytes(label, array)             an array of bytes, as it is
//     Values(label, values)           u32 count, then numbers or values, as one block where possible
//     Record(label, record)           another record, under its label
//     Optional(label, record)         u32 flag, record: a pointer that may be null
//     OptionalValue(label, value)     u32 flag, value: a std::optional
//     Boxed(label, box, more...)      another record, in a TEV2_BOXED; `more` is passed to its Fields
//     Records(label, records)         u32 count, records; a last argument examines each as it is loaded
//     Track(label, object)            u32 flag, u32 type, record: a track or another object of several classes
//     Objects(label, objects)         u32 count, then each as Track
//     Typed(label, object)            u32 type, record: an object that is always there
//     TypedObjects(label, objects)    u32 count, then each as Typed
//     Effects, Map, LegacyMatrix      what only one record has
//
// and, for vertices, whose number is written once for all their fields:
//
//     VertexCount(label, count, least)         u32, of vertices of at least `least` bytes each
//     Column(label, values, count)             that many values, as one block
//     OptionalColumn(label, values, count)     u32 flag, values; empty: absent
//     ColumnCount(label, number)               u32, at most kMostColumns
//     ColumnGroup(label, columns, count)       as ColumnCount, then the columns
//     Run(label, records, count)               that many records
//
// Most take a last argument that says in which results the field counts; both by default.

namespace TEV2_LOADER
{

/// In which results a field counts: that of Save (all of it was written), that of Load, both or neither. A read past
/// the end fails the cursor and a short write is latched in the stream whatever counts.
enum class Counts : std::uint8_t
{
    kNever = 0,
    kSave = 1,
    kLoad = 2,
    kBoth = 3,
};

constexpr bool InSave(Counts counts)
{
    return (static_cast<unsigned>(counts) & static_cast<unsigned>(Counts::kSave)) != 0;
}

constexpr bool InLoad(Counts counts)
{
    return (static_cast<unsigned>(counts) & static_cast<unsigned>(Counts::kLoad)) != 0;
}

/// The names of an enum's enumerators, in the order of their numbers from 0; an enum that a record holds overloads it.
///     constexpr auto ChoiceNames(TEV2_DECAY) { return std::to_array({"none", "inverse", "inverse square"}); }
template <typename Enum>
concept ChoiceEnum = requires(Enum choice)
{
    ChoiceNames(choice);
};

template <ChoiceEnum Enum>
inline constexpr std::uint32_t kChoiceCount = static_cast<std::uint32_t>(ChoiceNames(Enum{}).size());

/// A value whose memory is its disk form: nothing but 4-byte numbers, without padding.
template <typename Value>
concept BlockElement = std::is_trivially_copyable_v<Value> && sizeof(Value) % 4 == 0 && alignof(Value) == 4;

/// The classes of a family, found by the type in front of their records (kType). A family says which it has by
///     TEV2_CLASSES<Family, First, Second> ClassesOf(const Family&);
/// which needs no definition.
template <typename Family, typename... Classes>
struct TEV2_CLASSES
{
    /// Bytes of the largest of them.
    static constexpr std::size_t kLargest = std::max({sizeof(Classes)...});

    /// An empty object of a type; null for a type that is not in the list.
    static std::unique_ptr<Family> Create(std::uint32_t type)
    {
        std::unique_ptr<Family> object;
        ((type == Classes::kType ? void(object = std::make_unique<Classes>()) : void()), ...);
        return object;
    }

    /// Calls visit(object) with the object as its class. False, without a call, when none of the classes has its type.
    template <typename Visit>
    static bool VisitAs(const Family& object, const Visit& visit)
    {
        const std::uint32_t type = TypeOf(object);
        bool found = false;
        ((type == Classes::kType ? (found = true, visit(static_cast<const Classes&>(object))) : void()), ...);
        return found;
    }

    template <typename Visit>
    static bool VisitAs(Family& object, const Visit& visit)
    {
        return VisitAs(std::as_const(object), [&visit]<typename Class>(const Class& as_class)
                       { visit(const_cast<Class&>(as_class)); });
    }

private:
    static std::uint32_t TypeOf(const Family& object)
    {
        if constexpr (requires { object.GetType(); })
            return object.GetType();
        else
            return object.GetChunkId();
    }
};

/// Calls visit(object) with the object as its class where it is of a family, otherwise as it is.
template <typename Object, typename Visit>
void VisitAsClass(const Object& object, const Visit& visit)
{
    if constexpr (requires { ClassesOf(object); })
    {
        if (!decltype(ClassesOf(object))::VisitAs(object, visit))
            visit(object);
    }
    else
    {
        visit(object);
    }
}

} // namespace TEV2_LOADER
