#include "tests/tev2_loader/scene_samples.h"

#include <cmath>
#include <cstdio>

// Damaged files: whatever the bytes, loading, evaluating and saving stay inside their memory. What they do
// otherwise is held to what must be true of every file. Meant to run under sanitizers as well.

using namespace TEV2_LOADER;
using namespace tev2_tests;

namespace
{

class Damage : public testing::Test
{
protected:
    /// Loads an image from memory of exactly its size, plays it, saves it, and loads that again.
    void Exercise(const std::vector<std::uint8_t>& bytes, std::size_t size)
    {
        const auto image = std::make_unique<std::uint8_t[]>(size);
        std::copy_n(bytes.begin(), size, image.get());
        TEV2_LOAD_REPORT report;
        TEV2_MEMORY_CURSOR cursor(image.get(), size, &report);
        TEV2 scene;
        const bool loaded = scene.Load(cursor, true);
        std::size_t errors = 0;
        for (const TEV2_LOAD_FINDING& finding : report.findings)
        {
            errors += finding.severity == TEV2_LOAD_SEVERITY::Error ? 1 : 0;
            ASSERT_LE(finding.offset, size);
        }
        ASSERT_EQ(errors, loaded ? 0u : 1u);

        for (const float time : {-1.0f, 0.5f, 1.7f, 2.5f, 100.0f, std::nanf("")})
        {
            scene.SetTime(time);
            scene.Update(0.3f);
            scene.Update(-0.1f);
            scene.Update(7.0f);
        }
        if (!loaded)
            return;

        ++loaded_;
        {
            TEV2_FILE_WRITER writer(TEV2_WIDE_STRING::FromBytes(path_), false, true);
            ASSERT_TRUE(scene.Save(writer));
            ASSERT_EQ(writer.stream->lastError, 0);
        }
        const std::vector<std::uint8_t> again = FileBytes(path_);
        std::remove(path_.c_str()); // a fresh file each time is much faster than cutting an old one
        TEV2_LOAD_REPORT second;
        TEV2_MEMORY_CURSOR reread(again.data(), again.size(), &second);
        ASSERT_TRUE(scene.Load(reread, false)) << CodeName(second.findings.at(0).code);
    }

    void Sweep(std::vector<std::uint8_t> image)
    {
        for (std::size_t size = 0; size <= image.size(); ++size)
        {
            SCOPED_TRACE("cut to " + std::to_string(size));
            Exercise(image, size);
            if (HasFatalFailure())
                return;
        }
        for (std::size_t place = 0; place < image.size(); ++place)
        {
            const std::uint8_t original = image[place];
            for (const int patch : {0x00, 0x80, 0xFF, original + 1, original - 1})
            {
                image[place] = static_cast<std::uint8_t>(patch);
                if (image[place] == original)
                    continue;
                SCOPED_TRACE("byte " + std::to_string(place) + " is " + std::to_string(image[place]));
                Exercise(image, image.size());
                if (HasFatalFailure())
                    return;
            }
            image[place] = original;
        }
    }

    std::string path_ = TemporaryPath("saved");
    std::size_t loaded_ = 0;
};

TEST_F(Damage, OfTheSmallestFile)
{
    Sweep(SceneImage(TEV2()));
    EXPECT_GT(loaded_, 50u);
}

TEST_F(Damage, OfAFileWithEverything)
{
    TEV2 scene;
    FillWithEverything(scene, true);
    Sweep(SceneImage(scene));
    EXPECT_GT(loaded_, 1000u);
}

/// The same for the layout of an old version, with its matrices and without what came later.
TEST_F(Damage, OfAFileOfAnOldVersion)
{
    const Bytes camera = Bytes().Text(u"camera").Zeros(8).F32({0.5f}).Append(FloatTrackBytes(1, 2)).Zeros(16);
    const Bytes node = Bytes()
                           .Text(u"node")
                           .U32(0)
                           .Append(SampleTrackBytes(3, Bytes().F32({1, 2, 3, 4, 5, 6})))
                           .Append(SampleTrackBytes(5, Bytes().F32({0, 0, 0, 1, 1, 0, 0, 0})))
                           .F32({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1})
                           .Text(u"user");
    Sweep(FileOfVersion(1.0f)
              .Chunk(1, Bytes().U32(18).U32(1).Zeros(17 * 4))
              .Chunk(6, camera)
              .Chunk(12, Bytes().U32(2).Append(node).Append(node))
              .Chunk(10, Bytes().Zeros(5))
              .data);
    EXPECT_GT(loaded_, 500u);
}

} // namespace
