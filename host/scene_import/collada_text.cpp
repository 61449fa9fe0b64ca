#include "host/scene_import/collada_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

namespace mobu_host
{
namespace
{

void AppendUtf8(std::string& text, std::uint32_t code)
{
    const auto append = [&text](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (code < 0x80)
        append(code);
    else if (code < 0x800)
    {
        append(0xC0 | code >> 6);
        append(0x80 | (code & 0x3F));
    }
    else if (code < 0x10000)
    {
        append(0xE0 | code >> 12);
        append(0x80 | (code >> 6 & 0x3F));
        append(0x80 | (code & 0x3F));
    }
    else
    {
        append(0xF0 | (code >> 18 & 0x07));
        append(0x80 | (code >> 12 & 0x3F));
        append(0x80 | (code >> 6 & 0x3F));
        append(0x80 | (code & 0x3F));
    }
}

std::string Unescape(std::string_view text)
{
    static constexpr std::array<std::pair<std::string_view, char>, 5> kEntities{
        {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
    std::string plain;
    while (!text.empty())
    {
        const std::size_t end = text.front() == '&' ? text.find(';') : std::string_view::npos;
        if (end == std::string_view::npos)
        {
            plain.push_back(text.front());
            text.remove_prefix(1);
            continue;
        }
        std::string_view entity = text.substr(1, end - 1);
        text.remove_prefix(end + 1);
        if (entity.starts_with("#"))
        {
            entity.remove_prefix(1);
            const int base = entity.starts_with("x") ? 16 : 10;
            entity.remove_prefix(base == 16 ? 1 : 0);
            std::uint32_t code = 0;
            std::from_chars(entity.data(), entity.data() + entity.size(), code, base);
            AppendUtf8(plain, code);
            continue;
        }
        for (const auto& [name, character] : kEntities)
        {
            if (entity == name)
                plain.push_back(character);
        }
    }
    return plain;
}

constexpr std::string_view kBlank = " \t\r\n";

// The value of an attribute in the inside of a tag; empty when it has none.
std::string Attribute(std::string_view tag, std::string_view name)
{
    while (true)
    {
        const std::size_t equals = tag.find('=');
        if (equals == std::string_view::npos)
            return {};
        std::string_view key = tag.substr(0, equals);
        while (!key.empty() && kBlank.find(key.back()) != std::string_view::npos)
            key.remove_suffix(1);
        const std::size_t blank = key.find_last_of(kBlank);
        if (blank != std::string_view::npos)
            key.remove_prefix(blank + 1);

        const std::size_t quote = tag.find_first_of("\"'", equals);
        const std::size_t end = quote == std::string_view::npos ? quote : tag.find(tag[quote], quote + 1);
        if (end == std::string_view::npos)
            return {};
        if (key == name)
            return Unescape(tag.substr(quote + 1, end - quote - 1));
        tag.remove_prefix(end + 1);
    }
}

// One element: what stands inside its start tag, and behind that up to its end tag.
struct Element
{
    std::size_t attributes = 0; // where they begin
    std::string_view tag;
    std::string_view content;
};

// The next element of this name from `at` on, which moves behind its start tag. Elements within elements of the same
// name come as well, later.
std::optional<Element> NextElement(std::string_view document, std::string_view name, std::size_t& at)
{
    const std::string start = "<" + std::string(name);
    while ((at = document.find(start, at)) != std::string_view::npos)
    {
        at += start.size();
        const std::size_t end = document.find('>', at);
        if (end == std::string_view::npos)
            return std::nullopt;
        if (document[at] != '>' && kBlank.find(document[at]) == std::string_view::npos)
            continue;
        Element element{at, document.substr(at, end - at), document.substr(end + 1)};
        if (!element.tag.ends_with('/'))
            element.content = element.content.substr(0, element.content.find("</" + std::string(name)));
        else
            element.content = {};
        return element;
    }
    return std::nullopt;
}

std::string WithWholeCameras(std::string_view document)
{
    constexpr std::string_view kAngleEnd = "</yfov>";
    std::string whole;
    std::size_t copied = 0;
    const auto insert = [&](std::size_t at, std::string_view text)
    {
        whole += document.substr(copied, at - copied);
        whole += text;
        copied = at;
    };
    std::size_t at = 0;
    while (const std::optional<Element> camera = NextElement(document, "camera", at))
    {
        if (Attribute(camera->tag, "name").empty())
            insert(camera->attributes, " name=\"camera\"");
        const auto has = [&camera](std::string_view text)
        { return camera->content.find(text) != std::string_view::npos; };
        if (has(kAngleEnd) && !has("<xfov") && !has("<aspect_ratio"))
            insert(static_cast<std::size_t>(camera->content.data() - document.data()) +
                       camera->content.find(kAngleEnd) + kAngleEnd.size(),
                   "<aspect_ratio>1</aspect_ratio>");
    }
    insert(document.size(), "");
    return whole;
}

} // namespace

ColladaText ScanCollada(std::string_view document)
{
    ColladaText text;
    text.document = WithWholeCameras(document);
    for (const std::string_view kind : {"BEZIER", "HERMITE", "STEP", "CARDINAL", "BSPLINE"})
    {
        for (std::size_t at = document.find(kind); at != std::string_view::npos && !text.has_curves;
             at = document.find(kind, at + 1))
        {
            const char before = at > 0 ? document[at - 1] : ' ';
            text.has_curves = before == '>' || kBlank.find(before) != std::string_view::npos;
        }
    }
    std::size_t at = 0;
    while (const std::optional<Element> node = NextElement(document, "node", at))
    {
        const std::string id = Attribute(node->tag, "id");
        const std::string name = Attribute(node->tag, "name");
        if (!id.empty() && !name.empty())
            text.node_names.emplace(id, name);
    }
    return text;
}

} // namespace mobu_host
