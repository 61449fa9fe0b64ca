#include "gltf/place.h"

#include <algorithm>

namespace gltf
{
namespace
{

constexpr std::size_t kLongestName = 80; // bytes

std::string OnOneLine(std::string_view name)
{
    std::string line(name.substr(0, kLongestName));
    if (line.size() < name.size())
    {
        const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
        for (std::size_t end = kLongestName; !line.empty() && end > 0 && continues(name[end]); --end)
            line.pop_back();
        line += "...";
    }
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; },
        ' ');
    return line;
}

} // namespace

std::string Place::Text() const
{
    std::string text = inside ? inside->Text() + (inside->name.empty() ? "." : ": ") : std::string();
    text.append(list).append("[").append(std::to_string(index)).append("]");
    if (!name.empty())
        text.append(" \"").append(OnOneLine(name)).append("\"");
    return text;
}

} // namespace gltf
