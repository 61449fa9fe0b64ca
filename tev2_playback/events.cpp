#include "tev2_playback/events.h"

#include "tev2_playback/detail/channel.h"

#include <algorithm>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

bool Same(std::int32_t left, std::int32_t right)
{
    return left == right;
}

bool Same(float left, float right)
{
    return left == right || (left != left && right != right);
}

template <ComponentValue Value>
bool Same(const Value& left, const Value& right)
{
    bool same = true;
    Zip(left, right,
        [&same](float a, float b)
        {
            same = same && Same(a, b);
            return a;
        });
    return same;
}

} // namespace

template <typename Value>
EventList<Value>::EventList(std::span<const float> times, const std::uint32_t* values,
                            const PlayedSpan& played)
    : times_(times), values_(values), played_(played)
{
    if (!times_.empty())
        EnterPart(played_.from);
}

template <typename Value>
Value EventList<Value>::ValueOf(std::size_t key) const
{
    return ChannelValues<Value>{values_, times_.size()}[key];
}

template <typename Value>
std::size_t EventList<Value>::KeysUpTo(float time) const
{
    return static_cast<std::size_t>(std::ranges::upper_bound(times_, time) - times_.begin());
}

/// The key whose value is the key value at a time.
template <typename Value>
std::size_t EventList<Value>::KeyAt(float time) const
{
    return std::max<std::size_t>(KeysUpTo(time), 1) - 1;
}

/// The part of the span from here to the next end of the range, or to its own end.
template <typename Value>
void EventList<Value>::EnterPart(float from)
{
    const float to = played_.crossings == 0 ? played_.to : played_.backward ? played_.begin : played_.end;
    // The first key changes nothing: its value is there before it.
    next_ = std::max<std::size_t>(KeysUpTo(from), 1);
    stop_ = std::max<std::size_t>(KeysUpTo(to), 1);
    found_ = false;
}

template <typename Value>
bool EventList<Value>::FindKey(Event<Value>& event)
{
    while (next_ != stop_)
    {
        const std::size_t key = played_.backward ? --next_ : next_++;
        event = {times_[key], ValueOf(key - 1), ValueOf(key)};
        if (played_.backward)
            std::swap(event.before, event.after);
        if (!Same(event.before, event.after))
            return true;
    }
    return false;
}

/// Goes on from the end of the range that was reached. True where a jump from it is an event.
template <typename Value>
bool EventList<Value>::CrossEnd(Event<Value>& event)
{
    if (whole_ && !found_) // then there are none in other parts either
    {
        played_.crossings = 0;
        return false;
    }
    whole_ = true;
    --played_.crossings;
    const float reached = played_.backward ? played_.begin : played_.end;
    if (played_.turns)
    {
        played_.backward = !played_.backward;
        EnterPart(reached);
        return false;
    }
    const float other = played_.backward ? played_.end : played_.begin;
    event = {other, ValueOf(KeyAt(reached)), ValueOf(KeyAt(other))};
    EnterPart(other);
    return !Same(event.before, event.after);
}

template <typename Value>
bool EventList<Value>::Find(Event<Value>& event)
{
    if (times_.empty())
        return false;
    while (!FindKey(event))
    {
        if (played_.crossings == 0)
            return false;
        if (CrossEnd(event))
            break;
    }
    found_ = true;
    return true;
}

template class EventList<std::int32_t>;
template class EventList<float>;
template class EventList<TEV2_VECTOR_3>;
template class EventList<TEV2_VECTOR_4>;

} // namespace TEV2_PLAYBACK
