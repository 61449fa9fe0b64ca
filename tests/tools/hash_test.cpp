// tv2 hash: what the two hashes cover.

#include "tests/tools/tool_test.h"
#include "text/sha256.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

struct Hashes
{
    std::string contents;
    std::string poses;
};

class HashTest : public ToolTest
{
protected:
    Hashes Of(const std::vector<std::uint8_t>& bytes) const
    {
        const auto run = RunTv2({"hash", "--json", Write(bytes)});
        EXPECT_EQ(run.exit_code, 0) << run.err;
        const nlohmann::json file = FileOf(run);
        return {file["contents"], file["poses"]};
    }

    Hashes OfSound(const std::function<void(TEV2&)>& change) const
    {
        return Of(ReadBytes(SaveSound(change, "b.tv2")));
    }
};

// The bytes as docs/json.md lists them.
TEST_F(HashTest, CoverWhatIsPromised)
{
    const std::vector<std::uint8_t> image = SoundImage();
    ASSERT_EQ(WordAt(image, 8), 0U) << "the information record comes first";
    std::vector<std::uint8_t> covered(image.begin(), image.begin() + 4);
    covered.insert(covered.end(), image.begin() + 12, image.begin() + 16); // its version
    covered.insert(covered.end(), image.begin() + 4 + WordAt(image, 4), image.end());

    Bytes poses;
    poses.U32({3, 1});
    for (int i = 0; i <= 128; ++i)
    {
        const auto loaded = LoadImageOf(image);
        ASSERT_TRUE(loaded->loaded);
        TEV2& scene = loaded->scene;
        const float time = static_cast<float>(i) / 128.0f;
        scene.SetTime(time);
        poses.F32({time});
        for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
            for (const auto& row : node.worldMatrix.m)
                poses.F32({row[0] + 0.0f, row[1] + 0.0f, row[2] + 0.0f, row[3] + 0.0f});
        const TEV2_CAMERA& camera = *scene.cameras[0];
        const TEV2_FLOAT32_RANGE clip = camera.clipRange->GetValue();
        poses.U32(2).F32({camera.inverseAspect, camera.fieldOfView->GetValue(), camera.distance->GetValue()});
        poses.F32({clip.minimum, clip.maximum});
        poses.U32({1, static_cast<std::uint32_t>(scene.cameraMan.cameraIndex->GetValue())});
    }
    const Hashes hashes = Of(image);
    EXPECT_EQ(hashes.contents, HexOf(Sha256Of(covered)));
    EXPECT_EQ(hashes.poses, HexOf(Sha256Of(poses.data)));
    EXPECT_EQ(RunTv2({"hash", Path("a.tv2"), Path("a.tv2")}).out,
              hashes.contents + ' ' + hashes.poses + "  " + Path("a.tv2") + '\n' + hashes.contents + ' ' +
                  hashes.poses + "  " + Path("a.tv2") + '\n');
}

TEST_F(HashTest, ChangeWithWhatTheyCoverAndWithNothingElse)
{
    const Hashes before = Of(SoundImage());
    const auto translation = [](TEV2& scene) -> TEV2_VECTOR_3&
    {
        auto& track = *scene.matrixHierarchy.nodes[1].translation;
        return static_cast<TEV2_ANIMATABLE_VECTOR_3_LINEAR&>(track).m_values[1];
    };
    const struct
    {
        const char* what;
        bool contents;
        bool poses;
        std::function<void(TEV2&)> change;
    } cases[] = {
        {"nothing", false, false, [](TEV2&) {}},
        {"the information texts", false, false,
         [](TEV2& scene)
         {
             scene.information.creatorText = Wide(u"another");
             scene.information.infoText = Wide(u"");
         }},
        {"one bit of a key", true, true,
         [&](TEV2& scene) { translation(scene).x = std::nextafter(translation(scene).x, 9.0f); }},
        {"the sign of a zero", true, false, [&](TEV2& scene) { translation(scene).z = -0.0f; }},
        {"a name", true, false, [](TEV2& scene) { scene.matrixHierarchy.nodes[1].name = Wide(u"Hip"); }},
        {"a user property", true, false,
         [](TEV2& scene) { scene.matrixHierarchy.nodes[1].properties.floatValues.clear(); }},
        {"a field of view", true, true, [](TEV2& scene) { scene.cameras[0]->fieldOfView.reset(); }},
        {"the switcher", true, true, [](TEV2& scene) { scene.cameraMan.cameraIndex.reset(); }},
        {"the end of the time range", true, true,
         [](TEV2& scene) { scene.environment.timeRange.maximum = 2.0f; }},
    };
    for (const auto& c : cases)
    {
        const Hashes after = OfSound(c.change);
        EXPECT_EQ(after.contents != before.contents, c.contents) << c.what;
        EXPECT_EQ(after.poses != before.poses, c.poses) << c.what;
    }
}

// The bits of a NaN depend on the processor.
TEST_F(HashTest, AllNaNAreAlike)
{
    const auto with = [this](std::uint32_t bits)
    {
        return OfSound(
            [bits](TEV2& scene)
            {
                auto& track = *scene.matrixHierarchy.nodes[2].translation;
                static_cast<TEV2_ANIMATABLE_VECTOR_3_LINEAR&>(track).m_values[1].y =
                    std::bit_cast<float>(bits);
            });
    };
    const Hashes first = with(0x7FC00000U);
    const Hashes second = with(0xFFC12345U);
    EXPECT_NE(first.contents, second.contents);
    EXPECT_EQ(first.poses, second.poses);
    EXPECT_NE(first.poses, Of(SoundImage()).poses);
}

} // namespace
