#include "tests/support/sample_scenes.h"

#include "tev2_loader/records/extended_properties.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(ExtendedProperties, AreFiveEmptyArraysAtFirst)
{
    EXPECT_EQ(SavedBytes(TEV2_EXTENDED_PROPERTIES()), Bytes().Zeros(20).data);
}

TEST(ExtendedProperties, ComeInTheirOrder)
{
    TEV2_EXTENDED_PROPERTIES properties;
    properties.stringArrays.resize(2);
    properties.stringArrays[0].name = Wide(u"s");
    properties.stringArrays[0].strings = {Wide(u"x"), Wide(u"")};
    properties.stringArrays[1].name = Wide(u"none");
    properties.intValues.emplace_back().name = Wide(u"i");
    properties.intValues[0].track = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(1, -1);
    properties.floatValues.emplace_back().name = Wide(u"f");
    properties.floatValues.emplace_back().track = FloatTrack(1, 2);
    properties.vector3Values.emplace_back().track =
        SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(TEV2_VECTOR_3{1, 2, 3}, TEV2_VECTOR_3{4, 5, 6});
    properties.vector4Values.emplace_back().track =
        SampleTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(TEV2_VECTOR_4{1, 2, 3, 4}, TEV2_VECTOR_4{5, 6, 7, 8});

    const Bytes expected = Bytes()
                               .U32(2)
                               .Text(u"s")
                               .U32(2)
                               .Text(u"x")
                               .Text(u"")
                               .Text(u"none")
                               .U32(0)
                               .U32(1)
                               .Text(u"i")
                               .Append(SampleTrackBytes(8, Bytes().U32({1, 0xFFFFFFFFu})))
                               .U32(2)
                               .Text(u"f")
                               .U32(0)
                               .Text(u"")
                               .Append(FloatTrackBytes(1, 2))
                               .U32(1)
                               .Text(u"")
                               .Append(SampleTrackBytes(3, Bytes().F32({1, 2, 3, 4, 5, 6})))
                               .U32(1)
                               .Text(u"")
                               .Append(SampleTrackBytes(9, Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8})));
    EXPECT_EQ(SavedBytes(properties), expected.data);

    TEV2_EXTENDED_PROPERTIES loaded;
    loaded.stringArrays.resize(5);
    EXPECT_EQ(LoadedBytes(loaded, expected, kVersion), expected.data.size());
    EXPECT_EQ(SavedBytes(loaded), expected.data);
}

TEST(ExtendedProperties, MoveOnTheirOwn)
{
    TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32> value;
    value.SetTime(1.0f); // without a track: nothing
    value.Update(1.0f);
    value.track = FloatTrack(1.0f, 2.0f);
    value.SetTime(1.5f);
    EXPECT_EQ(value.track->GetValue(), 1.5f);
    value.Update(0.5f);
    EXPECT_EQ(value.track->GetValue(), 1.75f);
}

TEST(ExtendedProperties, SeekAllTheirValues)
{
    TEV2_EXTENDED_PROPERTIES properties;
    properties.intValues.resize(2); // the first without a track
    properties.intValues[1].track = SampleTrack<TEV2_ANIMATABLE_INT32_RLE>(1, 2);
    properties.floatValues.emplace_back().track = SampleTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>(1.0f, 2.0f);
    properties.vector3Values.emplace_back().track =
        SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(TEV2_VECTOR_3{1, 1, 1}, TEV2_VECTOR_3{2, 2, 2});
    properties.vector4Values.emplace_back().track =
        SampleTrack<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(TEV2_VECTOR_4{1, 1, 1, 1}, TEV2_VECTOR_4{2, 2, 2, 2});
    properties.SetTime(1.5f); // keys are at 0.5 and 2.5
    EXPECT_EQ(properties.intValues[1].track->GetValue(), 1);
    EXPECT_EQ(properties.floatValues[0].track->GetValue(), 1.5f);
    EXPECT_EQ(properties.vector3Values[0].track->GetValue().z, 1.5f);
    EXPECT_EQ(properties.vector4Values[0].track->GetValue().w, 1.5f);
}

TEST(ExtendedProperties, RefuseTracksOfAnotherFamily)
{
    const std::uint32_t own[] = {8, 0, 3, 9};
    for (std::uint32_t list = 0; list < 4; ++list)
    {
        for (std::uint32_t kind = 0; kind < 13; ++kind)
        {
            Bytes bytes =
                Bytes().Zeros(4 + 4 * list).U32(1).Text(u"").U32({1, kind}).Zeros(16 + 4 * (3 - list));
            TEV2_LOAD_REPORT report;
            TEV2_MEMORY_CURSOR cursor(bytes.data.data(), bytes.data.size(), &report);
            TEV2_EXTENDED_PROPERTIES properties;
            EXPECT_EQ(properties.Load(cursor, kVersion), kind == own[list]);
            if (kind != own[list])
            {
                ASSERT_EQ(report.findings.size(), 1u);
                EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::UnknownTrackKind);
                EXPECT_EQ(report.findings[0].expected, std::to_string(own[list]));
                EXPECT_EQ(report.findings[0].found, std::to_string(kind));
                EXPECT_EQ(report.findings[0].offset, 4 + 4 * list + 4 + 2 + 4);
            }
        }
    }
}

} // namespace
