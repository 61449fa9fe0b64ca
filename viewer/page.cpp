#include "viewer/page.h"

#include "text/base64.h"
#include "text/sha256.h"
#include "text/utf8.h"
#include "viewer/embedded.h"
#include "viewer/page_data.h"

#include <functional>

namespace tev2_viewer
{

using TEV2_LOADER::Status;

namespace
{

/// "'sha256-...'", which allows a page to run or apply exactly this text.
std::string HashSource(std::string_view text)
{
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    return "'sha256-" + Base64Of(Sha256Of(bytes)) + '\'';
}

std::string ThreeScript()
{
    return "/*\n" + std::string(kThreeLicence) + "*/\n" + std::string(kThreeScript);
}

std::string Policy(const std::string& three)
{
    return "default-src 'none'; script-src " + HashSource(three) + ' ' + HashSource(kPageScript) +
           "; style-src " + HashSource(kPageStyle) +
           "; img-src data: blob:; base-uri 'none'; form-action 'none'";
}

/// Text of an element: whatever is not plain becomes a reference, what HTML cannot have U+FFFD.
std::string HtmlText(std::string_view utf8)
{
    constexpr std::string_view kPlain = " -_.,()\n";
    std::string text;
    while (!utf8.empty())
    {
        const char32_t character = TakeCharacter(utf8);
        const bool plain =
            (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
            (character >= 'a' && character <= 'z') ||
            (character < 0x80 && kPlain.find(static_cast<char>(character)) != std::string_view::npos);
        if (plain)
            text += static_cast<char>(character);
        else if (character < 0x20 || (character >= 0x7F && character < 0xA0))
            text += "&#65533;";
        else
            text += "&#" + std::to_string(static_cast<std::uint32_t>(character)) + ';';
    }
    return text;
}

std::string TitleOf(std::span<const PageScene> scenes)
{
    std::string title;
    for (const PageScene& scene : scenes)
        title += (title.empty() ? "" : ", ") + scene.title;
    return title;
}

/// Calls text(piece) and place(name) for the pieces of the template in order; places are names between @ signs.
void ForEachPiece(const std::function<void(std::string_view)>& text,
                  const std::function<void(std::string_view)>& place)
{
    constexpr std::size_t kNowhere = std::string_view::npos;
    std::string_view rest = kPageTemplate;
    while (true)
    {
        const std::size_t begin = rest.find('@');
        const std::size_t end = begin == kNowhere ? kNowhere : rest.find('@', begin + 1);
        text(rest.substr(0, begin));
        if (end == kNowhere)
            return;
        place(rest.substr(begin + 1, end - begin - 1));
        rest.remove_prefix(end + 1);
    }
}

std::string Megabytes(std::uint64_t bytes)
{
    return std::to_string((bytes + 999'999) / 1'000'000) + " MB";
}

void Fill(const PageData& data, const std::string& title, const std::string& three, std::string& html)
{
    const auto fill = [&](std::string_view place)
    {
        if (place == "policy")
            html += Policy(three);
        else if (place == "title")
            html += HtmlText(title);
        else if (place == "style")
            html += kPageStyle;
        else if (place == "data")
            data.Write(html);
        else if (place == "licences")
            html += HtmlText(kThreeLicence);
        else if (place == "three")
            html += three;
        else if (place == "script")
            html += kPageScript;
    };
    ForEachPiece([&](std::string_view text) { html += text; }, fill);
}

} // namespace

Status MakePage(std::span<const PageScene> scenes, Page& page, std::uint64_t most_bytes)
{
    page = {};
    const std::string three = ThreeScript();
    const std::uint64_t frame = three.size() + kPageScript.size() + kPageStyle.size() + kPageTemplate.size();
    std::uint64_t with_meshes = 0;
    for (const bool meshes : {true, false})
    {
        PageData data(meshes);
        for (const PageScene& scene : scenes)
            data.Add(*scene.scene, scene.title);
        const std::uint64_t size = frame + data.Length();
        if (size > most_bytes)
        {
            with_meshes = size;
            continue;
        }
        if (!meshes)
        {
            page.notes.push_back("without meshes: with them the page would be " + Megabytes(with_meshes) +
                                 ", more than " + Megabytes(most_bytes));
        }
        page.html.reserve(size);
        Fill(data, TitleOf(scenes), three, page.html);
        return {};
    }
    return Status::Failure("the page would be " + Megabytes(with_meshes) + " without meshes, more than " +
                           Megabytes(most_bytes));
}

} // namespace tev2_viewer
