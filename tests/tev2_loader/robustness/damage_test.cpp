#include "tests/support/allocation_watch.h"
#include "tests/support/memory_file.h"
#include "tests/support/sample_scenes.h"
#include "tests/support/typed_seeds.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <optional>

// Damaged files: whatever the bytes, loading, evaluating and saving stay inside their memory, take no more of it
// than the file can ask for, and come to an end. Meant to run under sanitizers as well. Each run tries a share of
// the places, always the same; with TV2_SWEEP=all it tries every one.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

constexpr double kMostSeconds = 1.0;
constexpr std::size_t kAllocationFactor = 4;
constexpr std::size_t kAllocationRest = std::size_t{1} << 20;

/// Every kShare-th offset is damaged unless a test asks for all. Prime, so that each byte of a 4-byte number is hit.
constexpr std::size_t kShare = 7;
constexpr std::size_t kShareOfLargeFiles = 41;

std::size_t Step(std::size_t share)
{
    const char* sweep = std::getenv("TV2_SWEEP");
    return sweep != nullptr && std::string_view(sweep) == "all" ? 1 : share;
}

double ThreadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

class Damage : public testing::Test
{
protected:
    /// Loads an image from memory of exactly its size, plays it to five times forward and back, saves it, and loads
    /// that again.
    void Exercise(const std::vector<std::uint8_t>& bytes, std::size_t size)
    {
        const double begin = ThreadSeconds();
        const auto image = std::make_unique<std::uint8_t[]>(size);
        std::copy_n(bytes.begin(), size, image.get());
        TEV2 scene;
        const std::optional<bool> loaded = Load(image.get(), size, scene);
        Play(scene);
        if (loaded)
            SaveAndLoadAgain(scene, *loaded);
        ASSERT_LT(ThreadSeconds() - begin, kMostSeconds);
    }

    /// None when the file is refused, otherwise whether bodies of another version are among what is kept.
    static std::optional<bool> Load(const std::uint8_t* image, std::size_t size, TEV2& scene)
    {
        const AllocationPeak peak;
        TEV2_LOAD_REPORT report;
        TEV2_MEMORY_CURSOR cursor(image, size, &report);
        const bool loaded = scene.Load(cursor, true);
        EXPECT_LE(peak.Bytes(), kAllocationFactor * size + kAllocationRest);
        std::size_t errors = 0;
        bool of_other_version = false;
        for (const TEV2_LOAD_FINDING& finding : report.findings)
        {
            of_other_version |= finding.code == TEV2_LOAD_CODE::UnparsedOtherVersion;
            errors += finding.severity == TEV2_LOAD_SEVERITY::Error ? 1 : 0;
            EXPECT_LE(finding.offset, size);
        }
        EXPECT_EQ(errors, loaded ? 0u : 1u);
        return loaded ? std::optional(of_other_version) : std::nullopt;
    }

    static void Play(TEV2& scene)
    {
        constexpr float kTimes[] = {-1.0f, 0.5f, 1.7f, 2.5f, 100.0f};
        for (const float time : kTimes)
        {
            scene.SetTime(time);
            scene.Update(0.3f);
        }
        for (auto time = std::rbegin(kTimes); time != std::rend(kTimes); ++time)
        {
            scene.SetTime(*time);
            scene.Update(-0.1f);
        }
        scene.SetTime(std::nanf(""));
        scene.Update(7.0f);
    }

    /// Bodies of another version without the placed object are the only ones that cannot be saved.
    void SaveAndLoadAgain(TEV2& scene, bool may_be_refused)
    {
        file_.Clear();
        TEV2_FILE_WRITER writer = WriterInto(file_);
        const bool saved = scene.Save(writer);
        EXPECT_TRUE(saved || may_be_refused);
        EXPECT_TRUE(writer.stream->Flush());
        EXPECT_EQ(writer.stream->lastError, 0);
        writer.stream->handle = nullptr; // it stays open for the next one
        if (!saved)
            return;
        ++saved_;
        ASSERT_TRUE(Load(file_.bytes.data(), file_.bytes.size(), scene));
    }

    /// Exercise, and what it was that failed.
    void Try(const std::vector<std::uint8_t>& image, std::size_t size, const char* what, std::size_t place,
             std::uint32_t value)
    {
        Exercise(image, size);
        if (HasFailure())
            GTEST_FAIL() << what << " at " << place << ", value " << value;
    }

    /// Cuts the file at each of its ends, or at a share of them, and patches it at a share of its places.
    void Sweep(std::vector<std::uint8_t> image, std::size_t share = kShare)
    {
        const std::size_t step = Step(share);
        for (std::size_t size = 0; size <= image.size() && !HasFailure(); size += step > kShare ? step : 1)
            Try(image, size, "end", size, 0);
        for (std::size_t place = 0; place < image.size() && !HasFailure(); place += step)
        {
            const std::uint32_t byte = image[place];
            Patch<std::uint8_t>(image, place, {0x00, 0x80, 0xFF, byte + 1, byte - 1});
        }
        for (std::size_t place = 0; place + 4 <= image.size() && !HasFailure(); place += step)
            Patch<std::uint32_t>(image, place, {0, 1, 7, 8, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF});
    }

    template <typename Number>
    void Patch(std::vector<std::uint8_t>& image, std::size_t place,
               std::initializer_list<std::uint32_t> patches)
    {
        Number original = 0;
        std::memcpy(&original, &image[place], sizeof original);
        for (const std::uint32_t patch : patches)
        {
            const Number number = static_cast<Number>(patch);
            std::memcpy(&image[place], &number, sizeof number);
            if (number != original)
                Try(image, image.size(), sizeof number == 1 ? "byte" : "window", place, number);
        }
        std::memcpy(&image[place], &original, sizeof original);
    }

    void TearDown() override { std::fclose(file_.stream); }

    MemoryFile file_{std::size_t{1} << 16};
    std::size_t saved_ = 0;
};

TEST_F(Damage, OfTheSmallestFile)
{
    Sweep(SceneImage(TEV2()));
    EXPECT_GT(saved_, 50u);
}

TEST_F(Damage, OfAFileWithEverything)
{
    TEV2 scene;
    FillWithEverything(scene, true);
    Sweep(SceneImage(scene), kShareOfLargeFiles);
    EXPECT_GT(saved_, 500u);
}

TEST_F(Damage, OfFilesOfOneTypedRecord)
{
    for (const auto& [name, image] : TypedSeeds())
    {
        SCOPED_TRACE(name);
        saved_ = 0;
        Sweep(image);
        EXPECT_GT(saved_, 50u);
    }
}

class DamageOfVersion : public Damage, public testing::WithParamInterface<float>
{
};

TEST_P(DamageOfVersion, OfAFileWithWhatEverChanged)
{
    Sweep(SceneOfVersion(GetParam()).data);
    EXPECT_GT(saved_, 500u);
}

INSTANTIATE_TEST_SUITE_P(Gates, DamageOfVersion, testing::ValuesIn(kGateVersions));

} // namespace
