#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/math/vectors.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// User properties of nodes and cameras: found once by owner and name, then read from any player.
//
//     const auto glow = clip.FindProperty<float>(TEV2_PLAYBACK::OfNode(0), "glow");
//     player.SetTime(0.5f);
//     const float value = player.Value(glow); // 0 where there is no such property

namespace TEV2_PLAYBACK
{

/// A node or a camera, by index.
struct Owner
{
    bool isCamera = false;
    std::size_t index = 0;

    bool operator==(const Owner&) const = default;
};

inline Owner OfNode(std::size_t node)
{
    return {false, node};
}

inline Owner OfCamera(std::size_t camera)
{
    return {true, camera};
}

/// A list of texts in place of a value.
struct Texts;

enum class PropertyType : std::uint8_t
{
    Texts,
    Int,
    Float,
    Vector3,
    Vector4,
};

/// A property of a clip whose values are std::int32_t, float, TEV2_VECTOR_3, TEV2_VECTOR_4, or Texts. One that is none
/// of the clip's, or of another type, has the value zero, no texts and no events.
template <typename Value>
struct Property
{
    std::uint32_t index = TEV2_LOADER::kNone; ///< in the clip, as of PropertyAt

    explicit operator bool() const { return index != TEV2_LOADER::kNone; }
};

constexpr PropertyType TypeOf(Property<Texts>)
{
    return PropertyType::Texts;
}

constexpr PropertyType TypeOf(Property<std::int32_t>)
{
    return PropertyType::Int;
}

constexpr PropertyType TypeOf(Property<float>)
{
    return PropertyType::Float;
}

constexpr PropertyType TypeOf(Property<TEV2_LOADER::TEV2_VECTOR_3>)
{
    return PropertyType::Vector3;
}

constexpr PropertyType TypeOf(Property<TEV2_LOADER::TEV2_VECTOR_4>)
{
    return PropertyType::Vector4;
}

/// What a property is. The name is UTF-8 with a zero after it, valid while the clip lives.
struct PropertyInfo
{
    std::string_view name;
    Owner owner;
    PropertyType type = PropertyType::Int;
};

} // namespace TEV2_PLAYBACK
