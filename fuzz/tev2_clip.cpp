#include "tests/tev2_playback/player_difference.h"
#include "tev2_playback/clip_file.h"

#include <cstdio>

// Whatever the bytes are: a clip is made of those that load as a scene, and of no others. It plays as that scene does
// when it is rewound, and answers every question at every time.

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

/// Of others it is not said which keys a time is between.
bool HasAscendingTimes(const TEV2& scene)
{
    const auto ascends = [](const TEV2_ANIMATABLE* track)
    {
        return track == nullptr ||
               (std::ranges::is_sorted(track->m_times) &&
                std::ranges::none_of(track->m_times, [](float t) { return std::isnan(t); }));
    };
    return std::ranges::all_of(scene.matrixHierarchy.nodes,
                               [&](const TEV2_MATRIX_NODE& node) {
                                   return ascends(node.translation.get()) && ascends(node.rotation.get()) &&
                                          ascends(node.scale.get());
                               });
}

/// Neither too many nor those of a loop that goes round a million times.
template <typename List>
void Read(const List& events)
{
    int left = 100;
    for (const auto& event : events)
        if (event.time > 1e30f || --left == 0)
            break;
}

template <typename Value>
void Read(const Player& player, std::uint32_t index)
{
    const Property<Value> property{index}; // mostly of another type
    player.Value(property);
    Read(player.Events(property));
}

void AskEverything(Player& player, const Clip& clip)
{
    Read(player.CameraCuts());
    for (std::uint32_t index = 0; index <= clip.PropertyCount(); ++index)
    {
        Read<std::int32_t>(player, index);
        Read<float>(player, index);
        Read<TEV2_VECTOR_3>(player, index);
        Read<TEV2_VECTOR_4>(player, index);
        for (std::size_t text = 0; text < clip.TextCount(Property<Texts>{index}); ++text)
            clip.Text(Property<Texts>{index}, text);
    }
    for (std::size_t camera = 0; camera < clip.CameraCount(); ++camera)
        player.Camera(camera).Projection(Depth::ZeroToOne);
    const int active = player.ActiveCamera();
    if (active < -1 || active >= static_cast<int>(clip.CameraCount()))
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    TEV2_MEMORY_CURSOR cursor(data, size);
    TEV2 scene;
    const bool loaded = scene.Load(cursor, false);
    Clip clip;
    if (static_cast<bool>(LoadClipMemory(data, size, clip)) != loaded)
        __builtin_trap();
    if (!loaded)
        return 0;
    for (std::size_t node = 0; node < clip.NodeCount(); ++node)
        if (clip.FindNode(clip.NodeName(node)) > static_cast<int>(node) ||
            clip.FindNode(clip.NodeName(node)) < 0)
            __builtin_trap();

    Player player(clip);
    tev2_compare::RewoundScene rewound(scene);
    const bool comparable = HasAscendingTimes(scene);
    for (const float time : {player.Time(), 100.0f, 0.5f, 1.7f, -1.0f, 0.0f, std::nanf("")})
    {
        if (!comparable)
        {
            player.SetTime(time);
            player.World();
        }
        else if (const std::string difference = tv2_tests::Difference(rewound, player, time);
                 !difference.empty())
        {
            std::fprintf(stderr, "%s\n", difference.c_str());
            __builtin_trap();
        }
    }
    AskEverything(player, clip);
    player.SetRepeat(Repeat::PingPong);
    for (const double seconds : {0.4, -7.0})
    {
        player.Advance(seconds);
        AskEverything(player, clip);
    }
    return 0;
}
