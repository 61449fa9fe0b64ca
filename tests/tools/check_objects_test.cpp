// tv2 check: lights, materials, meshes, splines, instances and references.

#include "tests/tools/spoiled_scene.h"
#include "tests/tools/tool_test.h"
#include "tests/tools/typed_scene.h"
#include "text/image_path.h"

#include <filesystem>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEV2_STANDARD_MATERIAL& Skin(TEV2& scene)
{
    return static_cast<TEV2_STANDARD_MATERIAL&>(*scene.materials[0]);
}

TEV2_SHADER_MATERIAL& Metal(TEV2& scene)
{
    return static_cast<TEV2_SHADER_MATERIAL&>(*scene.materials[1]);
}

TEV2_BITMAP_MATERIAL_MAP& SkinImage(TEV2& scene)
{
    return static_cast<TEV2_BITMAP_MATERIAL_MAP&>(*Skin(scene).maps[0].map);
}

TEV2_SPOT_LIGHT& Key(TEV2& scene)
{
    return static_cast<TEV2_SPOT_LIGHT&>(*scene.lights[0]);
}

template <typename Instance>
Instance& BoxInstance(TEV2& scene, std::size_t index)
{
    return static_cast<Instance&>(*scene.instanceLists[5][index]);
}

TEV2_SKIN& BodySkin(TEV2& scene)
{
    return *scene.weightedMeshes[0]->skin;
}

TEV2_RIGID_BEZIER_SPLINE& Spline(TEV2& scene)
{
    return static_cast<TEV2_RIGID_BEZIER_SPLINE&>(*scene.bezierSplines[0]->splines[0]);
}

TEV2_ANIM_BEZIER_SPLINE& MovingSpline(TEV2& scene)
{
    return static_cast<TEV2_ANIM_BEZIER_SPLINE&>(*scene.bezierSplines[0]->splines[1]);
}

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> Constant(float value)
{
    return MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, value}});
}

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32_RANGE> Reversed()
{
    return MakeTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({{0.0f, {0.5f, 0.75f}}, {1.0f, {0.75f, 0.5f}}});
}

/// The first four bytes of a name in a file: its length and its first letter.
constexpr std::uint32_t TextWord(char16_t first, std::uint32_t length)
{
    return (static_cast<std::uint32_t>(first) << 16) + length;
}

// clang-format off
const SpoiledScene kTypedScenes[] = {
    {"object-node-outside", "lights[0]", 3, [](TEV2& s) { s.lights[0]->value = 3; },
     {}, "node 3, but there are 3 nodes"},
    {"object-node-outside", "weightedMeshes[0]", 77, [](TEV2& s) { s.weightedMeshes[0]->value = 77; }},
    {"object-node-outside", "instanceLists[5][1]", 4, [](TEV2& s) { s.instanceLists[5][1]->value = 4; }},
    {"object-node-outside", "xrefs15[0]", 9, [](TEV2& s) { s.xrefs15[0]->node = 9; }},
    {"material-outside", "rigids[0].subObjects[0]", 2, [](TEV2& s) { s.rigids[0]->subObjects[0].material = 2; },
     {}, "material 2, but there are 2 materials"},
    {"material-outside", "instanceLists[5][0].materials", 5,
     [](TEV2& s) { BoxInstance<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>(s, 0).materials = {5}; }},
    {"light-outside", "rigids[0].lights", 2, [](TEV2& s) { s.rigids[0]->lights = {1, 2, kNone}; },
     {}, "light 2, but there are 2 lights, and 1 more"},
    {"light-outside", "materials[1].lights[0]", 2, [](TEV2& s) { Metal(s).lights[0].light = 2; }},
    {"library-outside", "xrefObjects[0]", 1, [](TEV2& s) { s.xrefObjects[0]->library = 1; },
     {}, "library 1, but there is 1 library"},
    {"instance-source-outside", "instanceLists[5][0]", 1, [](TEV2& s) { s.instanceLists[5][0]->source = 1; },
     {}, "rigid 1, but there is 1 rigid"},
    {"instance-source-outside", "instanceLists[5][1]", kNone, [](TEV2& s) { s.instanceLists[5][1]->source = kNone; },
     {}, "repeats nothing"},
    {"instance-materials-differ", "instanceLists[5][0]", 0,
     [](TEV2& s) { BoxInstance<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>(s, 0).materials = {}; },
     {}, "0 materials, but \"Box\" has 1 sub-object"},
    {"instance-corner-outside", "instanceLists[5][1]", 4,
     [](TEV2& s) { BoxInstance<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>(s, 1).subObjects[0].triangles = {{0, 1, 4}}; },
     {}, "triangle 0 is vertex 4, but \"Box\" has 4 vertices"},
    {"bone-node-outside", "weightedMeshes[0]", 3, [](TEV2& s) { BodySkin(s).bones[1] = 3; },
     {}, "bone 1 is node 3, but there are 3 nodes"},
    {"bone-repeated", "weightedMeshes[0]", 1, [](TEV2& s) { BodySkin(s).bones[0] = 1; }, {}, "\"Hips\""},
    {"weights-not-one", "weightedMeshes[0]", Bits(0.75f), [](TEV2& s) { BodySkin(s).weights[1] = 0.5f; },
     {}, "those of vertex 0 have the sum 1.25"},
    {"weights-not-one", "weightedMeshes[0]", Bits(1.25f), [](TEV2& s)
     { BodySkin(s).weights[4] = 1.25f; BodySkin(s).weights[5] = -0.25f; }, {}, "vertex 2 have -0.25"},
    {"weights-not-one", "weightedMeshes[0]", 0, [](TEV2& s)
     { BodySkin(s).influences = 0; BodySkin(s).weights.clear(); BodySkin(s).boneIndices.clear(); }},
    {"no-bind-matrices", "weightedMeshes[0]", 0, [](TEV2& s) { BodySkin(s).bindMatrices.clear(); }},
    {"uv-set-missing", "materials[1].maps[0].coordinates", 2, [](TEV2& s)
     { static_cast<TEV2_BITMAP_MATERIAL_MAP&>(*Metal(s).maps[0]).coordinates.uvSet = 2; },
     {}, "set 2, but \"Box\" has 2 sets, and 1 more"},
    {"uv-set-missing", "materials[0].maps[0].map.coordinates", 1,
     [](TEV2& s) { SkinImage(s).coordinates.uvSet = 1; }, {}, "set 1, but \"Face\" has 1 set"},
    {"normal-not-unit", "rigids[0]", Bits(0.5f), [](TEV2& s) { s.rigids[0]->vertices->normals[1].x = 0.5f; },
     {}, "1 of 4 normals, that of vertex 1"},
    {"front-against-normals", "morphMeshes[0]", 0,
     [](TEV2& s) { s.morphMeshes[0]->subObjects[0].triangles[0] = {0, 2, 1}; }, {}, "1 of 2 triangles"},
    {"triangle-degenerate", "rigids[0]", 1, [](TEV2& s) { s.rigids[0]->subObjects[0].triangles[1] = {1, 2, 2}; }},
    {"bounds-too-small", "rigids[0]", Bits(1.25f), [](TEV2& s) { s.rigids[0]->vertices->positions[2].x = 1.25f; },
     {}, "vertex 2 is 0.25 m outside"},
    {"bounds-too-small", "animMeshes[0]", Bits(3.5f), [](TEV2& s) { s.animMeshes[0]->vertices->tracks[1].position =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {}}, {1.0f, {3.5f, 0.0f, 0.0f}}}); },
     {}, "vertex 1 is 0.5 m outside"},
    {"range-reversed", "lights[0].cone", Bits(0.75f), [](TEV2& s) { Key(s).cone = Reversed(); },
     {}, "key 1 is from 0.75 to 0.5"},
    {"range-reversed", "lights[0].max.attenuation.nearRange", Bits(0.75f),
     [](TEV2& s) { Key(s).max->attenuation.nearRange = Reversed(); }},
    {"amount-outside", "materials[0].opacity", Bits(1.5f), [](TEV2& s) { Skin(s).opacity = Constant(1.5f); }},
    {"amount-outside", "rigids[0].visibility", Bits(-1.0f), [](TEV2& s) { s.rigids[0]->visibility = Constant(-1.0f); }},
    {"channel-repeated", "materials[0].maps", 0,
     [](TEV2& s) { Skin(s).maps[1].channel = TEV2_MATERIAL_CHANNEL::Diffuse; }, {}, "another map for diffuse"},
    {"parameter-repeated", "materials[1].floats", TextWord(u'm', 14),
     [](TEV2& s) { Metal(s).floats[1].name = Metal(s).floats[0].name; }, {}, "\"metallicFactor\""},
    {"target-repeated", "morphMeshes[0]", TextWord(u'S', 5),
     [](TEV2& s) { s.morphMeshes[0]->targets[1].name = Wide(u"Smile"); }, {}, "\"Smile\""},
    {"spline-gap", "bezierSplines[0].splines[0]", Bits(1.5f), [](TEV2& s) { Spline(s).curves[1].start.x = 1.5f; },
     {}, "curve 1 starts 0.5 m from"},
    {"spline-gap", "bezierSplines[0].splines[0]", 1, [](TEV2& s) { Spline(s).curves[1].end.x = 2.0f; },
     {}, "its end is 2.0 m from its start"},
    {"spline-gap", "bezierSplines[0].splines[1]", 1, [](TEV2& s) { MovingSpline(s).curves[1].start =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {}}, {0.5f, {1, 0, 0}}, {1.0f, {4, 0, 0}}}); },
     {}, "curve 1 starts 1.0 m from"},
    {"image-path-leaves", "materials[0].maps[0].map.params.fileName", TextWord(u'.', 11),
     [](TEV2& s) { SkinImage(s).params.fileName = Wide(u"../skin.png"); }, {}, "\"../skin.png\" goes up by .."},
    {"non-finite-value", "rigids[0].vertices.uvs[1].values", Bits(kNan),
     [](TEV2& s) { s.rigids[0]->vertices->uvs[1][2].y = kNan; }, {}, "value 2 has NaN"},
    {"non-finite-value", "morphMeshes[0].targets[0].offsets.positions", Bits(kNan),
     [](TEV2& s) { s.morphMeshes[0]->targets[0].offsets.positions[1].x = kNan; }},
    {"non-finite-value", "xrefs15[0].timeOffset", Bits(kNan), [](TEV2& s) { s.xrefs15[0]->timeOffset = kNan; }},
    {"non-finite-value", "lights[0].intensity", Bits(kNan), [](TEV2& s) { Key(s).intensity = Constant(kNan); }},
    {"times-not-ascending", "materials[0].diffuse", Bits(0.5f), [](TEV2& s) { Skin(s).diffuse =
        MakeTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>({{0.0f, {}}, {0.75f, {}}, {0.5f, {}}, {1.0f, {}}}); }},
};
// clang-format on

class CheckObjectsTest : public ToolTest
{
protected:
    std::string SaveTyped(const std::function<void(TEV2&)>& change) const
    {
        TEV2 scene;
        FillTypedScene(scene);
        change(scene);
        return Save(scene);
    }
};

TEST_F(CheckObjectsTest, ATypedSceneIsCleanWithoutANote)
{
    const auto file = FileOf(RunTv2({"check", "--json", SaveTyped([](TEV2&) {})}));
    EXPECT_EQ(file["findings"].size(), 0U) << file.dump(2);
}

TEST_F(CheckObjectsTest, EachSpoiledSceneGetsItsCodeAtTheByteItIsAbout)
{
    for (const SpoiledScene& item : SpoiledTypedScenes())
    {
        SCOPED_TRACE(std::string(item.code) + " in " + item.path);
        const std::string path = SaveTyped(item.spoil);
        const auto findings = FileOf(RunTv2({"check", "--json", path}))["findings"];
        ASSERT_EQ(findings.size(), 1U) << findings.dump(2);
        EXPECT_EQ(findings[0]["code"], item.code);
        EXPECT_EQ(findings[0]["path"], item.path);
        EXPECT_EQ(WordAt(ReadBytes(path), findings[0]["offset"].get<std::size_t>()), item.word);
        ExpectParts(findings[0]["message"].get<std::string>(), {item.message});
    }
}

TEST_F(CheckObjectsTest, NothingIsSaidOfWhatIsInsideKeptBodies)
{
    const auto findings =
        FileOf(RunTv2({"check", "--json",
                       SaveTyped([](TEV2& scene) { scene.rigids[0]->KeepAfterPlaced({1}); })}))["findings"];
    ASSERT_EQ(findings.size(), 1U) << findings.dump(
        2); // though instances have materials and triangles of the box
    EXPECT_EQ(findings[0]["code"], "body-kept");
    EXPECT_EQ(findings[0]["name"], "Box");
}

TEST_F(CheckObjectsTest, WhatManyVerticesShareIsOneFindingWithTheirNumber)
{
    const std::string path = SaveTyped(
        [](TEV2& scene)
        {
            scene.rigids[0]->vertices->positions.assign(4, {5.0f, kNan, kNan});
            scene.rigids[0]->subObjects[0].triangles.assign(1000, {3, 3, 3});
            BodySkin(scene).weights.assign(8, 0.25f);
        });
    ExpectParts(RunTv2({"check", path}).out,
                {": 2 warnings, 2 notes\n",
                 "rigids[0].vertices.positions \"Box\": value 0 has NaN, and 3 more\n",
                 "rigids[0] \"Box\": triangle 0 of sub-object 0 has the corners 3, 3, 3, and 999 more\n",
                 "rigids[0] \"Box\": vertex 0 is 4.0 m outside, and 3 more\n",
                 "weightedMeshes[0] \"Body\": those of vertex 0 have the sum 0.5, and 3 more\n"});
}

TEST_F(CheckObjectsTest, FilesAreLookedForBesideTheSceneWhenAskedFor)
{
    const std::string path = SaveTyped([](TEV2&) {});
    std::filesystem::create_directories(Path("maps"));
    for (const char* name : {"maps/skin.png", "sky.png", "gobo.png"})
        WriteBytes(Path(name), {});
    std::filesystem::create_directories(Path("metal.png")); // a folder is no image
    const auto result = RunTv2({"check", "--json", "--files", path});
    EXPECT_EQ(result.exit_code, 0);
    const auto findings = FileOf(result)["findings"];
    ASSERT_EQ(findings.size(), 2U) << findings.dump(2);
    EXPECT_EQ(findings[0]["message"], "\"maps/skin_normals.png\" is not there");
    EXPECT_EQ(findings[1]["message"], "\"metal.png\" is not there");
    for (const auto& finding : findings)
        EXPECT_EQ(finding["code"], "image-missing");
    EXPECT_EQ(RunTv2({"check", "--files", "-"}).exit_code, 2);
}

TEST(ImagePath, NamesThatAnySystemMayTakeForMoreLeave)
{
    for (const char* name : {"", "a.png", "maps/a b.png", "./a.png", "a..png", ".hidden/a", "console/a",
                             "com.png", "com10", "\xC3\xA4/\xE4\xB8\xAD.png", "a~1", "nulls"})
        EXPECT_EQ(WhyItLeaves(name), "") << name;
    for (const char* name :
         {"/a",   "//server/a", "\\a",     "a\\b",    "C:a",  "c:/a",     "a.png:b", "http://a/b", "..",
          "../a", "a/..",       "a/../b",  "a/.. /b", "...",  "a/.../b",  ". ",      "%2e%2e/a",   "%TEMP%/a",
          "nul",  "a/NUL.png",  "Con.txt", "aux ",    "lpt1", "COM9.png", "conin$",  "a\nb",       "a\x01"})
        EXPECT_NE(WhyItLeaves(name), "") << name;
}

} // namespace

std::span<const SpoiledScene> tv2_tests::SpoiledTypedScenes()
{
    return kTypedScenes;
}
