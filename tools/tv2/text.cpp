#include "tools/tv2/text.h"

#include <algorithm>

namespace tv2
{

bool TextTellsUnits(std::u16string_view units)
{
    const auto ascii = [](char16_t unit) { return unit < 0x80; };
    if (std::all_of(units.begin(), units.end(), ascii))
        return true;
    if (TEV2_LOADER::IsWidenedUtf8(units))
        return false;
    for (std::size_t i = 0; i < units.size(); ++i)
    {
        if (units[i] >= 0xD800 && units[i] <= 0xDFFF)
        {
            if (units[i] > 0xDBFF || i + 1 == units.size() || units[i + 1] < 0xDC00 || units[i + 1] > 0xDFFF)
                return false;
            ++i;
        }
    }
    return true;
}

std::size_t ColumnsOf(std::string_view text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent, std::size_t used)
{
    const std::string new_line = '\n' + std::string(indent, ' ');
    std::string wrapped;
    while (true)
    {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        const bool as_it_is = line.starts_with(' ');
        for (bool first = true; !line.empty(); first = false)
        {
            const std::size_t blank = as_it_is ? line.size() : std::min(line.find(' '), line.size());
            const std::string_view word = line.substr(0, blank);
            const std::size_t columns = ColumnsOf(word);
            if (!first)
            {
                const bool fits = used + 1 + columns <= width;
                wrapped += fits ? " " : new_line;
                used = fits ? used + 1 : indent;
            }
            wrapped += word;
            used += columns;
            line.remove_prefix(std::min(blank + 1, line.size()));
        }
        if (end == text.size())
            return wrapped;
        wrapped += new_line;
        used = indent;
        text.remove_prefix(end + 1);
    }
}

} // namespace tv2
