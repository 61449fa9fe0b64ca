#include "text/image_path.h"

#include <algorithm>
#include <array>

namespace
{

char UpperCase(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Whether Windows takes a part of a path for a device, "nul" or "Com1.png".
bool IsDevice(std::string_view part)
{
    std::string stem(part.substr(0, part.find('.')));
    std::ranges::transform(stem, stem.begin(), UpperCase);
    while (stem.ends_with(' '))
        stem.pop_back();
    constexpr std::array<std::string_view, 6> kDevices = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    if (std::ranges::find(kDevices, stem) != kDevices.end())
        return true;
    return stem.size() == 4 && (stem.starts_with("COM") || stem.starts_with("LPT")) && stem[3] >= '0' &&
           stem[3] <= '9';
}

/// Whether a part of a path is "..", also where a system drops trailing dots and spaces: "...", ".. ".
bool GoesUp(std::string_view part)
{
    return part.size() > 1 && part.starts_with('.') && part.find_first_not_of(". ") == std::string_view::npos;
}

} // namespace

std::string WhyItLeaves(std::string_view name)
{
    if (name.starts_with('/'))
        return "begins with /";
    for (const char c : name)
    {
        if (c == '\\')
            return "has a backslash";
        if (c == ':')
            return "has a colon, as drives and addresses have";
        if (c == '%')
            return "has a percent sign, which can stand for any character";
        if (static_cast<unsigned char>(c) < ' ')
            return "has a control character";
    }
    for (std::size_t begin = 0; begin <= name.size();)
    {
        const std::size_t end = std::min(name.find('/', begin), name.size());
        const std::string_view part = name.substr(begin, end - begin);
        if (GoesUp(part))
            return "goes up by " + std::string(part);
        if (IsDevice(part))
            return "is or passes a device of Windows, " + std::string(part);
        begin = end + 1;
    }
    return {};
}
