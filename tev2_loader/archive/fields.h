#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

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
// Archives go over it: SaveArchive writes, LoadArchive reads, SizeArchive measures, WalkScene reports the byte and
// the path of each field. An archive has these members:
//
//     Since(version), UpTo(version)      whether a field of some versions is there
//     Text(label, text)                  u16 length, UTF-16; never counts
//     Texts(label, texts, counts)        u32 count, texts
//     Value(label, value, counts)        a number of 4 bytes, or a value of several floats
//     Constant(label, value, always, counts)  a number that is always written as `always`
//     Bytes(label, array, counts)        an array of bytes, as it is
//     Values(label, values, counts)      u32 count, then numbers or values, as one block where possible
//     Record(label, record, counts)      another record, under its label
//     Records(label, records, counts)    u32 count, records; a last argument examines each as it is loaded
//     Track(label, object, counts)       u32 flag, u32 type, record: a track or another object of several classes
//     Objects(label, objects, counts)    u32 count, then each as Track
//     Map, LegacyMatrix                  what only one record has
//     Body(label, body)                  the bytes of an UnparsedRecord; only archives that show a scene have it

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

/// A value whose memory is its disk form: nothing but 4-byte numbers, without padding.
template <typename Value>
concept BlockElement = std::is_trivially_copyable_v<Value> && sizeof(Value) % 4 == 0 && alignof(Value) == 4;

/// The classes of a family, found by the type in front of their records (kType). A family says which it has by
///     TEV2_CLASSES<Family, First, Second> ClassesOf(const Family&);
/// which needs no definition.
template <typename Family, typename... Classes>
struct TEV2_CLASSES
{
    /// An empty object of a type; null for a type that is not in the list.
    static std::unique_ptr<Family> Create(std::uint32_t type)
    {
        std::unique_ptr<Family> object;
        ((type == Classes::kType ? void(object = std::make_unique<Classes>()) : void()), ...);
        return object;
    }

    /// Calls visit(object) with the object as its class.
    template <typename Visit>
    static void VisitAs(const Family& object, const Visit& visit)
    {
        const std::uint32_t type = object.GetType();
        ((type == Classes::kType ? visit(static_cast<const Classes&>(object)) : void()), ...);
    }
};

} // namespace TEV2_LOADER
