#include "tests/support/sample_records.h"

#include "tests/support/sample_scenes.h"

#include <algorithm>

// When bodies are typed and when they are kept as bytes; what then is known, moves and is saved.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

const Bytes kPlaced = Bytes::Of(u"Sun", u"", u"", 2u, Bytes().Zeros(20), 0u);

std::vector<std::uint8_t> Copy(std::span<const std::uint8_t> bytes)
{
    return {bytes.begin(), bytes.end()};
}

/// Whether a file has a chunk with these bytes.
bool HasChunk(const std::vector<std::uint8_t>& image, std::uint32_t id, const Bytes& body)
{
    const Bytes chunk = Bytes().Chunk(id, body);
    return std::search(image.begin(), image.end(), chunk.data.begin(), chunk.data.end()) != image.end();
}

/// A body that breaks one rule, and what the load says of it.
struct Broken
{
    const char* what;
    std::uint32_t chunk;
    Bytes body;         ///< with the type or the list in front
    std::size_t offset; ///< in the body
    const char* path;
    const char* expected;
    const char* found;
    bool placed; ///< the placed object is known all the same
};

std::vector<Broken> BrokenBodies()
{
    const Bytes helper = Bytes::Of(kPlaced, kOurLayout);
    const std::size_t layout = kPlaced.data.size();
    const Bytes light = Bytes::Of(0u, kPlaced, kOurLayout);
    const Bytes material = Bytes::Of(0u, u"", kOurLayout);
    const Bytes instance = Bytes::Of(0u, kPlaced, kOurLayout, 5u);
    const Bytes bad_box =
        Bytes::Of(u"", u"", u"", 2u, Bytes().Zeros(20), 1u, 3u, Bytes().Zeros(16), kOurLayout, 0u);
    return {
        {"a light of no class", 5, Bytes::Of(3u, kPlaced, kOurLayout, Bytes().Zeros(24)), 0, "lights[0]",
         "a type that has a class", "3", true},
        {"a material of no class", 13, Bytes::Of(2u, u"", kOurLayout, 0u), 0, "materials[0]",
         "a type that has a class", "2", false},
        {"another layout", 17, Bytes::Of(kPlaced, kOurLayout + 1, 0u), layout, "helpers[0].layout",
         "0x4c590001", "0x4c590002", true},
        {"no layout", 17, kPlaced, layout, "helpers[0]", "4 bytes", "0 bytes", true},
        {"a body cut short", 15, Bytes::Of(kOurLayout, u"a", 0u).U16(0), 4 + 4 + 4, "xrefs15[0]", "4 bytes",
         "2 bytes", false},
        {"a text beyond the chunk", 15, Bytes::Of(kOurLayout).U16(4).Zeros(6), 6, "xrefs15[0]", "8 bytes",
         "6 bytes", false},
        {"a count beyond the chunk", 16, Bytes::Of(instance, 3u, 1u, 2u), instance.data.size(),
         "instanceLists[0][0]", "at most 2", "3", true},
        {"a bool of 2", 13, Bytes::Of(material, 2u, Bytes().Zeros(36)), material.data.size(),
         "materials[0].twoSided", "0 or 1", "2", false},
        {"a choice that there is not", 17, Bytes::Of(helper, 2u), layout + 4, "helpers[0].shape", "below 2",
         "2", true},
        {"a present flag of 2", 5, Bytes::Of(light, 2u, 2u, Bytes().Zeros(40)), light.data.size(),
         "lights[0].colour", "0 or 1", "2", true},
        {"an optional record's flag of 2", 5, Bytes::Of(light, Bytes().Zeros(12), 2u, Bytes().Zeros(40)),
         light.data.size() + 12, "lights[0].shadow", "0 or 1", "2", true},
        {"a track of another kind", 5, Bytes::Of(light, 1u, 3u, Bytes().Zeros(40)), light.data.size() + 4,
         "lights[0].colour", "2", "3", true},
        {"a map of no class", 13, Bytes::Of(1u, u"", kOurLayout, 0u, u"", u"", Bytes().Zeros(24), 1u, 2u), 46,
         "materials[0].maps[0]", "0 or 1", "2", false},
        {"a spline of no class", 11, Bytes::Of(helper, 1u, 2u), layout + 8, "bezierSplines[0].splines[0]",
         "0 or 1", "2", true},
        {"a track of another kind in the placed object", 17, bad_box, 6 + 4 + 20 + 4, "helpers[0].bounds",
         "11", "3", false},
        {"one byte more", 17, Bytes::Of(helper, 0u).U8({0}), layout + 8, "helpers[0]",
         "0 bytes after the body", "1", true},
        {"no byte", 4, {}, 0, "ambientLight", "4 bytes", "0 bytes", false},
    };
}

TEST(KeptBodies, BreakARuleAndAreSavedAsTheyWere)
{
    for (const Broken& item : BrokenBodies())
    {
        SCOPED_TRACE(item.what);
        // What follows is inside the file, not inside the chunk.
        const Bytes image =
            FileOfVersion(kVersion).Chunk(item.chunk, item.body).Chunk(99, Bytes().Zeros(400));
        const auto outcome = LoadImageOf(image.data);
        ASSERT_TRUE(outcome->loaded);
        ASSERT_EQ(outcome->report.findings.size(), 2u); // the last one is of chunk 99
        const TEV2_LOAD_FINDING& finding = outcome->report.findings[0];
        EXPECT_STREQ(CodeName(finding.code), "body-kept");
        EXPECT_EQ(finding.severity, TEV2_LOAD_SEVERITY::Warning);
        EXPECT_EQ(finding.chunkId, item.chunk);
        EXPECT_EQ(finding.offset, 4u + 16 + 8 + item.offset);
        EXPECT_EQ(finding.path, item.path);
        EXPECT_EQ(finding.expected, item.expected);
        EXPECT_EQ(finding.found, item.found);
        EXPECT_TRUE(outcome->scene.HasKeptBodies());
        EXPECT_TRUE(HasChunk(SceneImage(outcome->scene), item.chunk, item.body));

        std::u16string name;
        VisitLists(outcome->scene,
                   [&name](const TEV2_LIST&, const auto& member)
                   {
                       if constexpr (requires {
                                         member[0]->HasPlaced();
                                         member[0]->thirdText;
                                     })
                           if (!member.empty())
                               name = member[0]->name.Text();
                   });
        EXPECT_EQ(name == u"Sun", item.placed);
    }
}

TEST(KeptBodies, OfOtherVersionsKeepTheirPlacedObject)
{
    // What follows the placed object would be typed in the newest version.
    const Bytes box = SampleTrackBytes(11, Bytes().Zeros(48));
    for (const float version : kGateVersions)
    {
        SCOPED_TRACE(version);
        const Bytes rest = Bytes::Of(kOurLayout, 1u);
        const Bytes newest =
            Bytes::Of(u"Sun", u"", u"c", 2u, Bytes().Zeros(20), version >= 1.13f ? box : Bytes().U32(0));
        Bytes placed = Bytes::Of(u"Sun", u"", u"c", 2u);
        if (version >= 1.04f)
            placed.Zeros(20);
        if (version >= 1.13f)
            placed.Append(box);
        const auto outcome = LoadImageOf(FileOfVersion(version).Chunk(17, Bytes::Of(placed, rest)).data);
        ASSERT_TRUE(outcome->loaded);
        const TEV2_HELPER& helper = *outcome->scene.helpers.at(0);
        EXPECT_EQ(helper.IsTyped(), version == kVersion);
        EXPECT_EQ(helper.HasPlaced(), version != kVersion);
        EXPECT_EQ(helper.thirdText, Wide(u"c"));
        EXPECT_EQ(helper.shape, version == kVersion ? TEV2_HELPER_SHAPE::Box : TEV2_HELPER_SHAPE::Point);
        EXPECT_TRUE(HasChunk(SceneImage(outcome->scene), 17, Bytes::Of(newest, rest)));
        ASSERT_EQ(outcome->report.findings.size(), version == kVersion ? 0u : 1u);
        for (const TEV2_LOAD_FINDING& finding : outcome->report.findings)
            EXPECT_STREQ(CodeName(finding.code), "unparsed-other-version");
    }
}

TEST(KeptBodies, OfOtherVersionsWithoutAPlacedObjectAreNotSaved)
{
    const struct
    {
        std::uint32_t chunk;
        Bytes body;
        const char* refused;
    } cases[] = {
        {4, Bytes::Of(kOurLayout, 0u), "ambientLight, body: kept from a file of another version"},
        {13, Bytes::Of(0u, u"", kOurLayout), "materials[0], body: kept from a file of another version"},
        {17, Bytes().Zeros(5), "helpers[0], body: kept from a file of another version"},
        {18, Bytes::Of(3u).Zeros(1), "instanceLists[3][0], body: kept from a file of another version"},
        {2, Bytes::Of(0.0f, 1.0f, 0u, 1u, 0u), "environment, body: kept from a file of another version"},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.refused);
        const auto outcome = LoadImageOf(FileOfVersion(1.15f).Chunk(item.chunk, item.body).data);
        ASSERT_TRUE(outcome->loaded);
        EXPECT_TRUE(outcome->scene.HasKeptBodies());
        WrittenBy(
            [&](TEV2_FILE_WRITER& writer)
            {
                TEV2_SAVE_REPORT report;
                EXPECT_FALSE(outcome->scene.Save(writer, &report));
                EXPECT_EQ(report.refused, item.refused);
            });
    }
}

TEST(KeptBodies, MoveByTheBoundsAlone)
{
    TEV2_SPOT_LIGHT light;
    Fill(light);
    light.KeepAfterPlaced({1});
    light.SetTime(1.5f);
    light.Update(0.0f);
    EXPECT_EQ(light.bounds->m_fraction, 0.5f);
    EXPECT_EQ(light.properties.floatValues[0].track->m_fraction, 0.0f);
    EXPECT_EQ(light.cone->m_fraction, 0.0f);
    light.bounds->m_fraction = 0.0f;
    light.Keep({1});
    light.SetTime(1.5f);
    EXPECT_EQ(light.bounds->m_fraction, 0.0f);
}

TEST(KeptBodies, SaveTheirBytesUntilTheyAreForgotten)
{
    TEV2_HELPER helper;
    Fill(helper);
    const std::vector<std::uint8_t> typed = SavedBytes(helper);
    TEV2_POSITIONAL_OBJECT placed;
    FillPlaced(placed, u"Door");

    helper.Keep({1, 2});
    EXPECT_FALSE(helper.IsTyped());
    EXPECT_EQ(Copy(helper.Bytes()), (std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(SavedBytes(helper), (std::vector<std::uint8_t>{1, 2}));
    helper.KeepAfterPlaced({3});
    EXPECT_EQ(SavedBytes(helper), Bytes(SavedBytes(placed)).U8({3}).data);
    helper.Forget();
    EXPECT_TRUE(helper.IsTyped());
    EXPECT_TRUE(helper.Bytes().empty());
    EXPECT_EQ(SavedBytes(helper), typed);

    // A load replaces everything, whatever the object held.
    EXPECT_EQ(LoadedBytes(helper, Bytes().U8({9}), kVersion), 1u);
    EXPECT_EQ(Copy(helper.Bytes()), (std::vector<std::uint8_t>{9}));
    EXPECT_TRUE(helper.name.Text().empty());
    EXPECT_EQ(helper.bounds, nullptr);
    EXPECT_EQ(LoadedBytes(helper, Bytes(typed), kVersion), typed.size());
    EXPECT_TRUE(helper.IsTyped());
    EXPECT_EQ(SavedBytes(helper), typed);
}

TEST(KeptBodies, AreWhatTypesWithoutAClassMustHave)
{
    WrittenBy(
        [](TEV2_FILE_WRITER& writer)
        {
            TEV2 scene;
            scene.lights.push_back(TEV2_LIGHT::Create(3));
            TEV2_SAVE_REPORT report;
            EXPECT_FALSE(scene.Save(writer, &report));
            EXPECT_EQ(report.refused, "lights[0], type: without a class, and no bytes are kept");
        });
    for (const std::uint32_t type : {0u, 9u})
    {
        const auto material = TEV2_MATERIAL::Create(type);
        material->Keep({type == 0 ? std::uint8_t{1} : std::uint8_t{2}});
        EXPECT_EQ(SavedBytes(*material), Copy(material->Bytes()));
    }
}

TEST(KeptBodies, AreFoundWhereverTheyAre)
{
    TEV2 scene;
    FillSoundScene(scene);
    EXPECT_FALSE(scene.HasKeptBodies());
    const auto expect_kept = [&scene](const char* where)
    {
        EXPECT_TRUE(scene.HasKeptBodies()) << where;
        scene.Clear();
        EXPECT_FALSE(scene.HasKeptBodies());
    };
    scene.environment.environmentMap = TEV2_MATERIAL_MAP::MakeKept(5);
    scene.environment.environmentMap->Keep({});
    expect_kept("environment map");
    scene.cameras.push_back(std::make_unique<TEV2_CAMERA>());
    scene.cameras[0]->keptEffects.count = 1;
    expect_kept("effects");
    scene.globalLightTint = std::make_unique<TEV2_GLOBAL_LIGHT_TINT>();
    scene.globalLightTint->Keep({});
    expect_kept("tint");
    scene.instanceLists[9].push_back(TEV2_INSTANCE::Create(19));
    scene.instanceLists[9][0]->KeepAfterPlaced({});
    expect_kept("instance");
}

/// Effects or a map, and what is read of them.
struct Part
{
    const char* what;
    float version;
    Bytes bytes;        ///< of the chunk, up to its end
    const char* code;   ///< of the first finding; null: none
    std::size_t offset; ///< in these bytes
    std::size_t typed;  ///< effects, or maps
    std::uint32_t kept;
    std::size_t kept_bytes;
};

TEST(CameraEffects, AreKeptFromTheFirstOfAnotherLayout)
{
    const Bytes blur = Bytes::Of(1u, 0u, kOurLayout, 0u);
    const Bytes other = Bytes::Of(1u, 1u, 7u, 7u);
    const Part cases[] = {
        {"typed", 1.16f, Bytes::Of(3u, blur, 0u, blur), nullptr, 0, 3, 0, 0},
        {"typed, of an older version", 1.0f, Bytes::Of(1u, blur), nullptr, 0, 1, 0, 0},
        {"the second of another layout", 1.16f, Bytes::Of(4u, blur, other, 0u, blur), "body-kept", 28, 1, 3,
         36},
        {"the same of an older version", 1.15f, Bytes::Of(2u, blur, other), "unparsed-other-version", 28, 1,
         1, 16},
        {"behind one that is absent", 1.16f, Bytes::Of(2u, 0u, other), "body-kept", 16, 1, 1, 16},
        {"one that passes the chunk", 1.16f, Bytes::Of(1u, 1u, 0u, kOurLayout), "body-kept", 16, 0, 1, 12},
    };
    for (const Part& item : cases)
    {
        SCOPED_TRACE(item.what);
        Bytes head = Bytes::Of(u"", u"", u"", 0u);
        head.Zeros((item.version >= 1.04f ? 20 : 0) + (item.version >= 1.13f ? 4 : 0) + 5 * 4);
        const auto outcome = LoadImageOf(FileOfVersion(item.version)
                                             .Chunk(6, Bytes::Of(head, item.bytes))
                                             .Chunk(99, Bytes().Zeros(40))
                                             .data);
        ASSERT_TRUE(outcome->loaded);
        const TEV2_CAMERA& camera = *outcome->scene.cameras.at(0);
        EXPECT_EQ(camera.effects.size(), item.typed);
        EXPECT_EQ(camera.keptEffects.count, item.kept);
        EXPECT_EQ(camera.keptEffects.bytes.size(), item.kept_bytes);
        if (item.code != nullptr)
        {
            const TEV2_LOAD_FINDING& finding = outcome->report.findings.at(0);
            EXPECT_STREQ(CodeName(finding.code), item.code);
            EXPECT_EQ(finding.offset, 4u + 16 + 8 + head.data.size() + item.offset);
        }
        EXPECT_EQ(outcome->report.findings.size(), item.code != nullptr ? 2u : 1u) << "and chunk 99";
        const Bytes newest = Bytes().Zeros(50 + 4);
        EXPECT_TRUE(HasChunk(SceneImage(outcome->scene), 6, Bytes::Of(newest, item.bytes)));
    }
}

TEST(CameraEffects, OfMoreThanTheChunkHoldsAreRefused)
{
    const Bytes head = Bytes().Zeros(54);
    const auto load = [&head](std::uint32_t count)
    {
        const Bytes effects = Bytes::Of(count, 0u, 1u, 0u, 7u); // one that is absent, one of another layout
        return LoadImageOf(
            FileOfVersion(kVersion).Chunk(6, Bytes::Of(head, effects)).Chunk(99, Bytes().Zeros(40)).data);
    };
    EXPECT_TRUE(load(4)->loaded);
    const auto outcome = load(5);
    EXPECT_FALSE(outcome->loaded);
    const TEV2_LOAD_FINDING& finding = outcome->report.findings.back();
    EXPECT_EQ(finding.code, TEV2_LOAD_CODE::CountExceedsFile);
    EXPECT_EQ(finding.offset, 4u + 16 + 8 + head.data.size());
    EXPECT_EQ(finding.expected + ", " + finding.found, "at most 4, 5");
}

TEST(EnvironmentMap, IsTypedWhereItEndsBeforeTheReservedBytes)
{
    const Bytes image = Bytes::Of(u"", 0u, u"", Bytes().Zeros(24 + 28 + 4));
    const std::size_t size = image.data.size();
    const Part cases[] = {
        {"typed", 1.16f, Bytes::Of(1u, 0u, image), nullptr, 0, 1, 0, 0},
        {"of another flag", 1.16f, Bytes::Of(2u, 0u, image), nullptr, 0, 1, 0, 0},
        {"one byte more", 1.16f, Bytes::Of(1u, 0u, image).U8({1}), "body-kept", 8 + size, 0, 1, size + 1},
        {"another channel", 1.16f, Bytes::Of(1u, 0u, u"", 0u, u"", 0u, 0u, 9u), "body-kept",
         8 + 2 + 4 + 2 + 8, 0, 1, 20},
        {"a type without a class", 1.16f, Bytes::Of(1u, 5u, image), "body-kept", 4, 0, 1, size},
        {"nothing behind the type", 1.16f, Bytes::Of(1u, 0u), "body-kept", 8 + 2, 0, 1, 0},
        {"an older version", 1.15f, Bytes::Of(1u, 0u, image), "unparsed-other-version", 8, 0, 1, size},
    };
    for (const Part& item : cases)
    {
        SCOPED_TRACE(item.what);
        const Bytes reserved = item.version == kVersion ? Bytes().U8({1, 2, 3, 4, 5, 6, 7, 8}) : Bytes();
        const Bytes head = Bytes::Of(0.0f, 1.0f, 0u);
        const auto outcome =
            LoadImageOf(FileOfVersion(item.version).Chunk(2, Bytes::Of(head, item.bytes, reserved)).data);
        ASSERT_TRUE(outcome->loaded);
        const TEV2_ENVIRONMENT& environment = outcome->scene.environment;
        ASSERT_NE(environment.environmentMap, nullptr);
        EXPECT_EQ(environment.environmentMap->IsTyped(), item.typed == 1);
        EXPECT_EQ(environment.environmentMap->GetType(), WordAt(item.bytes.data, 4));
        EXPECT_EQ(environment.environmentMap->Bytes().size(), item.kept_bytes);
        EXPECT_EQ(environment.reserved[7], item.version == kVersion ? 8 : 0);
        ASSERT_EQ(outcome->report.findings.size(), item.code != nullptr ? 1u : 0u);
        if (item.code != nullptr)
        {
            EXPECT_STREQ(CodeName(outcome->report.findings[0].code), item.code);
            EXPECT_EQ(outcome->report.findings[0].offset, 4u + 16 + 8 + 12 + item.offset);
            EXPECT_EQ(outcome->report.findings[0].path.substr(0, 26), "environment.environmentMap");
        }
        if (item.version != kVersion)
            continue;
        Bytes saved = item.bytes;
        SetWordAt(saved.data, 0, 1);
        EXPECT_TRUE(HasChunk(SceneImage(outcome->scene), 2, Bytes::Of(head, saved, reserved)));
    }
}

TEST(EnvironmentMap, TakesTheReservedBytesFromBehindAChunkThatIsTooShort)
{
    const Bytes cut = Bytes::Of(0.0f, 1.0f, 0u, 1u, 0u).U8({1, 2, 3}); // 3 of 8
    const auto outcome = LoadImageOf(FileOfVersion(kVersion).Chunk(2, cut).U8({4, 5, 6, 7, 8}).data);
    ASSERT_TRUE(outcome->loaded);
    EXPECT_TRUE(outcome->scene.environment.environmentMap->Bytes().empty());
    EXPECT_EQ(outcome->scene.environment.reserved, (std::array<std::uint8_t, 8>{1, 2, 3, 4, 5, 6, 7, 8}));
    ASSERT_EQ(outcome->report.findings.size(), 2u);
    EXPECT_EQ(outcome->report.findings[0].code, TEV2_LOAD_CODE::BodyKept);
    EXPECT_EQ(outcome->report.findings[1].code, TEV2_LOAD_CODE::RecordEndsAfterChunk);
}

TEST(KeptBodies, CountWithinTheLimitsAndTheWarnings)
{
    Bytes many = FileOfVersion(kVersion);
    for (std::size_t body = 0; body < TEV2_LOAD_REPORT::kMostWarnings + 5; ++body)
        many.Chunk(17, Bytes::Of(kPlaced, kOurLayout, 2u));
    const auto outcome = LoadImageOf(many.data);
    ASSERT_TRUE(outcome->loaded);
    ASSERT_EQ(outcome->report.findings.size(), TEV2_LOAD_REPORT::kMostWarnings + 1);
    EXPECT_EQ(outcome->report.findings.back().code, TEV2_LOAD_CODE::MoreWarnings);
    EXPECT_EQ(outcome->report.findings[999].path, "helpers[999].shape");

    // What an attempt took is given back: the same limit does for a body that is read twice.
    const Bytes triangles = Bytes::Of(0u, kPlaced, kOurLayout, 0u, 0u, 1u, 0u, 500u, Bytes().Zeros(6000));
    const auto load = [](const Bytes& body, std::size_t bytes)
    { return LoadImageOf(FileOfVersion(kVersion).Chunk(19, body).data, false, {.bytes = bytes}); };
    EXPECT_TRUE(load(triangles, 9000)->scene.instanceLists[0].at(0)->IsTyped());
    const auto kept = load(Bytes(triangles).U8({0}), 9000);
    ASSERT_TRUE(kept->loaded);
    EXPECT_FALSE(kept->scene.instanceLists[0].at(0)->IsTyped());
    const auto refused = load(triangles, 3000);
    EXPECT_FALSE(refused->loaded);
    ASSERT_EQ(refused->report.findings.size(), 1u) << "no warning that the body was kept";
    EXPECT_EQ(refused->report.findings[0].code, TEV2_LOAD_CODE::LimitExceeded);
}

} // namespace
