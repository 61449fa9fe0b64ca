#include "tests/exporter/export_fixture.h"

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

class UserProperties : public ExportTest
{
protected:
    // A user property with a constant value of its kind.
    template <typename Value>
    static FBProperty* Add(FBComponent& owner, const char* name, FBPropertyType type, Value value,
                           bool animatable)
    {
        FBProperty* property = mobu_host::AddUserProperty(owner, name, type, animatable);
        property->SetData(&value);
        return property;
    }
};

template <typename Entries>
std::string NameList(const Entries& entries)
{
    std::string names;
    for (const auto& entry : entries)
        names += Narrow(entry.name.Text()) + " ";
    return names;
}

template <typename Concrete, typename Entry>
const auto& Values(const Entry& entry)
{
    return Keys<Concrete>(entry.track).m_values;
}

TEST_F(UserProperties, BecomeEntriesOfTheirKind)
{
    OneTake(1.0);
    FBModel* model = mobu_host::AddModel("Model");
    for (const bool animatable : {false, true})
    {
        const auto name = [&](const char* plain) { return std::string(plain) + (animatable ? "*" : ""); };
        Add(*model, name("int").c_str(), kFBPT_int, 42, animatable);
        Add(*model, name("bool").c_str(), kFBPT_bool, true, animatable);
        Add(*model, name("double").c_str(), kFBPT_double, 0.1, animatable);
        Add(*model, name("vector").c_str(), kFBPT_Vector3D, FBVector3d(1, 2, 3), animatable);
        Add(*model, name("rgb").c_str(), kFBPT_ColorRGB, FBColor(0.1, 0.2, 0.3), animatable);
        Add(*model, name("rgba").c_str(), kFBPT_ColorRGBA, FBColorAndAlpha(0.1, 0.2, 0.3, 0.4), animatable);
    }
    Add(*model, "text", kFBPT_charptr, static_cast<const char*>("caf\xC3\xA9"), false);
    mobu_host::AddUserEnum(*model, "quality", {"Low", "Mid", "High"}, 2, true);
    Add(*model, "skipped", kFBPT_Time, FBTime(0), false);

    const auto scene = Export();
    EXPECT_TRUE(scene->matrixHierarchy.nodes[0].properties.intValues.empty());
    const TEV2_EXTENDED_PROPERTIES& block = scene->matrixHierarchy.nodes[1].properties;
    EXPECT_EQ(NameList(block.intValues), "int bool int* bool* ");
    EXPECT_EQ(NameList(block.floatValues), "double double* ");
    EXPECT_EQ(NameList(block.vector3Values), "vector rgb vector* rgb* ");
    EXPECT_EQ(NameList(block.vector4Values), "rgba rgba* ");
    EXPECT_EQ(NameList(block.stringArrays), "text quality ");
    for (const std::size_t i : {0u, 1u}) // constants end with one key
    {
        EXPECT_EQ(Values<TEV2_ANIMATABLE_INT32_RLE>(block.intValues[2 * i]), std::vector<std::int32_t>{42});
        EXPECT_EQ(Values<TEV2_ANIMATABLE_INT32_RLE>(block.intValues[2 * i + 1]),
                  std::vector<std::int32_t>{1});
        EXPECT_EQ(Values<TEV2_ANIMATABLE_FLOAT32_LINEAR>(block.floatValues[i]), std::vector<float>{0.1f});
        const auto& vector = Values<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(block.vector3Values[2 * i]);
        ASSERT_EQ(vector.size(), 1u);
        ExpectVector(vector[0], 1, 2, 3, 0.0f);
        ExpectVector(Values<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(block.vector3Values[2 * i + 1])[0], 0.1f, 0.2f,
                     0.3f, 0.0f);
        const auto& rgba = Values<TEV2_ANIMATABLE_VECTOR_4_LINEAR>(block.vector4Values[i]);
        EXPECT_EQ(rgba[0].w, 0.4f);
    }
    ASSERT_EQ(block.stringArrays[0].strings.size(), 1u);
    EXPECT_EQ(block.stringArrays[0].strings[0].Text(), u"caf\u00C3\u00A9")
        << "bytes are widened without a sign";
    std::string items;
    for (const TEV2_WIDE_STRING& item : block.stringArrays[1].strings)
        items += Text(item) + " ";
    EXPECT_EQ(items, "Low Mid High ");
}

TEST_F(UserProperties, AreSampledAtEveryInstant)
{
    FBTake& take = OneTake(1.0);
    FBCamera* camera = mobu_host::AddCamera("Cam");
    FBProperty* number = mobu_host::AddUserProperty(*camera, "number", kFBPT_int, true);
    FBProperty* vector = mobu_host::AddUserProperty(*camera, "vector", kFBPT_Vector3D, true);
    mobu_host::AnimateProperty(*number, take, [](double seconds, int) { return seconds < 0.6 ? 1.0 : 2.0; });
    mobu_host::AnimateProperty(*vector, take,
                               [](double seconds, int component) { return seconds * (component + 1); });
    const auto scene = Export();

    const auto& node = scene->matrixHierarchy.nodes[1].properties;
    const auto& reduced = Keys<TEV2_ANIMATABLE_INT32_RLE>(node.intValues[0].track);
    EXPECT_EQ(reduced.m_times, (std::vector<float>{0.0f, 0.5f, 0.75f}));
    EXPECT_EQ(reduced.m_values, (std::vector<std::int32_t>{1, 1, 2}));
    ExpectVector(Values<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(node.vector3Values[0])[2], 0.5f, 1.0f, 1.5f);

    // The camera's own block has every key.
    const auto& full = Keys<TEV2_ANIMATABLE_INT32_RLE>(scene->cameras[0]->properties.intValues[0].track);
    EXPECT_EQ(full.m_values, (std::vector<std::int32_t>{1, 1, 1, 2, 2}));
}

TEST_F(UserProperties, FlipTheFirstKeyOfVectorsAlone)
{
    OneTake(0.5);
    FBModel* model = mobu_host::AddModel("Model");
    Add(*model, "vector", kFBPT_Vector3D, FBVector3d(1, 2, 3), false);
    Add(*model, "rgb", kFBPT_ColorRGB, FBColor(1, 2, 3), false);
    options_.KeepPositiveZ = 1;
    const auto scene = Export();
    const auto& block = scene->matrixHierarchy.nodes[1].properties;
    const auto& flipped = Keys<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(block.vector3Values[0].track);
    ASSERT_EQ(flipped.m_times, (std::vector<float>{0.0f, 0.25f}));
    ExpectVector(flipped.m_values[0], -1, 2, -3, 0.0f);
    ExpectVector(flipped.m_values[1], 1, 2, 3, 0.0f);
    const auto& colour = Values<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(block.vector3Values[1]);
    ASSERT_EQ(colour.size(), 1u);
    ExpectVector(colour[0], 1, 2, 3, 0.0f);
}

} // namespace
} // namespace tev2_exporter
