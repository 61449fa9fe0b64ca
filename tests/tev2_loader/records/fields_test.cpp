#include "tests/support/record_schema.h"
#include "tests/support/records.h"
#include "tev2_loader/array_length_helper.h"
#include "tev2_loader/tev2.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <tuple>
#include <type_traits>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using Lines = std::vector<std::string>;

TEST(Fields, CountInTheResultsOfSaveAndLoad)
{
    struct Case
    {
        const char* record;
        Lines counted;
        Lines expected;
    };
    const Lines placed = {"name", "secondText", "thirdText", "value", "properties", "bounds Save"};
    Lines camera = placed;
    camera.insert(camera.end(), {"inverseAspect Save", "distance Save Load", "fieldOfView Save Load",
                                 "secondaryRange Save Load", "clipRange Save Load", "effects Save Load"});
    Lines lengths = {"count Save"};
    lengths.insert(lengths.end(), TEV2_ARRAY_LENGTH_HELPER::kCounts, "counts Save");
    const Lines track = {"m_current_key Save", "m_fraction Save", "m_times Save", "m_values Save"};
    const Case cases[] = {
        {"information", RecordSchema::Of<TEV2_INF>().counted, {"version", "creatorText", "infoText"}},
        {"array lengths", RecordSchema::Of<TEV2_ARRAY_LENGTH_HELPER>().counted, lengths},
        {"environment",
         RecordSchema::Of<TEV2_ENVIRONMENT>().counted,
         {"timeRange Save", "environmentColour Save Load", "environmentMap Save Load", "reserved"}},
        {"entity", RecordSchema::Of<TEV2_ENTITY>().counted, {"name"}},
        {"placed object", RecordSchema::Of<TEV2_POSITIONAL_OBJECT>().counted, placed},
        {"lit object", RecordSchema::Of<TEV2_LIT_OBJECT>().counted, {"lights Save"}},
        {"camera", RecordSchema::Of<TEV2_CAMERA>().counted, camera},
        {"motion blur",
         RecordSchema::Of<TEV2_CAMERA_MOTION_BLUR_EFFECT>().counted,
         {"layout Save Load", "shutterTime Save Load"}},
        {"depth of field",
         RecordSchema::Of<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>().counted,
         {"layout Save Load", "focusDistance Save Load", "fNumber Save Load"}},
        {"camera switcher", RecordSchema::Of<TEV2_CAMERA_MAN>().counted, {"cameraIndex Save Load"}},
        {"hierarchy", RecordSchema::Of<TEV2_MATRIX_HIERARCHY>().counted, {"nodes Save"}},
        {"node",
         RecordSchema::Of<TEV2_MATRIX_NODE>().counted,
         {"name", "parentIndex Save", "translation Save Load", "rotation Save Load", "scale Save Load",
          "worldMatrix", "userText", "properties Load"}},
        {"properties",
         RecordSchema::Of<TEV2_EXTENDED_PROPERTIES>().counted,
         {"stringArrays Save Load", "intValues Save Load", "floatValues Save Load", "vector3Values Save Load",
          "vector4Values Save Load"}},
        {"texts", RecordSchema::Of<TEV2_NAMED_STRING_ARRAY>().counted, {"name", "strings Save Load"}},
        {"named value",
         RecordSchema::Of<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_INT32>>().counted,
         {"name", "track Save Load"}},
        {"track of numbers", RecordSchema::Of<TEV2_ANIMATABLE_FLOAT32_LINEAR>().counted, track},
        {"track of values", RecordSchema::Of<TEV2_ANIMATABLE_COLOUR_LINEAR>().counted, track},
    };
    for (const Case& item : cases)
        EXPECT_EQ(item.counted, item.expected) << item.record;
}

/// Whether all fields of a record count in both results, but for its texts and those of a placed object.
template <typename Record>
void ExpectAllCount()
{
    const Lines never = {"name",        "secondText", "thirdText", "value",    "properties", "bounds Save",
                         "lights Save", "shader",     "technique", "fileName", "objectName"};
    for (const std::string& line : RecordSchema::Of(Record()).counted)
        EXPECT_TRUE(line.ends_with(" Save Load") || std::ranges::find(never, line) != never.end())
            << line << " of chunk " << Record().GetChunkId();
}

TEST(Fields, OfTypedBodiesCountInBothResults)
{
    [&]<typename... Records>(std::type_identity<std::tuple<Records...>>) {
        (ExpectAllCount<Records>(), ...);
    }(std::type_identity<
        std::tuple<TEV2_AMBIENT_LIGHT, TEV2_GLOBAL_LIGHT_TINT, TEV2_POINT_LIGHT, TEV2_DIRECTIONAL_LIGHT,
                   TEV2_SPOT_LIGHT, TEV2_STANDARD_MATERIAL, TEV2_SHADER_MATERIAL, TEV2_RIGID, TEV2_ANIM_MESH,
                   TEV2_MORPH_MESH, TEV2_WEIGHTED_MESH, TEV2_BEZIER_SPLINE_OBJECT, TEV2_HELPER, TEV2_INSTANCE,
                   TEV2_GEOM_INSTANCE, TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS,
                   TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS, TEV2_XREF<15>, TEV2_XREF<20>, TEV2_XREF_OBJECT,
                   TEV2_XREF_SPEEDTREE>>());
}

TEST(Fields, TakeAtLeastTheirSmallestLayout)
{
    EXPECT_EQ(LeastSize<TEV2_MATRIX_NODE>(), 36u); // from 1.06 to 1.14: no matrix any more, no scale yet
    EXPECT_EQ(LeastSize<TEV2_NAMED_STRING_ARRAY>(), 6u);
    EXPECT_EQ(LeastSize<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>>(), 6u);
}

std::string NameOf(const TEV2_LIST& list)
{
    return list.label;
}

std::string NameOf(const TEV2_INSTANCE_LIST& list)
{
    return std::to_string(list.index);
}

template <int TEV2_LIST::*kPlace>
std::string Order()
{
    std::string order;
    const TEV2 scene;
    VisitListsBy<kPlace>(scene, [&order](const auto& list, const auto&) { order += NameOf(list) + " "; });
    return order;
}

TEST(SceneLists, StandInTheirFourOrders)
{
    EXPECT_EQ(
        Order<&TEV2_LIST::save>(),
        "information environment globalLightTint ambientLight cameraMan lights cameras rigids animMeshes "
        "morphMeshes weightedMeshes bezierSplines helpers speedTreeReferences matrixHierarchy materials "
        "3 2 5 0 4 6 1 xrefs15 xrefs20 xrefObjects 8 ");
    EXPECT_EQ(Order<&TEV2_LIST::count>(),
              "lights cameras rigids animMeshes morphMeshes weightedMeshes bezierSplines helpers materials "
              "3 2 5 0 4 6 1 7 xrefs15 xrefs20 xrefObjects 8 speedTreeReferences 9 ");
    const std::string first = "matrixHierarchy environment ambientLight globalLightTint lights ";
    const std::string last = "animMeshes morphMeshes weightedMeshes bezierSplines materials "
                             "speedTreeReferences 9 3 5 0 4 6 1 7 8 xrefs15 xrefs20 cameraMan ";
    EXPECT_EQ(Order<&TEV2_LIST::update>(), first + "cameras rigids " + last);
    EXPECT_EQ(Order<&TEV2_LIST::setTime>(), first + "rigids cameras " + last);
}

TEST(SceneLists, AreReadByTheirChunks)
{
    std::string typed;
    const TEV2 scene;
    VisitLists(scene,
               [&typed](const TEV2_LIST& list, const auto&)
               {
                   if (list.reading != TEV2_READING::InPlace)
                       typed += std::string(list.label) + " ";
                   EXPECT_EQ(ChunkTitle(list.kind), list.kind.title);
               });
    EXPECT_EQ(typed.substr(0, typed.find("instance")), "ambientLight lights materials ");
    for (std::uint32_t id = 0; id < 24; ++id)
    {
        ASSERT_NE(FindChunkKind(id), nullptr) << id;
        EXPECT_EQ(FindChunkKind(id)->number, id);
    }
    EXPECT_EQ(FindChunkKind(24), nullptr);
    EXPECT_EQ(ChunkTitle(24), "unknown chunk 24");
    for (std::uint32_t kind = 0; kind < std::size(kTrackKinds); ++kind)
        EXPECT_EQ(kTrackKinds[kind].number, kind);
}

} // namespace
