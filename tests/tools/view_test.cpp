// tv2 view as a command. tests/viewer/ has the page itself.

#include "tests/tools/tool_test.h"

#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

using namespace tv2_tests;

namespace
{

/// Sets variables of the environment, and puts them back.
class ViewTest : public ToolTest
{
protected:
    ViewTest()
    {
        Set("TMPDIR", Path(""));
        Set("DISPLAY", "");
        Set("WAYLAND_DISPLAY", "");
    }

    ~ViewTest() override
    {
        for (const auto& [name, value] : before_)
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }

    void Set(const std::string& name, const std::string& value)
    {
        const char* const before = std::getenv(name.c_str());
        before_.emplace_back(name, before ? std::optional<std::string>(before) : std::nullopt);
        ::setenv(name.c_str(), value.c_str(), 1);
    }

    /// The only thing to open pages with, for a desktop: a program that notes its arguments.
    void SetOpener(int exit_code)
    {
        const std::string opener =
            folder_.Make("bin_xdg-open", "#!/bin/sh\nprintf '%s|' \"$@\" > \"" + Path("opened") +
                                             "\"\nexit " + std::to_string(exit_code) + "\n");
        std::filesystem::create_directories(Path("bin"));
        std::filesystem::rename(opener, Path("bin/xdg-open"));
        ::chmod(Path("bin/xdg-open").c_str(), 0700);
        Set("PATH", Path("bin") + ":/usr/bin:/bin");
        Set("DISPLAY", ":77");
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> before_;
};

TEST_F(ViewTest, WritesAPageWhereItIsToldTo)
{
    const std::string walk = Write(SoundImage(), "walk.tv2");
    const std::string run = Write(SoundImage(), "run.tv2");
    const auto answer = RunTv2({"view", "--no-open", "--json", walk, run, "-o", Path("both.html")});
    EXPECT_EQ(answer.exit_code, 0);
    const std::string page = ReadText(Path("both.html"));
    ExpectValues(answer.Json(), {{"/files/0/file", walk},
                                 {"/files/1/file", run},
                                 {"/output", Path("both.html")},
                                 {"/bytes", page.size()},
                                 {"/opened", false},
                                 {"/notes", nlohmann::json::array()}});
    ExpectParts(page, {"<title>walk.tv2, run.tv2</title>"});
    EXPECT_EQ(RunTv2({"view", "--no-open", walk, run, "-o", Path("again.html")}).out, Path("again.html\n"));
    EXPECT_EQ(ReadText(Path("again.html")), page);
    EXPECT_FALSE(folder_.Has("opened"));
}

TEST_F(ViewTest, WritesIntoAPrivateFolderOtherwise)
{
    const std::string walk = Write(SoundImage(), "walk.tv2");
    std::set<std::filesystem::path> folders;
    for (int i = 0; i < 2; ++i)
    {
        const auto answer = RunTv2({"view", "--no-open", "--json", walk});
        ASSERT_EQ(answer.exit_code, 0) << answer.err;
        const std::filesystem::path page = answer.Json()["output"].get<std::string>();
        EXPECT_EQ(page.filename(), "walk.html");
        EXPECT_TRUE(folders.insert(page.parent_path()).second);
        struct stat status
        {
        };
        ASSERT_EQ(::stat(page.parent_path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0700U);
        EXPECT_EQ(page.parent_path().parent_path(), std::filesystem::path(Path("")).parent_path());
    }
    const auto nowhere =
        RunCommand({"env", "TMPDIR=" + Path("gone"), TV2_COMMAND, "view", "--no-open", walk});
    EXPECT_EQ(nowhere.exit_code, 2) << nowhere.out;
    ExpectParts(nowhere.err, {"the temporary folder: "});
}

TEST_F(ViewTest, OpensTheBrowserWhereThereIsOne)
{
    const std::string walk = Write(SoundImage(), "-walk; rm.tv2");
    const std::string page = Path("-walk; $(rm).html");
    const auto without = RunTv2({"view", walk, "-o", page});
    EXPECT_EQ(without.exit_code, 0);
    ExpectParts(without.out, {"no browser was opened: there is no display", page});
    SetOpener(0);
    const auto answer = RunTv2({"view", "--json", walk, "-o", page});
    EXPECT_EQ(answer.exit_code, 0);
    EXPECT_EQ(answer.Json()["opened"], true);
    EXPECT_EQ(ReadText(Path("opened")), page + "|"); // one argument, as it is
    SetOpener(3);
    const auto failed = RunTv2({"view", "--json", walk, "-o", page});
    EXPECT_EQ(failed.exit_code, 0); // the page is there
    EXPECT_EQ(failed.Json()["opened"], false);
    ExpectParts(failed.Json()["notes"][0], {"xdg-open found no browser"});
}

TEST_F(ViewTest, RefusesWhatItCannotDo)
{
    const std::string walk = Write(SoundImage(), "walk.tv2");
    const std::string page = Write(SoundImage(), "walk.html");
    std::filesystem::create_hard_link(page, Path("link.tv2"));
    const struct
    {
        std::vector<std::string> call;
        int exit_code;
        std::string why;
    } cases[] = {
        {{"view", walk, "-o", Path("a.htm")}, 2, Path("a.htm") + ": a page's name ends in .html"},
        {{"view", page, "-o", page}, 2, page + ": the page would replace the file that it shows"},
        {{"view", walk, Path("link.tv2"), "-o", page},
         2,
         page + ": the page would replace the file that it shows"},
        {{"view", walk, Write({1, 2, 3, 4}, "bad.tv2"), "-o", Path("a.html")},
         1,
         Path("bad.tv2") + ": not a sound .tv2"},
        {{"view", walk, "-o", Path("gone/a.html")}, 2, Path("gone/a.html") + ": cannot be written: "},
    };
    for (const auto& c : cases)
    {
        const auto refused = RunTv2(c.call);
        EXPECT_EQ(refused.exit_code, c.exit_code) << c.why;
        ExpectParts(refused.err, {c.why});
    }
    EXPECT_EQ(ReadBytes(page), SoundImage());
    EXPECT_FALSE(folder_.Has("a.html"));
}

} // namespace
