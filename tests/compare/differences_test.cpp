// What differs over time, and how much; amounts follow from what the tests did to the scene.

#include "tests/compare/rig_scenes.h"

#include <cmath>
#include <limits>
#include <numbers>

using namespace TEV2_LOADER;
using namespace tev2_compare;
using namespace tv2_tests;

namespace
{

const std::initializer_list<RigNode> kArm = {{"Root", -1}, {"Upper", 0}, {"Lower", 1}, {"Hand", 2}};

/// A rig and a copy of it, which a test changes.
class Pair
{
public:
    TEV2 left;
    TEV2 right;

    explicit Pair(std::initializer_list<RigNode> nodes = kArm)
    {
        AddRig(left, nodes);
        AddRig(right, nodes);
    }

    TEV2_MATRIX_NODE& Node(std::size_t index) { return right.matrixHierarchy.nodes[index]; }

    Comparison Compare(const CompareOptions& options = {})
    {
        left.matrixHierarchy.LinkParents();
        right.matrixHierarchy.LinkParents();
        const SceneMatch match(left, right);
        return CompareScenes(left, right, match, options);
    }
};

TEV2_QUATERNION TurnAboutZ(double degrees)
{
    const double half = degrees * std::numbers::pi / 360.0;
    return {0.0f, 0.0f, static_cast<float>(std::sin(half)), static_cast<float>(std::cos(half))};
}

TEST(DifferencesTest, NodeMovedAtOneKeyIsTheOnlyOneThatIsListed)
{
    Pair pair;
    // at 0.5 s 3 mm off, straight down to nothing at both ends
    pair.Node(1).translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
        {{0.0f, {1, 0, 0}}, {0.5f, {1, 0.5f, 0.003f}}, {1.0f, {1, 1, 0}}});
    const Comparison comparison = pair.Compare();
    ASSERT_EQ(comparison.differences.size(), 1U);
    const Difference& difference = comparison.differences[0];
    EXPECT_EQ(Short(difference), "changed node pose Upper >");
    ASSERT_EQ(difference.deviations.size(), 1U);
    EXPECT_EQ(difference.deviations[0].unit, Unit::Millimetres);
    EXPECT_NEAR(difference.deviations[0].worst, 3.0, 1e-4);
    EXPECT_EQ(difference.deviations[0].worst_time, 0.5f);
    EXPECT_EQ(difference.deviations[0].first_time, 0.25f); // instants: keys, and the middles between them
    EXPECT_EQ(comparison.motion.followers, 2U);
    EXPECT_NEAR(comparison.motion.farthest.worst, 3.0, 1e-3);
    EXPECT_EQ(comparison.motion.instants.times.size(), 5U);
}

TEST(DifferencesTest, NodeThatIsTurnedTakesOthersAlong)
{
    Pair pair;
    pair.Node(2).rotation = ConstantTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(TurnAboutZ(0.5));
    const Comparison comparison = pair.Compare();
    ASSERT_EQ(comparison.differences.size(), 1U);
    const Difference& difference = comparison.differences[0];
    EXPECT_EQ(difference.name, "Lower");
    ASSERT_EQ(difference.deviations.size(), 1U);
    EXPECT_EQ(difference.deviations[0].unit, Unit::Degrees);
    EXPECT_NEAR(difference.deviations[0].worst, 0.5, 1e-4);
    // the hand is sqrt(3 * 3 + y * y) metres from there, y being at most 1
    EXPECT_EQ(comparison.motion.farthest_follower, "Hand");
    EXPECT_NEAR(comparison.motion.farthest.worst,
                2000.0 * std::sqrt(10.0) * std::sin(0.25 * std::numbers::pi / 180.0), 0.01);
}

TEST(DifferencesTest, AmountsAreThoseOfTheWorldWhateverTheParentsScale)
{
    Pair pair;
    for (TEV2* const scene : {&pair.left, &pair.right})
        scene->matrixHierarchy.nodes[0].scale =
            ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({100.0f, 100.0f, 100.0f});
    pair.Node(1).translation =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1.001f, 0, 0}}, {1.0f, {1.001f, 1, 0}}});
    pair.Node(3).scale = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1.0f, 1.25f, 1.0f});
    const auto differences = pair.Compare().differences;
    ASSERT_EQ(differences.size(), 2U);
    EXPECT_EQ(differences[0].name, "Upper"); // 100 mm of 0.01 weigh more than 20 % of 0.01
    EXPECT_NEAR(differences[0].deviations[0].worst, 100.0, 0.01);
    EXPECT_EQ(differences[1].name, "Hand");
    EXPECT_EQ(differences[1].deviations[0].unit, Unit::Percent);
    EXPECT_NEAR(differences[1].deviations[0].worst, 20.0, 1e-4);
}

TEST(DifferencesTest, SmallDeviationsThatAddUpAreListedWhereTheyPassTheTolerance)
{
    Pair pair;
    for (const std::size_t node :
         {1U, 2U, 3U}) // 0.007 mm each; two of them are more than 0.01 mm and the rounding at 3 m
        pair.Node(node).translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
            {{0.0f, {static_cast<float>(node), 0, 7e-6f}}, {1.0f, {static_cast<float>(node), 1, 7e-6f}}});
    const Comparison comparison = pair.Compare();
    ASSERT_EQ(comparison.differences.size(), 1U);
    EXPECT_EQ(Short(comparison.differences[0]), "changed node world pose Lower >");
    EXPECT_NEAR(comparison.differences[0].deviations[0].worst, 0.014, 5e-4);
    EXPECT_EQ(comparison.motion.farthest_follower, "Hand");
    EXPECT_TRUE(pair.Compare({.tolerance = {.millimetres = 0.1}}).differences.empty());
}

TEST(DifferencesTest, TheSameMotionWithOtherKeysIsEqual)
{
    Pair pair;
    for (std::size_t node = 0; node < kArm.size(); ++node)
    {
        auto track = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
        for (int key = 0; key <= 30; ++key)
            track->Append(static_cast<float>(key) / 30.0f,
                          {static_cast<float>(node), static_cast<float>(key) / 30.0f, 0});
        pair.Node(node).translation = std::move(track);
        pair.Node(node).rotation = MakeTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(
            {{0.0f, {0, 0, 0, 1}}, {1.0f, {0, 0, 0, -1}}}); // the other sign is the same rotation
        pair.Node(node).rotation->MakeContinuous();
    }
    EXPECT_TRUE(pair.Compare().differences.empty());
}

TEST(DifferencesTest, OnlyTheTimeThatBothHaveIsCompared)
{
    Pair pair;
    pair.right.environment.timeRange = {0.0f, 0.5f};
    pair.Node(1).translation =
        MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1, 0, 0}}, {0.5f, {1, 0.5f, 0}}});
    Comparison comparison = pair.Compare();
    ASSERT_EQ(comparison.differences.size(), 1U);
    EXPECT_EQ(Short(comparison.differences[0]), "changed scene field .time range 0 to 1 s>0 to 0.5 s");
    EXPECT_EQ(comparison.differences[0].left_numbers, (std::vector<double>{0.0, 1.0}));
    EXPECT_EQ(comparison.differences[0].right_numbers, (std::vector<double>{0.0, 0.5}));
    EXPECT_EQ(comparison.span.end, 0.5f);
    pair.right.environment.timeRange = {5.0f, 6.0f};
    comparison = pair.Compare();
    EXPECT_FALSE(comparison.overlap);
    EXPECT_EQ(comparison.differences.size(), 1U);
}

TEST(DifferencesTest, NotANumberIsEqualToItselfAndToNothingElse)
{
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    Pair pair;
    const auto spoiled = [&] {
        return MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, {1, kNaN, 0}}, {1.0f, {1, 1, 0}}});
    };
    pair.Node(1).translation = spoiled();
    const Comparison comparison = pair.Compare();
    ASSERT_EQ(comparison.differences.size(), 1U);
    EXPECT_EQ(comparison.differences[0].name, "Upper");
    EXPECT_TRUE(std::isinf(comparison.differences[0].deviations[0].worst));
    pair.left.matrixHierarchy.nodes[1].translation = spoiled();
    EXPECT_TRUE(pair.Compare().differences.empty());
}

struct ValueCase
{
    const char* what;
    void (*change)(TEV2&);
    std::string difference;
    double amount; ///< 0: none
};

TEV2_EXTENDED_PROPERTIES& HipsProperties(TEV2& scene)
{
    return scene.matrixHierarchy.nodes[1].properties;
}

const ValueCase kValueCases[] = {
    {"texts", [](TEV2& s) { HipsProperties(s).stringArrays[0].strings[1] = Wide(u"Low"); },
     "changed node property Hips.Quality \"High\">\"Low\"", 0.0},
    {"integers are exact",
     [](TEV2& s) {
         HipsProperties(s).intValues[0].track = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 1}, {0.5f, -8}});
     },
     "changed node property Hips.Visible -7>-8", 0.0},
    {"floats in percent of the largest",
     [](TEV2& s)
     { HipsProperties(s).floatValues[0].track = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(0.2f); },
     "changed node property Hips.Blend 0.25>0.2", 20.0},
    {"vectors",
     [](TEV2& s) {
         HipsProperties(s).vector3Values[0].track = ConstantTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 4});
     },
     "changed node property Hips.Offset 1, 2, 3>1, 2, 4", 25.0},
    {"no value", [](TEV2& s) { HipsProperties(s).vector4Values[0].track = nullptr; },
     "changed node property Hips.Tint there>absent", 0.0},
    {"lens", [](TEV2& s) { s.cameras[0]->fieldOfView = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(0.5f); },
     "changed camera field Camera.fieldOfView 40.107>28.6479", 0.2 * 180.0 / std::numbers::pi},
    {"distance",
     [](TEV2& s) { s.cameras[0]->distance = ConstantTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(4.0f); },
     "changed camera field Camera.distance 5>4", 1000.0},
    {"cut to another camera",
     [](TEV2& s) {
         s.cameraMan.cameraIndex = MakeTrack<TEV2_ANIMATABLE_INT32_RLE>({{0.0f, 0}, {0.75f, -1}, {1.0f, 0}});
     },
     "changed camera switcher object  no camera>\"Camera\"", 0.0},
    {"shape of the picture", [](TEV2& s) { s.cameras[0]->inverseAspect = 0.5f; },
     "changed camera field Camera.inverseAspect 0.75>0.5", 0.0},
    {"text of a node", [](TEV2& s) { s.matrixHierarchy.nodes[1].userText = Wide(u"x"); },
     "changed node field Hips.user text \"\">\"x\"", 0.0},
    {"ambient light", [](TEV2& s) { s.ambientLight = std::make_unique<TEV2_AMBIENT_LIGHT>(); },
     "added ambient light object  >", 0.0},
};

TEST(DifferencesTest, ValuesOfPropertiesCamerasAndTheScene)
{
    for (const ValueCase& item : kValueCases)
    {
        TEV2 left;
        TEV2 right;
        FillSoundScene(left);
        FillSoundScene(right);
        item.change(right);
        const SceneMatch match(left, right);
        const auto differences = CompareScenes(left, right, match, {}).differences;
        ASSERT_EQ(differences.size(), 1U) << item.what;
        EXPECT_EQ(Short(differences[0]), item.difference) << item.what;
        if (item.amount > 0.0)
        {
            EXPECT_NEAR(differences[0].deviations.at(0).worst, item.amount, item.amount * 1e-5) << item.what;
        }
    }
}

TEST(DifferencesTest, MeshesByTheirElementsAndIndicesByWhatTheyLeadTo)
{
    TEV2 scenes[2];
    for (TEV2& scene : scenes)
    {
        for (const char16_t* name : {u"Wood", u"Metal"})
        {
            scene.materials.push_back(std::make_unique<TEV2_STANDARD_MATERIAL>());
            scene.materials.back()->name = Wide(name);
        }
        auto mesh = std::make_unique<TEV2_RIGID>();
        mesh->name = Wide(u"Box");
        mesh->vertices->positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        mesh->subObjects.emplace_back().material = 0;
        mesh->subObjects[0].triangles = {{0, 1, 2}};
        scene.rigids.push_back(std::move(mesh));
    }
    const auto compare = [&]
    {
        std::vector<std::string> texts;
        const SceneMatch match(scenes[0], scenes[1]);
        for (const Difference& difference : CompareScenes(scenes[0], scenes[1], match, {}).differences)
        {
            texts.push_back(Short(difference));
            if (difference.elements > 0)
                texts.back() +=
                    std::to_string(difference.differing) + "/" + std::to_string(difference.elements);
        }
        return texts;
    };
    std::swap(scenes[1].materials[0], scenes[1].materials[1]);
    EXPECT_EQ(compare(), (std::vector<std::string>{
                             "changed rigid field Box.subObjects[0].material \"Wood\">\"Metal\""}));
    scenes[1].rigids[0]->subObjects[0].material = 1;
    EXPECT_EQ(compare(), std::vector<std::string>());
    scenes[1].rigids[0]->vertices->positions[2].y = 1.002f;
    EXPECT_EQ(compare(), (std::vector<std::string>{"changed rigid field Box.vertices.positions >1/3"}));
    scenes[1].rigids[0]->vertices->positions.pop_back();
    EXPECT_EQ(compare(),
              (std::vector<std::string>{"changed rigid field Box.vertices.positions 3 elements>2 elements"}));
    scenes[1].rigids[0]->Keep({1, 2, 3});
    EXPECT_EQ(compare(),
              (std::vector<std::string>{"retyped rigid field Box.body fields>bytes of another layout"}));
    scenes[0].rigids[0]->Keep({1, 2, 4});
    EXPECT_EQ(compare(), (std::vector<std::string>{"changed rigid field Box.body 3 bytes>other bytes"}));
}

} // namespace
