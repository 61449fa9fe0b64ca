#include "exporter/rules/file_facts.h"

#include <cerrno>
#include <clocale>
#include <cwchar>
#include <cwctype>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace tev2_exporter
{
namespace
{

/// Knows the letters of UTF-8 text whatever the user's locale is; null where the system has no such locale.
locale_t Utf8Locale()
{
    static const locale_t locale = []
    {
        const locale_t plain = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return plain != nullptr ? plain : ::newlocale(LC_CTYPE_MASK, "en_US.UTF-8", nullptr);
    }();
    return locale;
}

char AsciiUpper(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// Uses a locale in this thread during its lifetime.
class LocaleInUse
{
public:
    explicit LocaleInUse(locale_t locale) : before_(::uselocale(locale)) {}
    ~LocaleInUse() { ::uselocale(before_); }
    LocaleInUse(const LocaleInUse&) = delete;
    LocaleInUse& operator=(const LocaleInUse&) = delete;

private:
    locale_t before_;
};

} // namespace

FileStamp FileStamp::Of(const std::string& path)
{
    FileStamp stamp;
    struct stat status;
    if (::stat(path.c_str(), &status) != 0)
    {
        stamp.error = errno;
        return stamp;
    }
    stamp.exists = true;
    stamp.regular = S_ISREG(status.st_mode);
    stamp.folder = S_ISDIR(status.st_mode);
    stamp.read_only = stamp.regular && (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
    stamp.device = static_cast<std::uint64_t>(status.st_dev);
    stamp.inode = status.st_ino;
    stamp.size = status.st_size;
#if defined(__APPLE__)
    stamp.seconds = status.st_mtimespec.tv_sec;
    stamp.nanoseconds = status.st_mtimespec.tv_nsec;
#else
    stamp.seconds = status.st_mtim.tv_sec;
    stamp.nanoseconds = status.st_mtim.tv_nsec;
#endif
    return stamp;
}

int ObstacleToWriting(const std::string& path)
{
    const int rights = FileStamp::Of(path).folder ? W_OK | X_OK : W_OK;
    return ::access(path.c_str(), rights) == 0 ? 0 : errno;
}

std::string FoldCase(const std::string& path)
{
    std::string folded;
    folded.reserve(path.size());
    const locale_t locale = Utf8Locale();
    const LocaleInUse in_use(locale != nullptr ? locale : LC_GLOBAL_LOCALE);
    for (std::size_t at = 0; at < path.size();)
    {
        std::mbstate_t state{};
        wchar_t letter = 0;
        const std::size_t length = std::mbrtowc(&letter, path.data() + at, path.size() - at, &state);
        char upper[16]; // more than the longest character of any encoding
        std::mbstate_t back{};
        const bool is_text = length > 1 && length <= path.size() - at;
        const std::size_t upper_length =
            is_text
                ? std::wcrtomb(upper, static_cast<wchar_t>(std::towupper(static_cast<wint_t>(letter))), &back)
                : static_cast<std::size_t>(-1);
        if (upper_length == static_cast<std::size_t>(-1))
        {
            folded += AsciiUpper(path[at++]);
            continue;
        }
        folded.append(upper, upper_length);
        at += length;
    }
    return folded;
}

} // namespace tev2_exporter
