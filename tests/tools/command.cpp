#include "tests/tools/command.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

std::string ReadText(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

} // namespace

nlohmann::json CommandResult::Json() const
{
    nlohmann::json json = nlohmann::json::parse(out, nullptr, false);
    EXPECT_FALSE(json.is_discarded()) << "not JSON: " << out << err;
    return json.is_discarded() ? nlohmann::json() : json;
}

CommandResult RunTv2(const std::vector<std::string>& arguments)
{
    const ScratchFolder folder;
    const std::string out = folder.Path("out");
    const std::string err = folder.Path("err");

    std::vector<std::string> texts = {TV2_COMMAND};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& text : texts)
    {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t process = 0;
    const int failed = posix_spawn(&process, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);

    CommandResult result;
    int status = 0;
    rusage usage{};
    if (failed == 0 && wait4(process, &status, 0, &usage) == process && WIFEXITED(status))
    {
        result.peak_kilobytes = usage.ru_maxrss;
        result.exit_code = WEXITSTATUS(status);
    }
    result.out = ReadText(out);
    result.err = ReadText(err);
    return result;
}

ScratchFolder::ScratchFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "tv2_tools_XXXXXX").string();
    const char* made = mkdtemp(pattern.data());
    EXPECT_NE(made, nullptr);
    path_ = pattern;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}
