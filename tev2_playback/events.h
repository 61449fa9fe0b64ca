#pragma once

#include "tev2_loader/math/vectors.h"
#include "tev2_playback/playhead.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>

// What a property or the camera switcher did while a player advanced.
//
//     const auto footstep = clip.FindProperty<std::int32_t>(TEV2_PLAYBACK::OfNode(0), "footstep");
//     player.Advance(1.0 / 60.0);
//     for (const TEV2_PLAYBACK::Event<std::int32_t>& step : player.Events(footstep))
//         std::printf("at %g s: %d, was %d\n", static_cast<double>(step.time), step.after, step.before);
//
// The *key value* of a property at a time is that of its last key at or before it, and that of its first key before all
// of them. Of whole numbers and the switcher it is the value itself; of others, where interpolation was last. An event
// is a change of the key value along what was played, in the order of play: at a key that was passed, or where a loop
// jumped from one end of the range to the other. So events lead from the key value before an Advance to the one after
// it, none is missing and none comes twice, whatever the steps, speeds and turns are: going forward from a to b passes
// the keys in (a, b], going back again passes the same. Neighbouring keys with equal values (NaN equals NaN) make no
// event. Neither do SetTime, which is a jump, nor tracks whose key times do not ascend. What holds where playing
// begins is no event either: ask Player::Value or ActiveCamera.

namespace TEV2_PLAYBACK
{

/// Value: std::int32_t, float, TEV2_VECTOR_3 or TEV2_VECTOR_4.
template <typename Value>
struct Event
{
    float time = 0.0f; ///< of the key, or of the end of the range that a loop jumped to; seconds
    Value before{};    ///< key values
    Value after{};
};

/// Events in a range-based for: found one by one, without memory. Valid while the clip lives. Where a single Advance
/// went through its range a million times, so do its events: leave the loop when you have seen enough.
template <typename Value>
class EventList
{
public:
    class Iterator
    {
    public:
        const Event<Value>& operator*() const { return event_; }
        const Event<Value>* operator->() const { return &event_; }
        Iterator& operator++()
        {
            found_ = list_.Find(event_);
            return *this;
        }
        bool operator==(std::default_sentinel_t) const { return !found_; }

    private:
        friend class EventList;
        explicit Iterator(const EventList& list) : list_(list) { ++*this; }

        EventList list_;
        Event<Value> event_;
        bool found_ = false;
    };

    /// None.
    EventList() = default;

    /// Of keys with ascending times; value i, in as many numbers of 4 bytes as it has, belongs to time i.
    EventList(std::span<const float> times, const std::uint32_t* values, const PlayedSpan& played);

    Iterator begin() const { return Iterator(*this); }
    std::default_sentinel_t end() const { return {}; }

private:
    bool Find(Event<Value>& event);
    bool FindKey(Event<Value>& event);
    bool CrossEnd(Event<Value>& event);
    void EnterPart(float from);
    Value ValueOf(std::size_t key) const;
    std::size_t KeysUpTo(float time) const;
    std::size_t KeyAt(float time) const;

    std::span<const float> times_;
    const std::uint32_t* values_ = nullptr;
    PlayedSpan played_;
    std::size_t next_ = 0; ///< in the part of the span that goes one way without a jump: keys from here...
    std::size_t stop_ = 0; ///< ...to here; backward, keys before these
    bool whole_ = false;   ///< the part began at an end of the range
    bool found_ = false;   ///< an event in the part
};

extern template class EventList<std::int32_t>;
extern template class EventList<float>;
extern template class EventList<TEV2_LOADER::TEV2_VECTOR_3>;
extern template class EventList<TEV2_LOADER::TEV2_VECTOR_4>;

} // namespace TEV2_PLAYBACK
