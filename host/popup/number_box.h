#pragma once

#include <functional>
#include <string>

#include <FL/Fl_Input.H>

namespace mobu_host
{

/// The text of a number with the decimals of an FBEditNumber's Precision (3.2: two).
std::string NumberText(double value, double precision);

/// A number that the user types, or changes with arrow keys, page keys and wheel.
class NumberBox : public Fl_Input
{
public:
    struct Steps
    {
        double small = 1.0;
        double large = 1.0;
    };

    /// `edited`: callback for each number that the user enters.
    NumberBox(int x, int y, int width, int height, std::function<void(double)> edited);

    /// Shows this value; pending input is discarded.
    void Show(double value, double precision, Steps steps);

    /// Enters what was typed since the value was shown. Text that is not a number restores the value.
    void Commit();

    int handle(int event) override;

private:
    void StepBy(double step);

    std::function<void(double)> edited_;
    double value_ = 0.0;
    std::string shown_; // text of the value
    Steps steps_;
};

} // namespace mobu_host
