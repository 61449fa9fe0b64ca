#include "exporter/rules/file_naming.h"

#include <gtest/gtest.h>

namespace tev2_exporter
{
namespace
{

using Names = std::vector<std::u16string>;

struct NamingCase
{
    const char* what;
    std::u16string path;
    Names takes;
    bool all_takes;
    bool underscores;
    Names expected;
};

TEST(FileNaming, NamesOneFileForEachTake)
{
    const NamingCase cases[] = {
        {"the current take keeps the path",
         u"C:\\out\\run.tv2",
         {u"Take 001"},
         false,
         false,
         {u"C:\\out\\run.tv2"}},
        {"an extension alone is called after the take",
         u"C:\\out\\.tv2",
         {u"Take 001"},
         false,
         false,
         {u"C:\\out\\Take 001.tv2"}},
        {"the same with underscores",
         u"C:\\out\\.tv2",
         {u"Take 001"},
         false,
         true,
         {u"C:\\out\\Take_001.tv2"}},
        {"five units are a name", u"out/a.tv2", {u"T"}, false, false, {u"out/a.tv2"}},
        {"four units are not", u"out/a.tv", {u"T"}, false, false, {u"out/Ta.tv"}},
        {"all takes, one file each",
         u"C:\\my dir\\run.tv2",
         {u"A b", u"C"},
         true,
         false,
         {u"C:\\my dir\\run_A b.tv2", u"C:\\my dir\\run_C.tv2"}},
        {"underscores stay out of the folder",
         u"C:\\my dir\\run.tv2",
         {u"A b", u"C"},
         true,
         true,
         {u"C:\\my dir\\run_A_b.tv2", u"C:\\my dir\\run_C.tv2"}},
        {"all takes after an extension alone",
         u"/o/.tv2",
         {u"A", u"B"},
         true,
         false,
         {u"/o/A.tv2", u"/o/B.tv2"}},
        {"the stem loses four units, whatever they are",
         u"C:\\out\\scene.data",
         {u"Take"},
         true,
         false,
         {u"C:\\out\\scene._Take.tv2"}},
        {"no dot behind the separator: no file name at all",
         u"out.d/run",
         {u"T"},
         false,
         false,
         {u"out.d/runT"}},
        {"no folder", u"my run.tv2", {u"A"}, true, true, {u"my_run_A.tv2"}},
        {"a slash of the other system also ends the folder",
         u"a b/c d\\e f.tv2",
         {u"T"},
         false,
         true,
         {u"a b/c d\\e_f.tv2"}},
        {"a separator in a take's name ends the replacing",
         u"o/run.tv2",
         {u"x y/z w"},
         true,
         true,
         {u"o/run_x y/z_w.tv2"}},
        {"no takes, no files", u"o/run.tv2", {}, true, true, {}},
    };
    for (const NamingCase& c : cases)
        EXPECT_EQ(OutputFileNames(c.path, c.takes, c.all_takes, c.underscores), c.expected) << c.what;
}

} // namespace
} // namespace tev2_exporter
