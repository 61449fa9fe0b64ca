#include "tev2_loader/tracks/animatable.h"

#include "tev2_loader/serialisation/arrays.h"

#include <algorithm>
#include <cmath>

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kNoSegment = ~std::size_t{0};

/// So many neighbouring segments are tried one by one before the rest is bisected: playback mostly moves by
/// one.
constexpr std::size_t kNearSegments = 4;

/// Whether the segment that key opens holds the time, both ends included.
bool Holds(const std::vector<float>& times, std::size_t key, float time)
{
    return times[key] <= time && times[key + 1] >= time;
}

std::size_t SegmentIfHolds(const std::vector<float>& times, std::size_t key, float time)
{
    return Holds(times, key, time) ? key : kNoSegment;
}

/// The first segment from key on that holds the time.
std::size_t SearchForward(const std::vector<float>& times, std::size_t key, float time)
{
    const std::size_t segments = times.size() - 1;
    for (const std::size_t nearby = std::min(segments, key + kNearSegments); key < nearby; ++key)
    {
        if (Holds(times, key, time))
            return key;
    }
    if (key == segments)
        return kNoSegment;
    std::size_t close = key + 1;
    for (std::size_t end = segments; close < end;)
    {
        const std::size_t middle = close + (end - close) / 2;
        if (times[middle] < time)
            close = middle + 1;
        else
            end = middle;
    }
    return SegmentIfHolds(times, close - 1, time);
}

/// The first segment from key downwards that holds the time.
std::size_t SearchBackward(const std::vector<float>& times, std::size_t key, float time)
{
    for (std::size_t steps = 0; steps < kNearSegments; ++steps, --key)
    {
        if (Holds(times, key, time))
            return key;
        if (key == 0)
            return kNoSegment;
    }
    std::size_t behind_open = 0;
    for (std::size_t end = key + 1; behind_open < end;)
    {
        const std::size_t middle = behind_open + (end - behind_open) / 2;
        if (times[middle] <= time)
            behind_open = middle + 1;
        else
            end = middle;
    }
    if (behind_open == 0)
        return kNoSegment;
    return SegmentIfHolds(times, behind_open - 1, time);
}

} // namespace

bool TEV2_ANIMATABLE::Load(TEV2_MEMORY_CURSOR& cursor, float /*version*/)
{
    m_current_key = cursor.ReadU32();
    m_fraction = cursor.ReadF32();
    LoadBlock(cursor, m_times);
    return true;
}

bool TEV2_ANIMATABLE::Save(TEV2_FILE_WRITER& writer) const
{
    bool saved = writer.WriteU32(m_current_key);
    saved &= writer.WriteF32(m_fraction);
    saved &= SaveNumbers(writer, m_times);
    return saved;
}

void TEV2_ANIMATABLE::Update(float delta_time)
{
    std::uint32_t near_key = m_current_key;
    Update(delta_time, near_key);
}

void TEV2_ANIMATABLE::SetTime(float time)
{
    std::uint32_t near_key = m_current_key;
    SetTime(time, near_key);
}

void TEV2_ANIMATABLE::Wrap(float time)
{
    const float first = m_times.front();
    const float last = m_times.back();
    const float span = last - first;
    const float lengths = (time - last) / span;
    const float wrapped = lengths - std::trunc(lengths + 0.5f);
    SetTime(wrapped * span + first);
}

/// The segments that playback mostly needs, and then the one where the time should lie if the keys stand as far
/// apart as here: mostly right, since tracks are sampled at a fixed rate.
bool TEV2_ANIMATABLE::MoveNearby(std::size_t key, float time)
{
    if (MoveInside(key, time))
        return true;
    const float* times = m_times.data();
    const std::size_t last_segment = m_times.size() - 2;
    const bool forward = time - PresentTime(key) >= 0.0f;
    if (forward ? key == last_segment : key == 0)
        return false;
    std::size_t nearby = forward ? key + 1 : key - 1;
    if (!MoveInside(nearby, time))
    {
        const float guess = static_cast<float>(key) + (time - times[key]) / (times[key + 1] - times[key]);
        if (!(guess >= 0.0f && guess <= static_cast<float>(last_segment)))
            return false;
        nearby = static_cast<std::size_t>(guess);
        if (nearby < last_segment && time > times[nearby + 1])
            ++nearby;
        else if (nearby > 0 && time < times[nearby])
            --nearby;
        return (nearby > key) == forward && MoveInside(nearby, time);
    }
    return true;
}

void TEV2_ANIMATABLE::Search(std::size_t key, float time)
{
    if (MoveNearby(key, time))
        return;
    const std::size_t count = m_times.size();
    if (time >= m_times.back())
    {
        m_current_key = static_cast<std::uint32_t>(count - 2);
        m_fraction = 1.0f;
        return;
    }
    if (m_times.front() >= time)
    {
        m_current_key = 0;
        m_fraction = 0.0f;
        return;
    }

    const float present = PresentTime(key);
    std::size_t segment = kNoSegment;
    if (std::isnan(present))
        segment = SearchForward(m_times, 0, time); // a cursor that is nowhere: start over
    else if (time - present >= 0.0f)
        segment = SearchForward(m_times, key, time);
    else
        segment = SearchBackward(m_times, key, time);
    if (segment == kNoSegment)
        return;
    const float opening = m_times[segment];
    const float span = m_times[segment + 1] - opening;
    m_current_key = static_cast<std::uint32_t>(segment);
    m_fraction = span > 0.0f ? (time - opening) / span : 0.0f;
}

} // namespace TEV2_LOADER
