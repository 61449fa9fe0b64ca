// Which rigs are the same, and what happened to those that are not.

#include "tests/compare/rig_scenes.h"

#include <algorithm>

using namespace TEV2_LOADER;
using namespace tev2_compare;
using namespace tv2_tests;

namespace
{

using Texts = std::vector<std::string>;
using Rig = std::initializer_list<RigNode>;

struct RigCase
{
    const char* what;
    Rig left;
    Rig right;
    const char* differences; ///< with "; " between them
    bool fits;               ///< every node is animated
};

const Rig kSpine = {{"Hips", -1}, {"Spine", 0}, {"Head", 1}, {"Leg", 0}};
const RigCase kRigCases[] = {
    {"the same", kSpine, kSpine, "", true},
    {"added",
     kSpine,
     {{"Hips", -1}, {"Spine", 0}, {"Head", 1}, {"Leg", 0}, {"Tail", 0}, {"Tip", 4}},
     "added node object Tail >Hips +1",
     true},
    {"missing, with what is below",
     kSpine,
     {{"Hips", -1}, {"Leg", 0}},
     "missing node object Spine Hips> +1",
     false},
    {"several missing below one parent",
     kSpine,
     {{"Hips", -1}},
     "missing node object Spine Hips> x2 +1",
     false},
    {"moved with what is below",
     {{"A", -1}, {"B", -1}, {"C", 0}, {"D", 2}, {"E", 3}},
     {{"A", -1}, {"B", -1}, {"C", 1}, {"D", 2}, {"E", 3}},
     "moved node object C A>B +2",
     false},
    {"two moved together",
     {{"A", -1}, {"B", -1}, {"C", 0}, {"D", 0}},
     {{"A", -1}, {"B", -1}, {"C", 1}, {"D", 1}},
     "moved node object C A>B x2",
     false},
    {"below a parent with the same name",
     {{"R", -1}, {"R", 0}, {"T", 1}},
     {{"R", -1}, {"T", 0}},
     "missing node object R R>; moved node object T R/R>R",
     false},
    {"a node put between",
     kSpine,
     {{"Hips", -1}, {"Twist", 0}, {"Spine", 1}, {"Head", 2}, {"Leg", 0}},
     "moved node object Spine Hips>Twist +1; added node object Twist >Hips",
     false},
    {"parent and child changed places",
     {{"A", -1}, {"B", 0}},
     {{"B", -1}, {"A", 0}},
     "moved node object A >B +1; moved node object B A>",
     false},
    {"a leaf renamed, at the same place",
     kSpine,
     {{"Hips", -1}, {"Spine", 0}, {"Skull", 1}, {"Leg", 0}},
     "renamed node object Head Head>Skull",
     false},
    {"renamed, known by its child",
     kSpine,
     {{"Hips", -1}, {"Leg", 0}, {"Chest", 0}, {"Head", 2}},
     "renamed node object Spine Spine>Chest +1; reordered node object Leg >",
     false},
    {"other namespaces are one difference",
     {{"a:Hips", -1}, {"a:Spine", 0}, {"a:Head", 1}, {"Prop", -1}},
     {{"b:Hips", -1}, {"b:Spine", 0}, {"b:Head", 1}, {"Prop", -1}},
     "renamed node namespace a:Hips a:>b: x3",
     false},
    {"duplicates by path, then by order",
     {{"A", -1}, {"B", -1}, {"X", 0}, {"X", 1}, {"X", 1}},
     {{"A", -1}, {"B", -1}, {"X", 1}, {"X", 0}},
     "missing node object X B>; reordered node object X >",
     false},
    {"only the order",
     {{"A", -1}, {"B", -1}, {"C", -1}, {"D", -1}},
     {{"D", -1}, {"A", -1}, {"B", -1}, {"C", -1}},
     "reordered node object D >",
     true},
    {"parents after children",
     {{"B", 1}, {"A", -1}},
     {{"A", -1}, {"B", 0}},
     "reordered node object B >",
     true},
    {"a circle is cut above its first node", {{"A", 1}, {"B", 0}}, {{"A", -1}, {"B", 0}}, "", true},
    {"nothing on one side", kSpine, {}, "missing node object Hips > +3", false},
};

TEST(StructureTest, OneThingThatHappenedToNodesIsOneDifference)
{
    for (const RigCase& item : kRigCases)
    {
        TEV2 left;
        TEV2 right;
        AddRig(left, item.left);
        AddRig(right, item.right);
        const SceneMatch match(left, right);
        const auto differences = CompareStructure(left, right, match);
        std::string texts;
        for (const Difference& difference : differences)
            texts += (texts.empty() ? "" : "; ") + Short(difference);
        EXPECT_EQ(texts, item.differences) << item.what;
        EXPECT_EQ(Obstacles(differences).empty(), item.fits) << item.what;
    }
}

TEST(StructureTest, ClipFitsWhereOnlyNodesThatDoNotMoveAreDifferent)
{
    TEV2 clip;
    TEV2 rig;
    AddRig(clip, {{"Hips", -1}, {"Marker", 0}, {"Still", -1}, {"Moving", 2}});
    AddRig(rig, {{"Hips", -1}, {"Sill", -1}});
    auto& nodes = clip.matrixHierarchy.nodes;
    for (const std::size_t still : {1U, 2U, 3U})
        nodes[still].translation =
            ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({0, 0, static_cast<float>(still)});
    const auto fits = [&]
    {
        const SceneMatch match(clip, rig);
        return Obstacles(CompareStructure(clip, rig, match)).empty();
    };
    EXPECT_TRUE(fits());
    // what moves may be a user property, or a node below
    auto& property = nodes[3].properties.floatValues.emplace_back();
    property.track = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, 1.0f}, {1.0f, 2.0f}});
    EXPECT_FALSE(fits());
    nodes[3].properties.floatValues.clear();
    EXPECT_TRUE(fits());
    // a file in which nothing moves is a pose of all its nodes
    nodes[0].translation = nullptr;
    EXPECT_FALSE(fits());
}

struct ObjectCase
{
    const char* what;
    void (*change)(TEV2&);
    const char* difference;
};

void AddProperty(TEV2& scene, const char* name)
{
    ASSERT_TRUE(SetName(scene.matrixHierarchy.nodes[1].properties.intValues.emplace_back(), name));
}

const ObjectCase kObjectCases[] = {
    {"property of another type",
     [](TEV2& s)
     {
         s.matrixHierarchy.nodes[1].properties.floatValues.clear();
         AddProperty(s, "Blend");
     },
     "retyped node property Hips.Blend float>integer"},
    {"property missing", [](TEV2& s) { s.matrixHierarchy.nodes[1].properties.stringArrays.clear(); },
     "missing node property Hips.Quality text>"},
    {"property new", [](TEV2& s) { AddProperty(s, "Mood"); }, "added node property Hips.Mood >integer"},
    {"camera at another node", [](TEV2& s) { s.cameras[0]->value = 1; },
     "moved camera object Camera Camera>Hips"},
    {"camera in the world", [](TEV2& s) { s.cameras[0]->value = kNone; },
     "moved camera object Camera Camera>the world"},
    {"camera missing", [](TEV2& s) { s.cameras.clear(); }, "missing camera object Camera >"},
    {"lights new",
     [](TEV2& s)
     {
         for (const char16_t* name : {u"Sun", u"Moon"})
         {
             s.lights.push_back(TEV2_LIGHT::Create(0));
             s.lights.back()->name = Wide(name);
         }
     },
     "added light object Sun+Moon >"},
};

TEST(StructureTest, PropertiesAndObjectsByName)
{
    for (const ObjectCase& item : kObjectCases)
    {
        TEV2 left;
        TEV2 right;
        FillSoundScene(left);
        FillSoundScene(right);
        item.change(right);
        EXPECT_EQ(ShortStructure(left, right), Texts{item.difference}) << item.what;
    }
}

TEST(StructureTest, RootsOfExportsAreTheSameWhateverTheyAreCalled)
{
    TEV2 scenes[2];
    for (TEV2& scene : scenes)
    {
        const bool first = &scene == scenes;
        AddRig(scene, {{first ? "Scene" : "Exporter Inserted Root", -1}, {"Hips", 0}});
        scene.information.creatorText = Wide(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
        scene.matrixHierarchy.nodes[0].translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
    }
    EXPECT_EQ(ShortStructure(scenes[0], scenes[1]), Texts{"changed scene field .up axis +Z>+Y"});
    scenes[1].information.creatorText = Wide(u"Another program");
    EXPECT_EQ(ShortStructure(scenes[0], scenes[1]),
              (Texts{"changed scene field .up axis +Z>unknown",
                     "renamed node object Scene Scene>Exporter Inserted Root +1"}));
}

TEST(StructureTest, ParentsWithOneNameAreToldApartByTheirPaths)
{
    TEV2 scenes[2];
    AddRig(scenes[0], {{"Scene", -1}, {"Rig", 0}, {"Hips", 1}});
    AddRig(scenes[1], {{"Rig", -1}, {"Hips", 0}});
    for (TEV2& scene : scenes) // the roots of exports are the same node, and Rig is not
    {
        scene.information.creatorText = Wide(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
        scene.matrixHierarchy.nodes[0].translation = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({});
    }
    EXPECT_EQ(ShortStructure(scenes[0], scenes[1]),
              (Texts{"missing node object Rig Scene>", "moved node object Hips Scene/Rig>Rig"}));
}

TEST(StructureTest, BonesByTheNamesOfTheirNodes)
{
    TEV2 scenes[2];
    for (TEV2& scene : scenes)
    {
        AddRig(scene, {{"Hips", -1}, {"Spine", 0}, {"Head", 1}});
        auto mesh = std::make_unique<TEV2_WEIGHTED_MESH>();
        mesh->name = Wide(u"Body");
        mesh->skin->bones = {0, 1};
        scene.weightedMeshes.push_back(std::move(mesh));
    }
    EXPECT_EQ(ShortStructure(scenes[0], scenes[1]), Texts());
    scenes[1].weightedMeshes[0]->skin->bones = {1, 2};
    EXPECT_EQ(ShortStructure(scenes[0], scenes[1]),
              (Texts{"missing weighted mesh bone Body.Hips >", "added weighted mesh bone Body.Head >"}));
}

TEST(StructureTest, EverythingIsTheSameAsItself)
{
    TEV2 scenes[2];
    for (TEV2& scene : scenes)
        FillWithEverything(scene);
    EXPECT_EQ(ShortStructure(scenes[0], scenes[1]), Texts());
    const SceneMatch match(scenes[0], scenes[1]);
    for (const Difference& difference : CompareScenes(scenes[0], scenes[1], match, {}).differences)
        ADD_FAILURE() << Short(difference);
}

/// A scene of nodes that all have one name.
void FillWithOneName(TEV2& scene, std::uint32_t count, std::int32_t (*parent_of)(std::int32_t),
                     const char* name)
{
    auto& nodes = scene.matrixHierarchy.nodes;
    nodes.resize(count);
    for (std::uint32_t index = 0; index < count; ++index)
    {
        nodes[index].parentIndex = parent_of(static_cast<std::int32_t>(index));
        nodes[index].name = TEV2_WIDE_STRING::FromBytes(name);
    }
}

TEST(StructureTest, HundredThousandNodesOfOneName)
{
    // side by side, in one chain, in one circle: a second or two where every step is quick, hours where one is not
    std::int32_t (*const shapes[])(std::int32_t) = {[](std::int32_t) { return -1; },
                                                    [](std::int32_t node) { return node - 1; },
                                                    [](std::int32_t node) { return (node + 1) % 100'000; }};
    for (const auto shape : shapes)
    {
        TEV2 left;
        TEV2 right;
        FillWithOneName(left, 100'000, shape, "X");
        FillWithOneName(right, 100'000, shape, "X");
        EXPECT_EQ(ShortStructure(left, right), Texts());
        for (auto& node : right.matrixHierarchy.nodes)
            node.name = Wide(u"Y");
        EXPECT_FALSE(ShortStructure(left, right).empty());
    }
}

} // namespace
