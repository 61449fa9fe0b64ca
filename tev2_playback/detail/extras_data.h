#pragma once

#include "tev2_playback/detail/channel_data.h"
#include "tev2_playback/detail/name_table.h"
#include "tev2_playback/property.h"

#include <cstdint>
#include <span>

// What a clip has besides the skeleton, as it lies in memory.

namespace TEV2_PLAYBACK
{

/// Channels, TEV2_LOADER::kNone where it has none.
struct CameraData
{
    std::uint32_t node = TEV2_LOADER::kNone; ///< none: in the world
    float inverseAspect = 0.0f;
    std::uint32_t distance = TEV2_LOADER::kNone;
    std::uint32_t fieldOfView = TEV2_LOADER::kNone;
    std::uint32_t clipRange = TEV2_LOADER::kNone;
};

struct PropertyData
{
    std::uint32_t owner = 0;
    bool ofCamera = false;
    PropertyType type = PropertyType::Int;
    std::uint32_t first = TEV2_LOADER::kNone; ///< its channel; of texts the first
    std::uint32_t count = 0;                  ///< of texts
};

struct ExtrasData
{
    std::span<CameraData> cameras;
    NameTable cameraNames;
    std::uint32_t switcher = TEV2_LOADER::kNone; ///< a channel

    std::span<PropertyData> properties; ///< of nodes in their order, then of cameras
    NameTable propertyNames;
    NameTable texts; ///< of all properties

    std::span<Channel> channels;
    std::span<std::uint32_t> words; ///< their values
};

} // namespace TEV2_PLAYBACK
