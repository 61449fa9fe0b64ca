#include "tests/support/scratch_folder.h"
#include "tools/tv2/batch_stamps.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

namespace
{

namespace fs = std::filesystem;
using namespace tv2;

// Of files whose whole content is their name, as sha256sum prints them.
constexpr const char* kHashOfScene = "4f48f7207cebf92638debb5694e4a8677350cf88a9e98e73c6c466b6b1d43890";
constexpr const char* kHashOfKeys = "48a53f0774c8ceff574a1fdcb0d470dbd382b3db273cff4344b6d39d5379c923";

/// A scene "scene" that was read with 4 bytes of "keys" and exported to out/one.tv2 and out/two.tv2.
class BatchStampsTest : public testing::Test
{
protected:
    BatchStampsTest()
    {
        fs::create_directory(Path("out"));
        for (const char* name : {"scene", "keys", "out/one.tv2", "out/two.tv2", "exporter"})
            folder_.Make(name, name);
    }

    std::string Path(const std::string& name) const { return folder_.Path(name); }

    BatchScene Scene(const std::string& name = "scene") const
    {
        return {Path(name), Path("out/" + name + ".tv2"), name + ".tv2"};
    }

    Json Answer() const
    {
        return {{"files",
                 {{{"output", Path("out/one.tv2")}, {"take", "1"}, {"ok", true}},
                  {{"output", Path("out/two.tv2")}, {"take", "2"}, {"ok", true}}}},
                {"sources",
                 {{{"file", Path("scene")}, {"bytes", 5}, {"sha256", kHashOfScene}},
                  {{"file", Path("keys")}, {"bytes", 4}, {"sha256", kHashOfKeys}}}}};
    }

    std::string Circumstances() const { return CircumstancesOf(given_, Path("exporter")); }

    void Record(const BatchScene& scene, const Json& answer) const
    {
        BatchStamps stamps(Path("out"), Circumstances());
        EXPECT_TRUE(stamps.Record(scene, answer));
        EXPECT_TRUE(stamps.Write());
    }

    std::string WhyExport(const BatchScene& scene) const
    {
        BatchStamps stamps(Path("out"), Circumstances());
        EXPECT_EQ(stamps.Read(), "");
        return stamps.WhyExport(scene);
    }

    std::vector<GivenOption> given_{{"--fps", {"--fps=60"}}};
    tv2_tests::ScratchFolder folder_;
};

TEST_F(BatchStampsTest, WhatAnExportDependsOnMakesItOutOfDate)
{
    struct Case
    {
        std::function<void()> change;
        const char* reason; ///< part of it; empty: still up to date
    };
    const auto write = [&](const char* name, const char* text)
    { return [=, this] { folder_.Make(name, text); }; };
    const Case cases[] = {
        {[] {}, ""},
        {[&]
         { fs::last_write_time(Path("scene"), fs::file_time_type::clock::now() + std::chrono::hours(1)); },
         ""},
        {write("scene", "Scene"), "scene\" has changed"},
        {write("scene", "scene and more"), "scene\" has changed"},
        {write("scene", "scene"), ""}, // the bytes count
        {[&] { fs::rename(Path("scene"), Path("gone")); }, "scene\" is not there"},
        {[&] { fs::rename(Path("gone"), Path("scene")); }, ""},
        {write("keys", "Keys"), "keys\" has changed"},
        {write("keys", "keys and what was never read"), ""},
        {write("out/two.tv2", "out/TWO.tv2"), "two.tv2\" has changed"},
        {[&] { fs::remove(Path("out/two.tv2")); }, "two.tv2\" is not there"},
        {write("out/two.tv2", "out/two.tv2"), ""},
        {[&] {
             given_.push_back({"--take", {"--take=walk"}});
         },
         "options"},
        {[&] { given_.pop_back(); }, ""},
        {[&] {
             given_.push_back({"-j", {"-j", "8"}});
         },
         ""},
        {[] { ::setenv("SOURCE_DATE_EPOCH", "7", 1); }, "SOURCE_DATE_EPOCH"},
        {[] { ::unsetenv("SOURCE_DATE_EPOCH"); }, ""},
        {write("exporter", "Exporter"), "the exporter has changed"},
        {write("exporter", "exporter"), ""},
    };
    ::unsetenv("SOURCE_DATE_EPOCH");
    EXPECT_EQ(WhyExport(Scene()), "it has no stamp");
    Record(Scene(), Answer());
    for (const Case& c : cases)
    {
        c.change();
        const std::string reason = WhyExport(Scene());
        EXPECT_NE(reason.find(c.reason), std::string::npos) << reason << " for " << c.reason;
        EXPECT_EQ(reason.empty(), *c.reason == '\0') << reason;
    }
    BatchScene other = Scene();
    other.scene = Path("keys");
    EXPECT_EQ(WhyExport(other), "its stamp is of another scene");
    fs::rename(Path("out"), Path("moved"));
    BatchStamps moved(Path("moved"), Circumstances());
    EXPECT_EQ(moved.Read(), "");
    EXPECT_EQ(moved.WhyExport(Scene()), "the output folder was elsewhere"); // which is in the files
}

TEST_F(BatchStampsTest, OptionsThatChangeNoFileDoNotCount)
{
    const auto of = [this](const std::vector<GivenOption>& given)
    { return CircumstancesOf(given, Path("exporter")); };
    const std::string plain = of({});
    for (const char* name : {"--json", "--quiet", "--newer", "--no-clobber", "--dry-run", "--recursive",
                             "--shard", "--yes", "--report", "-j", "-o", "--config", "--plugin"})
        EXPECT_EQ(of({{name, {name}}}), plain) << name;
    for (const char* name : {"--fps", "--take", "--all-takes", "--select", "--start-frame", "--scene-rate",
                             "--keep-positive-z", "--an-option-of-tomorrow"})
        EXPECT_NE(of({{name, {name}}}), plain) << name;
    const GivenOption rate{"--fps", {"--fps=60"}}, a{"--select", {"--select=A"}},
        b{"--select", {"--select=B"}};
    EXPECT_EQ(of({rate, a, b}), of({a, rate, b}));
    EXPECT_NE(of({rate, a, b}), of({rate, b, a})); // the order of one option may count
}

TEST_F(BatchStampsTest, OnlyWholeExportsAreStamped)
{
    Json answer = Answer();
    answer["files"][1]["ok"] = false;
    Record(Scene(), answer);
    answer = Answer();
    answer["files"][0]["skipped"] = true; // by --no-clobber: the file may be of another export
    Record(Scene(), answer);
    EXPECT_EQ(WhyExport(Scene()), "it has no stamp");
}

TEST_F(BatchStampsTest, DamageMakesEverythingOutOfDate)
{
    const std::string circumstances = Circumstances();
    Record(Scene(), Answer());
    const std::string good = tv2_tests::ReadText(Path("out/.tv2-stamps"));
    EXPECT_EQ(good.substr(0, good.find('\n')), "{\"tv2Stamps\":1}");
    for (std::size_t size = 0; size < good.size(); size += 13)
    {
        if (good[size - (size > 0 ? 1 : 0)] == '\n')
            continue; // a whole file with fewer stamps
        folder_.Make("out/.tv2-stamps", good.substr(0, size));
        BatchStamps stamps(Path("out"), circumstances);
        EXPECT_NE(stamps.Read().find(".tv2-stamps\" cannot be used"), std::string::npos) << size;
        EXPECT_EQ(stamps.WhyExport(Scene()), "it has no stamp") << size;
    }
    for (const std::string& text :
         {"{\"tv2Stamps\":2}" + good.substr(good.find('\n')), std::string("[]\n"), good + "{}\n",
          good + "null\n", std::string(4000, '\0'),
          good + "{\"output\":" + std::string(2'000'000, '[') + std::string(2'000'000, ']') + "}\n"})
    {
        folder_.Make("out/.tv2-stamps", text);
        BatchStamps stamps(Path("out"), circumstances);
        EXPECT_NE(stamps.Read(), "") << text.substr(0, 4000);
        EXPECT_NE(stamps.WhyExport(Scene()), "") << text.substr(0, 4000);
    }
    const std::size_t files = good.find("\"files\":[") + 9;
    folder_.Make("out/.tv2-stamps", good.substr(0, files) + good.substr(good.rfind("]}")));
    EXPECT_EQ(WhyExport(Scene()), "its stamp has no files");
    Record(Scene(), Answer());
    EXPECT_EQ(WhyExport(Scene()), "");
}

TEST_F(BatchStampsTest, RunsKeepTheStampsOfOthers)
{
    folder_.Make("other", "scene");
    BatchStamps first(Path("out"), Circumstances());
    BatchStamps second(Path("out"), Circumstances());
    EXPECT_EQ(first.Read() + second.Read(), "");
    EXPECT_TRUE(first.Record(Scene(), Answer()));
    EXPECT_TRUE(second.Record(Scene("other"), Answer()));
    EXPECT_TRUE(first.Write());
    EXPECT_TRUE(second.Write());
    EXPECT_EQ(WhyExport(Scene()), "");
    EXPECT_EQ(WhyExport(Scene("other")), "");
}

TEST_F(BatchStampsTest, NamesMayBeAnyBytes)
{
    const std::string name = "50%\xFF";
    folder_.Make(name, "scene");
    folder_.Make("out/" + name + ".tv2", "");
    Json answer = Answer();
    // As an answer has it: U+FFFD for the byte, and all of them beside it.
    answer["files"] = {{{"output", "?"}, {"outputBytes", Path("out/50%25%FF.tv2")}, {"ok", true}}};
    answer["sources"][0] = {
        {"file", "?"}, {"fileBytes", Path("50%25%FF")}, {"bytes", 5}, {"sha256", kHashOfScene}};
    Record(Scene(name), answer);
    EXPECT_EQ(WhyExport(Scene(name)), "");
    folder_.Make("out/" + name + ".tv2", "changed");
    EXPECT_NE(WhyExport(Scene(name)), "");
}

} // namespace
