// The exporter's dialog as a user meets it: in a window, with mouse and keyboard.

#include "host/popup/window_module.h"

#include "exporter/export_dialog.h"
#include "exporter/platform/settings_store.h"
#include "mobu_host/scene.h"
#include "mobu_host/ui.h"
#include "tests/host/popup/virtual_display.h"
#include "tests/support/dialog_regions.h"
#include "tests/support/test_platform.h"

#include <gtest/gtest.h>

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/fl_draw.H>
#include <FL/Fl_Input.H>
#include <FL/Fl_Window.H>
#include <FL/x.H>

namespace tev2_exporter
{
namespace
{

using namespace tv2_tests::regions;

// One display for all tests of this program.
VirtualDisplay& Screen()
{
    static VirtualDisplay display;
    return display;
}

// A popup in its window, and what a user can do there.
class User
{
public:
    User(FBPopup& popup, Fl_Window& window) : popup_(popup), window_(window) {}

    Fl_Window& Window() const { return window_; }

    Fl_Widget& At(const char* region) const
    {
        int left = 0, top = 0, right = 0, bottom = 0;
        EXPECT_TRUE(popup_.GetRegionPositions(region, true, &left, &top, &right, &bottom)) << region;
        for (int i = 0; i < window_.children(); ++i)
        {
            Fl_Widget& widget = *window_.child(i);
            if (widget.x() == left && widget.y() == top && widget.w() == right - left &&
                widget.h() == bottom - top)
                return widget;
        }
        ADD_FAILURE() << "nothing at " << region;
        return window_;
    }

    bool IsSet(const char* region) const { return dynamic_cast<Fl_Button&>(At(region)).value() != 0; }
    std::string Text(const char* region) const { return dynamic_cast<Fl_Input&>(At(region)).value(); }

    void Press(const char* region) const
    {
        const Fl_Widget& widget = At(region);
        Fl::e_x = widget.x() + widget.w() / 2;
        Fl::e_y = widget.y() + widget.h() / 2;
        Fl::e_x_root = window_.x() + Fl::e_x;
        Fl::e_y_root = window_.y() + Fl::e_y;
        Fl::e_keysym = FL_Button + FL_LEFT_MOUSE;
        Fl::e_clicks = 0;
        Fl::e_state = FL_BUTTON1;
        Fl::handle(FL_PUSH, &window_);
        Fl::e_state = 0;
        Fl::handle(FL_RELEASE, &window_);
    }

    void Key(int key, std::string text = "") const
    {
        Fl::e_keysym = key;
        Fl::e_text = text.data();
        Fl::e_length = static_cast<int>(text.size());
        Fl::handle(FL_KEYBOARD, &window_);
    }

    // Replaces the text of the box, without leaving it.
    void Type(const char* region, const std::string& text) const
    {
        Press(region);
        auto& box = dynamic_cast<Fl_Input&>(At(region));
        box.position(box.size(), 0);
        for (const char c : text)
            Key(c, std::string(1, c));
    }

private:
    FBPopup& popup_;
    Fl_Window& window_;
};

class PopupWindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!Screen().Problem().empty())
            GTEST_SKIP() << "no display to show windows on: " << Screen().Problem();
        std::string error;
        window_ = mobu_host::WindowModule::Load(TEST_WINDOW_MODULE, error);
        ASSERT_TRUE(window_) << error;
        mobu_host::NewScene();
        platform::TestPlatform::Get() = {};
        platform::TestPlatform::Get().ClearSettings();
        mobu_host::ClearTakes();
        mobu_host::SetTransportRate(25.0);
        mobu_host::AddTake("A", 0.4, 4.0); // frames 10 to 100
        mobu_host::AddTake("B", 0.0, 1.0);
    }
    void TearDown() override { mobu_host::SetPopupPlayer({}); }

    // Shows the exporter's dialog to a user who does these things and then closes the window, where it is still open.
    ExportOptions Show(std::function<void(const User&)> acts)
    {
        bool acted = false;
        mobu_host::SetPopupPlayer(
            [&](FBPopup& popup)
            {
                Session session{popup, acts};
                Fl::add_timeout(0.0, Act, &session);
                window_->Show(popup);
                acted = session.done;
            });
        TEV2_EXPORTER_DIALOG dialog;
        ExportOptions options;
        dialog.ShowFor(options);
        EXPECT_TRUE(acted);
        EXPECT_FALSE(Fl::first_window()) << "nothing stays on the screen";
        return options;
    }

    struct Session
    {
        FBPopup& popup;
        const std::function<void(const User&)>& acts;
        bool done = false;
    };

    // As soon as there is something to see.
    static void Act(void* data)
    {
        auto& session = *static_cast<Session*>(data);
        Fl_Window* const window = Fl::first_window();
        if (!window || window->damage() != 0)
        {
            Fl::repeat_timeout(0.01, Act, data);
            return;
        }
        Fl::check();
        session.acts(User(session.popup, *window));
        session.done = true;
        if (mobu_host::IsOpen(session.popup) && window->shown())
            window->do_callback();
    }

    std::optional<mobu_host::WindowModule> window_;

    static std::string Stored(const char* name)
    {
        return platform::SettingsReader().Read(name).value_or("nothing");
    }
};

TEST(WindowModule, SaysWhyAModuleCannotBeLoaded)
{
    std::string error;
    EXPECT_FALSE(mobu_host::WindowModule::Load("/nowhere/window.so", error));
    EXPECT_EQ(
        error,
        "the module of its window, /nowhere/window.so (made where FLTK is installed), cannot be loaded: "
        "/nowhere/window.so: cannot open shared object file: No such file or directory");
    EXPECT_FALSE(mobu_host::WindowModule::Load(TEST_OTHER_MODULE, error));
    EXPECT_TRUE(error.ends_with("it has no tv2_window_functions")) << error;
}

TEST_F(PopupWindowTest, ShowsThePopupAsItIsLaidOut)
{
    Show(
        [](const User& user)
        {
            EXPECT_EQ(user.Window().w(), 282);
            EXPECT_EQ(user.Window().h(), 612);
            EXPECT_EQ(user.Window().x(), 100);
            EXPECT_TRUE(std::string(user.Window().label()).starts_with("TEV2 Exporter v"));
            EXPECT_TRUE(user.IsSet(kPal));
            EXPECT_FALSE(user.IsSet(kNtsc));
            EXPECT_EQ(user.Text(kRate), "50.00");
            EXPECT_EQ(user.Text(kStartKey), "10");
            EXPECT_FALSE(user.At(kRate).active());
            EXPECT_STREQ(user.At("MISC_GROUP_BOX_REGION_NAME").label(), "Miscellaneous");
            EXPECT_EQ(user.Window().children(), 23);
            for (int i = 0; i < user.Window().children(); ++i)
            {
                const Fl_Widget& widget = *user.Window().child(i);
                int width = 0, height = 0;
                fl_font(widget.labelfont(), widget.labelsize());
                fl_measure(widget.label(), width, height, 0);
                EXPECT_LE(width, widget.w()) << widget.label();
                EXPECT_LE(height, widget.h()) << widget.label();
                EXPECT_GE(widget.labelsize(), 9) << "legible";
            }
        });
}

TEST_F(PopupWindowTest, ShowsAtOnceWhatHandlersChange)
{
    Show(
        [](const User& user)
        {
            user.Press(kRate);
            user.Key('7', "7");
            EXPECT_EQ(user.Text(kRate), "50.00") << "disabled";
            user.Press(kCustomRate);
            EXPECT_TRUE(user.At(kRate).active());
            EXPECT_FALSE(user.IsSet(kPal));
            user.Press(kNtsc);
            EXPECT_EQ(user.Text(kRate), "59.94");
            EXPECT_FALSE(user.At(kRate).active());
            EXPECT_FALSE(user.IsSet(kCustomRate));
            user.Press(kNtsc);
            EXPECT_TRUE(user.IsSet(kNtsc)) << "a second click leaves a radio button set";
            user.Press(kPositiveZ);
            EXPECT_FALSE(user.IsSet(kPositiveZ));
            user.Press(kPositiveZ);
            EXPECT_TRUE(user.IsSet(kPositiveZ));
        });
}

TEST_F(PopupWindowTest, HoldsNumbersWithinTheirLimits)
{
    const ExportOptions options = Show(
        [](const User& user)
        {
            user.Press(kCustomRate);
            user.Type(kRate, "999");
            EXPECT_EQ(user.Text(kRate), "999") << "still typing";
            user.Key(FL_Enter, "\r");
            EXPECT_EQ(user.Text(kRate), "240.00");
            user.Key(FL_Down);
            user.Key(FL_Page_Down);
            EXPECT_EQ(user.Text(kRate), "234.00");
            user.Key(FL_Page_Up);
            user.Key(FL_Page_Up);
            EXPECT_EQ(user.Text(kRate), "240.00");
            user.Type(kRate, "-");
            user.Key(FL_Enter, "\r");
            EXPECT_EQ(user.Text(kRate), "240.00") << "not a number";
            user.Type(kRate, "12.345");
            user.Press(kExport); // counts without Enter
        });
    EXPECT_EQ(options.Cancelled, 0);
    EXPECT_EQ(options.SamplingRate, 12.345f) << "all digits count, whatever is shown";
    EXPECT_EQ(Stored("FPS_KEY_NAME"), "12.345000");
}

TEST_F(PopupWindowTest, ClosingItIsACancellation)
{
    const std::function<void(const User&)> ways[] = {
        [](const User&) {}, // the window's button
        [](const User& user) { user.Key(FL_Escape); },
        [](const User& user)
        {
            user.Press(kCustomRate);
            user.Type(kRate, "30");
            user.Key(FL_Escape);
            EXPECT_FALSE(user.Window().shown());
        },
        [](const User& user) { user.Press(kCancel); },
    };
    for (const auto& way : ways)
    {
        EXPECT_EQ(Show(way).Cancelled, 1) << &way - ways;
        EXPECT_EQ(Stored("FPS_KEY_NAME"), "nothing") << &way - ways;
    }
}

TEST_F(PopupWindowTest, RemembersWhereItWasMoved)
{
    const auto move = [](const User& user)
    {
        XMoveWindow(fl_display, fl_xid(&user.Window()), 321, 54);
        XSync(fl_display, 0);
        Fl::check();
        EXPECT_EQ(user.Window().x(), 321);
    };
    Show(move);
    EXPECT_EQ(Stored("DIALOG_POS_X_KEY_NAME"), "nothing");
    Show(
        [&](const User& user)
        {
            move(user);
            user.Press(kAllTakesRadio);
            user.Press(kExport);
        });
    EXPECT_EQ(Stored("DIALOG_POS_X_KEY_NAME"), "321");
    EXPECT_EQ(Stored("DIALOG_POS_Y_KEY_NAME"), "54");
    Show([](const User& user) { EXPECT_EQ(user.Window().y(), 54); });
}

} // namespace
} // namespace tev2_exporter
