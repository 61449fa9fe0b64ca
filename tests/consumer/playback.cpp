// Uses the installed playback library as another project would, and runs the examples of its headers and of
// docs/playback.md. Also compiled without exceptions and run-time type information.

#include "tev2_loader/file.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/stepped_integer_track.h"
#include "tev2_playback/events.h"

#include <cmath>
#include <cstdio>

#include "playback.inc"

#include "examples.inc"

namespace
{

/// A root that goes along X and Z in a second, with a camera and a property, and a hand 1 m above it that swings.
bool SaveWalk(const char* path)
{
    TEV2 scene;
    scene.environment.timeRange = {0.0f, 1.0f};
    scene.matrixHierarchy.nodes.resize(2);
    TEV2_MATRIX_NODE& root = scene.matrixHierarchy.nodes[0];
    TEV2_MATRIX_NODE& hand = scene.matrixHierarchy.nodes[1];
    hand.parentIndex = 0;
    auto way = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
    way->Append(0.0f, {});
    way->Append(1.0f, {2.0f, 0.0f, 4.0f});
    root.translation = std::move(way);
    auto swing = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
    swing->Append(0.0f, {0.0f, 1.0f, 0.0f});
    swing->Append(1.0f, {0.0f, 1.0f, 1.0f});
    hand.translation = std::move(swing);

    auto foot = std::make_unique<TEV2_ANIMATABLE_INT32_RLE>();
    foot->Append(0.0f, 0);
    foot->Append(0.5f, 1);
    root.properties.intValues.emplace_back().track = std::move(foot);
    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->value = 0;
    camera->fieldOfView = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(1.0f);
    scene.cameras.push_back(std::move(camera));
    return SetName(hand, "hand").Ok() && SetName(root.properties.intValues[0], "foot on ground").Ok() &&
           SaveFile(scene, path).Ok();
}

bool Expect(bool condition, const char* what)
{
    if (!condition)
        std::fprintf(stderr, "not as expected: %s\n", what);
    return condition;
}

bool IsAt(const TEV2_MATRIX_3X4& world, float x, float y, float z)
{
    return std::fabs(world.m[0][3] - x) + std::fabs(world.m[1][3] - y) + std::fabs(world.m[2][3] - z) < 1e-5f;
}

bool RunPoses(const Clip& clip)
{
    std::vector<Player> players(5, Player(clip));
    AdvanceAll(players, 0.25, 3);
    bool good = true;
    for (Player& player : players)
        good &= Expect(player.Time() == 0.25f && IsAt(player.World()[1], 0.5f, 1.0f, 1.25f),
                       "players on threads");

    Player& walk = players[0];
    Player& wave = players[1];
    wave.SetTime(1.0f);
    std::vector<Transform> pose(2), other(2);
    std::vector<TEV2_MATRIX_3X4> world(2);
    WaveWhileWalking(clip, walk, wave, UpperBody(clip, "hand"), pose, other, world);
    good &= Expect(IsAt(world[0], 0.5f, 0.0f, 1.0f) && IsAt(world[1], 0.5f, 1.0f, 2.0f),
                   "legs walk, a hand waves");

    const Shot shot = ShotOf(walk, 2.0f);
    good &= Expect(IsAt(shot.view, -0.5f, 0.0f, -1.0f), "a view");
    good &= Expect(std::fabs(shot.projection.m[1][1] - 2.0f / std::tan(0.5f)) < 1e-5f, "a projection");

    walk.SetTime(0.495f);
    Footsteps(clip, walk);
    good &= Expect(walk.Value(clip.FindProperty<std::int32_t>(OfNode(0), "foot on ground")) == 1, "a step");
    return good;
}

bool RunRootMotion(const Clip& clip)
{
    Walker walker = {Player(clip), RootMotion(clip, 0), {}};
    walker.player.SetRepeat(Repeat::Loop);
    std::vector<Transform> pose(2);
    std::vector<TEV2_MATRIX_3X4> world(2);
    for (int step = 0; step < 5; ++step)
        Walk(walker, clip, 0.5, pose, world); // two times and a half through the clip
    return Expect(IsAt(walker.place, 5.0f, 0.0f, 10.0f), "a walk goes on") &&
           Expect(IsAt(world[1], 0.0f, 1.0f, 0.5f), "a pose without the walk");
}

bool RunSkin()
{
    TEV2 scene;
    if (!Expect(LoadFile("walk.tv2", scene).Ok(), "a scene"))
        return false;
    auto sleeve = std::make_unique<TEV2_WEIGHTED_MESH>();
    sleeve->skin->bones = {1};
    sleeve->skin->bindMatrices.resize(1);
    sleeve->skin->bindMatrices[0].m[1][3] = -1.0f; // the hand was 1 m up
    scene.weightedMeshes.push_back(std::move(sleeve));
    const SkinnedCharacter character = MakeCharacter(scene);
    Player player(character.clip);
    player.SetTime(1.0f);
    const std::vector<TEV2_MATRIX_3X4> palette = PaletteOf(character, 0, player);
    return Expect(palette.size() == 1 && IsAt(palette[0], 2.0f, 0.0f, 5.0f), "a palette");
}

bool RunLoads()
{
    Clip clip;
    bool good = Expect(LoadForOpenGl("walk.tv2", clip).Ok(), "a clip in another frame");
    Player turned(clip);
    turned.SetTime(1.0f);
    good &= Expect(IsAt(turned.World()[1], 2.0f, 1.0f, -5.0f), "the right-handed frame");

    PendingClip pending = LoadAsync("walk.tv2");
    Clip loaded;
    while (!LoadingScreen(pending, loaded))
        std::this_thread::yield();
    return good && Expect(loaded.NodeCount() == 2, "a clip loaded meanwhile");
}

} // namespace

int main()
{
    TEV2 scene;
    Clip clip;
    bool good = Expect(SaveWalk("walk.tv2"), "a save") && Expect(PrintWalk("walk.tv2").Ok(), "a walk") &&
                Expect(!PrintWalk("none.tv2").Ok(), "a reason") &&
                Expect(LoadClip("walk.tv2", clip).Ok(), "a load");
    if (!good)
        return 1;
    good &= RunPoses(clip) && RunRootMotion(clip) && RunSkin() && RunLoads();
    scene.weightedMeshes.push_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    Player player(clip), walk(clip), run(clip);
    std::vector<TEV2_MATRIX_3X4> matrices(2);
    return good && RunExamples(scene, clip, player, walk, run, 0, 1, Property<std::int32_t>(), matrices) == 0
               ? 0
               : 1;
}
