#include "tests/support/sample_scenes.h"
#include "tests/support/scratch_folder.h"
#include "tests/tev2_playback/random_skeleton.h"
#include "tev2_playback/load_async.h"
#include "tev2_playback/player.h"
#include "tev2_playback/pose.h"
#include "tev2_playback/root_motion.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>

// One clip on eight threads at once. Under ThreadSanitizer every access to shared memory is watched; without it the
// threads have to see what one thread sees.

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;
using namespace tv2_tests;

namespace
{

constexpr int kThreads = 8;

/// Everything that players of a clip give, as bytes.
class Recording
{
public:
    explicit Recording(const Clip& clip)
        : clip_(clip), pose_(clip.NodeCount()), other_(clip.NodeCount()), worlds_(clip.NodeCount())
    {
        Player first(clip);
        first.SetRepeat(Repeat::Loop);
        Player second = first;
        RootMotion root(clip, 0);
        for (int step = 0; step < 60; ++step)
        {
            first.Advance(0.05);
            second.SetTime(2.0f - first.Time());
            Put(first.World());
            PutPoses(first, second);
            const Transform movement = root.Movement(pose_, first.GetPlayhead().Played());
            Put(std::span(&movement, 1));
            PutScene(first);
        }
    }

    bool operator==(const Recording& other) const { return bytes_ == other.bytes_; }

private:
    template <typename Element, std::size_t kExtent>
    void Put(std::span<Element, kExtent> elements)
    {
        const auto bytes = std::as_bytes(elements);
        bytes_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

    void PutPoses(Player& first, Player& second)
    {
        first.Sample(pose_);
        second.Sample(other_);
        Blend(other_, pose_, 0.25f);
        ToWorld(clip_, other_, worlds_);
        Put(std::span<const TEV2_MATRIX_3X4>(worlds_));
        for (std::size_t node = 0; node < clip_.NodeCount(); ++node)
            bytes_ += std::to_string(clip_.FindNode(clip_.NodeName(node)));
    }

    void PutScene(Player& player)
    {
        bytes_ += std::to_string(player.ActiveCamera());
        for (std::size_t camera = 0; camera < clip_.CameraCount(); ++camera)
        {
            const ProjectionMatrix projection = player.Camera(camera).Projection(Depth::OneToZero);
            Put(std::span(&projection, 1));
        }
        const auto visible = clip_.FindProperty<std::int32_t>(OfNode(1), "Visible");
        bytes_ += std::to_string(player.Value(visible));
        for (const Event<std::int32_t>& event : player.Events(visible))
            bytes_ += std::to_string(event.after);
        for (const Event<std::int32_t>& cut : player.CameraCuts())
            bytes_ += std::to_string(cut.after);
    }

    const Clip& clip_;
    std::vector<Transform> pose_;
    std::vector<Transform> other_;
    std::vector<TEV2_MATRIX_3X4> worlds_;
    std::string bytes_;
};

void FillPlayedScene(TEV2& scene)
{
    FillSoundScene(scene);
    RandomSkeleton(scene, 7, 40, Oddity::Nodes);
}

/// One after another, then all at once.
void ExpectSameOnThreads(const Clip& clip)
{
    const Recording expected(clip);
    bool same[kThreads] = {};
    std::vector<std::thread> threads;
    for (bool& result : same)
        threads.emplace_back([&] { result = Recording(clip) == expected; });
    for (std::thread& thread : threads)
        thread.join();
    for (const bool result : same)
        EXPECT_TRUE(result);
}

TEST(Threads, PlayOneClipAsOneThreadDoes)
{
    TEV2 scene;
    FillPlayedScene(scene);
    ExpectSameOnThreads(Clip(scene));
}

TEST(Threads, PlayAClipThatAnotherOneLoaded)
{
    TEV2 scene;
    FillPlayedScene(scene);
    const ScratchFolder folder;
    WriteBytes(folder.Path("played.tv2"), SceneImage(scene));
    ClipLoader loader;
    PendingClip pending = loader.Load(folder.Path("played.tv2"));
    while (!pending.Done())
        std::this_thread::yield();
    Clip clip;
    ASSERT_TRUE(pending.Take(clip));
    EXPECT_EQ(clip.NodeCount(), 43u);
    ExpectSameOnThreads(clip);
}

} // namespace
