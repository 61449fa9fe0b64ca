#include "tools/tv2/track_view.h"

#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <tuple>
#include <type_traits>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

template <class Concrete, class Use>
void UseWhenOfKind(const TEV2_ANIMATABLE& track, const Use& use)
{
    if (track.GetType() == Concrete::kKindCode)
    {
        use(static_cast<const Concrete&>(track).m_values);
    }
}

/// Calls use(m_values) with the values of the concrete class.
template <class Use>
void UseValues(const TEV2_ANIMATABLE& track, const Use& use)
{
    UseWhenOfKind<TEV2_ANIMATABLE_FLOAT32_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_COLOUR_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_VECTOR_2_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_QUATERNION_LERP>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_QUATERNION_SLERP>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_RECTF_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_INT32_RLE>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_BINORMAL_TANGENT_LINEAR>(track, use);
    UseWhenOfKind<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>(track, use);
}

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

template <class Value>
constexpr std::size_t ComponentCount()
{
    if constexpr (ComponentValue<Value>)
    {
        return std::tuple_size_v<decltype(std::declval<const Value&>().Components())>;
    }
    return 1;
}

} // namespace

TrackView::TrackView(const TEV2_ANIMATABLE& track) : track_(track), kind_(track.GetType())
{
    UseValues(track_,
              [this](const auto& values)
              {
                  using Value = typename std::decay_t<decltype(values)>::value_type;
                  width_ = ComponentCount<Value>();
                  value_count_ = values.size();
              });
}

bool TrackView::IsInteger() const
{
    return kind_ == TEV2_ANIMATABLE_INT32_RLE::kKindCode;
}

bool TrackView::IsQuaternion() const
{
    return kind_ == TEV2_ANIMATABLE_QUATERNION_LERP::kKindCode ||
           kind_ == TEV2_ANIMATABLE_QUATERNION_SLERP::kKindCode;
}

std::array<float, TrackView::kMostComponents> TrackView::Value(std::size_t key) const
{
    std::array<float, kMostComponents> components{};
    UseValues(track_, [&](const auto& values) { components = ToComponents(values[key]); });
    return components;
}

std::int32_t TrackView::Integer(std::size_t key) const
{
    return static_cast<const TEV2_ANIMATABLE_INT32_RLE&>(track_).m_values[key];
}

std::uint64_t TrackView::TimeOffset(std::size_t key) const
{
    // flag, kind, cursor key, fraction and count stand before the times
    return 5 * 4 + 4 * std::uint64_t{key};
}

std::uint64_t TrackView::ValueOffset(std::size_t key) const
{
    return TimeOffset(TimeCount()) + 4 + 4 * std::uint64_t{width_} * key;
}

} // namespace tv2
