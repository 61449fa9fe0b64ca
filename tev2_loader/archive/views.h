#pragma once

#include "tev2_loader/io/memory_cursor.h"

#include <cstddef>
#include <cstdint>

// Fields where they are in the image. An object whose members are named as those of a record, with views instead of
// texts and values, is loaded by the record's Fields as the record is, without copies:
//
//     struct NameView
//     {
//         using Viewed = TEV2_ENTITY;
//         TEV2_VIEW<char16_t> name;
//     };

namespace TEV2_LOADER
{

/// Bytes that a string takes in a file.
inline std::size_t DiskSize(const TEV2_VIEW<char16_t>& string)
{
    return sizeof(std::uint16_t) + string.count * sizeof(char16_t);
}

/// A track whose keys stay in the image (tracks/track_view.h).
template <typename Family>
struct TEV2_TRACK_VIEW;

template <typename Object>
struct TEV2_VIEWED
{
    using Record = Object;
};

template <typename Object>
requires requires
{
    typename Object::Viewed;
}
struct TEV2_VIEWED<Object>
{
    using Record = typename Object::Viewed;
};

/// The record whose Fields an object has: its own, or those of the record that it views.
template <typename Object>
using ViewedBy = typename TEV2_VIEWED<Object>::Record;

} // namespace TEV2_LOADER
