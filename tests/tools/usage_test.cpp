// How the command is called: help, version, bad usage, files that cannot be read.

#include "tests/tools/command.h"
#include "tests/tools/scene_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
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
        EXPECT_EQ(result.out, "");
    }
    const std::string unknown = RunTv2({"explode", "a.tv2"}).err;
    EXPECT_NE(unknown.find("there is no verb \"explode\""), std::string::npos) << unknown;
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
    EXPECT_EQ(RunTv2({"dump", "--json", damaged}).Json()["file"], shown);
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
}

} // namespace
