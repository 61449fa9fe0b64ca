#include "tests/support/allocation_watch.h"
#include "tests/support/sample_scenes.h"
#include "tests/support/scratch_folder.h"
#include "tests/tev2_playback/random_skeleton.h"
#include "tev2_playback/clip_file.h"
#include "tev2_playback/detail/image_source.h"
#include "tev2_playback/detail/scene_source.h"

#include <algorithm>
#include <filesystem>
#include <map>

// What a clip is made of, straight from the image of a file, is what it is made of from the scene that is loaded from
// it, and what is refused is refused alike, whatever the bytes are.

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;
using namespace tv2_tests;

namespace
{

using Image = std::vector<std::uint8_t>;

constexpr std::size_t kAllocationFactor = 64;
constexpr std::size_t kAllocationRest = std::size_t{1} << 16;

/// Everything that a source holds, as text.
class Listing
{
public:
    explicit Listing(const ClipSource& source)
    {
        Put(source.begin, source.end, source.upAxis, source.nodes.size(), source.cameras.size());
        for (const NodeSource& node : source.nodes)
        {
            Put(node.name, node.parent);
            const auto parent = static_cast<std::size_t>(node.parent);
            if (parent < source.nodes.size() && &source.nodes[parent] >= &node) // others do not matter
                Put(source.nodes[parent].worldMatrix.m);
            PutTracks({&node.translation, &node.rotation, &node.scale});
        }
        for (const CameraSource& camera : source.cameras)
        {
            Put(camera.name, camera.node, camera.inverseAspect);
            PutTracks({&camera.distance, &camera.fieldOfView, &camera.clipRange});
        }
        PutTracks({&source.switcher});
        for (const PropertySource& property : source.properties)
        {
            Put(property.name, property.owner, property.ofCamera, property.isTexts);
            PutTracks({&property.track});
            for (const std::u16string_view line : property.texts)
                Put(line);
        }
    }

    std::string text;

private:
    void PutBytes(const void* bytes, std::size_t size)
    {
        text.append(static_cast<const char*>(bytes), size).append(1, '|');
    }

    void PutOne(std::u16string_view units) { PutBytes(units.data(), units.size() * sizeof(char16_t)); }

    template <typename Value>
    void PutOne(const Value& value)
    {
        PutBytes(&value, sizeof value);
    }

    template <typename... Values>
    void Put(const Values&... values)
    {
        (PutOne(values), ...);
    }

    void PutTracks(std::initializer_list<const TrackSource*> tracks)
    {
        constexpr std::size_t kFloats[] = {1, 2, 4, 3, 2, 4, 4, 4, 1, 4, 6, 6}; // of each kind
        for (const TrackSource* track : tracks)
        {
            Put(track->present, track->kind, track->times.size(), track->valueCount);
            PutBytes(track->times.data(), track->times.size() * sizeof(float));
            for (std::size_t value = 0; value < track->valueCount; ++value)
                PutBytes(static_cast<const std::byte*>(track->values) + value * track->valueStride,
                         kFloats[track->kind] * sizeof(float));
        }
    }
};

const TEV2_LOAD_FINDING* ErrorOf(const TEV2_LOAD_REPORT& report)
{
    const auto error =
        std::ranges::find(report.findings, TEV2_LOAD_SEVERITY::Error, &TEV2_LOAD_FINDING::severity);
    return error == report.findings.end() ? nullptr : &*error;
}

/// Reads an image both ways, from memory of exactly its size; true when both accept it.
bool Agree(const Image& image, std::size_t size, std::size_t shift = 0, const TEV2_LOAD_LIMITS& limits = {})
{
    const auto memory = std::make_unique<std::uint8_t[]>(size + shift);
    std::copy_n(image.begin(), size, memory.get() + shift);
    TEV2_LOAD_REPORT reports[2];
    TEV2_MEMORY_CURSOR cursors[2] = {{memory.get() + shift, size, &reports[0], limits},
                                     {memory.get() + shift, size, &reports[1], limits}};
    TEV2 scene;
    const bool loaded = scene.Load(cursors[0], false);
    const AllocationPeak peak;
    ImageSource source;
    EXPECT_EQ(source.Load(cursors[1]), loaded);
    EXPECT_EQ(NumberText(reports[1].version), NumberText(reports[0].version)); // may be a NaN
    EXPECT_EQ(reports[1].chunks.size(), reports[0].chunks.size());
    if (loaded)
    {
        EXPECT_TRUE(Listing(source.Take()).text == Listing(SourceOf(scene)).text);
        EXPECT_GT(Clip(scene).Size(), 0u);
    }
    else if (const TEV2_LOAD_FINDING* const error = ErrorOf(reports[1]); error != nullptr)
        EXPECT_EQ(FindingText(*error), FindingText(*ErrorOf(reports[0])));
    else
        ADD_FAILURE() << "no error: " << FindingText(*ErrorOf(reports[0]));
    EXPECT_LE(peak.Bytes(), kAllocationFactor * size + kAllocationRest);
    return loaded;
}

bool Agree(const Image& image)
{
    return Agree(image, image.size());
}

/// Cuts and patches an image at a share of its places. How many of these files are accepted.
std::size_t Sweep(Image image, std::size_t step)
{
    std::size_t accepted = 0;
    for (std::size_t size = 0; size < image.size() && !testing::Test::HasFailure(); size += step)
        accepted += Agree(image, size) ? 1 : 0;
    for (std::size_t place = 0; place + 4 <= image.size(); place += step)
    {
        const Image whole(image.begin() + static_cast<std::ptrdiff_t>(place),
                          image.begin() + static_cast<std::ptrdiff_t>(place) + 4);
        for (const std::uint32_t patch : {0u, 1u, 3u, 6u, 0x40u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        {
            std::memcpy(&image[place], &patch, sizeof patch);
            accepted += Agree(image) ? 1 : 0;
            if (testing::Test::HasFailure())
            {
                ADD_FAILURE() << "at " << place << ", value " << patch;
                return accepted;
            }
        }
        std::ranges::copy(whole, image.begin() + static_cast<std::ptrdiff_t>(place));
    }
    return accepted;
}

Image EverythingImage()
{
    TEV2 scene;
    FillWithEverything(scene, true);
    return SceneImage(scene);
}

/// With weighted meshes, whose load evaluates nodes that come before their parents.
Image OddImage()
{
    TEV2 scene;
    RandomSkeleton(scene, 7, 40, Oddity::Nodes);
    scene.weightedMeshes.push_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    scene.cameras.push_back(std::make_unique<TEV2_CAMERA>());
    return SceneImage(scene);
}

} // namespace

TEST(ImageSource, AgreesWithTheSceneOfAFile)
{
    const std::map<std::string, Image> images = {{"empty", SceneImage(TEV2())},
                                                 {"sound", SoundImage()},
                                                 {"everything", EverythingImage()},
                                                 {"odd", OddImage()}};
    for (const auto& [name, image] : images)
    {
        SCOPED_TRACE(name);
        EXPECT_TRUE(Agree(image));
        EXPECT_TRUE(Agree(image, image.size(), 1)) << "at an odd address";
        Image again = image; // what comes twice replaces or adds to the first
        again.insert(again.end(), image.begin() + sizeof kMagic, image.end());
        EXPECT_TRUE(Agree(again));
    }
}

TEST(ImageSource, AgreesOnFilesOfEveryVersion)
{
    for (const float version : kGateVersions)
    {
        SCOPED_TRACE(version);
        EXPECT_GT(Sweep(SceneOfVersion(version).data, 41), 20u);
    }
}

TEST(ImageSource, AgreesOnDamagedFiles)
{
    EXPECT_GT(Sweep(SoundImage(), 7), 50u);
    EXPECT_GT(Sweep(OddImage(), 59), 50u);
    EXPECT_GT(Sweep(EverythingImage(), 211), 50u);
    for (const auto& entry : std::filesystem::directory_iterator(TV2_CORPUS_DIR))
    {
        SCOPED_TRACE(entry.path().filename().string());
        Sweep(ReadBytes(entry.path().string()), 61);
    }
}

TEST(ImageSource, HasTheLimitsOfALoad)
{
    const Image image = SoundImage(); // a chain of three nodes
    for (const TEV2_LOAD_LIMITS& limits :
         {TEV2_LOAD_LIMITS{.nodes = 2}, TEV2_LOAD_LIMITS{.nesting = 2}, TEV2_LOAD_LIMITS{.bytes = 8}})
        EXPECT_FALSE(Agree(image, image.size(), 0, limits));
    for (const TEV2_LOAD_LIMITS& limits : {TEV2_LOAD_LIMITS{.nodes = 3}, TEV2_LOAD_LIMITS{.nesting = 3}})
        EXPECT_TRUE(Agree(image, image.size(), 0, limits));
    std::size_t least = 1; // bytes with which it loads
    Clip clip;
    while (least < 100'000 && !LoadClipMemory(image.data(), image.size(), clip, {.limits = {.bytes = least}}))
        least += 64;
    EXPECT_LT(least, 10'000u);
}

TEST(ImageSource, StaysNearTheLimitWhateverTheFileIs)
{
    TEV2 scene;
    scene.matrixHierarchy.nodes.resize(2);
    scene.matrixHierarchy.nodes[0].properties.stringArrays.resize(100'000);
    const Image image = SceneImage(scene);
    for (const std::size_t factor : {2, 4, 8, 16})
    {
        const AllocationPeak peak;
        Clip clip;
        EXPECT_FALSE(
            LoadClipMemory(image.data(), image.size(), clip, {.limits = {.bytes = factor * image.size()}}));
        EXPECT_LE(peak.Bytes(), 3 * factor * image.size()) << factor;
    }
}

TEST(ClipFile, LoadsOrLeavesTheClipAsItWas)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("sound.tv2");
    WriteBytes(path, SoundImage());
    Clip clip;
    ASSERT_TRUE(LoadClip(path, clip));
    EXPECT_EQ(clip.NodeCount(), 3u);
    EXPECT_EQ(clip.FindNode("Hips"), 1);

    TEV2_LOAD_REPORT report;
    const Image empty = SceneImage(TEV2());
    const Status cut = LoadClipMemory(empty.data(), empty.size() - 1, clip, {.report = &report});
    EXPECT_FALSE(cut);
    EXPECT_EQ(cut.Reason(), FindingText(report.findings.back()));
    EXPECT_FALSE(LoadClip(folder.Path("none.tv2"), clip));
    EXPECT_FALSE(LoadClip(path, clip, {.mostFileBytes = 8}));
    bool struck = true;
    for (long calls = 0; struck; ++calls)
    {
        const AllocationFailure failure(calls);
        try
        {
            EXPECT_TRUE(LoadClipMemory(empty.data(), empty.size(), clip));
            EXPECT_EQ(clip.NodeCount(), 0u);
        }
        catch (const std::bad_alloc&)
        {
            EXPECT_EQ(clip.NodeCount(), 3u);
        }
        struck = failure.Struck();
    }
}
