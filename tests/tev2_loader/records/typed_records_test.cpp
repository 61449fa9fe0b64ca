#include "tests/support/sample_records.h"

#include "tests/support/records.h"
#include "tests/support/tracks.h"

#include <algorithm>

// Lights, maps, materials, splines, helpers, instances and references: their bytes, what they are as constructed, and
// which of their tracks move.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// What a record writes as constructed, and filled: first what does not move with time, then what does.
struct Layout
{
    Bytes constructed;
    Bytes still;
    Bytes moving;
};

/// The bytes with every sample track put to a place between its keys.
Bytes At(Bytes bytes, float fraction)
{
    const Bytes cursor = Bytes().U32(0).F32({0.0f}).U32(2).F32({0.5f, 2.5f}); // of every sample track
    auto& data = bytes.data;
    for (auto found = data.begin();
         (found = std::search(found, data.end(), cursor.data.begin(), cursor.data.end())) != data.end();
         ++found)
        std::memcpy(&*found + 4, &fraction, sizeof fraction);
    return bytes;
}

template <typename Record>
void ExpectTyped(const Record& record, const Bytes& bytes)
{
    EXPECT_EQ(SavedBytes(record), bytes.data);
    Record loaded;
    Fill(loaded); // whatever it held
    EXPECT_EQ(LoadedBytes(loaded, bytes, kVersion), bytes.data.size());
    EXPECT_TRUE(loaded.IsTyped());
    EXPECT_EQ(SavedBytes(loaded), bytes.data);
}

template <typename Record>
void Expect(const char* what, const Layout& layout)
{
    SCOPED_TRACE(what);
    ExpectTyped(Record(), layout.constructed);
    Record record;
    Fill(record);
    ExpectTyped(record, Bytes::Of(layout.still, layout.moving));
    record.SetTime(1.0f);
    EXPECT_EQ(SavedBytes(record), Bytes::Of(layout.still, At(layout.moving, 0.25f)).data);
    record.Update(0.5f);
    EXPECT_EQ(SavedBytes(record), Bytes::Of(layout.still, At(layout.moving, 0.5f)).data);
}

const Bytes kEmptyPlaced = Bytes::Of(u"", u"", u"", 0u, Bytes().Zeros(20), 0u);
const Bytes kBox = SampleTrackBytes(11, Bytes().F32({0, 0, 0, 1, 1, 1, 1, 1, 1, 2, 2, 2}));

/// The part of a placed object that does not move: texts, node and properties.
Bytes Placed(std::u16string_view name)
{
    return Bytes::Of(Bytes().Text(name), u"b", u"c", 1u, 0u, 0u, 1u, u"f", FloatTrackBytes(7, 8), 0u, 0u);
}

Bytes Vector3Bytes(float first, float last)
{
    return SampleTrackBytes(3, Bytes().F32({first, 0, 0, last, 0, 0}));
}

/// An image behind its type.
Bytes Image()
{
    const Bytes rectangle = SampleTrackBytes(7, Bytes().F32({0, 0, 1, 1, 0, 0, 0.5f, 1}));
    const Bytes params = Bytes::Of(u"a/b.png", 1u, 3u, 4u, 1u, 5u, 1u, 1u, rectangle);
    const Bytes offset = SampleTrackBytes(4, Bytes().F32({0.1f, 0.2f, 0.3f, 0.4f}));
    const Bytes tiling = SampleTrackBytes(4, Bytes().F32({5, 6, 7, 8}));
    const Bytes coordinates = Bytes::Of(1u, 2u, 1u, 3u, offset, tiling, FloatTrackBytes(1.5f, 1.75f));
    return Bytes::Of(u"image", FloatTrackBytes(0.25f, 0.5f), params, coordinates, 1u, 0.125f, 24.0f, 2u);
}

Bytes NormalMap()
{
    return Bytes::Of(u"bumps", FloatTrackBytes(0.75f, 1), 2u, 1u, 0u, 1u, 1u, 0u, Image());
}

Layout Light(std::u16string_view name, std::size_t own_tracks, const Bytes& own)
{
    const Bytes object = Bytes::Of(ColourTrackBytes(0.3f, 0.4f), FloatTrackBytes(0.5f, 0.6f), 1u);
    const Bytes atmosphere = Bytes::Of(1u, FloatTrackBytes(0.1f, 0.2f), FloatTrackBytes(0.3f, 0.4f));
    const Bytes map = Bytes::Of(1u, 512u, FloatTrackBytes(0.01f, 0.02f), FloatTrackBytes(3, 4));
    const Bytes shadow = Bytes::Of(1u, 1u, object, atmosphere, map);
    const Bytes max =
        Bytes::Of(1u, FloatTrackBytes(0.1f, 0.2f), FloatTrackBytes(0.3f, 0.4f), 0u, 1u, 1u, 2u,
                  FloatTrackBytes(5, 6), RangeTrackBytes(1, 2), RangeTrackBytes(30, 40), 1u, 0u, Image());
    const Bytes light = Bytes::Of(kBox, kOurLayout, ColourTrackBytes(0.7f, 0.8f), FloatTrackBytes(100, 200),
                                  SampleTrackBytes(8, Bytes().U32({1, 0})), shadow, max);
    return {Bytes::Of(kEmptyPlaced, kOurLayout, Bytes().Zeros(5 * 4 + own_tracks * 4)), Placed(name),
            Bytes::Of(light, own)};
}

TEST(TypedRecords, OfLights)
{
    Expect<TEV2_AMBIENT_LIGHT>(
        "ambient", {Bytes::Of(kOurLayout, 0u), Bytes::Of(kOurLayout), ColourTrackBytes(0.1f, 0.2f)});
    Expect<TEV2_GLOBAL_LIGHT_TINT>(
        "tint", {Bytes::Of(kOurLayout, 0u), Bytes::Of(kOurLayout), ColourTrackBytes(1, 2)});
    Expect<TEV2_POINT_LIGHT>("point", Light(u"Bulb", 1, FloatTrackBytes(9, 10)));
    Expect<TEV2_DIRECTIONAL_LIGHT>("directional", Light(u"Sun", 1, RangeTrackBytes(11, 12)));
    Expect<TEV2_SPOT_LIGHT>(
        "spot", Light(u"Spot", 2, Bytes::Of(FloatTrackBytes(9, 10), RangeTrackBytes(0.2f, 0.4f))));
}

TEST(TypedRecords, OfPartsOfLightsAsConstructed)
{
    ExpectStoredAs(TEV2_LIGHT_SHADOW_PARAMS(), Bytes().Zeros(6 * 4));
    ExpectStoredAs(TEV2_LIGHT_OBJECT_SHADOW_PARAMS(), Bytes().Zeros(3 * 4));
    ExpectStoredAs(TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS(), Bytes().Zeros(2 * 4));
    ExpectStoredAs(TEV2_LIGHT_SHADOW_MAP_PARAMS(), Bytes().U32({1024, 0, 0}));
    ExpectStoredAs(MAX_ATTENUATION(), Bytes().U32({0, 0}));
    ExpectStoredAs(TEV2_MAX_LIGHT_PARAMS(), Bytes().U32({0, 0, 1, 1, 0, 0, 0, 0, 0, 0}));
}

TEST(TypedRecords, OfMapsAndTheirParts)
{
    const Bytes no_image = Bytes::Of(u"", 0u, u"", Bytes().Zeros(6 * 4 + 7 * 4), 0u);
    Expect<TEV2_BITMAP_MATERIAL_MAP>("image", {no_image, {}, Image()});
    Expect<TEV2_NORMAL_MATERIAL_MAP>("normals", {Bytes::Of(u"", 0u, Bytes().Zeros(5 * 4)), {}, NormalMap()});
    ExpectStoredAs(TEV2_BITMAP_CROP_PLACE(), Bytes().U32({0, 0}));
    ExpectStoredAs(TEV2_BITMAP_MATERIAL_MAP_BITMAP_PARAMS(), Bytes::Of(u"", Bytes().Zeros(6 * 4)));
    ExpectStoredAs(TEV2_BITMAP_MATERIAL_MAP_COORDINATES(), Bytes().Zeros(7 * 4));
    ExpectStoredAs(TEV2_BITMAP_MATERIAL_MAP_TIME(), Bytes::Of(0.0f, 1.0f, 0u));
    ExpectStoredAs(TEV2_UV_MATERIAL_WRAP_MODE(), Bytes().U32({0, 0}));
    TEV2_NORMAL_CHANNEL_DIRECTION direction;
    direction.greenDown = true;
    ExpectStoredAs(direction, Bytes().U32({0, 1, 0}));
}

TEST(TypedRecords, OfMaterials)
{
    const Bytes colours = Bytes::Of(ColourTrackBytes(1, 2), ColourTrackBytes(3, 4), ColourTrackBytes(5, 6),
                                    ColourTrackBytes(7, 8));
    const Bytes numbers =
        Bytes::Of(FloatTrackBytes(0.1f, 0.2f), FloatTrackBytes(0.3f, 0.4f), FloatTrackBytes(0.5f, 0.6f));
    Expect<TEV2_STANDARD_MATERIAL>("standard",
                                   {Bytes::Of(u"", kOurLayout, 0u, Bytes().Zeros(9 * 4)),
                                    Bytes::Of(u"Skin", kOurLayout, 1u, 2u),
                                    Bytes::Of(colours, numbers, 2u, 11u, 0u, Image(), 7u, 1u, NormalMap())});
    const Bytes texts = Bytes::Of(u"glass.fx", u"clear", 1u, u"s", u"text");
    const Bytes scalars = Bytes::Of(1u, u"i", SampleTrackBytes(8, Bytes().U32({3, 0xFFFFFFFCu})), 1u, u"f",
                                    FloatTrackBytes(1, 2));
    const Bytes vectors = Bytes::Of(1u, u"v3", SampleTrackBytes(3, Bytes().F32({1, 2, 3, 4, 5, 6})), 1u,
                                    u"v4", SampleTrackBytes(9, Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8})));
    Expect<TEV2_SHADER_MATERIAL>(
        "shader", {Bytes::Of(u"", kOurLayout, 0u, u"", u"", Bytes().Zeros(7 * 4)),
                   Bytes::Of(u"Glass", kOurLayout, 1u, texts),
                   Bytes::Of(scalars, vectors, 1u, u"l", 2u, 2u, 0u, Image(), 1u, NormalMap())});
    ExpectStoredAs(TEV2_SHADER_STRING_PARAM(), Bytes::Of(u"", u""));
    ExpectStoredAs(TEV2_SHADER_LIGHT_PARAM(), Bytes::Of(u"", 0xFFFFFFFFu));
}

TEST(TypedRecords, OfSplinesAndHelpers)
{
    const Bytes rigid = Bytes::Of(0u, 1u, 2u).F32({1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12,
                                                   10, 11, 12, 13, 14, 15, 16, 17, 18, 1,  2,  3});
    const Bytes moving =
        Bytes::Of(1u, 0u, 1u, Vector3Bytes(1, 2), Vector3Bytes(3, 4), Vector3Bytes(5, 6), Vector3Bytes(7, 8));
    Expect<TEV2_BEZIER_SPLINE_OBJECT>("splines", {Bytes::Of(kEmptyPlaced, kOurLayout, 0u), Placed(u"Path"),
                                                  Bytes::Of(kBox, kOurLayout, 2u, rigid, moving)});
    Expect<TEV2_HELPER>("helper", {Bytes::Of(kEmptyPlaced, kOurLayout, 0u), Placed(u"Door"),
                                   Bytes::Of(kBox, kOurLayout, 1u)});
    TEV2_RIGID_BEZIER_CURVE curve;
    curve.points = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
    ExpectStoredAs(curve, Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    ExpectStoredAs(TEV2_ANIM_BEZIER_CURVE(), Bytes().Zeros(4 * 4));
}

TEST(TypedRecords, OfInstancesAndReferences)
{
    const Bytes empty = Bytes::Of(kEmptyPlaced, kOurLayout, 0xFFFFFFFFu);
    const Bytes again = Bytes::Of(kBox, kOurLayout, 3u);
    const Bytes lit = Bytes::Of(again, 2u, 0u, 2u);
    const Bytes sub_objects = Bytes().U32(2).U32({1, 2, 0, 1, 2, 2, 1, 3}).U32({0xFFFFFFFFu, 0});
    Expect<TEV2_INSTANCE>("14", {empty, Placed(u"Again"), again});
    Expect<TEV2_GEOM_INSTANCE>("16", {Bytes::Of(empty, 0u), Placed(u"Again"), lit});
    Expect<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS>(
        "18", {Bytes::Of(empty, 0u, 0u), Placed(u"Again"), Bytes::Of(lit, 2u, 1u, 0xFFFFFFFFu)});
    Expect<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS>(
        "19", {Bytes::Of(empty, 0u, 0u), Placed(u"Again"), Bytes::Of(lit, sub_objects)});

    const Layout reference = {
        Bytes::Of(kOurLayout, u"", 0xFFFFFFFFu, 0.0f), Bytes::Of(kOurLayout, u"sets/town.tv2", 2u, 1.5f), {}};
    Expect<TEV2_XREF<15>>("15", reference);
    Expect<TEV2_XREF<20>>("20", reference);
    Expect<TEV2_XREF_OBJECT>("21", {Bytes::Of(kEmptyPlaced, 0u, kOurLayout, 0xFFFFFFFFu, 0u, u""),
                                    Placed(u"Lamp"), Bytes::Of(kBox, 1u, 1u, kOurLayout, 4u, 7u, u"lamp")});
    Expect<TEV2_XREF_SPEEDTREE>("23", {Bytes::Of(kEmptyPlaced, 0u, kOurLayout, u"", 0u, 0.0f), Placed(u"Oak"),
                                       Bytes::Of(kBox, 1u, 1u, kOurLayout, u"oak.spt", 99u, 12.5f)});
}

TEST(TypedRecords, AreMadeByTheirTypes)
{
    for (std::uint32_t type = 0; type < 4; ++type)
    {
        EXPECT_EQ(TEV2_LIGHT::Create(type)->GetType(), type);
        EXPECT_EQ(TEV2_MATERIAL::Create(type)->GetType(), type);
        EXPECT_EQ(TEV2_MATERIAL_MAP::MakeKept(type)->GetType(), type);
        const auto map = TEV2_MATERIAL_MAP::Create(type);
        const auto spline = TEV2_IBEZIER_SPLINE::Create(type);
        ASSERT_EQ(map != nullptr, type < 2);
        ASSERT_EQ(spline != nullptr, type < 2);
        EXPECT_EQ(TEV2_BITMAP_MATERIAL_MAP::Create(type) != nullptr, type == 0);
        if (type < 2)
        {
            EXPECT_EQ(map->GetType(), type);
            EXPECT_EQ(spline->GetType(), type);
        }
    }
    for (std::uint32_t id = 0; id < 24; ++id)
    {
        const auto instance = TEV2_INSTANCE::Create(id);
        ASSERT_EQ(instance != nullptr, id == 14 || id == 16 || id == 18 || id == 19) << id;
        if (instance)
        {
            EXPECT_EQ(instance->GetChunkId(), id);
        }
    }
}

/// The point of a cubic curve by repeated division of its edges.
TEV2_VECTOR_3 Divided(const TEV2_BEZIER_POINTS& points, float at)
{
    const auto between = [at](const TEV2_VECTOR_3& from, const TEV2_VECTOR_3& to)
    { return from * (1 - at) + to * at; };
    const TEV2_VECTOR_3 middle = between(points.startTangent, points.endTangent);
    return between(between(between(points.start, points.startTangent), middle),
                   between(middle, between(points.endTangent, points.end)));
}

TEST(Splines, HavePointsAtTheirPresentTime)
{
    TEV2_BEZIER_SPLINE_OBJECT object;
    Fill(object);
    auto& moving = static_cast<TEV2_ANIM_BEZIER_SPLINE&>(*object.splines[1]);
    moving.curves.emplace_back(); // starts where the first one ends
    object.SetTime(1.5f);
    EXPECT_EQ(moving.Curve(0).end, (TEV2_VECTOR_3{7.5f, 0, 0}));
    EXPECT_EQ(moving.Curve(1).start, (TEV2_VECTOR_3{7.5f, 0, 0}));
    EXPECT_EQ(moving.Curve(1).end, TEV2_VECTOR_3());
    for (const auto& spline : object.splines)
        for (std::size_t curve = 0; curve < spline->CurveCount(); ++curve)
            for (const float at : {0.0f, 0.25f, 0.5f, 1.0f})
            {
                const TEV2_VECTOR_3 point = BezierPoint(spline->Curve(curve), at);
                const TEV2_VECTOR_3 expected = Divided(spline->Curve(curve), at);
                EXPECT_NEAR(point.x, expected.x, 1e-5f);
                EXPECT_NEAR(point.y, expected.y, 1e-5f);
                EXPECT_NEAR(point.z, expected.z, 1e-5f);
            }
    EXPECT_EQ(moving.curves[0].Point(1.0f), (TEV2_VECTOR_3{7.5f, 0, 0}));
}

} // namespace
