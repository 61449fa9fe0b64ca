#pragma once

#include "mobu_host/ui.h"

#include <gtest/gtest.h>

#include <string>

namespace mobu_host
{

/// A popup with a control of each kind, in regions side by side, that logs its events.
class TestDialog : public FBPopup
{
    FBClassDeclare(TestDialog, FBPopup);

public:
    static constexpr const char* kCheck = "a \"quoted\" #1";

    TestDialog()
    {
        Left = 100;
        Top = 80;
        Width = 282;
        Height = 612;
        for (const char* name : {"push", "radio", kCheck, "number", "off", "empty"})
            EXPECT_TRUE(Add(name, 0, kFBAttachNone, 0, kFBAttachNone, ""));
        radio.Style = kFBRadioButton;
        check.Style = kFBCheckbox;
        number.Min = 0.0;
        number.Max = 240.0;
        off.Enabled = false;
        EXPECT_TRUE(SetControl("push", push));
        EXPECT_TRUE(SetControl("radio", &radio));
        EXPECT_TRUE(SetControl(kCheck, check));
        EXPECT_TRUE(SetControl("number", number));
        EXPECT_TRUE(SetControl("off", off));
        EXPECT_FALSE(SetControl("nowhere", push));
        push.OnClick.Add(this, static_cast<FBCallback>(&TestDialog::OnFirst));
        push.OnClick.Add(this, static_cast<FBCallback>(&TestDialog::OnSecond));
        number.OnChange.Add(this, static_cast<FBCallback>(&TestDialog::OnFirst));
    }

    bool Add(const char* name, int x, FBAttachType x_type, int y, FBAttachType y_type, const char* relative)
    {
        return AddRegion(name, "", x, x_type, relative, 1.0f, y, y_type, relative, 1.0f, 60, kFBAttachNone,
                         nullptr, 1.0f, 26, kFBAttachNone, "", 1.0f);
    }

    void OnFirst(HISender sender, HKEvent event)
    {
        log += sender == &push ? "first " : "changed ";
        EXPECT_EQ(FBEvent(event).GetType(), sender == &push ? kFBEventActivate : kFBEventChange);
        if (closes)
            Close(true);
    }
    void OnSecond(HISender, HKEvent) { log += "second "; }

    FBButton push, radio, check, off;
    FBEditNumber number;
    std::string log;
    bool closes = false; // when "push" is pressed
};

/// Dialogs have a user only as long as the test runs.
class DialogTest : public testing::Test
{
protected:
    ~DialogTest() override { SetPopupPlayer({}); }
    TestDialog dialog_;
};

} // namespace mobu_host
