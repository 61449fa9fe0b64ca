#include "exporter/rules/file_naming.h"

#include <gtest/gtest.h>

namespace tev2_exporter
{
namespace
{

using Paths = std::vector<std::u16string>;

TEST(FileNaming, NamesOneFileForEachTake)
{
    const struct
    {
        const char* what;
        std::u16string path;
        Paths takes;
        bool all_takes;
        bool underscores;
        Paths expected;
    } cases[] = {
        // clang-format off
        {"the current take keeps the path", u"C:\\out\\run.tv2", {u"Take 001"}, false, false, {u"C:\\out\\run.tv2"}},
        {"an extension alone: the take's name", u"C:\\out\\.tv2", {u"Take 001"}, false, false,
         {u"C:\\out\\Take 001.tv2"}},
        {"with underscores", u"C:\\out\\.tv2", {u"Take 001"}, false, true, {u"C:\\out\\Take_001.tv2"}},
        {"five units are a name", u"out/a.tv2", {u"T"}, false, false, {u"out/a.tv2"}},
        {"four units are not", u"out/a.tv", {u"T"}, false, false, {u"out/Ta.tv"}},
        {"all takes", u"C:\\my dir\\run.tv2", {u"A b", u"C"}, true, false,
         {u"C:\\my dir\\run_A b.tv2", u"C:\\my dir\\run_C.tv2"}},
        {"no underscores in the folder", u"C:\\my dir\\run.tv2", {u"A b", u"C"}, true, true,
         {u"C:\\my dir\\run_A_b.tv2", u"C:\\my dir\\run_C.tv2"}},
        {"all takes, an extension alone", u"/o/.tv2", {u"A", u"B"}, true, false, {u"/o/A.tv2", u"/o/B.tv2"}},
        {"the stem loses any four units", u"C:\\out\\scene.data", {u"Take"}, true, false,
         {u"C:\\out\\scene._Take.tv2"}},
        {"no dot after the separator: no file name", u"out.d/run", {u"T"}, false, false, {u"out.d/runT"}},
        {"no folder", u"my run.tv2", {u"A"}, true, true, {u"my_run_A.tv2"}},
        {"both kinds of slash end the folder", u"a b/c d\\e f.tv2", {u"T"}, false, true, {u"a b/c d\\e_f.tv2"}},
        {"a slash in a take's name too", u"o/run.tv2", {u"x y/z w"}, true, true, {u"o/run_x y/z_w.tv2"}},
        {"no takes, no files", u"o/run.tv2", {}, true, true, {}},
        // clang-format on
    };
    for (const auto& c : cases)
        EXPECT_EQ(OutputFileNames(c.path, c.takes, c.all_takes, c.underscores), c.expected) << c.what;
}

} // namespace
} // namespace tev2_exporter
