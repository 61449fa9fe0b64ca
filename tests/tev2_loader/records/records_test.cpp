#include "tests/support/sample_scenes.h"

// What each record is in a file, and which of its tracks move with it. Node and hierarchy have tests of their own; what
// older versions have is loaded with whole scenes.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

const Bytes kNoProperties = Bytes().Zeros(20);
const Bytes kCounting = Bytes().U8({1, 2, 3, 4, 5, 6, 7, 8});

/// Sample tracks are put to a quarter of their way and moved on by another one.
template <typename Object>
void ExpectMoved(Object& object, const std::vector<const TEV2_ANIMATABLE*>& tracks)
{
    object.SetTime(1.0f);
    for (const TEV2_ANIMATABLE* track : tracks)
        EXPECT_EQ(track->m_fraction, 0.25f);
    object.Update(0.5f);
    for (const TEV2_ANIMATABLE* track : tracks)
        EXPECT_EQ(track->m_fraction, 0.5f);
}

TEST(Information, IsVersionCreatorAndText)
{
    TEV2_INF information;
    ExpectStoredAs(information, Bytes().U8({0xE1, 0x7A, 0x94, 0x3F}).Text(u"NATIVE WIN32").Text(u""));
    EXPECT_EQ(LoadedBytes(information, Bytes::Of(1.03f, u"by", u"a\r\n"), 0.0f), 4u + 6u + 8u);
    EXPECT_EQ(information.version, 1.03f);
    EXPECT_EQ(information.creatorText, Wide(u"by"));
    EXPECT_EQ(SavedBytes(information), Bytes::Of(kVersion, u"by", u"a\r\n").data) << "as the newest version";
}

TEST(Environment, IsRangeColourMapAndReservedBytes)
{
    TEV2_ENVIRONMENT environment;
    ExpectStoredAs(environment, Bytes().Zeros(8 + 4 + 4 + 8));
    environment.timeRange = {0.5f, 2.0f};
    environment.environmentColour = SampleTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>({1, 2, 3, 4}, {5, 6, 7, 8});
    environment.reserved = {1, 2, 3, 4, 5, 6, 7, 8};
    const Bytes colour = SampleTrackBytes(2, Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8}));
    ExpectStoredAs(environment, Bytes::Of(0.5f, 2.0f, colour, 0u, kCounting));
}

TEST(Entity, IsItsName)
{
    TEV2_ENTITY entity;
    ExpectStoredAs(entity, Bytes().U8({0, 0}));
    entity.name = Wide(u"ab");
    ExpectStoredAs(entity, Bytes().U8({2, 0, 'a', 0, 'b', 0}));
}

TEST(LitObject, IsItsLightList)
{
    TEV2_LIT_OBJECT object;
    ExpectStoredAs(object, Bytes().U32(0));
    object.lights = {5, 0xFFFFFFFFu};
    ExpectStoredAs(object, Bytes().U32({2, 5, 0xFFFFFFFFu}));
}

TEST(ValueRecord, IsItsFloatsInOrder)
{
    ExpectStoredAs(TEV2_FLOAT32_RANGE(1, 2), Bytes().F32({1, 2}));
    ExpectStoredAs(TEV2_COLOUR(1, 2, 3, 4), Bytes().F32({1, 2, 3, 4}));
    ExpectStoredAs(TEV2_RECTF({1, 2}, {3, 4}), Bytes().F32({1, 2, 3, 4}));
    ExpectStoredAs(TEV2_BINORMAL_TANGENT({1, 2, 3}, {4, 5, 6}), Bytes().F32({1, 2, 3, 4, 5, 6}));
    ExpectStoredAs(TEV2_BOUNDING_BOX({1, 2, 3}, {4, 5, 6}), Bytes().F32({1, 2, 3, 4, 5, 6}));
}

TEST(PositionalObject, IsThreeTextsNumberPropertiesAndBounds)
{
    TEV2_POSITIONAL_OBJECT object;
    ExpectStoredAs(object, Bytes::Of(u"", u"", u"", 0u, kNoProperties, 0u));
    object.SetTime(1.0f); // without bounds: nothing
    object.name = Wide(u"a");
    object.secondText = Wide(u"bc");
    object.thirdText = Wide(u"d");
    object.value = 0x01020304;
    object.properties.intValues.emplace_back().name = Wide(u"n");
    object.bounds =
        SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({{0, 0, 0}, {1, 1, 1}}, {{2, 2, 2}, {3, 3, 3}});
    const Bytes boxes = SampleTrackBytes(11, Bytes().F32({0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3}));
    ExpectStoredAs(object,
                   Bytes::Of(u"a", u"bc", u"d", 0x01020304u, 0u, 1u, u"n", 0u, Bytes().Zeros(12), boxes));
    ExpectMoved(object, {object.bounds.get()});
}

TEST(Camera, IsAspectTracksAndEffectsAndMovesAllButItsBounds)
{
    TEV2_CAMERA camera;
    const Bytes placed = Bytes::Of(u"", u"", u"", 0u, kNoProperties, 0u);
    ExpectStoredAs(camera, Bytes(placed).Zeros(4 + 4 * 4 + 4));

    camera.inverseAspect = 0.75f;
    camera.distance = FloatTrack(1, 2);
    camera.fieldOfView = FloatTrack(3, 4);
    camera.secondaryRange = SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({1, 2}, {3, 4});
    camera.clipRange = SampleTrack<TEV2_ANIMATABLE_FLOAT32_RANGE_LINEAR>({5, 6}, {7, 8});
    auto blur = std::make_unique<TEV2_CAMERA_MOTION_BLUR_EFFECT>();
    blur->shutterTime = FloatTrack(0.1f, 0.2f);
    auto depth = std::make_unique<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>();
    depth->focusDistance = FloatTrack(5, 6);
    depth->fNumber = FloatTrack(2, 4);
    const std::vector<const TEV2_ANIMATABLE*> moved = {
        camera.distance.get(),  camera.fieldOfView.get(), camera.secondaryRange.get(),
        camera.clipRange.get(), blur->shutterTime.get(),  depth->focusDistance.get(),
        depth->fNumber.get()};
    camera.effects.push_back(std::move(blur));
    camera.effects.push_back(nullptr);
    camera.effects.push_back(std::move(depth));
    const Bytes ranges = Bytes::Of(SampleTrackBytes(1, Bytes().F32({1, 2, 3, 4})),
                                   SampleTrackBytes(1, Bytes().F32({5, 6, 7, 8})));
    const Bytes effects = Bytes::Of(3u, 1u, 0u, kOurLayout, FloatTrackBytes(0.1f, 0.2f), 0u, 1u, 1u,
                                    kOurLayout, FloatTrackBytes(5, 6), FloatTrackBytes(2, 4));
    ExpectStoredAs(camera,
                   Bytes::Of(placed, 0.75f, FloatTrackBytes(1, 2), FloatTrackBytes(3, 4), ranges, effects));

    camera.bounds = SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({}, {});
    ExpectMoved(camera, moved);
    EXPECT_EQ(camera.bounds->m_fraction, 0.0f);
}

TEST(CameraEffect, IsMadeByTypeAndCopiedWithItsTracks)
{
    EXPECT_EQ(TEV2_CAMERA_EFFECT::Create(2), nullptr);
    for (const std::uint32_t type : {0u, 1u})
        EXPECT_EQ(TEV2_CAMERA_EFFECT::Create(type)->GetEffectType(), type);

    TEV2_CAMERA_MOTION_BLUR_EFFECT blur;
    blur.shutterTime = FloatTrack(1, 2);
    const std::unique_ptr<TEV2_CAMERA_EFFECT> copy = blur.Clone();
    EXPECT_EQ(SavedBytes(*copy), SavedBytes(blur));
    copy->SetTime(1.5f);
    EXPECT_EQ(blur.shutterTime->m_fraction, 0.0f);

    TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT depth;
    depth.fNumber = FloatTrack(1, 2);
    EXPECT_EQ(SavedBytes(*depth.Clone()), SavedBytes(depth));
}

TEST(CameraMan, IsOneOptionalTrack)
{
    TEV2_CAMERA_MAN man;
    man.SetTime(1.0f);
    ExpectStoredAs(man, Bytes().U32(0));
    man.cameraIndex = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(0, -1);
    ExpectStoredAs(man, SampleTrackBytes(8, Bytes().U32({0, 0xFFFFFFFFu})));
    ExpectMoved(man, {man.cameraIndex.get()});
    EXPECT_EQ(LoadedBytes(man, Bytes().U32(0), kVersion), 4u);
    EXPECT_EQ(man.cameraIndex, nullptr);
}

TEST(ExtendedProperties, AreFiveArraysThatMove)
{
    TEV2_EXTENDED_PROPERTIES properties;
    ExpectStoredAs(properties, kNoProperties);
    properties.stringArrays.resize(2);
    properties.stringArrays[0].name = Wide(u"s");
    properties.stringArrays[0].strings = {Wide(u"x"), Wide(u"")};
    properties.stringArrays[1].name = Wide(u"none");
    properties.intValues.emplace_back().name = Wide(u"i");
    properties.intValues[0].track = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(1, -1);
    properties.floatValues.emplace_back().name = Wide(u"f");
    properties.floatValues.emplace_back().track = FloatTrack(1, 2);
    properties.vector3Values.emplace_back().track =
        SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({1, 2, 3}, {4, 5, 6});
    properties.vector4Values.emplace_back().track =
        SampleTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>({1, 2, 3, 4}, {5, 6, 7, 8});
    const Bytes texts = Bytes::Of(2u, u"s", 2u, u"x", u"", u"none", 0u);
    const Bytes numbers = Bytes::Of(1u, u"i", SampleTrackBytes(8, Bytes().U32({1, 0xFFFFFFFFu})), 2u, u"f",
                                    0u, u"", FloatTrackBytes(1, 2));
    const Bytes vectors = Bytes::Of(1u, u"", SampleTrackBytes(3, Bytes().F32({1, 2, 3, 4, 5, 6})), 1u, u"",
                                    SampleTrackBytes(9, Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8})));
    const Bytes bytes = Bytes::Of(texts, numbers, vectors);
    ExpectStoredAs(properties, bytes);
    EXPECT_EQ(LoadedBytes(properties, bytes, kVersion), bytes.data.size());
    EXPECT_EQ(SavedBytes(properties), bytes.data) << "loaded over what there was";

    properties.intValues.emplace_back().SetTime(1.5f); // without a track: nothing
    properties.SetTime(1.5f);
    for (const TEV2_ANIMATABLE* track : std::initializer_list<const TEV2_ANIMATABLE*>{
             properties.intValues[0].track.get(), properties.floatValues[1].track.get(),
             properties.vector3Values[0].track.get(), properties.vector4Values[0].track.get()})
        EXPECT_EQ(track->m_fraction, 0.5f);
    ExpectMoved(properties.floatValues[1], {properties.floatValues[1].track.get()});
}

TEST(ExtendedProperties, RefuseTracksOfAnotherFamily)
{
    const std::uint32_t own[] = {8, 0, 3, 9};
    for (std::uint32_t list = 0; list < 4; ++list)
        for (std::uint32_t kind = 0; kind < 13; ++kind)
        {
            const Bytes bytes =
                Bytes().Zeros(4 + 4 * list).U32(1).Text(u"").U32({1, kind}).Zeros(16 + 4 * (3 - list));
            TEV2_LOAD_REPORT report;
            TEV2_MEMORY_CURSOR cursor(bytes.data.data(), bytes.data.size(), &report);
            const bool loaded = TEV2_EXTENDED_PROPERTIES().Load(cursor, kVersion);
            EXPECT_EQ(loaded, kind == own[list]);
            if (loaded)
                continue;
            ASSERT_EQ(report.findings.size(), 1u);
            EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::UnknownTrackKind);
            EXPECT_EQ(report.findings[0].expected, std::to_string(own[list]));
            EXPECT_EQ(report.findings[0].found, std::to_string(kind));
            EXPECT_EQ(report.findings[0].offset, 4 + 4 * list + 4 + 2 + 4);
        }
}

} // namespace
