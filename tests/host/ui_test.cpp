#include <string>

#include <gtest/gtest.h>

#include "mobu_host/ui.h"

namespace mobu_host
{
namespace
{

class Dialog : public FBPopup
{
    FBClassDeclare(Dialog, FBPopup);

public:
    Dialog()
    {
        Left = 100;
        Top = 80;
        Width = 282;
        Height = 612;
        const auto add = [this](const char* name, int x, FBAttachType x_type, int y, FBAttachType y_type,
                                const char* relative)
        {
            return AddRegion(name, "", x, x_type, relative, 1.0f, y, y_type, relative, 1.0f, 60,
                             kFBAttachNone, nullptr, 1.0f, 26, kFBAttachNone, "", 1.0f);
        };
        EXPECT_TRUE(add("group", 10, kFBAttachNone, 20, kFBAttachNone, nullptr));
        EXPECT_TRUE(add("radio", 50, kFBAttachLeft, 10, kFBAttachTop, "group"));
        EXPECT_TRUE(add("check", 0, kFBAttachLeft, 20, kFBAttachBottom, "group"));
        EXPECT_TRUE(add("push", 5, kFBAttachRight, 0, kFBAttachTop, "check"));
        EXPECT_TRUE(add("number", 0, kFBAttachCenter, 0, kFBAttachCenter, ""));
        EXPECT_FALSE(add("push", 0, kFBAttachNone, 0, kFBAttachNone, "")) << "taken";
        EXPECT_FALSE(add("lost", 0, kFBAttachLeft, 0, kFBAttachTop, "nowhere"));
        EXPECT_TRUE(SetBorder("group", kFBEmbossSmoothEdgeBorder, true, false, 2, 2, 90.0f, 10));
        radio.Style = kFBRadioButton;
        check.Style = kFBCheckbox;
        number.Min = 0.0;
        number.Max = 240.0;
        EXPECT_TRUE(SetControl("radio", radio));
        EXPECT_TRUE(SetControl("check", &check));
        EXPECT_TRUE(SetControl("push", push));
        EXPECT_TRUE(SetControl("number", number));
        EXPECT_FALSE(SetControl("nowhere", push));
        push.OnClick.Add(this, static_cast<FBCallback>(&Dialog::OnFirst));
        push.OnClick.Add(this, static_cast<FBCallback>(&Dialog::OnSecond));
        number.OnChange.Add(this, static_cast<FBCallback>(&Dialog::OnFirst));
        check.OnClick.Add(this, static_cast<FBCallback>(&Dialog::OnClose));
    }

    void OnFirst(HISender sender, HKEvent event)
    {
        log += sender == &push ? "first " : "changed ";
        EXPECT_EQ(FBEvent(event).GetType(), sender == &push ? kFBEventActivate : kFBEventChange);
    }
    void OnSecond(HISender, HKEvent) { log += "second "; }
    void OnClose(HISender, HKEvent) { Close(true); }

    FBButton radio, check, push;
    FBEditNumber number;
    std::string log;
};
FBClassImplementation(Dialog);

class Entry : public FBMenuItem
{
    FBClassDeclare(Entry, FBMenuItem);

public:
    Entry() { Set(kFBMenuItemSceneExport, "*.abc", "Caption", "Description"); }
    bool Execute(const char* filename) override { return std::string(filename) == "good.abc"; }
};
FBClassImplementation(Entry);

class UiTest : public testing::Test
{
protected:
    ~UiTest() override { SetPopupPlayer({}); }
    Dialog dialog_;
};

TEST_F(UiTest, RegionsAreRecordedAndPlaced)
{
    const struct
    {
        const char* name;
        int left, top, right, bottom;
    } cases[] = {{"group", 10, 20, 70, 46},
                 {"radio", 60, 30, 120, 56},
                 {"check", 10, 66, 70, 92},
                 {"push", 75, 66, 135, 92},
                 {"number", 111, 293, 171, 319}};
    ASSERT_EQ(Regions(dialog_).size(), std::size(cases));
    for (int i = 0; i < static_cast<int>(std::size(cases)); ++i)
    {
        const auto& c = cases[i];
        int left = 0, top = 0, right = 0, bottom = 0;
        EXPECT_STREQ(dialog_.GetRegion(i), c.name);
        EXPECT_TRUE(dialog_.GetRegionPositions(c.name, true, &left, &top, &right, &bottom));
        EXPECT_EQ(left, c.left) << c.name;
        EXPECT_EQ(top, c.top) << c.name;
        EXPECT_EQ(right, c.right) << c.name;
        EXPECT_EQ(bottom, c.bottom) << c.name;
    }
    const Region* group = FindRegion(dialog_, "group");
    ASSERT_TRUE(group);
    EXPECT_EQ(group->border.style, kFBEmbossSmoothEdgeBorder);
    EXPECT_TRUE(group->border.show_title);
    EXPECT_FALSE(group->border.in_set);
    EXPECT_EQ(group->border.corner_radius, 10);
    EXPECT_EQ(FindRegion(dialog_, "radio")->control, &dialog_.radio);
    EXPECT_EQ(FindRegion(dialog_, "radio")->x.relative, "group");
    EXPECT_FALSE(FindRegion(dialog_, "nowhere"));
    EXPECT_TRUE(dialog_.RenameRegion("group", "box"));
    EXPECT_EQ(FindRegion(dialog_, "radio")->x.relative, "box");
}

TEST_F(UiTest, AUserClicksTypesAndMoves)
{
    EXPECT_FALSE(dialog_.Show()) << "nobody is there to use it";
    EXPECT_FALSE(Click(dialog_, "push")) << "not open";
    bool reached_end = false;
    SetPopupPlayer(
        [&](FBPopup& popup)
        {
            EXPECT_EQ(&popup, &dialog_);
            EXPECT_TRUE(Click(popup, "push"));
            EXPECT_EQ(dialog_.log, "second first ");
            EXPECT_TRUE(Click(popup, "radio"));
            EXPECT_TRUE(Click(popup, "radio"));
            EXPECT_EQ(dialog_.radio.State, 1);
            EXPECT_TRUE(Edit(popup, "number", 500.0));
            EXPECT_EQ(dialog_.number.Value, 240.0);
            dialog_.number.Value = 500.0; // code may leave the limits
            EXPECT_EQ(dialog_.number.Value, 500.0);
            dialog_.number.Enabled = false;
            EXPECT_FALSE(Edit(popup, "number", 1.0));
            EXPECT_FALSE(Edit(popup, "push", 1.0));
            EXPECT_FALSE(Click(popup, "group"));
            dialog_.push.OnClick.Remove(&dialog_, static_cast<FBCallback>(&Dialog::OnSecond));
            EXPECT_TRUE(Click(popup, "push"));
            EXPECT_EQ(dialog_.log, "second first changed first ");
            EXPECT_TRUE(MoveTo(popup, -5, 7));
            EXPECT_EQ(popup.Region.X, -5);
            EXPECT_TRUE(Click(popup, "check"));
            EXPECT_EQ(dialog_.check.State, 1);
            EXPECT_FALSE(IsOpen(popup)) << "its handler closes the popup";
            EXPECT_FALSE(Click(popup, "push"));
            EXPECT_FALSE(MoveTo(popup, 0, 0));
            reached_end = true;
        });
    EXPECT_TRUE(dialog_.Show());
    EXPECT_TRUE(reached_end);
    SetPopupPlayer([](FBPopup&) {}); // closes the window by its own button
    EXPECT_TRUE(dialog_.Show());
    EXPECT_FALSE(IsOpen(dialog_));
}

TEST_F(UiTest, EntriesOfTheMenuAreUsedAndRecorded)
{
    Entry entry;
    EXPECT_FALSE(UseMenuItem(entry, "good.abc")) << "not in the menu yet";
    EXPECT_TRUE(MenuUses().empty());
    entry.Activate();
    ASSERT_EQ(MenuItems().size(), 1u);
    EXPECT_STREQ(MenuItems()[0]->Label, "Caption");
    EXPECT_TRUE(UseMenuItem(entry, "good.abc"));
    EXPECT_FALSE(UseMenuItem(entry, "bad.abc"));
    ASSERT_EQ(MenuUses().size(), 2u);
    EXPECT_EQ(MenuUses()[0].label, "Caption");
    EXPECT_EQ(MenuUses()[0].file_name, "good.abc");
    EXPECT_TRUE(MenuUses()[0].result);
    EXPECT_FALSE(MenuUses()[1].result);
}

TEST_F(UiTest, PlaceAndCaptionAreOneUnderTwoNames)
{
    dialog_.Region.X = 12;
    dialog_.Region.Height = 99;
    EXPECT_EQ(dialog_.Left, 12);
    EXPECT_EQ(dialog_.Height, 99);
    EXPECT_EQ(dialog_.Region.Y, 80);
    dialog_.Caption = "Title";
    EXPECT_STREQ(static_cast<FBVisualComponent&>(dialog_).Caption, "Title");
}

} // namespace
} // namespace mobu_host
