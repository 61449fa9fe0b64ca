#include "tests/support/allocation_watch.h"
#include "tests/support/memory_file.h"
#include "tests/support/sample_scenes.h"
#include "tests/support/typed_seeds.h"
#include "tests/tev2_loader/robustness/dense_files.h"
#include "tev2_loader/skinning.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <filesystem>
#include <functional>
#include <new>
#include <type_traits>

// Memory that runs out at each allocation: the exception comes through, nothing leaks (a sanitizer sees to that), and
// the objects may be used on.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// Calls act with each of its allocations failing in turn, and check after each; returns how many there were.
long WithEachAllocationFailing(const std::function<void()>& act, const std::function<void()>& check)
{
    for (long before = 0;; ++before)
    {
        bool struck = false;
        bool thrown = false;
        {
            const AllocationFailure failure(before);
            try
            {
                act();
            }
            catch (const std::bad_alloc&)
            {
                thrown = true;
            }
            struck = failure.Struck();
        }
        EXPECT_EQ(thrown, struck) << "allocation " << before;
        check();
        if (!struck || testing::Test::HasFailure())
            return before;
    }
}

TEST(AllocationFaults, OfALoadLeaveASceneThatLoadsTheNextTime)
{
    TEV2 everything;
    FillWithEverything(everything, true);
    const std::vector<std::uint8_t> sound = SceneImage(everything);
    const Bytes refused = FileOfVersion(kVersion).Chunk(24).Chunk(6, Bytes().Zeros(54).U32({1, 1, 2}));
    std::vector<std::vector<std::uint8_t>> images = {sound, refused.data};
    for (const auto& [name, image] : TypedSeeds())
        images.push_back(image);
    for (const DenseBody& body : DenseBodies(20))
        images.push_back(body.Kept().data);
    TEV2 scene;
    for (const auto& image : images)
        for (const bool reported : {false, true})
        {
            const long allocations = WithEachAllocationFailing(
                [&]
                {
                    TEV2_LOAD_REPORT report;
                    TEV2_MEMORY_CURSOR cursor(image.data(), image.size(), reported ? &report : nullptr);
                    EXPECT_EQ(scene.Load(cursor, true), image != refused.data);
                },
                [&]
                {
                    scene.SetTime(1.0f);
                    scene.Update(0.1f);
                    TEV2_MEMORY_CURSOR cursor(sound.data(), sound.size());
                    EXPECT_TRUE(scene.Load(cursor, true));
                });
            EXPECT_GT(allocations, image == sound ? 100 : 2);
        }
}

TEST(AllocationFaults, NoneInASave)
{
    TEV2 scene;
    FillWithEverything(scene, true);
    MemoryFile file(1024);
    file.bytes.reserve(std::size_t{1} << 16); // the disk, so to speak
    TEV2_FILE_WRITER writer = WriterInto(file);
    const AllocationFailure failure(0);
    EXPECT_TRUE(scene.Save(writer));
    EXPECT_FALSE(failure.Struck());
    EXPECT_GT(file.bytes.size(), 1000u);
}

/// How often memory is taken while an object is put to times and moved on.
template <typename Object>
long AllocationsOfPlaying(Object& object)
{
    const long before = AllocationCount();
    for (const float time : {-1.0f, 0.5f, 1.7f, 100.0f, 0.6f})
    {
        object.SetTime(time);
        object.Update(0.3f);
        object.Update(-7.0f);
        if constexpr (std::is_base_of_v<TEV2_ANIMATABLE, Object>)
            object.GetValue();
    }
    return AllocationCount() - before;
}

TEST(AllocationFaults, NoneInAnEvaluation)
{
    TEV2 made;
    FillWithEverything(made, true);
    const auto loaded = LoadImageOf(SceneImage(made));
    ASSERT_TRUE(loaded->loaded);
    EXPECT_EQ(AllocationsOfPlaying(loaded->scene), 0);
    EXPECT_EQ(AllocationsOfPlaying(*made.animMeshes[0]), 3) << "one for each column that no load has sized";
    made.SetTime(0.0f); // and the palette
    EXPECT_EQ(AllocationsOfPlaying(made), 0);

    const TEV2_WEIGHTED_MESH& skinned = *loaded->scene.weightedMeshes.front();
    const TEV2_WEIGHTED_MESH& kept = *loaded->scene.weightedMeshes.back();
    std::vector<TEV2_VECTOR_3> positions(3);
    std::vector<TEV2_VECTOR_3> normals(3);
    std::vector<TEV2_VERTEX_FRAME> frames(3);
    const long before = AllocationCount();
    SkinVertices(skinned, {positions, normals, frames});
    EXPECT_EQ(kept.vertices->Count() + kept.skin->bones.size(), 0u);
    EXPECT_EQ(AllocationCount(), before);

    const auto play = []<typename... Tracks>(TEV2_CLASSES<TEV2_ANIMATABLE, Tracks...>)
    {
        const auto play_one = [](auto track)
        {
            track.Append(0.5f, {});
            track.Append(2.5f, {});
            EXPECT_EQ(AllocationsOfPlaying(track), 0) << "kind " << track.GetType();
        };
        (play_one(Tracks()), ...);
    };
    play(AllTracks());
}

/// A stream does without its large buffer; everything else that a writer needs is an exception when it is not there.
TEST(AllocationFaults, OfAWriterLeaveAnExceptionOrAWriterThatWrites)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("written");
    const TEV2_WIDE_STRING name = TEV2_WIDE_STRING::FromBytes(path);
    int without_buffer = 0;
    int thrown = 0;
    bool struck = true;
    for (long before = 0; struck; ++before)
    {
        const AllocationFailure failure(before);
        try
        {
            TEV2_FILE_WRITER writer(name, false, true);
            struck = failure.Struck();
            without_buffer += struck ? 1 : 0;
            EXPECT_TRUE(writer.BeginChunk() && writer.EndChunk());
            EXPECT_TRUE(writer.stream->Close());
            EXPECT_EQ(std::filesystem::file_size(path), 4u);
        }
        catch (const std::bad_alloc&)
        {
            ++thrown;
        }
    }
    EXPECT_EQ(without_buffer, 1);
    EXPECT_GT(thrown, 0);
}

TEST(AllocationFaults, OfACloneLeaveTheOriginal)
{
    const auto track = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6});
    TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT effect;
    effect.focusDistance = FloatTrack(1.0f, 2.0f);
    effect.fNumber = FloatTrack(3.0f, 4.0f);
    EXPECT_GT(WithEachAllocationFailing([&] { EXPECT_TRUE(track->Clone()->IsEqual(*track)); },
                                        [&] { EXPECT_EQ(track->m_values.size(), 2u); }),
              2);
    EXPECT_GT(WithEachAllocationFailing([&] { effect.Clone(); },
                                        [&] { EXPECT_EQ(effect.fNumber->GetValue(), 3.0f); }),
              6);
}

} // namespace
