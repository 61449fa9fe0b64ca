#include "check/track_view.h"

#include "tev2_loader/tracks/visit_keys.h"
#include "tev2_loader/walk.h"

#include <tuple>
#include <type_traits>

namespace tev2_check
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::uint64_t kNumber = 4; ///< bytes of every number

template <class Value>
std::array<float, TrackView::kMostComponents> ToComponents(const Value& value)
{
    std::array<float, TrackView::kMostComponents> components{};
    if constexpr (ComponentValue<Value>)
    {
        std::size_t next = 0;
        std::apply([&](const auto&... component) { ((components[next++] = component), ...); },
                   value.Components());
    }
    else
    {
        components[0] = static_cast<float>(value);
    }
    return components;
}

} // namespace

TrackView::TrackView(const TEV2_ANIMATABLE& track) : track_(track), kind_(track.GetType())
{
    VisitKeys(track_,
              [this](auto, auto values)
              {
                  width_ = ValueSize<typename decltype(values)::value_type>() / kNumber;
                  value_count_ = values.size();
              });
}

bool TrackView::IsInteger() const
{
    return kind_ == kIntegerTrack;
}

bool TrackView::IsQuaternion() const
{
    return kind_ == kLerpTrack || kind_ == kSlerpTrack;
}

std::array<float, TrackView::kMostComponents> TrackView::Value(std::size_t key) const
{
    std::array<float, kMostComponents> components{};
    VisitKeys(track_, [&](auto, auto values) { components = ToComponents(values[key]); });
    return components;
}

std::int32_t TrackView::Integer(std::size_t key) const
{
    return static_cast<const TEV2_ANIMATABLE_INT32_RLE&>(track_).m_values[key];
}

std::uint64_t TrackView::TimeOffset(std::size_t key) const
{
    // the count of the values follows the times
    return ValueOffset(0) - kNumber - kNumber * (TimeCount() - key);
}

std::uint64_t TrackView::ValueOffset(std::size_t key) const
{
    // the values end the record
    return TrackSize(track_) - kNumber * width_ * (value_count_ - key);
}

} // namespace tev2_check
