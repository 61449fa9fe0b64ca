// Which way is up in exported files: what the command says is where a known point above another one comes out.

#include "tests/tools/export/export_fixture.h"

#include <map>

namespace
{

using namespace TEV2_LOADER;

// Two joints with another joint one metre above each; the hips turn about the vertical and walk.
constexpr const char* kWalk =
    R"(HIERARCHY ROOT Hips { OFFSET 0 0 0 CHANNELS 6 Xposition Yposition Zposition Yrotation Xrotation Zrotation
JOINT Left { OFFSET 10 0 0 CHANNELS 3 Yrotation Xrotation Zrotation
JOINT LeftTop { OFFSET 0 100 0 CHANNELS 3 Yrotation Xrotation Zrotation End Site { OFFSET 0 10 0 } } }
JOINT Right { OFFSET -10 0 0 CHANNELS 3 Yrotation Xrotation Zrotation
JOINT RightTop { OFFSET 0 100 0 CHANNELS 3 Yrotation Xrotation Zrotation End Site { OFFSET 0 10 0 } } } }
MOTION Frames: 3 Frame Time: 0.04
0 90 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0
5 95 3 40 0 0 0 0 0 0 0 0 0 0 0 0 0 0
9 90 7 80 0 0 20 0 0 0 0 0 0 0 0 0 0 0
)";

// A single model, one metre above the origin.
constexpr const char* kOneModel = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0]}],
"nodes":[{"name":"LeftTop","translation":[0,1,0]}],
"animations":[{"name":"Still","channels":[],"samplers":[]}]})";

const std::map<std::string, TEV2_VECTOR_3> kAxes = {{"+Y", {0, 1, 0}}, {"+Z", {0, 0, 1}}, {"-Z", {0, 0, -1}}};

TEST_F(ExportCommandTest, TellsWhereUpComesOut)
{
    const struct
    {
        const char* scene;
        Arguments options;
        const char* axis;
    } cases[] = {
        {"walk.bvh", {}, "-Z"},
        {"walk.bvh", {"--no-keep-positive-z"}, "+Z"},
        {"walk.bvh", {"--select", "Hips"}, "+Y"},
        {"walk.bvh", {"--select", "Hips", "--no-keep-positive-z"}, "+Y"},
        {"walk.bvh", {"--select", "Left", "--select", "Right"}, "+Y"},
        {"walk.bvh", {"--select", "Left", "--select", "Right", "--no-keep-positive-z"}, "+Y"},
        {"one.gltf", {}, "-Z"},
        {"one.gltf", {"--no-keep-positive-z"}, "+Z"},
        {"one.gltf", {"--select", "LeftTop"}, "+Y"},
    };
    Write("walk.bvh", kWalk);
    Write("one.gltf", kOneModel);
    const std::string output = Path("out.tv2");
    for (const auto& item : cases)
    {
        Arguments arguments = item.options;
        arguments.insert(arguments.end(), {Path(item.scene), output});
        const CommandResult run = Export(arguments);
        ASSERT_EQ(run.exit_code, 0) << run.err;
        SCOPED_TRACE(std::string(item.scene) + ", " + item.axis);
        EXPECT_EQ(RunTv2({"info", "--json", output}).Json()["files"][0]["upAxis"], item.axis);
        EXPECT_EQ(RunTv2({"check", "--json", output}).Json()["files"][0]["upAxis"], item.axis);
        ExpectParts(RunTv2({"check", output}).out, {std::string("\n  up axis: ") + item.axis + "\n"});

        const auto scene = Load("out.tv2");
        for (const float time : {0.0F, 0.05F, 0.08F})
        {
            scene->SetTime(time);
            int found = 0;
            for (const TEV2_MATRIX_NODE& node : scene->matrixHierarchy.nodes)
            {
                const std::u16string& name = node.name.Text();
                if (name != u"LeftTop" && name != u"RightTop")
                    continue;
                ++found;
                const TEV2_MATRIX_3X4& below =
                    scene->matrixHierarchy.nodes[static_cast<std::size_t>(node.parentIndex)].worldMatrix;
                const TEV2_VECTOR_3& up = kAxes.at(item.axis);
                EXPECT_NEAR(node.worldMatrix.m[0][3] - below.m[0][3], up.x, 1e-5F);
                EXPECT_NEAR(node.worldMatrix.m[1][3] - below.m[1][3], up.y, 1e-5F);
                EXPECT_NEAR(node.worldMatrix.m[2][3] - below.m[2][3], up.z, 1e-5F);
            }
            EXPECT_EQ(found, std::string(item.scene) == "one.gltf" ? 1 : 2);
        }
    }
}

} // namespace
