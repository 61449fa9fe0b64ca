// How the command is called: help, version, bad usage, files that cannot be read.

#include "tests/tools/tool_test.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <sys/wait.h>

using namespace tv2_tests;

namespace
{

using Arguments = std::vector<std::string>;

const Arguments kVerbs = {"export", "scene", "menu", "info",    "tree", "dump",
                          "check",  "diff",  "hash", "picture", "view", "convert"};
const Arguments kFileVerbs = {"info", "tree",    "dump", "check",
                              "hash", "picture", "view"}; // they read .tv2 files

// A file verb with a file; `picture` and `view` write beside it.
Arguments Call(const std::string& verb, const std::string& file)
{
    if (verb == "view")
        return {verb, "--no-open", file, "-o", file + ".html"};
    return verb == "picture" ? Arguments{verb, file, file + ".svg"} : Arguments{verb, file};
}

Arguments AsJson(Arguments call)
{
    call.push_back("--json");
    return call;
}

// What an answer says of the only file.
nlohmann::json Entry(const nlohmann::json& json)
{
    return json.contains("files") ? json["files"][0] : json;
}

// Runs a command of the shell in which "tv2" is the command.
int Shell(const std::string& command)
{
    const int status = std::system(("tv2() { '" TV2_COMMAND "' \"$@\"; }; " + command).c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

using UsageTest = ToolTest;

TEST_F(UsageTest, HelpListsTheVerbsAndVersionIsPrinted)
{
    const auto help = RunTv2({"--help"});
    EXPECT_EQ(help.exit_code, 0);
    Arguments listed;
    std::istringstream lines(help.out.substr(help.out.find("Commands:\n")));
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("  ") && line[2] != ' ')
            listed.push_back(line.substr(2, line.find(' ', 2) - 2));
    EXPECT_EQ(listed, kVerbs); // a new verb goes into these lists
    EXPECT_EQ(RunTv2({"--version"}).out, "tv2 " TV2_EXPECTED_VERSION "\n");
}

TEST_F(UsageTest, HelpOfEachVerbHasExamplesAndFitsEightyColumns)
{
    for (const std::string& verb : kVerbs)
    {
        const auto help = RunTv2({verb, "--help"});
        EXPECT_EQ(help.exit_code, 0) << verb;
        ExpectParts(help.out, {"Examples:\n  tv2 " + verb, "--json"});
        std::istringstream lines(help.out);
        for (std::string line; std::getline(lines, line);)
            EXPECT_LE(line.size(), 80U) << verb << ": " << line;
    }
    ExpectParts(RunTv2({"export", "--help"}).out,
                {"--[no-]disable-constraints", "--[no-]keep-positive-z", "--select TEXT  "});
}

TEST_F(UsageTest, BadUsageCannotRunAndSaysWhatWasProbablyMeant)
{
    const struct
    {
        Arguments call;
        std::string why;
    } cases[] = {
        {{}, "tv2: which command? tv2 --help lists them"},
        {{"exprot", "a.bvh"}, "tv2: there is no command \"exprot\" (did you mean \"export\"?)"},
        {{"a\x1B[2J"}, "tv2: there is no command \"a\\x1b[2J\""},
        {{"--wrong"}, "tv2: "},
        {{"export", "a.bvh"}, "tv2 export: OUTPUT is required"},
        {{"scene"}, "tv2 scene: SCENE is required"},
        {{"menu", "a.tv2"}, "tv2 menu: one argument too many: \"a.tv2\""},
        {{"check"}, "tv2 check: FILE is required"},
        {{"picture", "a.tv2"}, "tv2 picture: OUTPUT.svg is required"},
        {{"view"}, "tv2 view: FILE is required"},
        {{"view", "a.tv2", "b.tv2", "c.tv2"}, "tv2 view: a page shows one file, or two over each other"},
        {{"view", "a.tv2", "b.tv2", "c.tv2"}, "tv2 view: a page shows one file, or two over each other"},
        {{"info", "--wrong", "a.tv2"}, "tv2 info: there is no option --wrong"},
        {{"info", "--jsno", "a.tv2"}, "tv2 info: there is no option --jsno (did you mean \"--json\"?)"},
        {{"export", "--fsp=25", "a.bvh", "b.tv2"},
         "tv2 export: there is no option --fsp (did you mean \"--fps\"?)"},
        {{"export", "--fps=", "a.bvh", "b.tv2"}, "tv2 export: --fps needs a value"},
        {{"export", "--no-keep-positive-y", "a.bvh", "b.tv2"},
         "there is no option --no-keep-positive-y (did you mean \"--no-keep-positive-z\"?)"},
        {{"export", "--select", "A", "B", "a.bvh", "b.tv2"},
         "tv2 export: one argument too many"}, // one name at a time
        {{"diff", "a.tv2"}, "tv2 diff: OTHER is required"},
        {{"diff", "-", "-"}, "tv2 diff: only one file can be standard input"},
        {{"diff", "--tolerance-mm", "-1", "a.tv2", "b.tv2"}, "needs a number that is not negative"},
        {{"check", "--like", "-", "a.tv2"}, "tv2 check: --like cannot be standard input"},
        {{"dump", "a.tv2", "b.tv2"}, "tv2 dump: one argument too many: \"b.tv2\""},
        {{"dump", "--keys", "many", "a.tv2"}, "--keys: \"many\" is not a whole number"},
        {{"dump", "--keys", "-1", "a.tv2"}, "--keys: is below 0"},
        {{"dump", "--keys", "1", "--json", "a.tv2"}, "--json excludes --keys"},
        {{"tree", "--at", "nan", "a.tv2"}, "--at: needs a time in seconds: 0.5"},
        {{"tree", "--at", "1s", "a.tv2"}, "--at: needs a time in seconds: 0.5"},
        {{"tree", "--depth", "-1", "a.tv2"}, "-1 not in range 0"},
        {{"picture", "--figures", "51", "a.tv2", "b.svg"}, "51 not in range 1 to 50"},
        {{"picture", "--view", "back", "a.tv2", "b.svg"}, "back not in {front,side,top}"},
    };
    for (const auto& c : cases)
    {
        const auto text = RunTv2(c.call);
        EXPECT_EQ(text.exit_code, 2) << c.why;
        ExpectParts(text.err, {c.why, "\nRun with --help for more information.\n"});
        EXPECT_EQ(text.out.empty(), std::ranges::find(c.call, "--json") == c.call.end()) << text.out;
        if (c.call.size() > 1)
        {
            const auto json = RunTv2(AsJson(c.call));
            EXPECT_EQ(json.exit_code, 2);
            ExpectParts(json.err, {": " + json.Json()["error"].get<std::string>() + '\n'});
        }
    }
}

TEST_F(UsageTest, ANameInBracketsIsOneName)
{
    const std::string file = Write(SoundImage());
    EXPECT_EQ(Shell("cd " + Path("") + " && cp " + file + " '[a,b]' && tv2 info '[a,b]' > printed"), 0);
    ExpectParts(ReadText(Path("printed")), {"[a,b]\n"});
}

TEST_F(UsageTest, ReadsStandardInputAndDrawsToStandardOutput)
{
    const std::string file = Write(SoundImage());
    for (const std::string verb : {"info", "tree", "dump", "check", "hash"})
    {
        const std::string call = "tv2 " + verb + " ";
        const std::string json = call + "--json ";
        EXPECT_EQ(Shell(json + "- < " + file + " > " + Path("piped")), 0) << verb;
        EXPECT_EQ(Shell(json + file + " | sed 's#\"" + file + "\"#\"-\"#' | cmp - " + Path("piped")), 0)
            << verb;
        EXPECT_EQ(Shell(call + "- < /dev/null > /dev/null 2>&1"), 1) << verb;
        EXPECT_EQ(Shell(call + "- < " + Path("") + " > /dev/null 2>&1"), 2) << verb;
    }
    EXPECT_EQ(Shell("tv2 picture - - < " + file + " > " + Path("piped")), 0);
    EXPECT_EQ(RunTv2({"picture", file, Path("a.svg")}).exit_code, 0);
    EXPECT_EQ(ReadText(Path("piped")), ReadText(Path("a.svg")));
}

TEST_F(UsageTest, TerminalsAreNotShownControlCharacters)
{
    const std::string file = Write(SoundImage(), "a\x1B[2J.tv2");
    const std::string damaged = Write({1, 2, 3, 4}, "b\x1B[2J.tv2");
    const std::string none = Path("none\x1B");
    const Arguments calls[] = {
        {"info", file},
        {"check", file},
        {"picture", file, Path("c\x1B.svg")},
        {"info", damaged},
        {"dump", none},
        {"check", none},
        {"scene", none + ".bvh"},
        {"picture", file, "none\x1B"},
        {"view", "--no-open", file, "-o", Path("c\x1B.html")},
        {"menu", "--plugin", none},
    };
    for (const Arguments& call : calls)
    {
        const auto run = RunTv2(call);
        EXPECT_EQ((run.out + run.err).find('\x1B'), std::string::npos) << call[0];
        ExpectParts(run.out + run.err, {"\\x1b"});
    }
}

TEST_F(UsageTest, JsonNamesFilesThatAreNotUtf8)
{
    for (const bool sound : {true, false})
    {
        const std::string name = Write(sound ? SoundImage() : std::vector<std::uint8_t>(4), "a\xFF.tv2");
        for (const std::string& verb : kFileVerbs)
        {
            const auto result = RunTv2(AsJson(Call(verb, name)));
            EXPECT_EQ(result.exit_code, sound ? 0 : 1) << verb;
            const auto entry = Entry(result.Json());
            EXPECT_EQ(entry["file"], Path("a\xEF\xBF\xBD.tv2")) << verb;
            EXPECT_EQ(entry["fileBytes"], Path("a%FF.tv2")) << verb;
            EXPECT_EQ(entry.contains("outputBytes"), sound && verb == "picture");
            EXPECT_EQ(entry.contains("error"), !sound) << verb;
            if (!sound)
                ExpectParts(entry["error"], {"bad-magic at byte 0"});
        }
    }
    EXPECT_FALSE(RunTv2({"dump", "--json", Write(SoundImage())}).Json().contains("fileBytes"));
}

TEST_F(UsageTest, JsonOfWhatCouldNotRunHasTheError)
{
    const std::string none = Path("none\xFF.tv2");
    const Arguments calls[] = {
        {"export", Path("none\xFF.bvh"), Path("a.tv2")},
        {"scene", Path("none\xFF.bvh")},
        {"menu", "--plugin", Path("none\xFF.so")},
        {"info", none},
        {"tree", none},
        {"dump", none},
        {"check", none},
        {"diff", none, none},
        {"hash", none},
        {"picture", none, Path("a.svg")},
        {"view", none},
        {"convert", none, Path("a.glb")},
    };
    ASSERT_EQ(std::size(calls), kVerbs.size());
    for (const Arguments& call : calls)
    {
        const auto result = RunTv2(AsJson(call));
        EXPECT_EQ(result.exit_code, 2) << call[0];
        const auto json = result.Json();
        const auto entry = json.contains("error") ? json : Entry(json);
        ASSERT_TRUE(entry.contains("error")) << call[0] << ' ' << json;
        ExpectParts(entry["error"], {"none\xEF\xBF\xBD."});
    }
}

TEST_F(UsageTest, FileThatCannotBeLoadedIsNamedWithTheCause)
{
    const std::vector<std::uint8_t> sound = SoundImage();
    std::vector<std::uint8_t> interrupted = sound;
    std::fill_n(interrupted.begin(), 4, std::uint8_t{0});
    const struct
    {
        std::string file;
        int exit_code;
        std::string cause;
    } cases[] = {
        {Path("none.tv2"), 2, "No such file"},
        {Path(""), 2, "Is a directory"},
        {Write({'h', 'e', 'l', 'l', 'o', '!'}, "garbage.tv2"), 1, "bad-magic"},
        {Write(interrupted, "interrupted.tv2"), 1, "bad-magic"},
        {Write({}, "empty.tv2"), 1, "empty-image"},
        {Write({sound.begin(), sound.end() - 1}, "truncated.tv2"), 1, "bad-chunk-size"},
    };
    for (const auto& c : cases)
    {
        for (const std::string& verb : kFileVerbs)
        {
            const auto run = RunTv2(Call(verb, c.file));
            EXPECT_EQ(run.exit_code, c.exit_code) << verb << ' ' << c.file;
            ExpectParts(verb == "check" && c.exit_code == 1 ? run.out : run.err, {c.file + ": ", c.cause});
        }
    }
}

TEST_F(UsageTest, OneBadFileDoesNotHideTheOthers)
{
    const std::string good = Write(SoundImage());
    for (const std::string verb : {"info", "check"})
    {
        const auto result = RunTv2({verb, Path("none.tv2"), good, "--json"});
        EXPECT_EQ(result.exit_code, 2) << verb;
        const auto files = result.Json()["files"];
        ASSERT_EQ(files.size(), 2U) << verb;
        EXPECT_EQ(files[0]["file"], Path("none.tv2"));
        EXPECT_TRUE(files[0].contains("error"));
        EXPECT_EQ(files[1]["file"], good);
        EXPECT_FALSE(files[1].contains("error"));
    }
}

TEST_F(UsageTest, OutputThatCannotBeWrittenIsAnError)
{
    const std::string good = Write(SoundImage());
    EXPECT_EQ(Shell("tv2 dump " + good + " >/dev/full 2>/dev/null"), 2);
    // A drawing is whole whatever becomes of the line about it.
    for (const std::string output : {">/dev/full", ">&-"})
    {
        EXPECT_EQ(Shell("tv2 picture " + good + " " + Path("a.svg") + " 2>/dev/null " + output), 1) << output;
        EXPECT_TRUE(ReadText(Path("a.svg")).ends_with("</svg>\n")) << output;
    }
}

} // namespace
