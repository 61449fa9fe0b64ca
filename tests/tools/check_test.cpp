// tv2 check: every code is raised by a file that deserves it, where it deserves it, and by no other.

#include "tests/tools/command.h"
#include "tests/tools/scene_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <set>

using namespace TEV2_LOADER;

namespace
{

using Codes = std::set<std::string>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

Codes CodesOf(const nlohmann::json& findings)
{
    Codes codes;
    for (const auto& finding : findings)
    {
        codes.insert(finding["code"].get<std::string>());
    }
    return codes;
}

/// The first finding of a code; null when there is none.
nlohmann::json FindingOf(const nlohmann::json& findings, const std::string& code)
{
    for (const auto& finding : findings)
    {
        if (finding["code"] == code)
        {
            return finding;
        }
    }
    return {};
}

/// A scene that is sound but for what `spoil` does to it.
struct SpoiledScene
{
    const char* code;
    const char* path;
    std::function<void(TEV2&)> spoil;
    std::uint32_t word; ///< the value in the file at the offset of the finding
    Codes others = {};  ///< further codes that it deserves
};

TEV2_ANIMATABLE_VECTOR_3_LINEAR& Translation(TEV2& scene, std::size_t node)
{
    return static_cast<TEV2_ANIMATABLE_VECTOR_3_LINEAR&>(*scene.matrixHierarchy.nodes[node].translation);
}

TEV2_ANIMATABLE_QUATERNION_SLERP& Rotation(TEV2& scene, std::size_t node)
{
    return static_cast<TEV2_ANIMATABLE_QUATERNION_SLERP&>(*scene.matrixHierarchy.nodes[node].rotation);
}

TEV2_ANIMATABLE_INT32_RLE& Switcher(TEV2& scene)
{
    return static_cast<TEV2_ANIMATABLE_INT32_RLE&>(*scene.cameraMan.cameraIndex);
}

/// A text that a save cuts, and how the rest of it begins in the file: its length and an x.
TEV2_WIDE_STRING TooLong()
{
    return TEV2_WIDE_STRING(std::u16string(65536, u'x'));
}
constexpr std::uint32_t kCutText = 0x0078FFFF;

const std::vector<SpoiledScene>& SpoiledScenes()
{
    static const std::vector<SpoiledScene> scenes = {
        {"time-range-reversed", "environment.timeRange",
         [](TEV2& scene) {
             scene.environment.timeRange = {2.0F, 1.0F};
         },
         Bits(2.0F)},
        {"non-finite-value", "environment.timeRange",
         [](TEV2& scene) {
             scene.environment.timeRange = {-kInfinity, 1.0F};
         },
         Bits(-kInfinity)},
        {"non-finite-value", "matrixHierarchy.nodes[2].translation",
         [](TEV2& scene) {
             Translation(scene, 2).m_values[1] = {kInfinity, 3.0F, kNan};
         },
         Bits(kInfinity)},
        {"non-finite-value",
         "matrixHierarchy.nodes[1].translation",
         [](TEV2& scene) { Translation(scene, 1).m_times[2] = kInfinity; },
         Bits(kInfinity),
         {"key-outside-range"}},
        {"non-finite-value", "cameras[0]", [](TEV2& scene) { scene.cameras[0]->inverseAspect = kInfinity; },
         Bits(kInfinity)},
        {"times-not-ascending", "matrixHierarchy.nodes[1].translation",
         [](TEV2& scene) { Translation(scene, 1).m_times[1] = 0.0F; }, Bits(0.0F)},
        {"times-not-ascending", "cameraMan.cameraIndex",
         [](TEV2& scene) { Switcher(scene).m_times[2] = 0.25F; }, Bits(0.25F)},
        {"end-keys-close", "matrixHierarchy.nodes[1].translation",
         [](TEV2& scene) { Translation(scene, 1).m_times[1] = 0.999F; }, Bits(1.0F)},
        {"end-keys-close", "cameraMan.cameraIndex", [](TEV2& scene) { Switcher(scene).m_times[1] = 1.0F; },
         Bits(1.0F)},
        {"key-outside-range", "matrixHierarchy.nodes[0].translation",
         [](TEV2& scene) { Translation(scene, 0).m_times[2] = 1.25F; }, Bits(1.25F)},
        {"value-count-differs", "matrixHierarchy.nodes[1].translation",
         [](TEV2& scene) { Translation(scene, 1).m_values.pop_back(); }, 1},
        {"constant-with-times", "matrixHierarchy.nodes[1].translation",
         [](TEV2& scene) { Translation(scene, 1).m_values.resize(1); }, 1},
        {"track-without-keys", "matrixHierarchy.nodes[1].properties.floatValues[0].track",
         [](TEV2& scene)
         {
             scene.matrixHierarchy.nodes[1].properties.floatValues[0].track =
                 std::make_unique<TEV2_ANIMATABLE_FLOAT32_LINEAR>();
         },
         1},
        {"cursor-outside", "cameras[0].clipRange",
         [](TEV2& scene) { scene.cameras[0]->clipRange->m_current_key = 2; }, 2},
        {"cursor-outside", "cameras[0].fieldOfView",
         [](TEV2& scene) { scene.cameras[0]->fieldOfView->m_fraction = 1.5F; }, Bits(1.5F)},
        {"cursor-outside", "matrixHierarchy.nodes[1].properties.vector4Values[0].track",
         [](TEV2& scene)
         { scene.matrixHierarchy.nodes[1].properties.vector4Values[0].track->m_current_key = 1; },
         1},
        {"quaternion-not-unit", "matrixHierarchy.nodes[2].rotation",
         [](TEV2& scene) {
             Rotation(scene, 2).m_values[1] = {0.0F, 0.0F, 0.61F, 0.8F};
         },
         Bits(0.0F)},
        {"quaternion-flip", "matrixHierarchy.nodes[2].rotation",
         [](TEV2& scene) {
             Rotation(scene, 2).m_values[2] = {-0.6F, 0.0F, 0.0F, -0.8F};
         },
         Bits(-0.6F)},
        {"node-track-missing", "matrixHierarchy.nodes[2]",
         [](TEV2& scene) { scene.matrixHierarchy.nodes[2].translation.reset(); }, 0},
        {"parent-not-before-child", "matrixHierarchy.nodes[1]",
         [](TEV2& scene) { scene.matrixHierarchy.nodes[1].parentIndex = 2; }, 2},
        {"parent-not-before-child", "matrixHierarchy.nodes[1]",
         [](TEV2& scene) { scene.matrixHierarchy.nodes[1].parentIndex = 1; }, 1},
        {"duplicate-node-name", "matrixHierarchy",
         [](TEV2& scene) { scene.matrixHierarchy.nodes[2].name = scene.matrixHierarchy.nodes[1].name; },
         0 /* set below */},
        {"camera-node-outside", "cameras[0]", [](TEV2& scene) { scene.cameras[0]->value = 3; }, 3},
        {"switcher-camera-outside", "cameraMan.cameraIndex",
         [](TEV2& scene) { Switcher(scene).m_values[2] = 1; }, 1},
        {"switcher-camera-outside", "cameraMan.cameraIndex",
         [](TEV2& scene) { Switcher(scene).m_values[1] = -2; }, 0xFFFFFFFE},
        {"text-cut", "matrixHierarchy.nodes[1].userText",
         [](TEV2& scene) { scene.matrixHierarchy.nodes[1].userText = TooLong(); }, kCutText},
        {"text-cut", "matrixHierarchy.nodes[1].properties.stringArrays[0].strings[1]",
         [](TEV2& scene)
         { scene.matrixHierarchy.nodes[1].properties.stringArrays[0].strings[1] = TooLong(); },
         kCutText},
        {"text-cut", "information.infoText", [](TEV2& scene) { scene.information.infoText = TooLong(); },
         kCutText},
        {"text-cut", "cameras[0].thirdText", [](TEV2& scene) { scene.cameras[0]->thirdText = TooLong(); },
         kCutText},
    };
    return scenes;
}

/// A file made from bytes, with all codes that it deserves.
struct SpoiledFile
{
    const char* code; ///< the one that it is about
    Bytes bytes;
    Codes others = {};
    std::optional<std::uint32_t> word = {}; ///< the value in the file at the offset of the finding
};

const std::vector<SpoiledFile>& SpoiledFiles()
{
    const Bytes sound = SoundImage();
    const auto with = [&sound](const Bytes& more) { return Join({sound, more}); };
    const auto version = [](float number) { return Join({Chunk(0, {Bits(number), 0})}); };
    Bytes wrong_parent = sound;
    // the parent of the last node: "Camera", and four bytes after its name
    const char16_t name[] = u"Camera";
    const auto* name_bytes = reinterpret_cast<const std::uint8_t*>(name);
    const auto last_name =
        std::find_end(wrong_parent.begin(), wrong_parent.end(), name_bytes, name_bytes + 12);
    *(last_name + 12) = 77;

    Bytes clamped = Chunk(0, {Bits(1.16F), 0x000A0000});
    clamped.insert(clamped.end(), {'a', 0});
    clamped[0] = static_cast<std::uint8_t>(clamped.size());

    Bytes many = sound;
    for (int i = 0; i < 1001; ++i)
        many = Join({many, Chunk(99, {})});

    static const std::vector<SpoiledFile> files = {
        {"empty-image", {}},
        {"bad-magic", {1, 2, 3, 4}},
        {"truncated-chunk-header", with({8, 0, 0, 0, 99})},
        {"bad-chunk-size", with({7, 0, 0, 0, 99, 0, 0, 0})},
        {"bad-chunk-size", with({9, 0, 0, 0, 99, 0, 0, 0})},
        {"chunk-too-small", with(Chunk(5, {}))},
        {"unsupported-version", Join({Magic(), version(1.17F)})},
        {"bad-instance-list", with(Chunk(14, {10}))},
        {"unknown-track-kind", with(Chunk(22, {1, 3}))},
        // a camera of 54 zero bytes up to its effects: one, present, of type 7
        {"unknown-effect-type",
         with(Chunk(6, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00010000, 0x00010000, 0x00070000, 0}))},
        {"environment-map-unsupported", with(Chunk(2, {0, 0, 0, 1}))},
        {"count-exceeds-file", with(Chunk(12, {1000}))},
        {"record-overrun", with(Chunk(2, {0}))},
        {"record-ends-before-chunk", with(Chunk(22, {0, 8, 99})), {"chunk-repeated", "unknown-chunk"}},
        {"record-ends-after-chunk", with(Join({Chunk(22, {}), {0, 0, 0, 0}})), {"chunk-repeated"}},
        {"unknown-chunk", with(Chunk(99, {1}))},
        {"string-clamped", with(clamped), {"chunk-repeated"}},
        {"parent-outside", wrong_parent, {}, 77},
        {"unparsed-other-version", Join({Magic(), version(1.13F), Chunk(7, {1, 2, 3})}), {"chunk-missing"}},
        {"instance-list-never-saved", with(Chunk(16, {7, 1})), {"array-lengths-differ"}},
        {"more-warnings", many, {"unknown-chunk"}},
        {"information-not-first", Join({Magic(), Chunk(22, {0}), version(1.16F)}), {"chunk-missing"}},
        {"chunk-repeated", with(Chunk(22, {0}))},
        {"chunk-missing", Magic()},
        {"array-lengths-differ", with(Chunk(17, {1}))},
    };
    return files;
}

TEST(Check, SoundFilesAreCleanWithoutANote)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("sound.tv2"), SoundImage());
    SaveScene(TEV2(), folder.Path("empty.tv2"));
    const CommandResult result =
        RunTv2({"check", "--json", folder.Path("sound.tv2"), folder.Path("empty.tv2")});
    EXPECT_EQ(result.exit_code, 0);
    const auto files = result.Json()["files"];
    ASSERT_EQ(files.size(), 2U);
    for (const auto& file : files)
    {
        EXPECT_EQ(file["clean"], true);
        EXPECT_EQ(file["loaded"], true);
        EXPECT_EQ(file["findings"].size(), 0U) << file.dump(2);
    }
    EXPECT_EQ(RunTv2({"check", folder.Path("sound.tv2")}).out,
              folder.Path("sound.tv2") + ": clean\n  up axis: unknown\n");
}

TEST(Check, EachSpoiledSceneGetsItsCodeAtTheByteItIsAbout)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("spoiled.tv2");
    const auto codes = RunTv2({"check", "--codes", "--json"}).Json()["codes"];
    for (const SpoiledScene& item : SpoiledScenes())
    {
        SCOPED_TRACE(std::string(item.code) + " in " + item.path);
        TEV2 scene;
        FillSoundScene(scene);
        item.spoil(scene);
        SaveScene(scene, path);

        const CommandResult result = RunTv2({"check", "--json", path});
        const auto findings = result.Json()["files"][0]["findings"];
        Codes expected = item.others;
        expected.insert(item.code);
        EXPECT_EQ(CodesOf(findings), expected);
        const auto finding = FindingOf(findings, item.code);
        ASSERT_FALSE(finding.is_null());
        EXPECT_EQ(finding["path"], item.path);
        EXPECT_EQ(finding["severity"], FindingOf(codes, item.code)["severity"]);
        EXPECT_EQ(result.exit_code, finding["severity"] == "note" ? 0 : 1);

        const Bytes bytes = ReadBytes(path);
        const auto chunk = finding["chunkOffset"].get<std::size_t>();
        EXPECT_EQ(WordAt(bytes, chunk + 4), finding["chunkId"].get<std::uint32_t>());
        const std::uint32_t word =
            std::string(item.code) == "duplicate-node-name" ? WordAt(bytes, chunk) : item.word;
        EXPECT_EQ(WordAt(bytes, finding["offset"].get<std::size_t>()), word);
    }
}

TEST(Check, EachSpoiledFileGetsItsCode)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("spoiled.tv2");
    for (const SpoiledFile& item : SpoiledFiles())
    {
        SCOPED_TRACE(item.code);
        WriteBytes(path, item.bytes);
        const CommandResult result = RunTv2({"check", "--json", path});
        const auto file = result.Json()["files"][0];
        Codes expected = item.others;
        expected.insert(item.code);
        EXPECT_EQ(CodesOf(file["findings"]), expected);
        const std::string severity = FindingOf(file["findings"], item.code)["severity"];
        EXPECT_EQ(file["loaded"], severity != "error");
        EXPECT_EQ(result.exit_code, file["clean"] == true ? 0 : 1);
        if (item.word)
        {
            EXPECT_EQ(WordAt(item.bytes, FindingOf(file["findings"], item.code)["offset"].get<std::size_t>()),
                      *item.word);
        }
        for (const auto& finding : file["findings"])
        {
            EXPECT_LE(finding["offset"].get<std::size_t>(), item.bytes.size());
            EXPECT_NE(finding["message"], "");
        }
    }
}

TEST(Check, AFileCutBetweenChunksIsNotClean)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("cut.tv2");
    const Bytes sound = SoundImage();
    for (std::size_t end = 4; end < sound.size(); end += WordAt(sound, end))
    {
        WriteBytes(path, Bytes(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(end)));
        const CommandResult result = RunTv2({"check", path});
        EXPECT_EQ(result.exit_code, 1) << end;
        EXPECT_NE(result.out.find("warning chunk-missing"), std::string::npos) << result.out;
    }
}

/// A chunk of an id around a body of any length.
Bytes Frame(std::uint32_t id, const Bytes& body)
{
    Bytes chunk;
    AppendWord(chunk, static_cast<std::uint32_t>(8 + body.size()));
    AppendWord(chunk, id);
    return Join({chunk, body});
}

/// Two nodes, of which the second has a rotation twice too long, and a camera whose distance has its cursor at key 5.
Bytes FileOfVersion(float version)
{
    const Bytes no_text = {0, 0};
    const auto words = [](std::initializer_list<std::uint32_t> list)
    {
        const Bytes chunk = Chunk(0, list);
        return Bytes(chunk.begin() + 8, chunk.end());
    };
    const Bytes properties = version >= 1.04F ? words({0, 0, 0, 0, 0}) : Bytes();

    Bytes hierarchy = words({2});
    for (const float x : {1.0F, 2.0F})
    {
        const Bytes translation = words({1, 3, 0, 0, 1, 0, 1, 0, 0, 0});
        const Bytes rotation = words({1, 6, 0, 0, 1, 0, 1, Bits(x), 0, 0, 0});
        const Bytes scale = version >= 1.15F ? words({0}) : Bytes();
        const Bytes old_matrix(version <= 1.05F ? 64 : 0, 0);
        hierarchy = Join({hierarchy, no_text, words({0xFFFFFFFF}), translation, rotation, scale, old_matrix,
                          no_text, properties});
    }
    const Bytes bounds = version >= 1.13F ? words({0}) : Bytes();
    const Bytes camera = Join({no_text, no_text, no_text, words({0}), properties, bounds, words({Bits(0.5F)}),
                               words({1, 0, 5, 0, 1, 0, 1, 0}), words({0, 0, 0, 0})});
    return Join({Magic(), Frame(0, Join({words({Bits(version)}), no_text, no_text})), Frame(6, camera),
                 Frame(12, hierarchy)});
}

TEST(Check, OffsetsHoldInFilesOfEveryVersion)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("version.tv2");
    for (const float version : {1.0F, 1.04F, 1.05F, 1.06F, 1.1F, 1.12F, 1.13F, 1.14F, 1.15F, 1.16F})
    {
        SCOPED_TRACE(version);
        const Bytes bytes = FileOfVersion(version);
        WriteBytes(path, bytes);
        const auto findings = RunTv2({"check", "--json", path}).Json()["files"][0]["findings"];
        EXPECT_EQ(CodesOf(findings),
                  (Codes{"chunk-missing", "cursor-outside", "duplicate-node-name", "quaternion-not-unit"}));
        const auto rotation = FindingOf(findings, "quaternion-not-unit");
        EXPECT_EQ(rotation["path"], "matrixHierarchy.nodes[1].rotation");
        EXPECT_EQ(WordAt(bytes, rotation["offset"].get<std::size_t>()), Bits(2.0F));
        const auto cursor = FindingOf(findings, "cursor-outside");
        EXPECT_EQ(cursor["path"], "cameras[0].distance");
        EXPECT_EQ(WordAt(bytes, cursor["offset"].get<std::size_t>()), 5U);
    }
}

TEST(Check, EveryListedCodeIsRaisedBySomeFileHere)
{
    Codes raised = {"image-too-large",
                    "limit-exceeded"}; // a file of 4 GiB; limits, of which the verb sets none
    for (const SpoiledScene& item : SpoiledScenes())
    {
        raised.insert(item.code);
    }
    for (const SpoiledFile& item : SpoiledFiles())
    {
        raised.insert(item.code);
    }
    const CommandResult result = RunTv2({"check", "--codes", "--json"});
    EXPECT_EQ(result.exit_code, 0);
    const auto codes = result.Json()["codes"];
    EXPECT_EQ(CodesOf(codes), raised);
    EXPECT_EQ(codes.size(), raised.size()) << "a code is listed twice";
    const std::string text = RunTv2({"check", "--codes"}).out;
    for (const auto& code : codes)
    {
        EXPECT_NE(code["sentence"], "");
        EXPECT_NE(text.find(code["code"].get<std::string>() + " "), std::string::npos);
    }
}

TEST(Check, OrdinaryEndsOfASamplingAreNoFindings)
{
    // 1/30 s added up as the sampler does: a rest remains, or the sum that should be 2 falls just short of it
    struct Case
    {
        float end;
        bool noted;
    };
    const ScratchFolder folder;
    for (const Case& item : {Case{1.02F, false}, Case{2.0F, true}})
    {
        const auto track = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
        const float step = 1.0F / 30.0F;
        for (float time = 0.0F; time < item.end; time = time + step)
        {
            track->Append(time, {time, 0.0F, 0.0F});
        }
        track->Append(item.end, {item.end, 0.0F, 0.0F});
        ASSERT_EQ(item.noted, item.end - track->m_times[track->m_times.size() - 2] < 0.1F * step);

        TEV2 scene;
        FillSoundScene(scene);
        scene.environment.timeRange = {0.0F, item.end};
        Translation(scene, 1) = *track;
        Translation(scene, 2) = *track;
        const std::string path = folder.Path("sampled.tv2");
        SaveScene(scene, path);
        const CommandResult result = RunTv2({"check", path});
        EXPECT_EQ(result.exit_code, 0);
        if (!item.noted)
        {
            EXPECT_EQ(result.out, path + ": clean\n  up axis: unknown\n");
            continue;
        }
        EXPECT_EQ(result.out.rfind(path + ": clean, 1 note\n  note end-keys-close at byte ", 0), 0U)
            << result.out;
        EXPECT_NE(result.out.find("; so in 1 more track\n"), std::string::npos) << result.out;
    }
}

TEST(Check, FindingsNameTheNodesAndCamerasThatTheyAreAbout)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("named.tv2");
    TEV2 scene;
    FillSoundScene(scene);
    for (int i = 0; i < 7; ++i)
    {
        TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
        node.name = TEV2_WIDE_STRING::FromBytes("Thumb\xC3\xA9" + std::to_string(i));
        node.parentIndex = 0;
        node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0F, {}}});
        node.rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0F, {0.5F, 0.0F, 0.0F, 0.5F}}});
    }
    scene.matrixHierarchy.nodes[1].parentIndex = 3;
    scene.cameras[0]->clipRange->m_current_key = 2;
    SaveScene(scene, path);
    const auto findings = RunTv2({"check", "--json", path}).Json()["files"][0]["findings"];
    EXPECT_EQ(FindingOf(findings, "quaternion-not-unit")["name"], "Thumb\xC3\xA9"
                                                                  "0");
    EXPECT_EQ(FindingOf(findings, "cursor-outside")["name"], "Camera");
    const std::string text = RunTv2({"check", path}).out;
    for (const char* part : {"matrixHierarchy.nodes[3].rotation \"Thumb\xC3\xA9"
                             "0\": key 0 has the length",
                             "... 2 more of quaternion-not-unit: \"Thumb\xC3\xA9"
                             "5\", \"Thumb\xC3\xA9"
                             "6\" (--all shows them)",
                             "cameras[0].clipRange \"Camera\": ",
                             "nodes[1] \"Hips\": node 1 has the parent 3, \"Thumb\xC3\xA9"
                             "0\"\n"})
    {
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;
    }
}

TEST(Check, ManyFindingsOfOneCodeAreShortenedUnlessAllAreAskedFor)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("many.tv2");
    TEV2 scene;
    FillSoundScene(scene);
    for (int i = 0; i < 20; ++i)
    {
        scene.matrixHierarchy.nodes.emplace_back().name =
            TEV2_WIDE_STRING::FromBytes("bare" + std::to_string(i));
    }
    SaveScene(scene, path);
    const auto count = [](const std::string& text)
    {
        std::size_t found = 0;
        for (std::size_t at = text.find("warning node-track-missing"); at != std::string::npos;
             at = text.find("warning node-track-missing", at + 1))
        {
            ++found;
        }
        return found;
    };
    const std::string shortened = RunTv2({"check", path}).out;
    EXPECT_EQ(shortened.rfind(path + ": 20 warnings\n", 0), 0U) << shortened;
    EXPECT_EQ(count(shortened), 5U);
    EXPECT_NE(shortened.find("... 15 more of node-track-missing: \"bare5\", \"bare6\", "), std::string::npos)
        << shortened;
    EXPECT_EQ(count(RunTv2({"check", "--all", path}).out), 20U);
}

} // namespace
