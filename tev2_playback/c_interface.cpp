#include "tev2_playback/tev2_playback.h"

#include "tev2_playback/clip_file.h"
#include "tev2_playback/player.h"
#include "tev2_playback/pose.h"
#include "tev2_playback/root_motion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>
#include <string>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

struct tev2_clip
{
    std::shared_ptr<const Clip> clip;
};

struct tev2_player
{
    std::shared_ptr<const Clip> clip; ///< outlives the player
    Player player;
};

struct tev2_root_motion
{
    RootMotion motion;
    std::int32_t node;
};

static_assert(sizeof(tev2_matrix) == sizeof(TEV2_MATRIX_3X4));
static_assert(sizeof(tev2_transform) == sizeof(Transform) &&
              offsetof(tev2_transform, scale) == offsetof(Transform, scale) &&
              offsetof(tev2_transform, rotation) == offsetof(Transform, rotation));

// Choices have the same numbers on both sides.
static_assert(TEV2_FRAME_RIGHT_HANDED_Y_UP == static_cast<int>(Frame::RightHandedYUp));
static_assert(TEV2_UP_MINUS_Z == static_cast<int>(TEV2_UP_AXIS::MinusZ));
static_assert(TEV2_PROPERTY_VECTOR4 == static_cast<int>(PropertyType::Vector4));
static_assert(TEV2_REPEAT_PING_PONG == static_cast<int>(Repeat::PingPong));
static_assert(TEV2_DEPTH_ONE_TO_MINUS_ONE == static_cast<int>(Depth::OneToMinusOne));

namespace
{

/// Nothing but memory that runs out throws.
template <typename Work>
tev2_result Guarded(const Work& work)
{
    try
    {
        return work();
    }
    catch (...)
    {
        return TEV2_ERROR_MEMORY;
    }
}

void Say(const char* text, char* reason, std::size_t size)
{
    if (reason != nullptr && size > 0)
        std::snprintf(reason, size, "%s", text);
}

/// What the caller's structure has, and zeros for what it does not have yet.
bool Read(const tev2_load_options* given, LoadClipOptions& options)
{
    tev2_load_options known = {};
    if (given != nullptr)
    {
        if (given->size < sizeof given->size)
            return false;
        std::memcpy(&known, given, std::min(given->size, sizeof known));
    }
    if (known.frame < 0 || known.frame > TEV2_FRAME_RIGHT_HANDED_Y_UP)
        return false;
    options.clip.frame = static_cast<Frame>(known.frame);
    options.mostFileBytes = static_cast<std::size_t>(known.most_file_bytes);
    options.limits = {.bytes = static_cast<std::size_t>(known.most_bytes),
                      .nodes = static_cast<std::size_t>(known.most_nodes),
                      .nesting = static_cast<std::size_t>(known.most_nesting)};
    return true;
}

/// load(clip, options) fills a clip. Messages begin with the path, if there is one.
template <typename Load>
tev2_result Make(const char* path, const tev2_load_options* given, tev2_clip** clip, char* reason,
                 std::size_t reason_size, const Load& load)
{
    *clip = nullptr;
    Say("", reason, reason_size);
    const tev2_result result = Guarded(
        [&]
        {
            LoadClipOptions options;
            if (!Read(given, options))
            {
                Say("options: a size or a frame that this library does not have", reason, reason_size);
                return tev2_result{TEV2_ERROR_ARGUMENT};
            }
            auto made = std::make_shared<Clip>();
            if (const Status loaded = load(*made, options); !loaded)
            {
                const std::string file = path != nullptr ? std::string(path) + ": " : std::string();
                Say((file + loaded.Reason()).c_str(), reason, reason_size);
                return tev2_result{TEV2_ERROR_FILE};
            }
            *clip = new tev2_clip{std::move(made)};
            return tev2_result{TEV2_OK};
        });
    if (result == TEV2_ERROR_MEMORY)
        Say("out of memory", reason, reason_size);
    return result;
}

bool IsIndex(std::int32_t index, std::size_t count)
{
    return index >= 0 && static_cast<std::size_t>(index) < count;
}

std::int32_t Number(std::size_t count)
{
    return static_cast<std::int32_t>(count);
}

/// No index, for anything that is none.
template <typename Value>
Property<Value> AsProperty(std::int32_t property)
{
    return property < 0 ? Property<Value>() : Property<Value>{static_cast<std::uint32_t>(property)};
}

std::span<Transform> AsPose(tev2_transform* pose, std::int32_t count)
{
    return {reinterpret_cast<Transform*>(pose), static_cast<std::size_t>(std::max(count, 0))};
}

std::span<const Transform> AsPose(const tev2_transform* pose, std::int32_t count)
{
    return {reinterpret_cast<const Transform*>(pose), static_cast<std::size_t>(std::max(count, 0))};
}

std::span<const float> AsMask(const float* mask, std::int32_t count)
{
    return mask == nullptr ? std::span<const float>()
                           : std::span<const float>(mask, static_cast<std::size_t>(std::max(count, 0)));
}

void Put(std::int32_t value, tev2_event& event, bool after)
{
    (after ? event.after.i : event.before.i) = value;
}

template <typename Value>
void Put(const Value& value, tev2_event& event, bool after)
{
    std::memcpy(after ? event.after.f : event.before.f, &value, sizeof value);
}

template <typename Value>
std::uint64_t Report(const EventList<Value>& events, PropertyType type, tev2_event_callback callback,
                     void* user)
{
    std::uint64_t calls = 0;
    for (const Event<Value>& found : events)
    {
        tev2_event event = {};
        event.time = found.time;
        event.type = static_cast<std::int32_t>(type);
        Put(found.before, event, false);
        Put(found.after, event, true);
        ++calls;
        if (callback(&event, user) == 0)
            break;
    }
    return calls;
}

/// work(property) with the property's type; otherwise a zero for texts and what is no property.
template <typename Work>
auto WithFloats(const Clip& clip, std::int32_t property, const Work& work)
    -> decltype(work(Property<float>()))
{
    if (!IsIndex(property, clip.PropertyCount()))
        return {};
    switch (clip.PropertyAt(static_cast<std::size_t>(property)).type)
    {
    case PropertyType::Float:
        return work(AsProperty<float>(property));
    case PropertyType::Vector3:
        return work(AsProperty<TEV2_VECTOR_3>(property));
    case PropertyType::Vector4:
        return work(AsProperty<TEV2_VECTOR_4>(property));
    default:
        return {};
    }
}

} // namespace

std::int32_t tev2_playback_abi_version()
{
    return TEV2_PLAYBACK_ABI_VERSION;
}

tev2_result tev2_clip_load(const char* path, const tev2_load_options* options, tev2_clip** clip, char* reason,
                           std::size_t reason_size)
{
    return Make(path, options, clip, reason, reason_size,
                [path](Clip& made, const LoadClipOptions& with) { return LoadClip(path, made, with); });
}

tev2_result tev2_clip_load_memory(const void* bytes, std::size_t size, const tev2_load_options* options,
                                  tev2_clip** clip, char* reason, std::size_t reason_size)
{
    return Make(nullptr, options, clip, reason, reason_size,
                [=](Clip& made, const LoadClipOptions& with)
                { return LoadClipMemory(bytes, size, made, with); });
}

void tev2_clip_destroy(tev2_clip* clip)
{
    delete clip;
}

std::size_t tev2_clip_size(const tev2_clip* clip)
{
    return clip->clip->Size();
}

void tev2_clip_time_range(const tev2_clip* clip, float* begin, float* end)
{
    const TEV2_FLOAT32_RANGE range = clip->clip->TimeRange();
    *begin = range.minimum;
    *end = range.maximum;
}

std::int32_t tev2_clip_up_axis(const tev2_clip* clip)
{
    return static_cast<std::int32_t>(clip->clip->UpAxis());
}

std::int32_t tev2_clip_node_count(const tev2_clip* clip)
{
    return Number(clip->clip->NodeCount());
}

std::int32_t tev2_clip_node_parent(const tev2_clip* clip, std::int32_t node)
{
    return IsIndex(node, clip->clip->NodeCount()) ? clip->clip->Parent(static_cast<std::size_t>(node)) : -1;
}

const char* tev2_clip_node_name(const tev2_clip* clip, std::int32_t node)
{
    return IsIndex(node, clip->clip->NodeCount())
               ? clip->clip->NodeName(static_cast<std::size_t>(node)).data()
               : nullptr;
}

std::int32_t tev2_clip_find_node(const tev2_clip* clip, const char* name)
{
    return clip->clip->FindNode(name);
}

std::int32_t tev2_clip_camera_count(const tev2_clip* clip)
{
    return Number(clip->clip->CameraCount());
}

const char* tev2_clip_camera_name(const tev2_clip* clip, std::int32_t camera)
{
    return IsIndex(camera, clip->clip->CameraCount())
               ? clip->clip->CameraName(static_cast<std::size_t>(camera)).data()
               : nullptr;
}

std::int32_t tev2_clip_find_camera(const tev2_clip* clip, const char* name)
{
    return clip->clip->FindCamera(name);
}

std::int32_t tev2_clip_camera_node(const tev2_clip* clip, std::int32_t camera)
{
    return IsIndex(camera, clip->clip->CameraCount())
               ? clip->clip->CameraNode(static_cast<std::size_t>(camera))
               : -1;
}

std::int32_t tev2_clip_property_count(const tev2_clip* clip)
{
    return Number(clip->clip->PropertyCount());
}

tev2_result tev2_clip_property_info(const tev2_clip* clip, std::int32_t property, tev2_property_info* info)
{
    *info = {};
    if (!IsIndex(property, clip->clip->PropertyCount()))
        return TEV2_ERROR_ARGUMENT;
    const PropertyInfo found = clip->clip->PropertyAt(static_cast<std::size_t>(property));
    info->name = found.name.data();
    info->type = static_cast<std::int32_t>(found.type);
    info->of_camera = found.owner.isCamera ? 1 : 0;
    info->owner = Number(found.owner.index);
    info->text_count = Number(clip->clip->TextCount(AsProperty<Texts>(property)));
    return TEV2_OK;
}

std::int32_t tev2_clip_find_property(const tev2_clip* clip, std::int32_t of_camera, std::int32_t owner,
                                     const char* name, std::int32_t type)
{
    const Owner of = {of_camera != 0, static_cast<std::size_t>(owner)};
    const auto find = [&]<typename Value>(Property<Value>)
    { return static_cast<std::int32_t>(clip->clip->FindProperty<Value>(of, name).index); };
    if (!IsIndex(owner, of_camera != 0 ? clip->clip->CameraCount() : clip->clip->NodeCount()))
        return -1;
    switch (type)
    {
    case TEV2_PROPERTY_TEXTS:
        return find(Property<Texts>());
    case TEV2_PROPERTY_INT:
        return find(Property<std::int32_t>());
    case TEV2_PROPERTY_FLOAT:
        return find(Property<float>());
    case TEV2_PROPERTY_VECTOR3:
        return find(Property<TEV2_VECTOR_3>());
    case TEV2_PROPERTY_VECTOR4:
        return find(Property<TEV2_VECTOR_4>());
    default:
        return -1;
    }
}

const char* tev2_clip_property_text(const tev2_clip* clip, std::int32_t property, std::int32_t text)
{
    const Property<Texts> texts = AsProperty<Texts>(property);
    return IsIndex(text, clip->clip->TextCount(texts))
               ? clip->clip->Text(texts, static_cast<std::size_t>(text)).data()
               : nullptr;
}

tev2_result tev2_player_create(const tev2_clip* clip, tev2_player** player)
{
    *player = nullptr;
    return Guarded(
        [=]
        {
            *player = new tev2_player{clip->clip, Player(*clip->clip)};
            return tev2_result{TEV2_OK};
        });
}

tev2_result tev2_player_copy(const tev2_player* player, tev2_player** copy)
{
    *copy = nullptr;
    return Guarded(
        [=]
        {
            *copy = new tev2_player(*player);
            return tev2_result{TEV2_OK};
        });
}

void tev2_player_destroy(tev2_player* player)
{
    delete player;
}

tev2_result tev2_player_set_repeat(tev2_player* player, std::int32_t repeat)
{
    if (repeat < TEV2_REPEAT_ONCE || repeat > TEV2_REPEAT_PING_PONG)
        return TEV2_ERROR_ARGUMENT;
    player->player.SetRepeat(static_cast<Repeat>(repeat));
    return TEV2_OK;
}

void tev2_player_set_speed(tev2_player* player, double speed)
{
    player->player.SetSpeed(speed);
}

void tev2_player_advance(tev2_player* player, double seconds)
{
    player->player.Advance(seconds);
}

void tev2_player_set_time(tev2_player* player, float seconds)
{
    player->player.SetTime(seconds);
}

float tev2_player_time(const tev2_player* player)
{
    return player->player.Time();
}

std::int32_t tev2_player_has_ended(const tev2_player* player)
{
    return player->player.GetPlayhead().HasEnded() ? 1 : 0;
}

std::uint64_t tev2_player_wraps(const tev2_player* player)
{
    return player->player.GetPlayhead().Wraps();
}

const tev2_matrix* tev2_player_world(tev2_player* player)
{
    return reinterpret_cast<const tev2_matrix*>(player->player.World().data());
}

tev2_result tev2_player_camera(tev2_player* player, std::int32_t camera, tev2_camera* state)
{
    *state = {};
    if (!IsIndex(camera, player->clip->CameraCount()))
        return TEV2_ERROR_ARGUMENT;
    const CameraView view = player->player.Camera(static_cast<std::size_t>(camera));
    std::memcpy(&state->world, &view.world, sizeof view.world);
    std::memcpy(&state->view, &view.view, sizeof view.view);
    state->distance = view.distance;
    state->field_of_view = view.fieldOfView;
    state->near_plane = view.nearPlane;
    state->far_plane = view.farPlane;
    state->inverse_aspect = view.inverseAspect;
    state->right_handed = view.rightHanded ? 1 : 0;
    return TEV2_OK;
}

std::int32_t tev2_player_active_camera(const tev2_player* player)
{
    return player->player.ActiveCamera();
}

tev2_result tev2_camera_projection(const tev2_camera* camera, std::int32_t depth, float aspect,
                                   float projection[16])
{
    if (depth < TEV2_DEPTH_ZERO_TO_ONE || depth > TEV2_DEPTH_ONE_TO_MINUS_ONE)
        return TEV2_ERROR_ARGUMENT;
    CameraView view;
    view.fieldOfView = camera->field_of_view;
    view.nearPlane = camera->near_plane;
    view.farPlane = camera->far_plane;
    view.inverseAspect = camera->inverse_aspect;
    view.rightHanded = camera->right_handed != 0;
    const ProjectionMatrix matrix = view.Projection(static_cast<Depth>(depth), aspect);
    std::memcpy(projection, matrix.m, sizeof matrix.m);
    return TEV2_OK;
}

std::int32_t tev2_player_int(const tev2_player* player, std::int32_t property)
{
    return player->player.Value(AsProperty<std::int32_t>(property));
}

std::int32_t tev2_player_floats(const tev2_player* player, std::int32_t property, float values[4])
{
    return WithFloats(*player->clip, property,
                      [=](auto typed)
                      {
                          const auto value = player->player.Value(typed);
                          std::memcpy(values, &value, sizeof value);
                          constexpr PropertyType type = TypeOf(decltype(typed)());
                          return type == PropertyType::Float ? 1 : type == PropertyType::Vector3 ? 3 : 4;
                      });
}

std::uint64_t tev2_player_events(const tev2_player* player, std::int32_t property,
                                 tev2_event_callback callback, void* user)
{
    const auto report = [=](auto typed)
    { return Report(player->player.Events(typed), TypeOf(typed), callback, user); };
    return WithFloats(*player->clip, property, report) + report(AsProperty<std::int32_t>(property));
}

std::uint64_t tev2_player_camera_cuts(const tev2_player* player, tev2_event_callback callback, void* user)
{
    return Report(player->player.CameraCuts(), PropertyType::Int, callback, user);
}

tev2_result tev2_player_sample(tev2_player* player, tev2_transform* pose, std::int32_t count)
{
    if (count < Number(player->clip->NodeCount()))
        return TEV2_ERROR_ARGUMENT;
    player->player.Sample(AsPose(pose, count));
    return TEV2_OK;
}

void tev2_pose_blend(tev2_transform* to, const tev2_transform* from, std::int32_t count, float weight,
                     const float* mask)
{
    Blend(AsPose(to, count), AsPose(from, count), weight, AsMask(mask, count));
}

void tev2_pose_add(tev2_transform* to, const tev2_transform* delta, std::int32_t count, float weight,
                   const float* mask)
{
    Add(AsPose(to, count), AsPose(delta, count), weight, AsMask(mask, count));
}

void tev2_pose_difference(const tev2_transform* pose, const tev2_transform* reference, tev2_transform* delta,
                          std::int32_t count)
{
    Difference(AsPose(pose, count), AsPose(reference, count), AsPose(delta, count));
}

tev2_result tev2_clip_mask_below(const tev2_clip* clip, std::int32_t node, float factor, float* mask,
                                 std::int32_t count)
{
    if (!IsIndex(node, clip->clip->NodeCount()) || count < 0)
        return TEV2_ERROR_ARGUMENT;
    MaskBelow(*clip->clip, static_cast<std::size_t>(node), factor, {mask, static_cast<std::size_t>(count)});
    return TEV2_OK;
}

void tev2_clip_to_world(const tev2_clip* clip, const tev2_transform* pose, tev2_matrix* world,
                        std::int32_t count)
{
    const std::span<const Transform> transforms = AsPose(pose, count);
    ToWorld(*clip->clip, transforms, {reinterpret_cast<TEV2_MATRIX_3X4*>(world), transforms.size()});
}

void tev2_form_palette(const tev2_matrix* world, std::int32_t nodes, const std::int32_t* bones,
                       const tev2_matrix* bind, std::int32_t count, tev2_matrix* palette)
{
    const auto* const worlds = reinterpret_cast<const TEV2_MATRIX_3X4*>(world);
    const auto* const binds = reinterpret_cast<const TEV2_MATRIX_3X4*>(bind);
    auto* const matrices = reinterpret_cast<TEV2_MATRIX_3X4*>(palette);
    for (std::int32_t at = 0; at < count; ++at)
    {
        if (bones[at] < 0 || bones[at] >= nodes)
            matrices[at] = TEV2_MATRIX_3X4();
        else
            matrices[at] = binds != nullptr ? Product(worlds[bones[at]], binds[at]) : worlds[bones[at]];
    }
}

tev2_result tev2_root_motion_create(const tev2_clip* clip, std::int32_t node, tev2_root_motion** motion)
{
    *motion = nullptr;
    if (!IsIndex(node, clip->clip->NodeCount()))
        return TEV2_ERROR_ARGUMENT;
    return Guarded(
        [=]
        {
            *motion = new tev2_root_motion{RootMotion(*clip->clip, static_cast<std::size_t>(node)), node};
            return tev2_result{TEV2_OK};
        });
}

void tev2_root_motion_destroy(tev2_root_motion* motion)
{
    delete motion;
}

tev2_result tev2_root_motion_movement(tev2_root_motion* motion, const tev2_player* player,
                                      const tev2_transform* pose, std::int32_t count,
                                      tev2_transform* movement)
{
    if (count <= motion->node)
        return TEV2_ERROR_ARGUMENT;
    const Transform step =
        motion->motion.Movement(AsPose(pose, count), player->player.GetPlayhead().Played());
    std::memcpy(movement, &step, sizeof step);
    return TEV2_OK;
}

tev2_result tev2_root_motion_restart(tev2_root_motion* motion, const tev2_transform* pose, std::int32_t count)
{
    if (count <= motion->node)
        return TEV2_ERROR_ARGUMENT;
    motion->motion.Restart(AsPose(pose, count));
    return TEV2_OK;
}

tev2_result tev2_root_motion_hold(const tev2_root_motion* motion, tev2_transform* pose, std::int32_t count)
{
    if (count <= motion->node)
        return TEV2_ERROR_ARGUMENT;
    motion->motion.Hold(AsPose(pose, count));
    return TEV2_OK;
}
