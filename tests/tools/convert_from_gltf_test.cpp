// tv2 convert from glTF: which files it writes.

#include "tests/tools/tool_test.h"
#include "tev2_loader/file.h"

#include <filesystem>
#include <set>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

class ConvertFromGltfTest : public ToolTest
{
protected:
    std::string WriteText(const std::string& text, const std::string& name) const
    {
        return Write({text.begin(), text.end()}, name);
    }

    std::set<std::string> Files() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Path("")))
            names.insert(entry.path().filename().string());
        return names;
    }
};

constexpr const char* kTwoClips =
    R"({"asset":{"version":"2.0"},"nodes":[{"name":"Hips"}],
        "animations":[{"name":"Walk: slow","channels":[],"samplers":[]},
                      {"name":"walk_ slow","channels":[],"samplers":[]},{"channels":[],"samplers":[]}],
        "materials":[{"emissiveTexture":{"index":0}}],"textures":[{"source":0}],
        "images":[{"uri":"data:image/jpeg;base64,/9j/AA=="}]})";

TEST_F(ConvertFromGltfTest, NamesFilesAsExportsNameTakesAndWritesImagesBeside)
{
    const std::string input = WriteText(kTwoClips, "in.gltf");
    const auto run = RunTv2({"convert", input, Path("out.tv2")});
    EXPECT_EQ(run.exit_code, 0) << run.err;
    EXPECT_EQ(Files(), (std::set<std::string>{"in.gltf", "out_Walk_ slow.tv2", "out_walk_ slow_1.tv2",
                                              "out_animation.tv2", "out_image0.jpg"}));
    EXPECT_EQ(RunTv2({"check", Path("out_animation.tv2")}).exit_code, 0);
    EXPECT_NE(RunTv2({"info", Path("out_animation.tv2")}).out.find("up axis      +Y"), std::string::npos);
    EXPECT_NE(run.out.find("image-written"), std::string::npos);
}

TEST_F(ConvertFromGltfTest, ReplacesNoFileThatTheDocumentRefersTo)
{
    const std::string input = WriteText(R"({"asset":{"version":"2.0"},"textures":[{"source":0},{"source":1}],
            "materials":[{"emissiveTexture":{"index":0},"occlusionTexture":{"index":1}}],
            "images":[{"uri":"data:image/jpeg;base64,/9j/AA=="},{"uri":"out_image0.jpg"}]})",
                                        "in.gltf");
    WriteText("painted by hand", "out_image0.jpg");
    const auto run = RunTv2({"convert", input, Path("out.tv2")});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_NE(run.err.find("out_image0.jpg: the result would replace a file that"), std::string::npos)
        << run.err;
    EXPECT_EQ(Files(), (std::set<std::string>{"in.gltf", "out_image0.jpg"}));
    EXPECT_EQ(RunTv2({"convert", input, Path("other.tv2")}).exit_code, 0);
}

TEST_F(ConvertFromGltfTest, StrictWritesNothingWhereSomethingWouldBeLost)
{
    const std::string lossy =
        WriteText(R"({"asset":{"version":"2.0"},"nodes":[{"extras":{"a":{}}}]})", "lossy.gltf");
    EXPECT_EQ(RunTv2({"convert", "--strict", lossy, Path("out.tv2")}).exit_code, 2);
    EXPECT_EQ(Files(), std::set<std::string>{"lossy.gltf"});
    EXPECT_EQ(RunTv2({"convert", lossy, Path("out.tv2")}).exit_code, 1);
    EXPECT_EQ(Files(), (std::set<std::string>{"lossy.gltf", "out.tv2"}));
}

TEST_F(ConvertFromGltfTest, SaysWhyAFileIsRefused)
{
    const std::string bad =
        WriteText(R"({"asset":{"version":"2.0"},"nodes":[{"name":"Hips","mesh":3}]})", "bad.gltf");
    const auto run = RunTv2({"convert", bad, Path("out.tv2")});
    EXPECT_EQ(run.exit_code, 2);
    EXPECT_NE(run.err.find("bad.gltf: nodes[0] \"Hips\": mesh is none of the file"), std::string::npos)
        << run.err;
    EXPECT_EQ(Files(), std::set<std::string>{"bad.gltf"});
}

} // namespace
