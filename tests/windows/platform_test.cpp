#include "exporter/platform/platform.h"
#include "tests/windows/scratch_folder.h"
#include "tev2_loader/io/whole_file.h"

#include <chrono>
#include <cstdlib>

namespace tev2_exporter::platform
{
namespace
{

using tev2_tests::ScratchFolder;
using tev2_tests::Wide;

TEST(Clock, TellsUniversalTime)
{
    using namespace std::chrono;
    const auto before = floor<seconds>(system_clock::now());
    const UtcTime time = CurrentUtcTime();
    const year_month_day date{year(time.year), month(static_cast<unsigned>(time.month)),
                              day(static_cast<unsigned>(time.day))};
    const auto told = sys_days(date) + hours(time.hour) + minutes(time.minute) + seconds(time.second);
    EXPECT_LE(before, told);
    EXPECT_LE(told, floor<seconds>(system_clock::now()));
}

TEST(User, IsTheOneWhoIsLoggedIn)
{
    const char* const name = std::getenv("USERNAME");
    ASSERT_TRUE(name);
    EXPECT_EQ(UserName(), name);
}

TEST(ReadOnlyMark, IsSeenAndTakenOffUnderEveryName)
{
    if (GetACP() != 1252)
        GTEST_SKIP() << "the names are of code page 1252, this is " << GetACP();
    const ScratchFolder folder;
    for (const std::u16string name : {u"plain.tv2", u"caf\u00E9.tv2", u"\u20AC \u0160.tv2"})
    {
        const std::u16string wide = folder.Make(name);
        const std::string path = folder.BytePath(name);
        EXPECT_FALSE(IsReadOnly(path));
        ASSERT_TRUE(SetFileAttributesW(Wide(wide), FILE_ATTRIBUTE_READONLY));
        EXPECT_FALSE(TEV2_LOADER::WriteWholeFile(folder.Utf8Path(name), "new"))
            << "the file that is looked at is the one that is opened";
        EXPECT_TRUE(IsReadOnly(path));
        MakeWritable(path);
        EXPECT_FALSE(IsReadOnly(path));
        EXPECT_EQ(GetFileAttributesW(Wide(wide)) & FILE_ATTRIBUTE_READONLY, 0u);
        EXPECT_EQ(folder.Content(name), "old");
    }
}

TEST(ReadOnlyMark, IsNotOnMissingFiles)
{
    const ScratchFolder folder;
    EXPECT_FALSE(IsReadOnly(folder.BytePath(u"missing.tv2")));
    EXPECT_FALSE(IsReadOnly(""));
    MakeWritable(folder.BytePath(u"missing.tv2"));
    EXPECT_FALSE(folder.Has(u"missing.tv2"));
}

} // namespace
} // namespace tev2_exporter::platform
