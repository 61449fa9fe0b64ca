#include "host/popup/popup_script.h"

#include "mobu_host/ui.h"

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

template <class Number>
bool ReadNumber(std::istream& line, Number& number)
{
    const std::string word = Word(line);
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc() && end == word.data() + word.size();
}

std::string NamesOf(FBPopup& popup)
{
    std::string names;
    for (const Region& region : Regions(popup))
        names += (names.empty() ? "" : ", ") + Quoted(region.name);
    return names.empty() ? "no region at all" : names;
}

} // namespace

// Why the line is no step; empty when it is one.
std::string PopupScript::ReadStep(const std::string& line, Step& step)
{
    std::istringstream words(line);
    const std::string action = Word(words);
    if (action == "click" || action == "edit")
    {
        step.action = action == "click" ? Action::kClick : Action::kEdit;
        if (!ReadName(words, step.region))
            return action + " takes the name of a region in double quotes";
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
        return "there is no step " + Quoted(action) + "; steps are click, edit, move and close";

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
    if (!FindRegion(popup, step.region))
        return "there is no region " + Quoted(step.region) + "; the popup has " + NamesOf(popup);
    FBVisualComponent* const control = popup.GetControl(step.region.c_str());
    const bool click = step.action == Action::kClick;
    if (click ? !FBIS(control, FBButton) : !FBIS(control, FBEditNumber))
        return Quoted(step.region) + (click ? " is no button" : " is no box for a number");
    if (!control->Enabled)
        return Quoted(step.region) + " is disabled";
    if (click)
        Click(popup, step.region);
    else
        Edit(popup, step.region, step.value);
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
