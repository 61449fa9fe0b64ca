// The module tv2_popup_window: popups in windows of FLTK.

#include "host/popup/window_module.h"

#include "host/popup/group_frame.h"
#include "host/popup/mark_button.h"
#include "host/popup/number_box.h"
#include "mobu_host/ui.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/fl_draw.H>
#include <FL/x.H>

namespace mobu_host
{
namespace
{

constexpr int kLargestText = 13; // pixels
constexpr int kSmallestText = 8;

// Escapes a caption: to the toolkit @ begins a symbol, and & in a button a shortcut.
std::string LabelText(const char* caption, bool in_button)
{
    std::string text;
    for (const char* c = caption ? caption : ""; *c; ++c)
        text.append(*c == '@' || (in_button && *c == '&') ? 2 : 1, *c);
    return text;
}

/// A popup on the screen.
class PopupWindow : public Fl_Double_Window
{
public:
    explicit PopupWindow(FBPopup& popup);

    /// Until the popup or its window is closed.
    void Run();

    void resize(int x, int y, int width, int height) override;

protected:
    void draw() override;

private:
    /// A region and the widget that shows it.
    struct View
    {
        PopupWindow& window;
        std::string region;
        FBVisualComponent* control; // none: a border alone
        Fl_Widget* widget;
    };

    void AddRegion(const Region& region);
    Fl_Widget* MakeWidget(const std::string& region, FBVisualComponent& control, int x, int y, int width,
                          int height);
    Fl_Widget* MakeButton(FBButton& button, int x, int y, int width, int height);
    Fl_Widget* MakeLabel(FBLabel& label, int x, int y, int width, int height);
    void FitText();
    bool Fits(const View& view, int size) const;
    void CommitNumbers();
    void Refresh();
    void Refresh(View& view);

    FBPopup& popup_;
    std::vector<std::unique_ptr<View>> views_;
    bool placed_ = false; // by the window manager
    int left_ = 0;        // where it was placed
    int top_ = 0;
    int popup_left_ = 0; // where the popup asked to be
    int popup_top_ = 0;
};

PopupWindow::PopupWindow(FBPopup& popup)
    : Fl_Double_Window(popup.Left, popup.Top, popup.Width, popup.Height),
      popup_(popup),
      popup_left_(popup.Left),
      popup_top_(popup.Top)
{
    for (const Region& region : Regions(popup))
        AddRegion(region);
    end();
    FitText();
    Refresh();
    set_modal();
}

void PopupWindow::AddRegion(const Region& region)
{
    int left = 0, top = 0, right = 0, bottom = 0;
    popup_.GetRegionPositions(region.name.c_str(), true, &left, &top, &right, &bottom);
    if (region.border.style != kFBNoBorder)
    {
        auto* const frame = new GroupFrame(left, top, right - left, bottom - top, region.border);
        frame->copy_label(region.title.c_str());
        views_.emplace_back(new View{*this, region.name, nullptr, frame});
    }
    if (!region.control)
        return;
    if (Fl_Widget* widget = MakeWidget(region.name, *region.control, left, top, right - left, bottom - top))
    {
        widget->copy_tooltip(region.control->Hint);
        views_.emplace_back(new View{*this, region.name, region.control, widget});
        if (FBIS(region.control, FBButton))
            widget->callback(
                [](Fl_Widget*, void* data)
                {
                    View& view = *static_cast<View*>(data);
                    view.window.CommitNumbers();
                    Click(view.window.popup_, view.region);
                    view.window.Refresh();
                },
                views_.back().get());
    }
}

// Null for an unsupported kind of control.
Fl_Widget* PopupWindow::MakeWidget(const std::string& region, FBVisualComponent& control, int x, int y,
                                   int width, int height)
{
    if (control.Is(FBButton::TypeInfo))
        return MakeButton(static_cast<FBButton&>(control), x, y, width, height);
    if (control.Is(FBLabel::TypeInfo))
        return MakeLabel(static_cast<FBLabel&>(control), x, y, width, height);
    if (control.Is(FBEditNumber::TypeInfo))
        return new NumberBox(x, y, width, height,
                             [this, region](double number)
                             {
                                 Edit(popup_, region, number);
                                 Refresh();
                             });
    return nullptr;
}

Fl_Widget* PopupWindow::MakeButton(FBButton& button, int x, int y, int width, int height)
{
    // The popup decides which is set, not a group of the toolkit.
    if (button.Style == kFBRadioButton)
        return new MarkButton(x, y, width, height, MarkButton::Mark::kRound);
    if (button.Style == kFBCheckbox)
        return new MarkButton(x, y, width, height, MarkButton::Mark::kSquare);
    return new Fl_Button(x, y, width, height);
}

Fl_Widget* PopupWindow::MakeLabel(FBLabel& label, int x, int y, int width, int height)
{
    const Fl_Align sides[] = {FL_ALIGN_LEFT, FL_ALIGN_RIGHT, FL_ALIGN_CENTER};
    auto* const widget = new Fl_Box(x, y, width, height);
    const FBTextJustify side = label.Justify;
    widget->align(FL_ALIGN_INSIDE | sides[side <= kFBTextJustifyCenter ? side : kFBTextJustifyLeft] |
                  (label.WordWrap ? FL_ALIGN_WRAP : 0));
    return widget;
}

bool PopupWindow::Fits(const View& view, int size) const
{
    constexpr int kTextMargin = 6; // pixels that the toolkit leaves free around text
    const Fl_Widget& widget = *view.widget;
    FBVisualComponent* const control = view.control;
    std::string text = control ? LabelText(control->Caption, true) : widget.label() ? widget.label() : "";
    int room = widget.w() - kTextMargin;
    int width = 0, height = 0;
    if (!control)
        room = widget.w() - static_cast<const GroupFrame&>(widget).UnusableWidth();
    else if (FBIS(control, FBButton))
        room -= dynamic_cast<const MarkButton*>(&widget) ? MarkButton::UnusableWidth(size) : 0;
    else if (FBIS(control, FBEditNumber))
    {
        auto& number = *static_cast<FBEditNumber*>(control);
        text = NumberText(number.Value, number.Precision);
    }
    else if (static_cast<FBLabel*>(control)->WordWrap)
        width = room;
    fl_measure(text.c_str(), width, height, 0);
    return width <= room && (!control || height <= widget.h());
}

// One size for all texts: the largest that truncates none.
void PopupWindow::FitText()
{
    int size = kLargestText;
    for (; size > kSmallestText; --size)
    {
        fl_font(FL_HELVETICA, size);
        if (std::all_of(views_.begin(), views_.end(), [&](const auto& view) { return Fits(*view, size); }))
            break;
    }
    for (const auto& view : views_)
    {
        view->widget->labelsize(static_cast<Fl_Fontsize>(size));
        if (FBIS(view->control, FBEditNumber))
            static_cast<NumberBox*>(view->widget)->textsize(static_cast<Fl_Fontsize>(size));
    }
}

void PopupWindow::CommitNumbers()
{
    for (const auto& view : views_)
        if (FBIS(view->control, FBEditNumber))
            static_cast<NumberBox*>(view->widget)->Commit();
}

void PopupWindow::Refresh(View& view)
{
    FBVisualComponent& control = *view.control;
    Fl_Widget& widget = *view.widget;
    widget.copy_label(LabelText(control.Caption, control.Is(FBButton::TypeInfo)).c_str());
    control.Enabled ? widget.activate() : widget.deactivate();
    control.Visible ? widget.show() : widget.hide();
    if (control.Is(FBButton::TypeInfo))
        static_cast<Fl_Button&>(widget).value(static_cast<FBButton&>(control).State);
    else if (control.Is(FBEditNumber::TypeInfo))
    {
        auto& number = static_cast<FBEditNumber&>(control);
        static_cast<NumberBox&>(widget).Show(number.Value, number.Precision,
                                             {number.SmallStep, number.LargeStep});
    }
}

// Updates all widgets: a handler may have changed any control.
void PopupWindow::Refresh()
{
    copy_label(popup_.Caption);
    for (const auto& view : views_)
        if (view->control)
            Refresh(*view);
}

void PopupWindow::resize(int x, int y, int width, int height)
{
    Fl_Double_Window::resize(x, y, width, height);
    // A window manager may move a window when it adds the frame; only later moves are the user's.
    if (placed_)
        MoveTo(popup_, popup_left_ + x - left_, popup_top_ + y - top_);
}

// At the first call the window manager has placed the window.
void PopupWindow::draw()
{
    Fl_Double_Window::draw();
    if (placed_)
        return;
    left_ = x();
    top_ = y();
    placed_ = true;
}

void PopupWindow::Run()
{
    show();
    while (shown() && IsOpen(popup_))
        Fl::wait();
    placed_ = false;
    hide();
    Fl::flush(); // hide it now: what comes next may take long
}

std::string Connect()
{
    if (fl_display)
        return {};
    Display* const display = XOpenDisplay(nullptr);
    if (!display)
    {
        const char* const name = std::getenv("DISPLAY");
        return name && *name ? "the display " + std::string(name) + " cannot be reached"
                             : std::string("there is no display: DISPLAY is not set");
    }
    fl_open_display(display);
    Fl::scheme("gtk+");
    return {};
}

void Show(FBPopup& popup)
{
    PopupWindow(popup).Run();
}

} // namespace
} // namespace mobu_host

extern "C" FBSDK_MODULE_EXPORT const mobu_host::WindowFunctions tv2_window_functions;
const mobu_host::WindowFunctions tv2_window_functions{mobu_host::Connect, mobu_host::Show};
