#include "viewer/json_text.h"

#include "tev2_loader/io/wide_string.h"
#include "text/utf8.h"

namespace tev2_viewer
{

JsonText& JsonText::Key(std::string_view name)
{
    Text(name);
    text_ += ':';
    return *this;
}

JsonText& JsonText::Text(std::u16string_view units)
{
    Separate();
    text_ += '"';
    for (const char16_t unit : units)
        Unit(unit);
    text_ += '"';
    return *this;
}

JsonText& JsonText::Text(std::string_view ascii)
{
    return Text(std::u16string(ascii.begin(), ascii.end()));
}

JsonText& JsonText::Number(std::int64_t number)
{
    Separate();
    text_ += std::to_string(number);
    return *this;
}

JsonText& JsonText::Begin(char bracket)
{
    Separate();
    text_ += bracket;
    return *this;
}

JsonText& JsonText::End(char bracket)
{
    text_ += bracket;
    return *this;
}

void JsonText::Separate()
{
    if (!text_.empty() && std::string_view("{[:").find(text_.back()) == std::string_view::npos)
        text_ += ',';
}

void JsonText::Unit(char16_t unit)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    if (unit >= u' ' && unit <= u'~' && unit != u'"' && unit != u'\\' && unit != u'<')
    {
        text_ += static_cast<char>(unit);
        return;
    }
    text_ += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        text_ += kDigits[(unit >> shift) & 0xF];
}

std::u16string Utf16Text(std::string_view utf8)
{
    std::u16string units;
    while (!utf8.empty())
    {
        char32_t character = TakeCharacter(utf8);
        if (character > 0xFFFF)
        {
            units += static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
            character = 0xDC00 + ((character - 0x10000) & 0x3FF);
        }
        units += static_cast<char16_t>(character);
    }
    return units;
}

std::u16string ReadableUnits(std::u16string_view units)
{
    using namespace TEV2_LOADER;
    return IsWidenedUtf8(units) ? Utf16Text(NarrowUtf8(units)) : std::u16string(units);
}

} // namespace tev2_viewer
