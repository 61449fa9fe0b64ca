// How the command is called: help, version, bad usage, files that cannot be read.

#include "tests/tools/command.h"
#include "tests/tools/scene_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <sys/wait.h>

namespace
{

using Arguments = std::vector<std::string>;

const Arguments kVerbs = {"export", "scene", "menu", "info", "dump", "check", "picture"};
const Arguments kFileVerbs = {"info", "dump", "check", "picture"}; // they read .tv2 files

// A file verb with a file; `picture` is told to draw beside it.
Arguments Call(const std::string& verb, const std::string& file)
{
    return verb == "picture" ? Arguments{verb, file, file + ".svg"} : Arguments{verb, file};
}

Arguments AsJson(Arguments call)
{
    call.push_back("--json");
    return call;
}

TEST(Usage, HelpOfEachVerbHasExamplesAndNamesJson)
{
    for (const std::string& verb : kVerbs)
    {
        const CommandResult help = RunTv2({verb, "--help"});
        EXPECT_EQ(help.exit_code, 0) << verb;
        EXPECT_NE(help.out.find("Examples:\n  tv2 " + verb), std::string::npos) << help.out;
        EXPECT_NE(help.out.find("--json"), std::string::npos) << help.out;
    }
}

TEST(Usage, HelpListsTheVerbsAndVersionIsPrinted)
{
    const CommandResult help = RunTv2({"--help"});
    EXPECT_EQ(help.exit_code, 0);
    for (const std::string& verb : kVerbs)
    {
        EXPECT_NE(help.out.find("\n  " + verb + " "), std::string::npos) << help.out;
    }
    const CommandResult version = RunTv2({"--version"});
    EXPECT_EQ(version.exit_code, 0);
    EXPECT_EQ(version.out, "tv2 " TV2_EXPECTED_VERSION "\n");
}

TEST(Usage, BadUsageCannotRun)
{
    const std::vector<Arguments> calls = {
        {},
        {"explode", "a.tv2"},
        {"export"},
        {"export", "a.bvh"},
        {"scene"},
        {"scene", "a.bvh", "b.bvh"},
        {"menu", "a.tv2"},
        {"info"},
        {"dump"},
        {"check"},
        {"picture", "a.tv2"},
        {"info", "--wrong", "a.tv2"},
        {"--wrong"},
        {"dump", "a", "b"},
        {"dump", "--keys", "many", "a.tv2"},
        {"dump", "--keys", "-1", "a.tv2"},
        {"dump", "--keys", "1", "--json", "a.tv2"},
    };
    for (const auto& call : calls)
    {
        const CommandResult result = RunTv2(call);
        EXPECT_EQ(result.exit_code, 2) << (call.empty() ? "no arguments" : call.back());
        EXPECT_NE(result.err, "");
        const bool json = std::find(call.begin(), call.end(), "--json") != call.end();
        EXPECT_EQ(result.out.empty(), !json) << result.out;
    }
}

TEST(Usage, BadUsageIsToldWithWhatWasProbablyMeant)
{
    const struct
    {
        Arguments call;
        std::string why; // after "tv2 ...: "
    } cases[] = {
        {{}, "tv2: which command? tv2 --help lists them"},
        {{"explode", "a.tv2"}, "tv2: there is no command \"explode\""},
        {{"exprot", "a.bvh"}, "tv2: there is no command \"exprot\" (did you mean \"export\"?)"},
        {{"a\x1B[2J"}, "tv2: there is no command \"a\\x1b[2J\""},
        {{"info", "--jsno", "a.tv2"}, "tv2 info: there is no option --jsno (did you mean \"--json\"?)"},
        {{"export", "--fsp=25", "a.bvh", "b.tv2"},
         "tv2 export: there is no option --fsp (did you mean \"--fps\"?)"},
        {{"export", "--no-keep-positive-y", "a.bvh", "b.tv2"},
         "there is no option --no-keep-positive-y (did you mean \"--no-keep-positive-z\"?)"},
        {{"dump", "a.tv2", "b.tv2"}, "tv2 dump: one argument too many: \"b.tv2\""},
        {{"export", "--select", "A", "B", "a.bvh", "b.tv2"},
         "tv2 export: one argument too many"}, // --select takes one name at a time
    };
    for (const auto& c : cases)
    {
        const CommandResult text = RunTv2(c.call);
        EXPECT_EQ(text.exit_code, 2) << c.why;
        EXPECT_NE(text.err.find(c.why), std::string::npos) << text.err;
        EXPECT_EQ(text.out, "");
        if (c.call.size() > 1)
        {
            const CommandResult json = RunTv2(AsJson(c.call));
            EXPECT_EQ(json.exit_code, 2);
            const std::string error = json.Json()["error"];
            EXPECT_NE(json.err.find(": " + error + '\n'), std::string::npos) << json.err << error;
        }
    }
}

TEST(Usage, HelpFitsEightyColumns)
{
    for (const std::string& command : kVerbs)
    {
        std::istringstream help(RunTv2({command, "--help"}).out);
        for (std::string line; std::getline(help, line);)
            EXPECT_LE(line.size(), 80U) << command << ": " << line;
    }
    const std::string help = RunTv2({"export", "--help"}).out;
    for (const char* const option :
         {"--[no-]disable-constraints", "--[no-]keep-positive-z", "--select TEXT  "})
        EXPECT_NE(help.find(option), std::string::npos) << option << help;
}

// Runs a command of the shell in which "tv2" is the command.
int Shell(const std::string& command)
{
    const int status = std::system(("tv2() { '" TV2_COMMAND "' \"$@\"; }; " + command).c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Usage, ReadsStandardInputAndDrawsToStandardOutput)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("a.tv2");
    WriteBytes(file, SoundImage());
    for (const std::string command : {"info", "dump", "check"})
    {
        const std::string out = folder.Path(command);
        EXPECT_EQ(Shell("tv2 " + command + " --json - < " + file + " > " + out), 0) << command;
        EXPECT_EQ(Shell("tv2 " + command + " --json " + file + " | sed 's#" + file +
                        "#-#; s#\"standard input\"#\"-\"#' > " + out +
                        ".file && sed 's#\"standard input\"#\"-\"#' " + out + " | cmp - " + out + ".file"),
                  0)
            << command;
        EXPECT_EQ(Shell("tv2 " + command + " - < /dev/null > /dev/null 2>&1"), 1) << command;
        EXPECT_EQ(Shell("tv2 " + command + " - < " + folder.Path("") + " > /dev/null 2>&1"), 2) << command;
    }
    EXPECT_EQ(Shell("tv2 picture - - < " + file + " > " + folder.Path("piped")), 0);
    EXPECT_EQ(RunTv2({"picture", file, folder.Path("a.svg")}).exit_code, 0);
    EXPECT_EQ(ReadBytes(folder.Path("piped")), ReadBytes(folder.Path("a.svg")));
    EXPECT_EQ(RunTv2({"picture", "--json", file, "-"}).exit_code, 2);
}

TEST(Usage, TerminalsAreNotShownControlCharacters)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("a\x1B[2J.tv2");
    WriteBytes(file, SoundImage());
    WriteBytes(folder.Path("b\x1B[2J.tv2"), {1, 2, 3, 4});
    for (const Arguments& call :
         {Arguments{"info", file}, Arguments{"check", file},
          Arguments{"picture", file, folder.Path("c\x1B.svg")},
          Arguments{"info", folder.Path("b\x1B[2J.tv2")}, Arguments{"dump", folder.Path("none\x1B")},
          Arguments{"check", folder.Path("none\x1B")}, Arguments{"scene", folder.Path("none\x1B.bvh")},
          Arguments{"picture", file, "none\x1B"}, Arguments{"menu", "--plugin", "none\x1B"}})
    {
        const CommandResult run = RunTv2(call);
        EXPECT_EQ((run.out + run.err).find('\x1B'), std::string::npos) << call[0];
        EXPECT_NE((run.out + run.err).find("\\x1b"), std::string::npos) << call[0];
    }
}

TEST(Usage, JsonOfAFailureHoldsTheFileAndTheError)
{
    const ScratchFolder folder;
    const std::string damaged = folder.Path("damaged\xFF.tv2"); // no UTF-8
    WriteBytes(damaged, {1, 2, 3, 4});
    const std::string shown = folder.Path("damaged\xEF\xBF\xBD.tv2");
    for (const std::string& verb : kFileVerbs)
    {
        const CommandResult result = RunTv2(AsJson(Call(verb, damaged)));
        EXPECT_EQ(result.exit_code, 1) << verb;
        const auto json = result.Json();
        const auto entry = json.contains("files") ? json["files"][0] : json;
        EXPECT_EQ(entry["file"], shown) << verb;
        EXPECT_NE(entry["error"].get<std::string>().find("bad-magic at byte 0"), std::string::npos) << verb;
    }
    WriteBytes(damaged, SoundImage());
    for (const std::string& verb : kFileVerbs) // the name can be had from the bytes beside it
    {
        const auto json = RunTv2(AsJson(Call(verb, damaged))).Json();
        const auto entry = json.contains("files") ? json["files"][0] : json;
        EXPECT_EQ(entry["file"], shown) << verb;
        EXPECT_EQ(entry["fileBytes"], folder.Path("damaged%FF.tv2")) << verb;
        EXPECT_EQ(entry.contains("outputBytes"), verb == "picture");
    }
    WriteBytes(folder.Path("sound.tv2"), SoundImage());
    EXPECT_FALSE(RunTv2({"dump", "--json", folder.Path("sound.tv2")}).Json().contains("fileBytes"));
}

TEST(Usage, JsonOfWhatCouldNotRunHoldsTheError)
{
    const ScratchFolder folder;
    const std::string none = folder.Path("none\xFF.tv2");
    const std::vector<Arguments> calls = {
        {"export", folder.Path("none\xFF.bvh"), folder.Path("a.tv2")},
        {"scene", folder.Path("none\xFF.bvh")},
        {"menu", "--plugin", folder.Path("none\xFF.so")},
        {"info", none},
        {"dump", none},
        {"check", none},
        {"picture", none, folder.Path("a.svg")},
    };
    ASSERT_EQ(calls.size(), kVerbs.size());
    for (const Arguments& call : calls)
    {
        const CommandResult result = RunTv2(AsJson(call));
        EXPECT_EQ(result.exit_code, 2) << call[0];
        const auto json = result.Json();
        const auto entry = json.contains("error") ? json : json["files"][0];
        ASSERT_TRUE(entry.contains("error")) << call[0] << ' ' << json;
        EXPECT_NE(entry["error"].get<std::string>().find("none\xEF\xBF\xBD."), std::string::npos)
            << call[0] << ' ' << json;
    }
}

TEST(Usage, FileThatCannotBeReadIsNamedWithTheCause)
{
    const ScratchFolder folder;
    for (const std::string& verb : kFileVerbs)
    {
        const CommandResult missing = RunTv2(Call(verb, folder.Path("none.tv2")));
        EXPECT_EQ(missing.exit_code, 2) << verb;
        EXPECT_NE(missing.err.find(folder.Path("none.tv2") + ": No such file"), std::string::npos)
            << missing.err;

        const CommandResult directory = RunTv2(Call(verb, folder.Path("")));
        EXPECT_EQ(directory.exit_code, 2) << verb;
        EXPECT_NE(directory.err.find(folder.Path("") + ": Is a directory"), std::string::npos)
            << directory.err;
    }
}

TEST(Usage, FileThatIsNoSceneIsNamedWithTheCause)
{
    struct Case
    {
        const char* name;
        Bytes bytes;
        const char* code;
    };
    Bytes interrupted = SoundImage();
    std::fill(interrupted.begin(), interrupted.begin() + 4, std::uint8_t{0});
    Bytes truncated = SoundImage();
    truncated.pop_back();
    const Case cases[] = {
        {"garbage.tv2", {'h', 'e', 'l', 'l', 'o', '!'}, "bad-magic"},
        {"interrupted.tv2", interrupted, "bad-magic"},
        {"empty.tv2", {}, "empty-image"},
        {"truncated.tv2", truncated, "bad-chunk-size"},
    };
    const ScratchFolder folder;
    for (const Case& item : cases)
    {
        const std::string path = folder.Path(item.name);
        WriteBytes(path, item.bytes);
        for (const std::string& verb : kFileVerbs)
        {
            const CommandResult result = RunTv2(Call(verb, path));
            EXPECT_EQ(result.exit_code, 1) << verb << ' ' << item.name;
            const std::string& text = verb == "check" ? result.out : result.err;
            EXPECT_NE(text.find(path), std::string::npos) << text;
            EXPECT_NE(text.find(item.code), std::string::npos) << text;
        }
    }
}

TEST(Usage, OneBadFileDoesNotHideTheOthers)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("good.tv2"), SoundImage());
    for (const std::string verb : {"info", "check"})
    {
        const CommandResult result =
            RunTv2({verb, folder.Path("none.tv2"), folder.Path("good.tv2"), "--json"});
        EXPECT_EQ(result.exit_code, 2) << verb;
        const auto json = result.Json();
        ASSERT_EQ(json["files"].size(), 2U) << verb;
        EXPECT_EQ(json["files"][0]["file"], folder.Path("none.tv2"));
        EXPECT_TRUE(json["files"][0].contains("error"));
        EXPECT_EQ(json["files"][1]["file"], folder.Path("good.tv2"));
        EXPECT_FALSE(json["files"][1].contains("error"));
    }
}

TEST(Usage, OutputThatCannotBeWrittenIsAnError)
{
    const ScratchFolder folder;
    WriteBytes(folder.Path("good.tv2"), SoundImage());
    const std::string call =
        std::string(TV2_COMMAND) + " dump '" + folder.Path("good.tv2") + "' >/dev/full 2>/dev/null";
    const int status = std::system(call.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 2);
    // A drawing is whole whatever becomes of the line about it.
    const std::string picture =
        "tv2 picture " + folder.Path("good.tv2") + " " + folder.Path("a.svg") + " 2>/dev/null ";
    for (const std::string output : {">/dev/full", ">&-"})
    {
        EXPECT_EQ(Shell(picture + output), 1) << output;
        const Bytes drawing = ReadBytes(folder.Path("a.svg"));
        EXPECT_TRUE(std::string(drawing.begin(), drawing.end()).ends_with("</svg>\n")) << output;
    }
}

} // namespace
