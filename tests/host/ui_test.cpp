#include "tests/host/test_dialog.h"

#include <array>

namespace mobu_host
{

FBClassImplementation(TestDialog);

namespace
{

class Entry : public FBMenuItem
{
    FBClassDeclare(Entry, FBMenuItem);

public:
    Entry() { Set(kFBMenuItemSceneExport, "*.abc", "Caption", "Description"); }
    bool Execute(const char* filename) override { return std::string(filename) == "good.abc"; }
};
FBClassImplementation(Entry);

using UiTest = DialogTest;

TEST_F(UiTest, RegionsAreRecordedAndPlaced)
{
    EXPECT_TRUE(dialog_.Add("group", 10, kFBAttachNone, 20, kFBAttachNone, nullptr));
    EXPECT_TRUE(dialog_.Add("inside", 50, kFBAttachLeft, 10, kFBAttachTop, "group"));
    EXPECT_TRUE(dialog_.Add("below", 0, kFBAttachLeft, 20, kFBAttachBottom, "group"));
    EXPECT_TRUE(dialog_.Add("beside", 5, kFBAttachRight, 0, kFBAttachTop, "below"));
    EXPECT_TRUE(dialog_.Add("middle", 0, kFBAttachCenter, 0, kFBAttachCenter, ""));
    EXPECT_FALSE(dialog_.Add("push", 0, kFBAttachNone, 0, kFBAttachNone, "")) << "taken";
    EXPECT_FALSE(dialog_.Add("lost", 0, kFBAttachLeft, 0, kFBAttachTop, "nowhere"));
    EXPECT_TRUE(dialog_.SetBorder("group", kFBEmbossSmoothEdgeBorder, true, false, 2, 2, 90.0f, 10));
    const struct
    {
        const char* name;
        std::array<int, 4> edges; // left, top, right, bottom
    } cases[] = {{"group", {10, 20, 70, 46}},
                 {"inside", {60, 30, 120, 56}},
                 {"below", {10, 66, 70, 92}},
                 {"beside", {75, 66, 135, 92}},
                 {"middle", {111, 293, 171, 319}}};
    const std::size_t first = Regions(dialog_).size() - std::size(cases);
    for (std::size_t i = 0; i < std::size(cases); ++i)
    {
        std::array<int, 4> edges{};
        EXPECT_STREQ(dialog_.GetRegion(static_cast<int>(first + i)), cases[i].name);
        EXPECT_TRUE(
            dialog_.GetRegionPositions(cases[i].name, true, &edges[0], &edges[1], &edges[2], &edges[3]));
        EXPECT_EQ(edges, cases[i].edges) << cases[i].name;
    }
    const RegionBorder& border = FindRegion(dialog_, "group")->border;
    EXPECT_EQ(border.style, kFBEmbossSmoothEdgeBorder);
    EXPECT_TRUE(border.show_title);
    EXPECT_FALSE(border.in_set);
    EXPECT_EQ(border.corner_radius, 10);
    EXPECT_EQ(FindRegion(dialog_, "radio")->control, &dialog_.radio);
    EXPECT_FALSE(FindRegion(dialog_, "nowhere"));
    EXPECT_TRUE(dialog_.RenameRegion("group", "box"));
    EXPECT_EQ(FindRegion(dialog_, "inside")->x.relative, "box");
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
            EXPECT_FALSE(Click(popup, "empty"));
            EXPECT_TRUE(Click(popup, TestDialog::kCheck));
            EXPECT_EQ(dialog_.check.State, 1);
            EXPECT_TRUE(MoveTo(popup, -5, 7));
            EXPECT_EQ(popup.Region.X, -5);
            dialog_.push.OnClick.Remove(&dialog_, static_cast<FBCallback>(&TestDialog::OnSecond));
            dialog_.closes = true;
            EXPECT_TRUE(Click(popup, "push"));
            EXPECT_EQ(dialog_.log, "second first changed first ");
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
