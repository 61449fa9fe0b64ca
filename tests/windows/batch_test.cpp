// Batches of the command, whose processes are those of this system.

#include "tests/windows/scratch_folder.h"

#include "tests/support/scene_texts.h"

#include <cstdio>
#include <io.h>
#include <process.h>

namespace
{

using tev2_tests::ScratchFolder;

std::string Quoted(const std::string& argument)
{
    return '"' + argument + '"';
}

TEST(Batch, ExportsEachSceneInAProcessOfItsOwn)
{
    const ScratchFolder folder(u"two words");
    for (const char16_t* const name : {u"a.bvh", u"b.bvh", u"c.bvh"})
        folder.Make(name, tv2_tests::kTwoJoints);
    folder.Make(u"broken.bvh", "HIERARCHY");
    const std::string scenes = Quoted(folder.BytePath(u"."));
    const std::string out = Quoted(folder.BytePath(u"out"));
    for (const char* const newer : {"--quiet", "--newer"}) // the second finds all but one up to date
    {
        EXPECT_EQ(_spawnl(_P_WAIT, TV2_COMMAND, TV2_COMMAND, "export", "-j", "2", newer, "-o", out.c_str(),
                          scenes.c_str(), nullptr),
                  1)
            << newer;
        for (const char16_t* const name : {u"out/a.tv2", u"out/b.tv2", u"out/c.tv2"})
            EXPECT_GT(folder.Content(name).size(), 500U);
        EXPECT_FALSE(folder.Has(u"out/broken.tv2"));
    }
}

// "/takes/walk.bvh" is a path of the current drive, not an option.
TEST(Batch, TakesPathsThatBeginWithASlash)
{
    const ScratchFolder folder(u"slash");
    const std::string said = folder.BytePath(u"said");
    const int before = _dup(_fileno(stderr));
    ASSERT_NE(std::freopen(said.c_str(), "w", stderr), nullptr); // which the command shares
    EXPECT_EQ(_spawnl(_P_WAIT, TV2_COMMAND, TV2_COMMAND, "export", "/takes/walk.bvh", "o.tv2", nullptr), 2);
    _dup2(before, _fileno(stderr));
    _close(before);
    EXPECT_EQ(folder.Content(u"said"), "tv2 export: cannot read /takes/walk.bvh: there is no such file\r\n");
}

} // namespace
