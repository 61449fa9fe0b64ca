#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "tests/host/scene_steps.h"

namespace mobu_host
{
namespace
{

class Property : public testing::Test
{
protected:
    Property()
    {
        NewScene();
        model_ = AddModel("Model");
    }

    FBModel* model_ = nullptr;
};

/// Writes a value through SetData and compares what GetData gives back, byte by byte.
template <class T>
void ExpectBuffer(FBModel& model, FBPropertyType type, const T& value)
{
    SCOPED_TRACE(type);
    constexpr std::size_t kSize = sizeof(T); // NOLINT(bugprone-sizeof-expression): pointers are values too
    for (const bool animatable : {false, true})
    {
        FBProperty* property = AddUserProperty(model, "P", type, animatable);
        ASSERT_TRUE(property);
        T given = value;
        property->SetData(&given);
        unsigned char read[kSize + 8];
        std::memset(read, 0xEE, sizeof read);
        property->GetData(read, sizeof read);
        EXPECT_EQ(std::memcmp(read, &value, kSize), 0);
        EXPECT_EQ(std::count(read + kSize, read + sizeof read, 0xEE), 8) << "outside the value";
        std::memset(read, 0xEE, sizeof read);
        property->GetData(read, 1);
        EXPECT_EQ(read[1], 0xEE) << "more than was asked for";
        EXPECT_TRUE(model.PropertyRemove(property));
    }
}

TEST_F(Property, BuffersCarryTheTypesOfTheirKinds)
{
    FBModel& model = *model_;
    const int count = model.PropertyList.GetCount();
    ExpectBuffer(model, kFBPT_bool, true);
    ExpectBuffer(model, kFBPT_int, -7);
    ExpectBuffer(model, kFBPT_enum, 2);
    ExpectBuffer(model, kFBPT_int64, -7'000'000'000LL);
    ExpectBuffer(model, kFBPT_uint64, 18'000'000'000'000'000'000ULL);
    ExpectBuffer(model, kFBPT_float, 0.1f);
    ExpectBuffer(model, kFBPT_double, 0.1);
    ExpectBuffer(model, kFBPT_Time, FBTime(123));
    ExpectBuffer(model, kFBPT_TimeSpan, FBTimeSpan(FBTime(1), FBTime(2)));
    ExpectBuffer(model, kFBPT_Vector2D, FBVector2d(1.0, 2.0));
    ExpectBuffer(model, kFBPT_Vector3D, FBVector3d(1.0, 2.0, 3.0));
    ExpectBuffer(model, kFBPT_Vector4D, FBVector4d(1.0, 2.0, 3.0, 4.0));
    ExpectBuffer(model, kFBPT_ColorRGB, FBColor(0.1, 0.2, 0.3));
    ExpectBuffer(model, kFBPT_ColorRGBA, FBColorAndAlpha(0.1, 0.2, 0.3, 0.4));
    ExpectBuffer(model, kFBPT_object, static_cast<FBComponent*>(&model));
    EXPECT_EQ(model.PropertyList.GetCount(), count);
}

TEST_F(Property, EveryKindCanBeAUserProperty)
{
    FBModel& model = *model_;
    EXPECT_FALSE(AddUserProperty(model, "P", kFBPT_unknown, false));
    const int built_in = model.PropertyList.GetCount();
    for (int type = kFBPT_int; type <= kFBPT_Vector2D; ++type)
        AddUserProperty(model, "P" + std::to_string(type), static_cast<FBPropertyType>(type), false);
    ASSERT_EQ(model.PropertyList.GetCount(), built_in + kFBPT_Vector2D);
    for (int i = 0; i < built_in; ++i)
        EXPECT_FALSE(model.PropertyList[i]->IsUserProperty()) << model.PropertyList[i]->GetName();
    for (int type = kFBPT_int; type <= kFBPT_Vector2D; ++type)
    {
        FBProperty* property = model.PropertyList[built_in + type - 1];
        EXPECT_EQ(property->GetPropertyType(), type);
        EXPECT_EQ(property->GetName(), "P" + std::to_string(type));
        EXPECT_TRUE(property->IsUserProperty());
        EXPECT_EQ(property, model.PropertyList.Find(property->GetName()));
    }
    EXPECT_FALSE(model.PropertyList[-1]);
    EXPECT_FALSE(model.PropertyList[model.PropertyList.GetCount()]);
    EXPECT_FALSE(model.PropertyList.Find("Nothing"));
    EXPECT_FALSE(model.PropertyRemove(&model.Translation));
}

TEST_F(Property, TextIsCopiedAndComparedByValue)
{
    FBModel& model = *model_;
    FBProperty* property = AddUserProperty(model, "Text", kFBPT_charptr, false);
    char buffer[] = "caf\xC3\xA9";
    const char* given = buffer;
    property->SetData(&given);
    buffer[0] = 'X';
    const char* text = nullptr;
    property->GetData(&text, sizeof text);
    EXPECT_STREQ(text, "caf\xC3\xA9");
    auto& typed = *dynamic_cast<FBPropertyString*>(property);
    EXPECT_TRUE(typed == "caf\xC3\xA9");
    EXPECT_TRUE(typed != "cafe");
    typed = typed + 1; // from its own storage
    EXPECT_STREQ(typed, "af\xC3\xA9");
    typed = nullptr;
    EXPECT_STREQ(typed, "");
}

TEST_F(Property, NamesFollowTheNamespace)
{
    FBModel& model = *AddModel("a:b:Hip");
    EXPECT_STREQ(model.Name, "Hip");
    EXPECT_STREQ(model.LongName, "a:b:Hip");
    model.Name = "Root";
    EXPECT_STREQ(model.LongName, "a:b:Root");
    model.LongName = "Plain";
    EXPECT_STREQ(model.Name, "Plain");
}

TEST_F(Property, EnumerationsListTheirItems)
{
    FBModel& model = *model_;
    FBProperty* property = AddUserEnum(model, "Quality", {"Low", "Mid", "High"}, 2, true);
    EXPECT_STREQ(property->EnumList(0), "Low");
    EXPECT_STREQ(property->EnumList(2), "High");
    EXPECT_EQ(property->EnumList(3), nullptr);
    EXPECT_EQ(property->EnumList(-1), nullptr);
    EXPECT_STREQ(property->AsString(), "High");
    EXPECT_TRUE(property->SetString("Mid"));
    EXPECT_EQ(property->AsInt(), 1);
    EXPECT_FALSE(property->SetString("Best"));
    EXPECT_TRUE(dynamic_cast<FBPropertyAnimatableEnum*>(property));

    EXPECT_STREQ(model.RotationOrder.EnumList(6), "Spheric XYZ");
    EXPECT_EQ(model.RotationOrder.EnumList(7), nullptr);
    EXPECT_EQ(model.Translation.EnumList(0), nullptr);
    FBStringList list("One~Two");
    EXPECT_EQ(list.Add("Three"), 2);
    EXPECT_STREQ(list.AsString(','), "One,Two,Three");
    EXPECT_EQ(list.Find("Two"), 1);
    EXPECT_EQ(list.GetAt(3), nullptr);
}

TEST_F(Property, TextFormsReadBack)
{
    const struct
    {
        FBPropertyType type;
        const char* text;
        const char* shown; // null: no value of the type
    } cases[] = {
        {kFBPT_int, "12", "12"},          {kFBPT_int, "twelve", nullptr},
        {kFBPT_bool, "1", "1"},           {kFBPT_double, "0.25", "0.25"},
        {kFBPT_double, "", nullptr},      {kFBPT_Vector3D, "1,-2.5,3", "1,-2.5,3"},
        {kFBPT_Vector3D, "1,2", nullptr}, {kFBPT_charptr, "a b", "a b"},
        {kFBPT_Action, "1", nullptr},
    };
    for (const auto& c : cases)
    {
        FBProperty* property = AddUserProperty(*model_, "P", c.type, false);
        EXPECT_EQ(property->SetString(c.text), c.shown != nullptr) << c.text;
        EXPECT_TRUE(!c.shown || std::string(property->AsString()) == c.shown) << property->AsString();
    }
}

TEST_F(Property, ClampsAndReadOnlyHold)
{
    FBCamera& camera = *AddCamera("Camera");
    camera.FieldOfView.SetMinMax(1.0, 170.0);
    camera.FieldOfView = 500.0;
    EXPECT_EQ(camera.FieldOfView, 170.0);
    camera.FieldOfView = -5.0;
    EXPECT_EQ(camera.FieldOfView, 1.0);
    EXPECT_TRUE(camera.SystemCamera.IsReadOnly());
    camera.SystemCamera = true;
    EXPECT_FALSE(camera.SystemCamera);
    FBSystem system;
    EXPECT_EQ(system.Version, 17000.0);
    system.Version = 1.0;
    EXPECT_EQ(system.Version, 17000.0);
}

/// Each kind follows its function component by component, as of the evaluated time, and is its own again without it.
TEST_F(Property, AnimationDrivesEveryNumberKind)
{
    const std::pair<FBPropertyType, const char*> cases[] = {
        // 10 times the seconds, plus the component
        {kFBPT_bool, "1"},
        {kFBPT_int, "20"},
        {kFBPT_enum, "20"},
        {kFBPT_double, "20"},
        {kFBPT_Time, "20"},
        {kFBPT_Vector3D, "20,21,22"},
        {kFBPT_ColorRGB, "20,21,22"},
        {kFBPT_Vector4D, "20,21,22,23"},
        {kFBPT_ColorRGBA, "20,21,22,23"},
    };
    FBTake& take = *FBSystem().CurrentTake;
    for (const auto& [type, at_two] : cases)
    {
        SCOPED_TRACE(type);
        EvaluateAt(0.0);
        FBProperty* property = AddUserProperty(*model_, "P", type, true);
        const std::string own = property->AsString();
        auto* animatable = dynamic_cast<FBPropertyAnimatable*>(property);
        ASSERT_TRUE(animatable);
        EXPECT_FALSE(animatable->IsAnimated());
        AnimateProperty(*property, take,
                        [](double seconds, int component) { return 10.0 * seconds + component; });
        EXPECT_TRUE(animatable->IsAnimated());
        FBPlayerControl().Goto(Seconds(2.0));
        EXPECT_EQ(property->AsString(), own);
        Scene().Evaluate();
        EXPECT_STREQ(property->AsString(), at_two);
        animatable->SetAnimated(false);
        Scene().Evaluate();
        EXPECT_EQ(property->AsString(), own);
    }
}

TEST_F(Property, RemovingAnAnimatedPropertyTakesItsAnimationAlong)
{
    FBModel& model = *model_;
    FBProperty* property = AddUserProperty(model, "P", kFBPT_double, true);
    int calls = 0;
    AnimateProperty(*property, *FBSystem().CurrentTake, [&](double, int) { return ++calls; });
    Scene().Evaluate();
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(model.PropertyRemove(property));
    Scene().Evaluate();
    EXPECT_EQ(calls, 1);
}

TEST_F(Property, StringsOfTheSdkBehaveLikeText)
{
    FBString text("ab", "cd");
    text += "e";
    EXPECT_EQ(text.GetLen(), 5);
    text[0] = 'X';
    EXPECT_TRUE(text == "Xbcde");
    FBString copy(text);
    copy = static_cast<const char*>(copy) + 2; // from its own storage
    EXPECT_STREQ(static_cast<const char*>(copy), "cde");
    EXPECT_TRUE(FBString(nullptr) == "");
    EXPECT_TRUE(FBString("a") < "b");
}

} // namespace
} // namespace mobu_host
