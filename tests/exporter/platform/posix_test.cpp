#include "exporter/base/text.h"
#include "exporter/platform/platform.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <poll.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace tev2_exporter::platform
{
namespace
{

namespace fs = std::filesystem;

std::chrono::sys_seconds Now()
{
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

/// Sets a variable of the environment during its lifetime.
class EnvironmentChange
{
public:
    EnvironmentChange(const char* name, const char* value) : name_(name)
    {
        if (const char* const old = std::getenv(name))
            old_ = old;
        setenv(name, value, 1);
        tzset();
    }

    ~EnvironmentChange()
    {
        if (old_)
            setenv(name_, old_->c_str(), 1);
        else
            unsetenv(name_);
        tzset();
    }

    EnvironmentChange(const EnvironmentChange&) = delete;
    EnvironmentChange& operator=(const EnvironmentChange&) = delete;

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(Clock, TellsUniversalTimeWhateverTheZone)
{
    using namespace std::chrono;
    const EnvironmentChange zone("TZ", "EAST-5:30");
    const EnvironmentChange clock("SOURCE_DATE_EPOCH", "");
    const auto before = Now();
    const UtcTime told = CurrentUtcTime();
    const year_month_day date{year(told.year), month(static_cast<unsigned>(told.month)),
                              day(static_cast<unsigned>(told.day))};
    const sys_seconds time = sys_days(date) + hours(told.hour) + minutes(told.minute) + seconds(told.second);
    EXPECT_LE(before, time);
    EXPECT_LE(time, Now());
}

TEST(Clock, IsSetForReproducibleExports)
{
    const struct
    {
        const char* text;
        int year; ///< 0: the clock's
    } cases[] = {{"0", 1970},
                 {"1709629622", 2024},
                 {"253402300799", 9999},
                 {"253402300800", 0},
                 {"-1", 0},
                 {"", 0},
                 {"1e9", 0},
                 {" 1", 0},
                 {"99999999999999999999", 0}};
    for (const auto& item : cases)
    {
        const EnvironmentChange change("SOURCE_DATE_EPOCH", item.text);
        const UtcTime time = CurrentUtcTime();
        if (item.year != 0)
            EXPECT_EQ(time.year, item.year) << item.text;
        else
            EXPECT_GE(time.year, 2025) << item.text;
    }
    const EnvironmentChange change("SOURCE_DATE_EPOCH", "1709629622"); // date -u -d @1709629622
    const UtcTime time = CurrentUtcTime();
    EXPECT_EQ((std::vector{time.month, time.day, time.hour, time.minute, time.second}),
              (std::vector{3, 5, 9, 7, 2}));
}

TEST(User, IsNotWhomTheEnvironmentNames)
{
    const std::optional<std::string> user = UserName();
    for (const char* const variable : {"USER", "LOGNAME", "USERNAME"})
    {
        const EnvironmentChange change(variable, "somebody else");
        EXPECT_EQ(UserName(), user) << variable;
    }
}

TEST(ReadOnlyMark, IsSeenAndTakenOffUnderEveryName)
{
    const tv2_tests::ScratchFolder scratch;
    const fs::path& folder = scratch.Folder();
    for (const char* const name : {"plain.tv2", "caf\xC3\xA9.tv2", "caf\xE9.tv2"})
    {
        const fs::path file = folder / name;
        const std::string path = file.string();
        std::ofstream(file) << "old";
        EXPECT_FALSE(IsReadOnly(path));
        fs::permissions(file, fs::perms::owner_read | fs::perms::group_read);
        EXPECT_TRUE(IsReadOnly(path));
        MakeWritable(path);
        EXPECT_FALSE(IsReadOnly(path));
        EXPECT_EQ(fs::status(file).permissions(),
                  fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    }
    const std::string missing = (folder / "missing.tv2").string();
    MakeWritable(missing);
    for (const std::string& none : {missing, std::string(), folder.string()})
        EXPECT_FALSE(IsReadOnly(none));
    EXPECT_FALSE(fs::exists(missing));
}

/// Replaces standard input and error with a terminal.
class Terminal
{
public:
    Terminal()
    {
        if (openpty(&master_, &slave_, nullptr, nullptr, nullptr) != 0)
            return;
        termios mode{};
        tcgetattr(slave_, &mode);
        mode.c_lflag &= ~static_cast<tcflag_t>(ECHO); // what is typed does not mix with what is asked
        tcsetattr(slave_, TCSANOW, &mode);
        std::cerr.flush();
        for (const int stream : {STDIN_FILENO, STDERR_FILENO})
        {
            kept_[stream] = dup(stream);
            dup2(slave_, stream);
        }
    }

    ~Terminal()
    {
        if (!Opened())
            return;
        for (const int stream : {STDIN_FILENO, STDERR_FILENO})
        {
            dup2(kept_[stream], stream);
            close(kept_[stream]);
        }
        close(slave_);
        close(master_);
    }

    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool Opened() const { return master_ != -1; } // some containers have no terminals

    void Type(const std::string& keys) const
    {
        EXPECT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    /// What is on the screen, up to `end`.
    std::string ScreenUpTo(const std::string& end) const
    {
        std::string screen;
        pollfd arrival{master_, POLLIN, 0};
        while (!screen.ends_with(end) && poll(&arrival, 1, 1000) == 1)
        {
            char text[256];
            screen.append(text,
                          static_cast<std::size_t>(std::max<ssize_t>(read(master_, text, sizeof text), 0)));
        }
        return screen;
    }

private:
    int master_ = -1;
    int slave_ = -1;
    int kept_[STDERR_FILENO + 1] = {};
};

TEST(Question, IsAskedOnTheTerminalAndTakesAnAnswer)
{
    const struct
    {
        const char* typed;
        bool ok;
    } cases[] = {{"o\n", true},  {"OK\n", true}, {"y\n", true},    {"Yes\n", true}, {"\n", false},
                 {"c\n", false}, {"n\n", false}, {"ok \n", false}, {"\4", false}};
    for (const auto& item : cases)
    {
        const Terminal terminal;
        if (!terminal.Opened())
            GTEST_SKIP() << "no terminal can be opened here";
        terminal.Type(item.typed);
        EXPECT_EQ(AskOkCancel(u"Caption", Widen("Write over caf\xC3\xA9.tv2?")), item.ok) << item.typed;
        EXPECT_EQ(terminal.ScreenUpTo("[C]ancel? "),
                  "\r\nCaption\r\nWrite over caf\xC3\xA9.tv2?\r\n[o]k or [C]ancel? ");
        std::cin.clear(); // after an end of input
    }
}

TEST(Question, IsNotAskedWhereThereIsNoTerminal)
{
    const Terminal terminal;
    if (!terminal.Opened())
        GTEST_SKIP() << "no terminal can be opened here";
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "ok\n", 3), 3);
    dup2(ends[0], STDIN_FILENO);
    EXPECT_FALSE(AskOkCancel(u"Caption", u"Text"));
    char typed[4];
    EXPECT_EQ(read(ends[0], typed, sizeof typed), 3) << "and nothing of the input is taken";
    close(ends[0]);
    close(ends[1]);
}

} // namespace
} // namespace tev2_exporter::platform
