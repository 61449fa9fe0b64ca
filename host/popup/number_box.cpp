#include "host/popup/number_box.h"

#include <charconv>
#include <cmath>

#include <FL/Fl.H>

namespace mobu_host
{

std::string NumberText(double value, double precision)
{
    const int decimals = static_cast<int>(std::lround(10.0 * (precision - std::floor(precision)))) % 10;
    char text[400]; // of the largest double
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
    return std::string(text, end);
}

NumberBox::NumberBox(int x, int y, int width, int height, std::function<void(double)> edited)
    : Fl_Input(x, y, width, height), edited_(std::move(edited))
{
    type(FL_FLOAT_INPUT);
    when(FL_WHEN_ENTER_KEY_ALWAYS | FL_WHEN_RELEASE);
    callback([](Fl_Widget* box) { static_cast<NumberBox*>(box)->Commit(); });
}

void NumberBox::Show(double number, double precision, Steps steps)
{
    value_ = number;
    steps_ = steps;
    shown_ = NumberText(number, precision);
    if (shown_ != value())
        value(shown_.c_str());
}

void NumberBox::Commit()
{
    const std::string text = value();
    if (text == shown_)
        return;
    double number = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    value(shown_.c_str());
    if (error == std::errc() && end == text.data() + text.size() && std::isfinite(number))
        edited_(number);
}

void NumberBox::StepBy(double step)
{
    Commit();
    edited_(value_ + step);
}

int NumberBox::handle(int event)
{
    if (event == FL_KEYBOARD)
    {
        switch (Fl::event_key())
        {
        case FL_Up:
            StepBy(steps_.small);
            return 1;
        case FL_Down:
            StepBy(-steps_.small);
            return 1;
        case FL_Page_Up:
            StepBy(steps_.large);
            return 1;
        case FL_Page_Down:
            StepBy(-steps_.large);
            return 1;
        case FL_Escape: // not the box's: it closes the window
            return 0;
        default:
            break;
        }
    }
    if (event == FL_MOUSEWHEEL && Fl::event_dy() != 0)
    {
        StepBy(-steps_.small * Fl::event_dy());
        return 1;
    }
    return Fl_Input::handle(event);
}

} // namespace mobu_host
