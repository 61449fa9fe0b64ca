#include "tests/support/sample_scenes.h"

#include "tev2_loader/records/positional_object.h"

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

const Bytes kBoxes = SampleTrackBytes(11, Bytes().F32({0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3}));

Bytes OneIntegerProperty()
{
    return Bytes().U32({0, 1}).Text(u"n").U32(0).Zeros(12);
}

TEST(PositionalObject, WritesSixItems)
{
    TEV2_POSITIONAL_OBJECT object;
    EXPECT_EQ(SavedBytes(object), Bytes().Zeros(2 + 2 + 2 + 4 + 20 + 4).data);

    object.name = Wide(u"a");
    object.secondText = Wide(u"bc");
    object.thirdText = Wide(u"d");
    object.value = 0x01020304;
    object.properties.intValues.emplace_back().name = Wide(u"n");
    object.bounds = SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>(TEV2_BOUNDING_BOX({0, 0, 0}, {1, 1, 1}),
                                                                     TEV2_BOUNDING_BOX({2, 2, 2}, {3, 3, 3}));
    EXPECT_EQ(SavedBytes(object), Bytes()
                                      .Text(u"a")
                                      .Text(u"bc")
                                      .Text(u"d")
                                      .U32(0x01020304)
                                      .Append(OneIntegerProperty())
                                      .Append(kBoxes)
                                      .data);
}

TEST(PositionalObject, ReadsWhatItsVersionHas)
{
    struct Case
    {
        float version;
        bool properties;
        bool bounds;
    };
    for (const Case& item : {Case{1.0f, false, false}, Case{1.03f, false, false}, Case{1.04f, true, false},
                             Case{1.12f, true, false}, Case{1.13f, true, true}, Case{1.16f, true, true}})
    {
        Bytes bytes = Bytes().Text(u"name").Text(u"second").Text(u"third").U32(7);
        if (item.properties)
            bytes.Append(OneIntegerProperty());
        if (item.bounds)
            bytes.Append(kBoxes);
        TEV2_POSITIONAL_OBJECT object;
        EXPECT_EQ(LoadedBytes(object, bytes, item.version), bytes.data.size()) << item.version;
        EXPECT_EQ(object.name, Wide(u"name"));
        EXPECT_EQ(object.secondText, Wide(u"second"));
        EXPECT_EQ(object.thirdText, Wide(u"third"));
        EXPECT_EQ(object.value, 7u);
        EXPECT_EQ(object.properties.intValues.size(), item.properties ? 1u : 0u) << item.version;
        EXPECT_EQ(object.bounds != nullptr, item.bounds) << item.version;
    }
}

TEST(PositionalObject, MovesItsBounds)
{
    TEV2_POSITIONAL_OBJECT object;
    object.SetTime(1.0f);
    object.bounds = SampleTrack<TEV2_ANIMATABLE_BOUNDING_BOX_LINEAR>({}, {});
    object.SetTime(1.5f);
    EXPECT_EQ(object.bounds->m_fraction, 0.5f);
    object.Update(0.5f);
    EXPECT_EQ(object.bounds->m_fraction, 0.75f);
}

} // namespace
