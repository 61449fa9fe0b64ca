#pragma once

/// Keys of tracks as glTF takes them: finite, with ascending times from 0 on.

#include "gltf/convert/report.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tev2_gltf
{

/// At least one key. A single one is a constant, whatever its time.
template <typename Value>
struct Keys
{
    std::vector<float> times; // seconds
    std::vector<Value> values;

    bool IsConstant() const
    {
        for (const Value& value : values)
            if (!(value == values.front()))
                return false;
        return true;
    }
};

inline bool IsFinite(float value)
{
    return std::isfinite(value);
}

template <TEV2_LOADER::ComponentValue Value>
bool IsFinite(const Value& value)
{
    return std::apply([](const auto&... component) { return (std::isfinite(component) && ...); },
                      value.Components());
}

inline bool IsFinite(std::int32_t)
{
    return true;
}

inline float Later(float time, double shift)
{
    return static_cast<float>(static_cast<double>(time) + shift);
}

/// The values of a track, whatever its class; empty where it has others.
template <typename Value>
std::span<const Value> ValuesOf(const TEV2_LOADER::TEV2_ANIMATABLE& track)
{
    std::span<const Value> found;
    TEV2_LOADER::VisitKeys(track,
                           [&](std::span<const float>, auto values)
                           {
                               if constexpr (std::is_same_v<typename decltype(values)::value_type, Value>)
                                   found = values;
                           });
    return found;
}

/// The keys of a track, `absent` without one, each `shift` seconds later. Keys that are not finite, and those whose
/// times do not ascend, are left out and reported.
template <typename Family>
Keys<typename Family::Value> CleanKeys(const std::unique_ptr<Family>& track,
                                       const typename Family::Value& absent, double shift,
                                       const std::string& where, ConversionReport& report);

/// The value at a time, as SetTime moves the track; `absent` without a track or a finite value.
template <typename Family>
typename Family::Value ValueAt(const std::unique_ptr<Family>& track, float time,
                               const typename Family::Value& absent)
{
    if (!track)
        return absent;
    const auto moved = TEV2_LOADER::CloneTrack(track);
    moved->SetTime(time);
    const auto value = moved->GetValue();
    return IsFinite(value) ? value : absent;
}

/// Whether the track has two different values.
template <typename Family>
bool Moves(const std::unique_ptr<Family>& track)
{
    if (!track)
        return false;
    const auto values = ValuesOf<typename Family::Value>(*track);
    for (const auto& value : values)
        if (!(value == values.front()) && track->m_times.size() > 1)
            return true;
    return false;
}

template <typename Family>
Keys<typename Family::Value> CleanKeys(const std::unique_ptr<Family>& track,
                                       const typename Family::Value& absent, double shift,
                                       const std::string& where, ConversionReport& report)
{
    Keys<typename Family::Value> keys;
    if (track)
    {
        const auto values = ValuesOf<typename Family::Value>(*track);
        const std::size_t count = std::min(track->m_times.size(), values.size());
        std::size_t not_finite = 0;
        std::size_t not_ascending = 0;
        for (std::size_t i = 0; count > 1 && i < count; ++i)
        {
            const auto time = Later(track->m_times[i], shift);
            if (!std::isfinite(time) || !IsFinite(values[i]))
                ++not_finite;
            else if (!keys.times.empty() && !(time > keys.times.back()))
                ++not_ascending;
            else
            {
                keys.times.push_back(time);
                keys.values.push_back(values[i]);
            }
        }
        if (const auto value = track->GetValue(); count < 2 && IsFinite(value))
            keys = {{0.0f}, {value}};
        else if (count < 2)
            ++not_finite;
        if (not_finite > 0)
            report.Add(Code::ValueDropped, where, "a key that is not a finite number was dropped",
                       not_finite);
        if (not_ascending > 0)
            report.Add(Code::KeyDropped, where, "a key whose time does not ascend was dropped",
                       not_ascending);
    }
    if (keys.times.empty())
        keys = {{0.0f}, {absent}};
    return keys;
}

} // namespace tev2_gltf
