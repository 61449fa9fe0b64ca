#include "exporter/rules/file_name_rules.h"

#include "text/message_text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tev2_exporter
{
namespace
{

std::string_view FileNameOf(std::string_view path)
{
    const std::size_t separator = path.find_last_of("/\\");
    if (separator != std::string_view::npos)
        return path.substr(separator + 1);
    const bool has_drive = path.size() > 1 && path[1] == ':';
    return path.substr(has_drive ? 2 : 0);
}

std::string AsciiUpper(std::string_view text)
{
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return upper;
}

/// 0 to 9, or a superscript 1 to 3 in Latin-1 or UTF-8, which count as digits here.
bool IsPortNumber(std::string_view text)
{
    constexpr std::array<std::string_view, 6> kSuperscripts = {"\xB9",     "\xB2",     "\xB3",
                                                               "\xC2\xB9", "\xC2\xB2", "\xC2\xB3"};
    return (text.size() == 1 && text[0] >= '0' && text[0] <= '9') ||
           std::find(kSuperscripts.begin(), kSuperscripts.end(), text) != kSuperscripts.end();
}

} // namespace

std::string WindowsDevice(const std::string& path)
{
    if (path.starts_with("\\\\.\\") || path.starts_with("//./"))
        return path;
    // Whatever follows the first dot does not count, nor do blanks in front of it.
    const std::string_view name = FileNameOf(path);
    std::string base = AsciiUpper(name.substr(0, name.find_first_of(".:")));
    base.erase(base.find_last_not_of(' ') + 1);
    constexpr std::array<std::string_view, 7> kDevices = {"CON",    "PRN",     "AUX",   "NUL",
                                                          "CONIN$", "CONOUT$", "CLOCK$"};
    const bool is_port = (base.starts_with("COM") || base.starts_with("LPT")) && IsPortNumber(base.substr(3));
    return is_port || std::find(kDevices.begin(), kDevices.end(), base) != kDevices.end() ? base
                                                                                          : std::string();
}

std::string WhyNoWindowsFile(const std::string& path)
{
    if (const std::string device = WindowsDevice(path); !device.empty())
        return Quoted(device) + " is the name of a device";
    for (const char c : FileNameOf(path))
        if (static_cast<unsigned char>(c) < 0x20 || std::string_view("<>:\"|?*").find(c) != std::string::npos)
            return "no name of a file can have the character " + Quoted(std::string_view(&c, 1));
    return {};
}

} // namespace tev2_exporter
