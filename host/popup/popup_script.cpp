#include "host/popup/popup_script.h"

#include "mobu_host/ui.h"
#include "text/closest_name.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace mobu_host
{
namespace
{

std::string Quoted(const std::string& text)
{
    std::ostringstream quoted;
    quoted << std::quoted(text);
    return quoted.str();
}

// The next word of the line; empty at its end.
std::string Word(std::istream& line)
{
    std::string word;
    line >> word;
    return word;
}

// A name in quotes that are closed.
bool ReadName(std::istream& line, std::string& name)
{
    return (line >> std::ws).peek() == '"' && line >> std::quoted(name);
}

const std::vector<std::string> kActions = {"click", "set", "edit", "move", "close"};

template <class Number>
bool ReadNumber(std::istream& line, Number& number)
{
    const std::string word = Word(line);
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc() && end == word.data() + word.size();
}

std::string NoSuchRegion(const std::string& name, FBPopup& popup)
{
    std::string list;
    std::vector<std::string> names;
    for (const Region& region : Regions(popup))
    {
        names.push_back(region.name);
        list += (list.empty() ? "" : ", ") + Quoted(region.name);
    }
    return "there is no region " + Quoted(name) +
           DidYouMeanOr(name, names, "; the popup has " + (list.empty() ? "no region at all" : list));
}

} // namespace

// Why the line is no step; empty when it is one.
std::string PopupScript::ReadStep(const std::string& line, Step& step)
{
    std::istringstream words(line);
    const std::string action = Word(words);
    if (action == "click" || action == "set" || action == "edit")
    {
        step.action = action == "click" ? Action::kClick : action == "set" ? Action::kSet : Action::kEdit;
        if (!ReadName(words, step.region))
            return action + " takes the name of a region in double quotes";
        if (step.action == Action::kSet)
        {
            const std::string state = Word(words);
            if (state != "on" && state != "off")
                return "set takes on or off after the region";
            step.on = state == "on";
        }
        if (step.action == Action::kEdit && (!ReadNumber(words, step.value) || !std::isfinite(step.value)))
            return "edit takes a number after the region, such as 12.5";
    }
    else if (action == "move")
    {
        step.action = Action::kMove;
        if (!ReadNumber(words, step.left) || !ReadNumber(words, step.top))
            return "move takes two whole numbers: left and top in pixels";
    }
    else if (action == "close")
        step.action = Action::kClose;
    else
        return "there is no step " + Quoted(action) +
               DidYouMeanOr(action, kActions, "; steps are click, set, edit, move and close");

    const std::string rest = Word(words);
    if (!rest.empty() && rest.front() != '#')
        return "nothing may follow but a comment: " + Quoted(rest);
    return {};
}

std::optional<PopupScript> PopupScript::Read(const std::string& path, std::string& error)
{
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    PopupScript script;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number)
    {
        const std::size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string::npos || line[first] == '#')
            continue;
        Step step;
        step.place = path + ":" + std::to_string(number);
        if (const std::string cause = ReadStep(line, step); !cause.empty())
        {
            error = step.place + ": " + cause;
            return {};
        }
        script.steps_.push_back(std::move(step));
    }
    if (file.bad() || !file.eof())
    {
        error = path + ": cannot be read" + (errno != 0 ? std::string(": ") + std::strerror(errno) : "");
        return {};
    }
    return script;
}

std::string PopupScript::Play(const Step& step, FBPopup& popup)
{
    if (!IsOpen(popup))
        return "the popup has closed already";
    switch (step.action)
    {
    case Action::kMove:
        MoveTo(popup, step.left, step.top);
        return {};
    case Action::kClose:
        popup.Close(false);
        return {};
    default:
        break;
    }
    return UseControl(step, popup);
}

std::string PopupScript::UseControl(const Step& step, FBPopup& popup)
{
    if (!FindRegion(popup, step.region))
        return NoSuchRegion(step.region, popup);
    FBVisualComponent* const control = popup.GetControl(step.region.c_str());
    const bool edit = step.action == Action::kEdit;
    if (edit ? !FBIS(control, FBEditNumber) : !FBIS(control, FBButton))
        return Quoted(step.region) + (edit ? " is no box for a number" : " is no button");
    if (!control->Enabled)
        return Quoted(step.region) + " is disabled";
    if (step.action == Action::kSet)
        return Set(step, static_cast<FBButton&>(*control), popup);
    if (edit)
        Edit(popup, step.region, step.value);
    else
        Click(popup, step.region);
    return {};
}

// A click that changes something: none where the button is as wanted.
std::string PopupScript::Set(const Step& step, FBButton& button, FBPopup& popup)
{
    const bool radio = button.Style == kFBRadioButton;
    if (!radio && button.Style != kFBCheckbox)
        return Quoted(step.region) + " is neither a check box nor a radio button";
    if (radio && !step.on)
        return Quoted(step.region) + " is a radio button: set another of its group on";
    if ((button.State != 0) != step.on)
        Click(popup, step.region);
    return {};
}

std::string PopupScript::Play(FBPopup& popup) const
{
    for (const Step& step : steps_)
        if (const std::string cause = Play(step, popup); !cause.empty())
            return step.place + ": " + cause;
    return {};
}

} // namespace mobu_host
