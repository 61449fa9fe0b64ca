#include "tev2_playback/player.h"

#include "tev2_playback/detail/block_plan.h"
#include "tev2_playback/detail/channel.h"
#include "tev2_playback/detail/clip_data.h"
#include "tev2_playback/detail/evaluate.h"
#include "tev2_playback/detail/seek.h"

#include <algorithm>

namespace TEV2_PLAYBACK
{

using namespace TEV2_LOADER;

namespace
{

struct Arrays
{
    std::span<TEV2_MATRIX_3X4> worlds;
    std::span<Place> places;
};

Arrays TakeArrays(BlockPlan& plan, const ClipData& clip)
{
    Arrays arrays;
    arrays.worlds = plan.Take<TEV2_MATRIX_3X4>(clip.skeleton.worlds.size());
    arrays.places = plan.Take<Place>(clip.nodeClocks);
    return arrays;
}

std::size_t SizeFor(const ClipData& clip)
{
    BlockPlan plan;
    TakeArrays(plan, clip);
    return plan.Size();
}

} // namespace

Player::Player(const Clip& clip, std::pmr::memory_resource* memory)
    : clip_(&clip.Data()),
      block_(SizeFor(*clip_), memory != nullptr ? memory : std::pmr::new_delete_resource()),
      playhead_(clip_->begin, clip_->end)
{
    PlaceArrays();
    std::ranges::copy(clip_->skeleton.worlds, worlds_.begin());
    std::fill_n(places_, clip_->nodeClocks, Place());
}

Player::Player(const Player& other, std::pmr::memory_resource* memory)
    : clip_(other.clip_),
      block_(other.block_.Size(), memory != nullptr ? memory : other.block_.Memory()),
      playhead_(other.playhead_),
      sought_(other.sought_),
      has_worlds_(other.has_worlds_)
{
    PlaceArrays();
    std::copy_n(other.block_.Begin(), block_.Size(), block_.Begin());
}

Player& Player::operator=(const Player& other)
{
    if (clip_ != other.clip_ || block_.Begin() == nullptr)
        return *this = Player(other, block_.Memory());
    if (this == &other)
        return *this;
    playhead_ = other.playhead_;
    sought_ = other.sought_;
    has_worlds_ = other.has_worlds_;
    std::copy_n(other.block_.Begin(), block_.Size(), block_.Begin());
    return *this;
}

void Player::PlaceArrays()
{
    BlockPlan plan(block_.Begin());
    const Arrays arrays = TakeArrays(plan, *clip_);
    worlds_ = arrays.worlds;
    places_ = arrays.places.data();
}

void Player::SetTime(float seconds)
{
    const float before = Time();
    playhead_.SetTime(seconds);
    KeepIfAt(before);
}

void Player::Advance(double seconds)
{
    const float before = Time();
    playhead_.Advance(seconds);
    KeepIfAt(before);
}

/// Whether what is known of a time is still right.
void Player::KeepIfAt(float time)
{
    const bool same = Time() == time;
    sought_ &= same;
    has_worlds_ &= same;
}

void Player::Seek()
{
    if (sought_)
        return;
    for (std::uint32_t at = 0; at < clip_->nodeClocks; ++at)
    {
        const Clock& clock = clip_->clocks[at];
        const std::span<const float> times = clip_->TimesOf(clock);
        places_[at] = clock.ascending ? SeekNear(times, Time(), places_[at].key)
                                      : TEV2_PLAYBACK::Seek(times, Time(), 0);
    }
    sought_ = true;
}

std::span<const TEV2_MATRIX_3X4> Player::World()
{
    if (!has_worlds_)
    {
        Seek();
        EvaluateWorlds(clip_->skeleton, places_, worlds_.data());
        has_worlds_ = true;
    }
    return worlds_.first(clip_->skeleton.parents.size());
}

void Player::Sample(std::span<Transform> pose)
{
    if (pose.size() < clip_->skeleton.parents.size())
        return;
    Seek();
    EvaluateTransforms(clip_->skeleton, places_, pose.data());
}

CameraView Player::Camera(std::size_t camera)
{
    const auto cameras = clip_->extras.cameras;
    const CameraData data = camera < cameras.size() ? cameras[camera] : CameraData();
    CameraView view;
    if (const std::uint32_t node = data.node != kNone ? data.node : clip_->skeleton.top; node != kNone)
    {
        World();
        view.world = worlds_[node];
    }
    view.view = Inverse(view.world);
    view.distance = ValueOf<float>(data.distance);
    view.fieldOfView = ValueOf<float>(data.fieldOfView);
    const auto planes = ValueOf<TEV2_VECTOR_2>(data.clipRange);
    view.nearPlane = planes.x;
    view.farPlane = planes.y;
    view.inverseAspect = data.inverseAspect;
    view.rightHanded = clip_->frame == Frame::RightHandedYUp;
    return view;
}

int Player::ActiveCamera() const
{
    const auto& extras = clip_->extras;
    if (extras.switcher == kNone)
        return -1;
    const auto camera = ValueOf<std::int32_t>(extras.switcher);
    return static_cast<std::uint32_t>(camera) < extras.cameras.size() ? camera : -1;
}

/// Where the present time is on the clock of a channel.
Place Player::PlaceOn(const Channel& channel) const
{
    if (channel.clock == kNone)
        return {};
    const Clock& clock = clip_->clocks[channel.clock];
    const bool known = channel.clock < clip_->nodeClocks && clock.ascending;
    return TEV2_PLAYBACK::Seek(clip_->TimesOf(clock), Time(), known ? places_[channel.clock].key : 0);
}

template <typename Value>
Value Player::ValueOf(std::uint32_t channel) const
{
    if (channel == kNone)
        return {};
    const Channel& track = clip_->extras.channels[channel];
    const ChannelValues<Value> values{clip_->extras.words.data() + track.values, track.count};
    if constexpr (std::is_same_v<Value, std::int32_t>)
        return ValueAt<Value>(values, PlaceOn(track), Stepped());
    else
        return ValueAt<Value>(values, PlaceOn(track), Linear());
}

template <typename Value>
EventList<Value> Player::EventsOf(std::uint32_t channel) const
{
    if (channel == kNone)
        return {};
    const Channel& track = clip_->extras.channels[channel];
    if (track.clock == kNone || !clip_->clocks[track.clock].ascending)
        return {};
    const auto times = clip_->TimesOf(clip_->clocks[track.clock]);
    return {times.first(std::min<std::size_t>(times.size(), track.count)),
            clip_->extras.words.data() + track.values, playhead_.Played()};
}

/// The channel of a property; none where there is none, or the property is of another type.
std::uint32_t Player::ChannelOf(std::uint32_t property, PropertyType type) const
{
    const auto properties = clip_->extras.properties;
    return property < properties.size() && properties[property].type == type ? properties[property].first
                                                                             : kNone;
}

std::int32_t Player::Value(Property<std::int32_t> property) const
{
    return ValueOf<std::int32_t>(ChannelOf(property.index, PropertyType::Int));
}

float Player::Value(Property<float> property) const
{
    return ValueOf<float>(ChannelOf(property.index, PropertyType::Float));
}

TEV2_VECTOR_3 Player::Value(Property<TEV2_VECTOR_3> property) const
{
    return ValueOf<TEV2_VECTOR_3>(ChannelOf(property.index, PropertyType::Vector3));
}

TEV2_VECTOR_4 Player::Value(Property<TEV2_VECTOR_4> property) const
{
    return ValueOf<TEV2_VECTOR_4>(ChannelOf(property.index, PropertyType::Vector4));
}

EventList<std::int32_t> Player::Events(Property<std::int32_t> property) const
{
    return EventsOf<std::int32_t>(ChannelOf(property.index, PropertyType::Int));
}

EventList<float> Player::Events(Property<float> property) const
{
    return EventsOf<float>(ChannelOf(property.index, PropertyType::Float));
}

EventList<TEV2_VECTOR_3> Player::Events(Property<TEV2_VECTOR_3> property) const
{
    return EventsOf<TEV2_VECTOR_3>(ChannelOf(property.index, PropertyType::Vector3));
}

EventList<TEV2_VECTOR_4> Player::Events(Property<TEV2_VECTOR_4> property) const
{
    return EventsOf<TEV2_VECTOR_4>(ChannelOf(property.index, PropertyType::Vector4));
}

EventList<std::int32_t> Player::CameraCuts() const
{
    return EventsOf<std::int32_t>(clip_->extras.switcher);
}

} // namespace TEV2_PLAYBACK
