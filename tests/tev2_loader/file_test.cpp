#include "tev2_loader/file.h"

#include "tests/support/sample_records.h"
#include "tests/support/sample_scenes.h"
#include "tev2_loader/names.h"

#include <cerrno>
#include <functional>

// Scenes by file name, and names as UTF-8.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(File, IsSavedAndLoadedByAUtf8Path)
{
    const ScratchFolder folder;
    const std::u8string utf8 = (folder.Folder() / u8"t\u00EAte \u9AA8.tv2").u8string();
    TEV2 scene;
    FillSoundScene(scene);
    const Status saved = SaveFile(scene, std::string(utf8.begin(), utf8.end()));
    ASSERT_TRUE(saved) << saved.Reason();
    EXPECT_EQ(ReadBytes(folder.Folder() / u8"t\u00EAte \u9AA8.tv2"), SoundImage());

    TEV2 loaded;
    TEV2_LOAD_REPORT report;
    const Status status = LoadFile(std::string(utf8.begin(), utf8.end()), loaded, {.report = &report});
    ASSERT_TRUE(status) << status.Reason();
    EXPECT_EQ(report.version, 1.16f);
    EXPECT_EQ(SceneImage(loaded), SoundImage());
    EXPECT_EQ(loaded.matrixHierarchy.nodes[2].worldMatrix.m[1][3], 3.0f) << "evaluated at its start";
    ASSERT_TRUE(LoadMemory(SoundImage().data(), SoundImage().size(), loaded, {.applyStartTime = false}));
    EXPECT_EQ(loaded.matrixHierarchy.nodes[2].worldMatrix.m[1][3], 0.0f);
}

TEST(File, SaysWhyItWasNotLoaded)
{
    const ScratchFolder folder;
    const std::string text = folder.Make("text.tv2", "no scene");
    const std::vector<std::uint8_t> image = SoundImage();
    const std::string sound = folder.Make("sound.tv2", std::string(image.begin(), image.end()));
    TEV2_LOAD_REPORT report;
    const struct
    {
        std::string path;
        LoadOptions options;
        std::string reason;
    } cases[] = {
        {folder.Path("none"), {}, Status::FromErrno(ENOENT).Reason()},
        {folder.Path(""), {}, Status::FromErrno(EISDIR).Reason()},
        {text, {}, "bad-magic at byte 0: expected the magic 0x54563201, found 0x73206f6e"},
        {sound, {.mostFileBytes = 100}, "larger than 100 bytes"},
        {sound, {.limits = {.nodes = 2}, .report = &report}, "limit-exceeded"},
    };
    for (const auto& item : cases)
    {
        TEV2 scene;
        scene.rigids.resize(1);
        const Status loaded = LoadFile(item.path, scene, item.options);
        EXPECT_FALSE(loaded);
        EXPECT_TRUE(loaded.Reason().starts_with(item.reason)) << loaded.Reason();
        EXPECT_TRUE(scene.rigids.empty()) << "cleared, also where there is no file";
    }
    ASSERT_FALSE(report.findings.empty());
    EXPECT_EQ(report.findings.back().code, TEV2_LOAD_CODE::LimitExceeded);
}

TEST(File, SaysWhyItWasNotSaved)
{
    const ScratchFolder folder;
    EXPECT_EQ(SaveFile(TEV2(), folder.Path("no/folder.tv2")).Reason(), Status::FromErrno(ENOENT).Reason());
    EXPECT_FALSE(SaveFile(TEV2(), ""));
}

TEST(File, NamesWhatItRefusesAndWhatItLeavesOut)
{
    const ScratchFolder folder;
    const std::string path = folder.Make("old.tv2", "old");
    TEV2 scene;
    scene.rigids.push_back(nullptr);
    scene.rigids.push_back(Filled<TEV2_RIGID>());
    TEV2_SAVE_REPORT report;
    EXPECT_TRUE(SaveFile(scene, folder.Path("whole.tv2"), &report));
    EXPECT_TRUE(report.refused.empty() && report.ignored.empty());
    const struct
    {
        std::function<void()> spoil;
        const char* reason;
    } cases[] = {
        {[&] { scene.rigids[1]->vertices->normals.pop_back(); },
         "rigids[1] \"Wall\", normals: not one for each vertex"},
        {[&]
         {
             scene.rigids[1] = Filled<TEV2_RIGID>();
             scene.rigids[1]->vertices->uvs.assign(65, std::vector<TEV2_VECTOR_2>(3));
         },
         "rigids[1] \"Wall\", uvs: more than can be read back"},
        {[&]
         {
             scene.rigids[1] = Filled<TEV2_RIGID>();
             scene.rigids[1]->subObjects[0].triangles[0][2] = 3;
         },
         "rigids[1] \"Wall\", subObjects[0].triangles[0]: expected below 3, found 3"},
        {[&]
         {
             auto material = Filled<TEV2_SHADER_MATERIAL>();
             material->maps[0] = nullptr;
             scene.rigids.clear();
             scene.materials.push_back(std::move(material));
         },
         "materials[0] \"Glass\", maps: missing"},
        {[&]
         {
             scene.materials[0] = Filled<TEV2_SHADER_MATERIAL>();
             static_cast<TEV2_SHADER_MATERIAL&>(*scene.materials[0]).maps[0]->Keep({1});
         },
         "materials[0] \"Glass\", maps: kept as bytes"},
        {[&]
         {
             scene.materials.clear();
             scene.helpers.push_back(Filled<TEV2_HELPER>());
             scene.helpers[0]->shape = static_cast<TEV2_HELPER_SHAPE>(2);
         },
         "helpers[0] \"Door\", shape: not among the choices"},
    };
    for (const auto& item : cases)
    {
        item.spoil();
        EXPECT_EQ(SaveFile(scene, path).Reason(), item.reason);
        EXPECT_EQ(SaveFile(scene, path, &report).Reason(), item.reason);
        EXPECT_EQ(report.refused, item.reason);
        EXPECT_EQ(ReadBytes(path), Bytes().U8({'o', 'l', 'd'}).data);
    }
    EXPECT_EQ(SaveFile(scene, folder.Path("no/folder.tv2"), &report).Reason(),
              Status::FromErrno(ENOENT).Reason());
    EXPECT_TRUE(report.refused.empty());
}

TEST(File, ReportsChangesOfObjectsThatAreKept)
{
    const ScratchFolder folder;
    TEV2 scene;
    const auto ignored = [&]
    {
        TEV2_SAVE_REPORT report;
        EXPECT_TRUE(SaveFile(scene, folder.Path("a.tv2"), &report)) << report.refused;
        return report.ignored;
    };
    using Paths = std::vector<std::string>;
    auto light = std::make_unique<TEV2_SPOT_LIGHT>();
    FillPlaced(*light, u"Sun");
    light->KeepAfterPlaced({1});
    scene.lights.push_back(std::move(light));
    scene.lights.push_back(TEV2_LIGHT::Create(9));
    scene.lights[1]->Keep({1});
    scene.instanceLists[3].push_back(TEV2_INSTANCE::Create(14));
    scene.instanceLists[3][0]->Keep({1});
    scene.weightedMeshes.push_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    scene.weightedMeshes[0]->Keep({1});
    scene.environment.environmentMap = TEV2_MATERIAL_MAP::MakeKept(0);
    scene.environment.environmentMap->Keep({1});
    scene.xrefs15.push_back(std::make_unique<TEV2_XREF<15>>()); // typed
    scene.xrefs15[0]->timeOffset = 2.0f;
    EXPECT_EQ(ignored(), Paths()) << "the fields of a placed object that was read are saved";

    scene.lights[0]->intensity = FloatTrack(1, 2);
    scene.lights[1]->name = Wide(u"t\u00EAte");
    scene.instanceLists[3][0]->source = 1;
    scene.weightedMeshes[0]->castsShadow = false;
    scene.environment.environmentMap->amount = FloatTrack(1, 2);
    EXPECT_EQ(ignored(), (Paths{"environment.environmentMap", "lights[0] \"Sun\"",
                                "lights[1] \"t\xC3\xAAte\"", "weightedMeshes[0]", "instanceLists[3][0]"}));
    scene.lights[0]->Forget();
    scene.weightedMeshes[0]->castsShadow = true;
    scene.weightedMeshes[0]->vertices->positions.resize(1);
    EXPECT_EQ(ignored(), (Paths{"environment.environmentMap", "lights[1] \"t\xC3\xAAte\"",
                                "weightedMeshes[0]", "instanceLists[3][0]"}));
}

TEST(Status, IsSuccessUntilItIsGivenAReason)
{
    EXPECT_TRUE(Status().Ok());
    EXPECT_TRUE(Status::FromErrno(0));
    EXPECT_FALSE(Status::Failure(""));
    EXPECT_EQ(Status::Failure("why").Reason(), "why");
}

TEST(Names, AreReadInBothFormsAndWrittenInOne)
{
    const std::string head = "t\xC3\xAAte";
    TEV2 scene;
    scene.matrixHierarchy.nodes.resize(3);
    scene.matrixHierarchy.nodes[0].name = Wide(u"other");
    scene.matrixHierarchy.nodes[1].name = Wide(u"t\u00EAte");
    ASSERT_TRUE(SetName(scene.matrixHierarchy.nodes[2], head));
    EXPECT_EQ(scene.matrixHierarchy.nodes[2].name, Wide(u"t\u00C3\u00AAte"));
    EXPECT_EQ(Name(scene.matrixHierarchy.nodes[2]), head);

    EXPECT_EQ(FindNode(scene, head), &scene.matrixHierarchy.nodes[1]);
    EXPECT_EQ(FindNode(scene, "none"), nullptr);
    for (const std::string& bad : {std::string("t\xEA"), std::string(70'000, 'x')})
    {
        EXPECT_FALSE(SetName(scene.matrixHierarchy.nodes[1], bad));
        EXPECT_EQ(Name(scene.matrixHierarchy.nodes[1]), head);
    }
}

} // namespace
