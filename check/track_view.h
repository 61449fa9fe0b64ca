#pragma once

#include "tev2_loader/tracks/animatable.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tev2_check
{

/// Reads the keys of any track, whatever its kind, without knowing its class.
class TrackView
{
public:
    static constexpr std::size_t kMostComponents = 6;

    /// `track` must outlive the view.
    explicit TrackView(const TEV2_LOADER::TEV2_ANIMATABLE& track);

    std::uint32_t Kind() const { return kind_; }
    bool IsInteger() const;
    bool IsQuaternion() const;
    std::size_t TimeCount() const { return track_.m_times.size(); }
    std::size_t ValueCount() const { return value_count_; }
    float Time(std::size_t key) const { return track_.m_times[key]; }
    /// Components of one value, 1 to 6.
    std::size_t Width() const { return width_; }
    /// The components of one value, Width() of them (not for integers).
    std::array<float, kMostComponents> Value(std::size_t key) const;
    /// One value of an integer track.
    std::int32_t Integer(std::size_t key) const;
    /// Byte offset of a time, or a value, from the beginning of the optional track (its flag).
    std::uint64_t TimeOffset(std::size_t key) const;
    std::uint64_t ValueOffset(std::size_t key) const;

private:
    const TEV2_LOADER::TEV2_ANIMATABLE& track_;
    std::uint32_t kind_;
    std::size_t width_ = 0;
    std::size_t value_count_ = 0;
};

} // namespace tev2_check
