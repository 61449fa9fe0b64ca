#include "exporter/platform/platform.h"

#include "exporter/base/text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace tev2_exporter::platform
{
namespace
{

bool IsYes(std::string answer)
{
    std::ranges::transform(answer, answer.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return answer == "o" || answer == "ok" || answer == "y" || answer == "yes";
}

/// Seconds since 1970, set where builds are to be reproducible. Dates of more than four digits count as unset.
std::optional<std::time_t> FixedTime()
{
    constexpr std::time_t kLatest = 253402300799; // the last second of 9999
    const char* const text = std::getenv("SOURCE_DATE_EPOCH");
    if (!text)
        return std::nullopt;
    std::time_t seconds = 0;
    const char* const end = text + std::strlen(text);
    const auto [rest, error] = std::from_chars(text, end, seconds);
    const bool valid =
        error == std::errc() && rest == end && rest != text && seconds >= 0 && seconds <= kLatest;
    return valid ? std::optional(seconds) : std::nullopt;
}

} // namespace

UtcTime CurrentUtcTime()
{
    const std::time_t now = FixedTime().value_or(std::time(nullptr));
    std::tm utc{};
    gmtime_r(&now, &utc);
    return {utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec};
}

std::optional<std::string> UserName()
{
    constexpr std::size_t kLongest = 63;
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return std::nullopt;
    std::string name = found->pw_name;
    if (name.empty() || name.size() > kLongest)
        return std::nullopt;
    return name;
}

/// A file without any write permission: the permission bits decide, as the mark would on other systems, even for a
/// superuser who could write it all the same.
bool IsReadOnly(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

void MakeWritable(const std::string& path)
{
    struct stat status;
    if (stat(path.c_str(), &status) == 0)
        static_cast<void>(chmod(path.c_str(), (status.st_mode & 07777) | S_IWUSR));
}

bool AskOkCancel(const std::u16string& caption, const std::u16string& text)
{
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO))
        return false;
    std::cerr << '\n' << Narrow(caption) << '\n' << Narrow(text) << "\n[o]k or [C]ancel? " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return IsYes(answer);
}

} // namespace tev2_exporter::platform
