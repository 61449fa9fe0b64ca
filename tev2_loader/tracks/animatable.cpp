#include "tev2_loader/tracks/animatable.h"

#include "tev2_loader/serialisation/arrays.h"

#include <algorithm>
#include <cmath>

namespace TEV2_LOADER
{

namespace
{

constexpr std::size_t kNoSegment = ~std::size_t{0};

/// Whether the time lies between the two keys of a segment and on neither. In ascending times no other segment
/// holds it then, so that any way to find the segment finds the same.
bool HoldsInside(const float* times, std::size_t key, float time)
{
    return times[key] < time && time < times[key + 1];
}

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

std::size_t TEV2_ANIMATABLE::PresentSegment() const
{
    return std::min<std::size_t>(m_current_key, m_times.size() - 2);
}

float TEV2_ANIMATABLE::PresentTime(std::size_t key) const
{
    return m_times[key] + (m_times[key + 1] - m_times[key]) * m_fraction;
}

void TEV2_ANIMATABLE::EnterSegment(std::size_t key, float time)
{
    const float opening = m_times[key];
    const float span = m_times[key + 1] - opening;
    m_current_key = static_cast<std::uint32_t>(key);
    m_fraction = span > 0.0f ? (time - opening) / span : 0.0f;
}

void TEV2_ANIMATABLE::Update(float delta_time)
{
    if (m_times.size() < 2)
        return;

    const std::size_t key = PresentSegment();
    const float time = PresentTime(key) + delta_time;
    if (MoveInside(key, time))
        return;
    const float first = m_times.front();
    const float last = m_times.back();
    if (last >= time)
    {
        Search(key, time);
        return;
    }
    const float span = last - first;
    const float lengths = (time - last) / span;
    const float wrapped = lengths - std::trunc(lengths + 0.5f);
    SetTime(wrapped * span + first);
}

void TEV2_ANIMATABLE::SetTime(float time)
{
    if (m_times.size() < 2)
        return;
    const std::size_t key = PresentSegment();
    if (!MoveInside(key, time))
        Search(key, time);
}

/// The segments that playback mostly needs, and then the one where the time should lie if the keys stand as far
/// apart as here: mostly right, since tracks are sampled at a fixed rate.
bool TEV2_ANIMATABLE::MoveInside(std::size_t key, float time)
{
    const float* times = m_times.data();
    const std::size_t last_segment = m_times.size() - 2;
    if (HoldsInside(times, key, time))
    {
        EnterSegment(key, time);
        return true;
    }
    const bool forward = time - PresentTime(key) >= 0.0f;
    if (forward ? key == last_segment : key == 0)
        return false;
    std::size_t nearby = forward ? key + 1 : key - 1;
    if (!HoldsInside(times, nearby, time))
    {
        const float guess = static_cast<float>(key) + (time - times[key]) / (times[key + 1] - times[key]);
        if (!(guess >= 0.0f && guess <= static_cast<float>(last_segment)))
            return false;
        nearby = static_cast<std::size_t>(guess);
        if (nearby < last_segment && time > times[nearby + 1])
            ++nearby;
        else if (nearby > 0 && time < times[nearby])
            --nearby;
        if (!HoldsInside(times, nearby, time) || (nearby > key) != forward)
            return false;
    }
    EnterSegment(nearby, time);
    return true;
}

void TEV2_ANIMATABLE::Search(std::size_t key, float time)
{
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
    if (segment != kNoSegment)
        EnterSegment(segment, time);
}

} // namespace TEV2_LOADER
