#include "tev2_loader/up_axis.h"

#include "tests/support/sample_scenes.h"

#include <functional>

// Which way is up, of scenes as the exporter makes them and of others.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

constexpr TEV2_QUATERNION kNone{0.0f, 0.0f, 0.0f, 1.0f};
constexpr TEV2_QUATERNION kHalfTurn{0.0f, 1.0f, 0.0f, 0.0f};

struct Case
{
    const char* what;
    std::u16string root;
    TEV2_QUATERNION rotation;
    TEV2_UP_AXIS axis;
    std::function<void(TEV2&)> change = [](TEV2&) {};
};

void Fill(TEV2& scene, const Case& item)
{
    scene.information.creatorText = Wide(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
    TEV2_MATRIX_NODE& root = scene.matrixHierarchy.nodes.emplace_back();
    root.name = Wide(item.root);
    root.translation = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({-0.0f, 0.0f, -0.0f}, {0.0f, 0.0f, 0.0f});
    root.rotation = SampleTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(item.rotation, -item.rotation);
    scene.matrixHierarchy.nodes.emplace_back().parentIndex = 0;
    item.change(scene);
}

TEST(UpAxis, FollowsFromTheFirstNodeOfAnExport)
{
    const std::u16string inserted = u"Exporter Inserted Root";
    const Case cases[] = {
        {"a selection", inserted, kNone, TEV2_UP_AXIS::PlusY},
        {"a selection, turned", inserted, kHalfTurn, TEV2_UP_AXIS::PlusY},
        {"the whole scene", u"Scene", kNone, TEV2_UP_AXIS::PlusZ},
        {"the whole scene, turned", u"Scene", kHalfTurn, TEV2_UP_AXIS::MinusZ},
        {"another root, turned about X", u"Scene", {1.0f, 0.0f, 0.0f, 0.0f}, TEV2_UP_AXIS::Unknown},
        {"another program", u"Scene", kNone, TEV2_UP_AXIS::Unknown,
         [](TEV2& scene) { scene.information.creatorText = Wide(u"NATIVE WIN32"); }},
        {"converted from glTF",
         u"Scene",
         {1.0f, 0.0f, 0.0f, 0.0f},
         TEV2_UP_AXIS::PlusY,
         [](TEV2& scene) { scene.information.creatorText = Wide(u"Tev2 glTF Converter v1"); }},
        {"converted, without a node", u"", kNone, TEV2_UP_AXIS::PlusY,
         [](TEV2& scene)
         {
             scene.information.creatorText = Wide(u"Tev2 glTF Converter v1");
             scene.matrixHierarchy.nodes.clear();
         }},
        {"a root elsewhere", u"Scene", kNone, TEV2_UP_AXIS::Unknown,
         [](TEV2& scene)
         {
             scene.matrixHierarchy.nodes[0].translation =
                 SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({}, {0, 0, 0.5f});
         }},
        {"a root that starts to turn", inserted, kNone, TEV2_UP_AXIS::Unknown,
         [](TEV2& scene)
         {
             scene.matrixHierarchy.nodes[0].rotation =
                 SampleTrack<TEV2_ANIMATABLE_QUATERNION_SLERP>(kNone, kHalfTurn);
         }},
        {"a root without a rotation", u"Scene", kNone, TEV2_UP_AXIS::Unknown,
         [](TEV2& scene) { scene.matrixHierarchy.nodes[0].rotation.reset(); }},
        {"a scaled root", u"Scene", kNone, TEV2_UP_AXIS::Unknown,
         [](TEV2& scene)
         {
             scene.matrixHierarchy.nodes[0].scale =
                 SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 1, 1}, {1, 1, 1});
         }},
        {"no node", u"", kNone, TEV2_UP_AXIS::Unknown,
         [](TEV2& scene) { scene.matrixHierarchy.nodes.clear(); }},
    };
    for (const Case& item : cases)
    {
        TEV2 scene;
        Fill(scene, item);
        EXPECT_EQ(UpAxisName(UpAxis(scene)), std::string(UpAxisName(item.axis))) << item.what;
    }
}

} // namespace
