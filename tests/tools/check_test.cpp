// tv2 check: every code is raised by a file that deserves it, where it deserves it, and by no other.

#include "tests/tools/spoiled_scene.h"
#include "tests/tools/tool_test.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <set>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using Image = std::vector<std::uint8_t>;
using Codes = std::set<std::string>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

Codes CodesOf(const nlohmann::json& findings)
{
    Codes codes;
    for (const auto& finding : findings)
        codes.insert(finding["code"].get<std::string>());
    return codes;
}

/// The first finding of a code; null when there is none.
nlohmann::json FindingOf(const nlohmann::json& findings, const std::string& code)
{
    for (const auto& finding : findings)
        if (finding["code"] == code)
            return finding;
    return {};
}

std::uint32_t WordOf(const Image& file, const nlohmann::json& finding)
{
    return WordAt(file, finding["offset"].get<std::size_t>());
}

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

TEV2_MATRIX_NODE& Node(TEV2& scene, std::size_t node)
{
    return scene.matrixHierarchy.nodes[node];
}

/// A text that a save cuts, and how the rest of it begins in the file: its length and an x.
TEV2_WIDE_STRING TooLong()
{
    return TEV2_WIDE_STRING(std::u16string(65536, u'x'));
}
constexpr std::uint32_t kCutText = 0x0078FFFF;

const std::string kNode = "matrixHierarchy.nodes[";
const std::string kHips = kNode + "1]";
const std::string kLast = kNode + "2]";
const std::string kMoves = kHips + ".translation";
const std::string kRange = "environment.timeRange";
const std::string kSwitcher = "cameraMan.cameraIndex";

// clang-format off
const SpoiledScene kSpoiledScenes[] = {
    {"time-range-reversed", kRange, Bits(2.0f), [](TEV2& s) { s.environment.timeRange = {2.0f, 1.0f}; }},
    {"non-finite-value", kRange, Bits(-kInfinity), [](TEV2& s) { s.environment.timeRange = {-kInfinity, 1.0f}; }},
    {"non-finite-value", kLast + ".translation", Bits(kInfinity),
     [](TEV2& s) { Translation(s, 2).m_values[1] = {kInfinity, 3.0f, kNan}; }},
    {"non-finite-value", kMoves, Bits(kInfinity), [](TEV2& s) { Translation(s, 1).m_times[2] = kInfinity; },
     {"key-outside-range"}},
    {"non-finite-value", "cameras[0].inverseAspect", Bits(kInfinity),
     [](TEV2& s) { s.cameras[0]->inverseAspect = kInfinity; }},
    {"times-not-ascending", kMoves, Bits(0.0f), [](TEV2& s) { Translation(s, 1).m_times[1] = 0.0f; }},
    {"times-not-ascending", kSwitcher, Bits(0.25f), [](TEV2& s) { Switcher(s).m_times[2] = 0.25f; }},
    {"end-keys-close", kMoves, Bits(1.0f), [](TEV2& s) { Translation(s, 1).m_times[1] = 0.999f; }},
    {"end-keys-close", kSwitcher, Bits(1.0f), [](TEV2& s) { Switcher(s).m_times[1] = 1.0f; }},
    {"key-outside-range", kNode + "0].translation", Bits(1.25f),
     [](TEV2& s) { Translation(s, 0).m_times[2] = 1.25f; }},
    {"value-count-differs", kMoves, 1, [](TEV2& s) { Translation(s, 1).m_values.pop_back(); }},
    {"constant-with-times", kMoves, 1, [](TEV2& s) { Translation(s, 1).m_values.resize(1); }},
    {"track-without-keys", kHips + ".properties.floatValues[0].track", 1, [](TEV2& s)
     { Node(s, 1).properties.floatValues[0].track = std::make_unique<TEV2_ANIMATABLE_FLOAT32_LINEAR>(); }},
    {"cursor-outside", "cameras[0].clipRange", 2, [](TEV2& s) { s.cameras[0]->clipRange->m_current_key = 2; }},
    {"cursor-outside", "cameras[0].fieldOfView", Bits(1.5f),
     [](TEV2& s) { s.cameras[0]->fieldOfView->m_fraction = 1.5f; }},
    {"cursor-outside", kHips + ".properties.vector4Values[0].track", 1,
     [](TEV2& s) { Node(s, 1).properties.vector4Values[0].track->m_current_key = 1; }},
    {"quaternion-not-unit", kLast + ".rotation", Bits(0.0f),
     [](TEV2& s) { Rotation(s, 2).m_values[1] = {0.0f, 0.0f, 0.61f, 0.8f}; }},
    {"quaternion-flip", kLast + ".rotation", Bits(-0.6f),
     [](TEV2& s) { Rotation(s, 2).m_values[2] = {-0.6f, 0.0f, 0.0f, -0.8f}; }},
    {"node-track-missing", kLast, 0, [](TEV2& s) { Node(s, 2).translation.reset(); }},
    {"parent-not-before-child", kHips, 2, [](TEV2& s) { Node(s, 1).parentIndex = 2; }},
    {"parent-not-before-child", kHips, 1, [](TEV2& s) { Node(s, 1).parentIndex = 1; }},
    {"duplicate-node-name", "matrixHierarchy", 0 /* set below */, [](TEV2& s) { Node(s, 2).name = Node(s, 1).name; }},
    {"object-node-outside", "cameras[0]", 3, [](TEV2& s) { s.cameras[0]->value = 3; }},
    {"switcher-camera-outside", kSwitcher, 1, [](TEV2& s) { Switcher(s).m_values[2] = 1; }},
    {"switcher-camera-outside", kSwitcher, 0xFFFFFFFE, [](TEV2& s) { Switcher(s).m_values[1] = -2; }},
    {"text-cut", kHips + ".userText", kCutText, [](TEV2& s) { Node(s, 1).userText = TooLong(); }},
    {"text-cut", kHips + ".properties.stringArrays[0].strings[1]", kCutText,
     [](TEV2& s) { Node(s, 1).properties.stringArrays[0].strings[1] = TooLong(); }},
    {"text-cut", "information.infoText", kCutText, [](TEV2& s) { s.information.infoText = TooLong(); }},
    {"text-cut", "cameras[0].thirdText", kCutText, [](TEV2& s) { s.cameras[0]->thirdText = TooLong(); }},
};
// clang-format on

/// A file made from bytes, with all codes that it deserves.
struct SpoiledFile
{
    const char* code; ///< the one that it is about
    Bytes bytes;
    Codes others = {};
    std::optional<std::uint32_t> word = {}; ///< the value in the file at the offset of the finding
};

Bytes Words(std::initializer_list<std::uint32_t> words)
{
    return Bytes().U32(words);
}

std::vector<SpoiledFile> SpoiledFiles()
{
    const auto sound = [] { return Bytes(SoundImage()); };
    const auto with = [&](std::uint32_t id, std::initializer_list<std::uint32_t> words)
    { return sound().Chunk(id, Words(words)); };
    const auto magic = [] { return Bytes().U32(kMagic); };
    const auto helper = [&](std::uint32_t layout, std::uint32_t shape) {
        return sound().Chunk(17, Bytes().Zeros(34).U32({layout, shape}));
    }; // after a placed object of zeros

    Bytes wrong_parent = sound(); // of the last node: "Camera", and four bytes after its name
    const Bytes name = Bytes().Text(u"Camera");
    const auto last_name =
        std::find_end(wrong_parent.data.begin(), wrong_parent.data.end(), name.data.begin(), name.data.end());
    last_name[static_cast<std::ptrdiff_t>(name.data.size())] = 77;

    Bytes many = sound();
    for (int i = 0; i < 1001; ++i)
        many.Chunk(99);

    return {
        {"empty-image", {}},
        {"bad-magic", Bytes().U8({1, 2, 3, 4})},
        {"truncated-chunk-header", sound().U8({8, 0, 0, 0, 99})},
        {"bad-chunk-size", sound().U32({7, 99})},
        {"bad-chunk-size", sound().U32({9, 99})},
        {"chunk-too-small", with(5, {})},
        {"unsupported-version", FileOfVersion(1.17f)},
        {"bad-instance-list", with(14, {10})},
        {"unknown-track-kind", with(22, {1, 3})},
        // a camera of 54 zero bytes up to its effects: one, present, of type 7
        {"unknown-effect-type",
         with(6, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00010000, 0x00010000, 0x00070000, 0})},
        {"count-exceeds-file", with(12, {1000})},
        {"record-overrun", with(2, {0})},
        {"record-ends-before-chunk", with(22, {0, 8, 99}), {"chunk-repeated", "unknown-chunk"}},
        {"record-ends-after-chunk", with(22, {}).U32(0), {"chunk-repeated"}},
        {"unknown-chunk", with(99, {1})},
        {"string-clamped",
         sound().Chunk(0, Bytes().F32({1.16f}).U16(0).U16(10).U8({'a', 0})),
         {"chunk-repeated"}},
        {"parent-outside", wrong_parent, {}, 77},
        {"body-kept", helper(0x4C590002, 0), {"array-lengths-differ"}, 0x4C590002},
        {"body-kept", helper(kLayout, 2), {"array-lengths-differ"}, 2},
        {"unparsed-other-version", FileOfVersion(1.13f).Chunk(7, Words({1, 2, 3})), {"chunk-missing"}},
        {"instance-list-never-saved", with(16, {7, 1}), {"array-lengths-differ", "body-kept"}},
        {"more-warnings", many, {"unknown-chunk"}},
        {"information-not-first",
         magic().Chunk(22, Words({0})).Chunk(0, Bytes().F32({1.16f}).Text(u"").Text(u"")),
         {"chunk-missing"}},
        {"chunk-repeated", with(22, {0})},
        {"chunk-missing", magic()},
        {"array-lengths-differ", helper(kLayout, 0)},
    };
}

using CheckTest = ToolTest;

TEST_F(CheckTest, SoundFilesAreCleanWithoutANote)
{
    const std::string sound = Write(SoundImage(), "sound.tv2");
    const auto result = RunTv2({"check", "--json", sound, Save(TEV2(), "empty.tv2")});
    EXPECT_EQ(result.exit_code, 0);
    const auto files = result.Json()["files"];
    ASSERT_EQ(files.size(), 2U);
    for (const auto& file : files)
    {
        EXPECT_EQ(file["clean"], true);
        EXPECT_EQ(file["loaded"], true);
        EXPECT_EQ(file["findings"].size(), 0U) << file.dump(2);
    }
    EXPECT_EQ(RunTv2({"check", sound}).out, sound + ": clean\n  up axis: unknown\n");
}

TEST_F(CheckTest, EachSpoiledSceneGetsItsCodeAtTheByteItIsAbout)
{
    const auto codes = RunTv2({"check", "--codes", "--json"}).Json()["codes"];
    for (const SpoiledScene& item : kSpoiledScenes)
    {
        SCOPED_TRACE(std::string(item.code) + " in " + item.path);
        const std::string path = SaveSound(item.spoil);
        const auto result = RunTv2({"check", "--json", path});
        const auto findings = FileOf(result)["findings"];
        Codes expected = item.others;
        expected.insert(item.code);
        EXPECT_EQ(CodesOf(findings), expected);
        const auto finding = FindingOf(findings, item.code);
        ASSERT_FALSE(finding.is_null());
        EXPECT_EQ(finding["path"], item.path);
        EXPECT_EQ(finding["severity"], FindingOf(codes, item.code)["severity"]);
        EXPECT_EQ(result.exit_code, finding["severity"] == "note" ? 0 : 1);

        const Image bytes = ReadBytes(path);
        const auto chunk = finding["chunkOffset"].get<std::size_t>();
        EXPECT_EQ(WordAt(bytes, chunk + 4), finding["chunkId"].get<std::uint32_t>());
        const bool of_the_chunk = std::string(item.code) == "duplicate-node-name";
        EXPECT_EQ(WordOf(bytes, finding), of_the_chunk ? WordAt(bytes, chunk) : item.word);
    }
}

TEST_F(CheckTest, EachSpoiledFileGetsItsCode)
{
    for (const SpoiledFile& item : SpoiledFiles())
    {
        SCOPED_TRACE(item.code);
        const auto result = RunTv2({"check", "--json", Write(item.bytes.data)});
        const auto file = FileOf(result);
        Codes expected = item.others;
        expected.insert(item.code);
        EXPECT_EQ(CodesOf(file["findings"]), expected);
        const auto finding = FindingOf(file["findings"], item.code);
        EXPECT_EQ(file["loaded"], finding["severity"] != "error");
        EXPECT_EQ(result.exit_code, file["clean"] == true ? 0 : 1);
        EXPECT_TRUE(!item.word || WordOf(item.bytes.data, finding) == *item.word);
        for (const auto& each : file["findings"])
        {
            EXPECT_LE(each["offset"].get<std::size_t>(), item.bytes.data.size());
            EXPECT_NE(each["message"], "");
        }
    }
}

TEST_F(CheckTest, AFileCutBetweenChunksIsNotClean)
{
    Image cut = SoundImage();
    std::vector<std::size_t> ends;
    for (std::size_t end = 4; end < cut.size(); end += WordAt(cut, end))
        ends.push_back(end);
    for (; !ends.empty(); ends.pop_back())
    {
        cut.resize(ends.back());
        const auto result = RunTv2({"check", Write(cut)});
        EXPECT_EQ(result.exit_code, 1) << cut.size();
        ExpectParts(result.out, {"warning chunk-missing"});
    }
}

/// Two nodes, of which the second has a rotation twice too long, and a camera whose distance has its cursor at key 5.
Bytes SpoiledFileOfVersion(float version)
{
    const Bytes properties = version >= kSinceProperties ? Words({0, 0, 0, 0, 0}) : Bytes();
    Bytes hierarchy = Words({2});
    for (const float x : {1.0f, 2.0f})
    {
        hierarchy.Text(u"").U32(0xFFFFFFFF);
        hierarchy.U32({1, 3, 0, 0, 1, 0, 1, 0, 0, 0}).U32({1, 6, 0, 0, 1, 0, 1, Bits(x), 0, 0, 0});
        hierarchy.Append(version >= kSinceScale ? Words({0}) : Bytes());
        hierarchy.Zeros(version <= kUntilLegacyMatrix ? 64 : 0).Text(u"").Append(properties);
    }
    Bytes camera = Bytes().Text(u"").Text(u"").Text(u"").U32(0).Append(properties);
    camera.Append(version >= kSinceBounds ? Words({0}) : Bytes());
    camera.F32({0.5f}).U32({1, 0, 5, 0, 1, 0, 1, 0}).U32({0, 0, 0, 0});
    return FileOfVersion(version).Chunk(6, camera).Chunk(12, hierarchy);
}

TEST_F(CheckTest, OffsetsHoldInFilesOfEveryVersion)
{
    for (const float version : {1.0f, 1.04f, 1.05f, 1.06f, 1.1f, 1.12f, 1.13f, 1.14f, 1.15f, 1.16f})
    {
        SCOPED_TRACE(version);
        const Image bytes = SpoiledFileOfVersion(version).data;
        const auto findings = FileOf(RunTv2({"check", "--json", Write(bytes)}))["findings"];
        EXPECT_EQ(CodesOf(findings),
                  (Codes{"chunk-missing", "cursor-outside", "duplicate-node-name", "quaternion-not-unit"}));
        const auto rotation = FindingOf(findings, "quaternion-not-unit");
        EXPECT_EQ(rotation["path"], "matrixHierarchy.nodes[1].rotation");
        EXPECT_EQ(WordOf(bytes, rotation), Bits(2.0f));
        const auto cursor = FindingOf(findings, "cursor-outside");
        EXPECT_EQ(cursor["path"], "cameras[0].distance");
        EXPECT_EQ(WordOf(bytes, cursor), 5U);
    }
}

TEST(Check, EveryListedCodeIsRaisedBySomeFileHere)
{
    // a file of 4 GiB; limits, of which the verb sets none; FilesAreLookedForBesideTheSceneWhenAskedFor; CheckLikeTest
    Codes raised = {"image-too-large",  "limit-exceeded", "image-missing",    "rig-up-axis",
                    "rig-node-missing", "rig-node-moved", "rig-node-renamed", "rig-differs"};
    for (const SpoiledScene& item : SpoiledTypedScenes())
        raised.insert(item.code);
    for (const SpoiledScene& item : kSpoiledScenes)
        raised.insert(item.code);
    for (const SpoiledFile& item : SpoiledFiles())
        raised.insert(item.code);
    const auto result = RunTv2({"check", "--codes", "--json"});
    EXPECT_EQ(result.exit_code, 0);
    const auto codes = result.Json()["codes"];
    EXPECT_EQ(CodesOf(codes), raised);
    EXPECT_EQ(codes.size(), raised.size()) << "a code is listed twice";
    const std::string text = RunTv2({"check", "--codes"}).out;
    for (const auto& code : codes)
    {
        EXPECT_NE(code["sentence"], "");
        ExpectParts(text, {code["code"].get<std::string>() + " "});
    }
}

TEST_F(CheckTest, OrdinaryEndsOfASamplingAreNoFindings)
{
    // 1/30 s added up as the sampler does: a rest remains, or the sum that should be 2 falls just short of it
    for (const auto& [end, noted] : {std::pair(1.02f, false), std::pair(2.0f, true)})
    {
        TEV2_ANIMATABLE_VECTOR_3_LINEAR track;
        const float step = 1.0f / 30.0f;
        for (float time = 0.0f; time < end; time = time + step)
            track.Append(time, {time, 0.0f, 0.0f});
        track.Append(end, {end, 0.0f, 0.0f});
        ASSERT_EQ(noted, end - track.m_times[track.m_times.size() - 2] < 0.1f * step);

        const std::string path = SaveSound(
            [&, end = end](TEV2& scene)
            {
                scene.environment.timeRange = {0.0f, end};
                Translation(scene, 1) = track;
                Translation(scene, 2) = track;
            });
        const auto result = RunTv2({"check", path});
        EXPECT_EQ(result.exit_code, 0);
        if (noted)
            ExpectParts(result.out,
                        {path + ": clean, 1 note\n  note end-keys-close at byte ", "; so in 1 more track\n"});
        else
            EXPECT_EQ(result.out, path + ": clean\n  up axis: unknown\n");
    }
}

TEST_F(CheckTest, FindingsNameTheNodesAndCamerasThatTheyAreAbout)
{
    const std::string thumb = "Thumb\xC3\xA9";
    const std::string path = SaveSound(
        [&](TEV2& scene)
        {
            for (int i = 0; i < 7; ++i)
            {
                TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
                node.name = TEV2_WIDE_STRING::FromBytes(thumb + std::to_string(i));
                node.parentIndex = 0;
                node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {}}});
                node.rotation =
                    MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>({{0.0f, {0.5f, 0.0f, 0.0f, 0.5f}}});
            }
            Node(scene, 1).parentIndex = 3;
            scene.cameras[0]->clipRange->m_current_key = 2;
        });
    const auto findings = FileOf(RunTv2({"check", "--json", path}))["findings"];
    EXPECT_EQ(FindingOf(findings, "quaternion-not-unit")["name"], thumb + "0");
    EXPECT_EQ(FindingOf(findings, "cursor-outside")["name"], "Camera");
    ExpectParts(
        RunTv2({"check", path}).out,
        {"matrixHierarchy.nodes[3].rotation \"" + thumb + "0\": key 0 has the length",
         "... 2 more of quaternion-not-unit: \"" + thumb + "5\", \"" + thumb + "6\" (--all shows them)",
         "cameras[0].clipRange \"Camera\": ",
         "nodes[1] \"Hips\": node 1 has the parent 3, \"" + thumb + "0\"\n"});
}

TEST_F(CheckTest, ManyFindingsOfOneCodeAreShortenedUnlessAllAreAskedFor)
{
    const std::string path = SaveSound(
        [](TEV2& scene)
        {
            for (char name = 'a'; name <= 't'; ++name)
                scene.matrixHierarchy.nodes.emplace_back().name =
                    TEV2_WIDE_STRING::FromBytes(std::string(1, name));
        });
    const std::string shortened = RunTv2({"check", path}).out;
    ExpectParts(shortened,
                {path + ": 20 warnings\n", "\"e\"", "... 15 more of node-track-missing: \"f\", \"g\", "});
    EXPECT_EQ(std::ranges::count(shortened, '\n'), 1 + 5 + 1 + 1); // the last is the up axis
    EXPECT_EQ(std::ranges::count(RunTv2({"check", "--all", path}).out, '\n'), 1 + 20 + 1);
}

} // namespace
