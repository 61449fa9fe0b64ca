#pragma once

#include "tev2_loader/archive/views.h"
#include "tev2_loader/tracks/keyed_track.h"

#include <cstdint>

namespace TEV2_LOADER
{

/// A track whose keys stay in the image; `present` where others are not null.
template <typename Family>
struct TEV2_TRACK_VIEW
{
    using Viewed = TEV2_KEYED_FIELDS;

    bool present = false;
    std::uint32_t type = 0;
    std::uint32_t m_current_key = 0;
    float m_fraction = 0.0f;
    TEV2_VIEW<float> m_times;
    TEV2_VIEW<typename Family::Value> m_values;
};

} // namespace TEV2_LOADER
