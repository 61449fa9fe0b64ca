#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/math/matrix.h"
#include "tev2_loader/math/values.h"
#include "tev2_loader/up_axis.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

// What a clip is made of, wherever it comes from: a scene in memory, or the bytes of a file. Nothing here owns keys.

namespace TEV2_PLAYBACK
{

/// Keys where they are, as the format has them; maybe not aligned.
template <typename Value>
class KeyView
{
public:
    KeyView() = default;
    KeyView(const void* begin, std::size_t count)
        : begin_(static_cast<const std::byte*>(begin)), count_(count)
    {
    }

    std::size_t size() const { return count_; }
    const void* data() const { return begin_; }

    Value operator[](std::size_t index) const
    {
        Value value;
        std::memcpy(static_cast<void*>(&value), begin_ + index * sizeof(Value), sizeof value);
        return value;
    }

private:
    const std::byte* begin_ = nullptr;
    std::size_t count_ = 0;
};

struct TrackSource
{
    bool present = false;
    std::uint32_t kind = 0; ///< of kTrackKinds; of a property also where the track is absent
    KeyView<float> times;
    const void* values = nullptr; ///< the first number of the first
    std::size_t valueStride = 0;  ///< bytes from one to the next; those of nodes follow one another
    std::size_t valueCount = 0;
};

/// A user property: a value with a track, or a list of texts.
struct PropertySource
{
    std::u16string_view name; ///< as stored
    std::uint32_t owner = 0;  ///< a node, or a camera
    bool ofCamera = false;
    bool isTexts = false;
    TrackSource track;                      ///< of a value
    std::vector<std::u16string_view> texts; ///< as stored
};

struct NodeSource
{
    std::u16string_view name; ///< as stored
    std::int32_t parent = -1;
    TrackSource translation;
    TrackSource rotation;
    TrackSource scale;
    TEV2_LOADER::TEV2_MATRIX_3X4 worldMatrix; ///< what a node in front of its parent finds there
};

struct CameraSource
{
    std::u16string_view name; ///< as stored
    std::uint32_t node = 0;   ///< maybe none of the skeleton
    float inverseAspect = 0.0f;
    TrackSource distance;
    TrackSource fieldOfView;
    TrackSource clipRange;
};

struct ClipSource
{
    std::vector<NodeSource> nodes;
    std::vector<CameraSource> cameras;
    TrackSource switcher;                   ///< which camera shows the scene
    std::vector<PropertySource> properties; ///< of nodes in their order, then of cameras
    float begin = 0.0f;                     ///< of the time range, seconds
    float end = 0.0f;
    TEV2_LOADER::TEV2_UP_AXIS upAxis = TEV2_LOADER::TEV2_UP_AXIS::Unknown;

    /// What the nodes at top level are relative to; none: the world.
    std::optional<TEV2_LOADER::TEV2_MATRIX_3X4> top;
};

} // namespace TEV2_PLAYBACK
