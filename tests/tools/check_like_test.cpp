// tv2 check --like: whether the animation of a file fits the rig in another.

#include "tests/tools/tool_test.h"
#include "tev2_loader/names.h"

#include <set>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using CheckLikeTest = ToolTest;

TEV2_MATRIX_NODE& RigNode(TEV2& scene, std::size_t index)
{
    return scene.matrixHierarchy.nodes[index];
}

void AddNode(TEV2& scene, std::int32_t parent, const char* name, float to)
{
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    node.parentIndex = parent;
    node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1, 0, 0}}, {1.0f, {to, 0, 0}}});
    node.rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({});
    ASSERT_TRUE(SetName(node, name));
}

/// Makes node 0 the root of an exported scene.
void MakeRoot(TEV2& scene, const TEV2_QUATERNION& rotation)
{
    RigNode(scene, 0).translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
    RigNode(scene, 0).rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(rotation);
}

// The rig is the sound scene, Scene/Hips/Camera, with a tail below the hips.
TEST_F(CheckLikeTest, EachWayNotToFitHasACode)
{
    const std::string rig = SaveSound(
        [](TEV2& scene)
        {
            MakeRoot(scene, {0, 0, 0, 1});
            AddNode(scene, 1, "Tail", 2);
        },
        "rig.tv2");
    const std::string node = "matrixHierarchy.nodes[";
    const struct
    {
        std::string code;
        std::string path;
        std::string message;
        std::function<void(TEV2&)> change;
    } rows[] = {
        {"", "", "", [](TEV2&) {}},
        {"", "", "", [](TEV2& scene) { AddNode(scene, 2, "Nail", 1); }}, // it does not move
        {"rig-node-missing", node + "3]", R"("Nail" below "Camera" is missing)",
         [](TEV2& scene) { AddNode(scene, 2, "Nail", 2); }},
        {"rig-node-moved", node + "2]", R"("Camera" has moved, to below "Hips" from below "Scene")",
         [](TEV2& scene) { RigNode(scene, 2).parentIndex = 0; }},
        {"rig-node-renamed", node + "1]", R"("Pelvis" is called "Hips")",
         [](TEV2& scene) { ASSERT_TRUE(SetName(RigNode(scene, 1), "Pelvis")); }},
        {"rig-node-renamed", node + "1]", R"("ann:Hips" has no namespace instead of the namespace "ann:")",
         [](TEV2& scene) { ASSERT_TRUE(SetName(RigNode(scene, 1), "ann:Hips")); }},
        {"rig-up-axis", "", "up axis: +Z instead of -Z",
         [](TEV2& scene) {
             MakeRoot(scene, {0, 1, 0, 0});
         }},
    };
    for (const auto& row : rows)
    {
        const std::string clip = SaveSound(
            [&](TEV2& scene)
            {
                MakeRoot(scene, {0, 0, 0, 1});
                row.change(scene);
            });
        const auto result = RunTv2({"check", "--like", rig, clip, "--json"});
        EXPECT_EQ(result.exit_code, row.code.empty() ? 0 : 1) << row.code;
        const auto findings = result.Json()["files"][0]["findings"];
        std::set<std::string> warnings;
        bool tail = false;
        for (const auto& finding : findings)
        {
            const std::string message = finding["message"];
            tail = tail || (finding["code"] == "rig-differs" && message == R"("Tail" below "Hips" is new)");
            if (finding["severity"] == "note")
                continue;
            warnings.insert(finding["code"].get<std::string>());
            EXPECT_EQ(finding["path"], row.path);
            EXPECT_EQ(message, row.message);
        }
        EXPECT_EQ(warnings, row.code.empty() ? std::set<std::string>() : std::set{row.code}) << result.out;
        EXPECT_TRUE(tail) << result.out;
    }
}

TEST_F(CheckLikeTest, RigThatCannotBeReadIsNamed)
{
    const std::string file = SaveSound([](TEV2&) {});
    const auto missing = RunTv2({"check", "--like", Path("none.tv2"), file});
    EXPECT_EQ(missing.exit_code, 2);
    ExpectParts(missing.err, {"none.tv2: No such file"});
    const auto damaged = RunTv2({"check", "--json", "--like", Write({1, 2, 3, 4}, "bad.tv2"), file});
    EXPECT_EQ(damaged.exit_code, 2);
    ExpectParts(damaged.Json()["error"], {"bad.tv2", "bad-magic"});
}

} // namespace
