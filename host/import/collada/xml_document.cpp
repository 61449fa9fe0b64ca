#include "host/import/collada/xml_document.h"

#include "host/import/base/parse_error.h"

#include <algorithm>
#include <new>

namespace mobu_host::collada
{
namespace
{

constexpr std::string_view kBlanks = " \t\r\n";

// The tree takes its memory where everything else does.
void* Take(std::size_t bytes)
{
    return ::operator new(bytes, std::nothrow);
}

void GiveBack(void* memory)
{
    ::operator delete(memory);
}

// One code unit of the file as the parser reads it: how many bytes it becomes in UTF-8, and whether it ends a line.
struct Unit
{
    std::size_t bytes = 1;      // in the file
    std::size_t utf8_bytes = 1; // halves of a surrogate pair count 2 each
    bool ends_line = false;
};

Unit UnitOf(std::uint32_t code, std::size_t bytes, bool is_utf8)
{
    const bool is_surrogate = bytes == 2 && code >= 0xD800 && code < 0xE000;
    const std::size_t utf8 = is_utf8 || code < 0x80         ? 1
                             : code < 0x800 || is_surrogate ? 2
                             : code < 0x10000               ? 3
                                                            : 4;
    return {bytes, utf8, code == '\n'};
}

Unit NextUnit(std::string_view bytes, pugi::xml_encoding encoding)
{
    const auto at = [bytes](std::size_t i) -> std::uint32_t
    { return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0; };
    switch (encoding)
    {
    case pugi::encoding_utf16_le:
        return UnitOf(at(0) | at(1) << 8, 2, false);
    case pugi::encoding_utf16_be:
        return UnitOf(at(0) << 8 | at(1), 2, false);
    case pugi::encoding_utf32_le:
        return UnitOf(at(0) | at(1) << 8 | at(2) << 16 | at(3) << 24, 4, false);
    case pugi::encoding_utf32_be:
        return UnitOf(at(0) << 24 | at(1) << 16 | at(2) << 8 | at(3), 4, false);
    case pugi::encoding_latin1:
        return UnitOf(at(0), 1, false);
    default:
        return UnitOf(at(0), 1, true);
    }
}

} // namespace

std::string_view Attribute(Element element, const char* name)
{
    return element.attribute(name).value();
}

std::string_view NameOf(Element element)
{
    for (const char* attribute : {"name", "id", "sid"})
        if (const std::string_view text = Attribute(element, attribute); !text.empty())
            return text;
    return {};
}

std::string_view IdOf(std::string_view url)
{
    return url.starts_with('#') ? url.substr(1) : std::string_view();
}

std::string Quoted(std::string_view text)
{
    constexpr std::size_t kLongest = 100;
    std::string quoted = "\"";
    for (const char c : text.substr(0, kLongest))
        quoted += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    return quoted + (text.size() > kLongest ? "...\"" : "\"");
}

XmlDocument::XmlDocument(std::string_view bytes) : bytes_(bytes)
{
    static const bool kUsesOurMemory = []
    { return pugi::set_memory_management_functions(Take, GiveBack), true; }();
    static_cast<void>(kUsesOurMemory);
    const pugi::xml_parse_result result = tree_.load_buffer(
        bytes.data(), bytes.size(),
        pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute | pugi::parse_eol);
    encoding_ = result.encoding;
    if (result.status == pugi::status_out_of_memory)
        throw std::bad_alloc();
    if (!result)
        throw ParseError(std::string("it is not well-formed XML: ") + result.description() +
                         Line(result.offset));
    if (std::string_view(Root().name()) != "COLLADA")
        throw ParseError("its outermost element is " + Quoted(Root().name()) + ", not \"COLLADA\"");
}

void XmlDocument::Fail(Element element, const std::string& cause) const
{
    std::string place = "<" + std::string(element.name()) + ">";
    Element named = element;
    while (NameOf(named).empty() && named.parent())
        named = named.parent();
    if (named == element)
        place += " " + Quoted(NameOf(named));
    else if (!NameOf(named).empty())
        place += " of <" + std::string(named.name()) + "> " + Quoted(NameOf(named));
    throw ParseError(place + " " + cause + Line(element.offset_debug()));
}

// " (line 12)", for an offset into the document as UTF-8.
std::string XmlDocument::Line(std::ptrdiff_t offset) const
{
    if (offset < 0)
        return {};
    std::size_t line = 1, at = 0;
    for (std::size_t utf8 = 0; utf8 < static_cast<std::size_t>(offset) && at < bytes_.size();)
    {
        const Unit unit = NextUnit(bytes_.substr(at), encoding_);
        at += unit.bytes;
        utf8 += unit.utf8_bytes;
        line += unit.ends_line ? 1 : 0;
    }
    return " (line " + std::to_string(line) + ")";
}

bool Words::Next(std::string_view& word)
{
    while (text_)
    {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(kBlanks), rest_.size()));
        if (!rest_.empty())
        {
            word = rest_.substr(0, rest_.find_first_of(kBlanks));
            rest_.remove_prefix(word.size());
            return true;
        }
        text_ = text_.next_sibling();
        Open();
    }
    return false;
}

void Words::Open()
{
    while (text_ && text_.type() != pugi::node_pcdata && text_.type() != pugi::node_cdata)
        text_ = text_.next_sibling();
    rest_ = text_.value();
}

} // namespace mobu_host::collada
