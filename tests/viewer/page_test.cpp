// The page as text. page_test.py opens it in a browser.

#include "viewer/page.h"

#include "tests/support/sample_scenes.h"
#include "text/base64.h"
#include "text/sha256.h"
#include "viewer/embedded.h"

#include <algorithm>
#include <nlohmann/json.hpp>

using namespace TEV2_LOADER;
using namespace tev2_viewer;
using namespace tv2_tests;

namespace
{

struct MadePage
{
    Status made;
    Page page;
};

MadePage Make(const TEV2& scene, const std::string& title = "walk.tv2",
              std::uint64_t most_bytes = kMostPageBytes)
{
    MadePage result;
    const PageScene scenes[] = {{&scene, title}};
    result.made = MakePage(scenes, result.page, most_bytes);
    return result;
}

/// What is between two texts; `from` is moved behind it.
std::string Between(const std::string& html, const std::string& begin, const std::string& end,
                    std::size_t& from)
{
    const std::size_t first = html.find(begin, from);
    EXPECT_NE(first, html.npos) << begin;
    const std::size_t last = html.find(end, first + begin.size());
    EXPECT_NE(last, html.npos) << end;
    from = last;
    return html.substr(first + begin.size(), last - first - begin.size());
}

std::string Hash(const std::string& text)
{
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    return "'sha256-" + Base64Of(Sha256Of(bytes)) + '\'';
}

TEST(PageTest, HasThePolicyFirstAndHashesOfWhatFollows)
{
    TEV2 scene;
    FillSoundScene(scene);
    const std::string html = Make(scene).page.html;
    std::size_t at = 0;
    const std::string before =
        Between(html, "<!doctype html>", "<meta http-equiv=\"Content-Security-Policy\"", at);
    EXPECT_EQ(before.find("<script"), before.npos);
    EXPECT_EQ(before.find("<style"), before.npos);
    const std::string policy = Between(html, "content=\"", "\"", at);
    const std::string style = Between(html, "<style>", "</style>", at);
    const std::string data = Between(html, "<script type=\"application/json\" id=\"data\">", "</script>", at);
    const std::string three = Between(html, "<script>", "</script>", at);
    const std::string script = Between(html, "<script>", "</script>", at);
    EXPECT_EQ(html.find("<script", at), html.npos);
    EXPECT_EQ(policy, "default-src 'none'; script-src " + Hash(three) + ' ' + Hash(script) + "; style-src " +
                          Hash(style) + "; img-src data: blob:; base-uri 'none'; form-action 'none'");
    EXPECT_NE(three.find("Permission is hereby granted"), three.npos); // the licence comes along
    EXPECT_TRUE(nlohmann::json::accept(data));
    EXPECT_EQ(html.find('\r'), html.npos);
    EXPECT_LT(html.size(), 3'000'000u);
    EXPECT_EQ(Make(scene).page.html, html);
}

TEST(PageTest, KeepsNoNameThatEndsTheDataOrIsNotAscii)
{
    TEV2 scene;
    FillSoundScene(scene);
    const std::u16string names[] = {u"</script>",   u"<!--", u"\u2028", u"\xD800", std::u16string(1, u'\0'),
                                    u"\u00C3\u00A9"};
    for (const std::u16string& name : names)
        scene.matrixHierarchy.nodes.emplace_back().name = Wide(name);
    const std::string html = Make(scene, "a<b>\xE2\x80\xAE&\xFF\n.tv2").page.html;
    std::size_t at = 0;
    EXPECT_EQ(Between(html, "<title>", "</title>", at), "a&#60;b&#62;&#8238;&#38;&#65533;\n.tv2");
    const std::string data = Between(html, "id=\"data\">", "</script>", at);
    EXPECT_TRUE(std::ranges::all_of(data, [](char c) { return c >= ' ' && c <= '~' && c != '<'; }));
    for (const char* name : {"\"\\u003c/script>\"", "\"\\u003c!--\"", "\"\\u2028\"", "\"\\ud800\"",
                             "\"\\u0000\"", "\"\\u00e9\""}) // the last was widened from bytes
        EXPECT_NE(data.find(name), data.npos) << name;
}

TEST(PageTest, LeavesOutMeshesAndThenRefusesWhereItWouldBeTooLarge)
{
    TEV2 scene;
    FillSoundScene(scene);
    const std::size_t bare = Make(scene).page.html.size();
    auto mesh = std::make_unique<TEV2_RIGID>();
    mesh->vertices->positions.resize(300'000); // 3.6 MB, 4.8 MB as Base64
    scene.rigids.push_back(std::move(mesh));
    const MadePage whole = Make(scene);
    EXPECT_TRUE(whole.page.notes.empty());
    EXPECT_GT(whole.page.html.size(), bare + 4'800'000);

    const MadePage thin = Make(scene, "walk.tv2", 3'000'000);
    ASSERT_TRUE(thin.made) << thin.made.Reason();
    EXPECT_LT(thin.page.html.size(), bare + 1'000);
    ASSERT_EQ(thin.page.notes.size(), 1u);
    EXPECT_EQ(thin.page.notes[0], "without meshes: with them the page would be 6 MB, more than 3 MB");

    const MadePage refused = Make(scene, "walk.tv2", 1'000'000);
    EXPECT_FALSE(refused.made);
    EXPECT_EQ(refused.made.Reason(), "the page would be 2 MB without meshes, more than 1 MB");
    EXPECT_TRUE(refused.page.html.empty());
}

TEST(PageTest, ShowsEveryRecordOfAnyFile)
{
    TEV2 scene;
    FillWithEverything(scene);
    const std::string html = Make(scene).page.html;
    std::size_t at = 0;
    const auto data = nlohmann::json::parse(Between(html, "id=\"data\">", "</script>", at));
    const auto& shown = data["scenes"][0];
    EXPECT_EQ(shown["nodes"].size(), scene.matrixHierarchy.nodes.size());
    EXPECT_EQ(shown["cameras"].size(), scene.cameras.size());
    EXPECT_EQ(shown["meshes"].size(), 4u); // the others are kept as bytes
    EXPECT_EQ(shown["materials"].size(), scene.materials.size());
}

} // namespace
