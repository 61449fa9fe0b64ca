#include "tests/support/sample_scenes.h"

#include "tev2_loader/records/environment.h"
#include "tev2_loader/records/inf.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(Information, IsVersionCreatorAndText)
{
    TEV2_INF information;
    EXPECT_EQ(SavedBytes(information),
              Bytes().U8({0xE1, 0x7A, 0x94, 0x3F}).Text(u"NATIVE WIN32").U8({0, 0}).data);

    information.version = 1.0f;
    information.creatorText = Wide(u"c");
    information.infoText = Wide(u"i\r\n");
    EXPECT_EQ(SavedBytes(information), Bytes().U32(0x3F947AE1u).Text(u"c").Text(u"i\r\n").data)
        << "always written as the newest version";

    EXPECT_EQ(LoadedBytes(information, Bytes().F32({1.03f}).Text(u"by").Text(u"lines"), 0.0f), 4u + 6u + 12u);
    EXPECT_EQ(information.version, 1.03f);
    EXPECT_EQ(information.creatorText, Wide(u"by"));
    EXPECT_EQ(information.infoText, Wide(u"lines"));
}

TEST(Environment, IsRangeColourMapAndReservedBytes)
{
    TEV2_ENVIRONMENT environment;
    EXPECT_EQ(SavedBytes(environment), Bytes().Zeros(8 + 4 + 4 + 8).data);

    environment.timeRange = {0.5f, 2.0f};
    environment.environmentColour =
        SampleTrack<TEV2_ANIMATABLE_COLOUR_LINEAR>(TEV2_COLOUR{1, 2, 3, 4}, {5, 6, 7, 8});
    environment.reserved = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(SavedBytes(environment), Bytes()
                                           .F32({0.5f, 2.0f})
                                           .Append(SampleTrackBytes(2, Bytes().F32({1, 2, 3, 4, 5, 6, 7, 8})))
                                           .U32(0)
                                           .U8({1, 2, 3, 4, 5, 6, 7, 8})
                                           .data);
}

TEST(Environment, RefusesAMapOfEveryType)
{
    for (std::uint32_t type = 0; type < 4; ++type)
    {
        EXPECT_EQ(TEV2_MATERIAL_MAP::Create(type), nullptr);
        const Bytes bytes = Bytes().F32({1, 2}).U32({0, 1, type}).Zeros(64);
        TEV2_LOAD_REPORT report;
        TEV2_MEMORY_CURSOR cursor(bytes.data.data(), bytes.data.size(), &report);
        EXPECT_FALSE(TEV2_ENVIRONMENT().Load(cursor, kVersion));
        ASSERT_EQ(report.findings.size(), 1u);
        EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::EnvironmentMapUnsupported);
        EXPECT_EQ(report.findings[0].offset, 12u);
    }
}

TEST(Environment, ReadsReservedBytesFromItsNewestVersionOnly)
{
    for (const float version : {1.0f, 1.15f, 1.16f})
    {
        Bytes bytes = Bytes().F32({1, 2}).Append(SampleTrackBytes(2, Bytes().Zeros(32))).U32(0);
        const bool reserved = version == 1.16f;
        if (reserved)
            bytes.U8({8, 7, 6, 5, 4, 3, 2, 1});
        TEV2_ENVIRONMENT environment;
        EXPECT_EQ(LoadedBytes(environment, bytes, version), bytes.data.size()) << version;
        EXPECT_EQ(environment.timeRange.minimum, 1.0f);
        EXPECT_EQ(environment.timeRange.maximum, 2.0f);
        EXPECT_NE(environment.environmentColour, nullptr);
        EXPECT_EQ(environment.reserved[0], reserved ? 8 : 0);
        EXPECT_EQ(environment.reserved[7], reserved ? 1 : 0);
    }
}

} // namespace
