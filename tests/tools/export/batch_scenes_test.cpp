#include "tests/support/scratch_folder.h"
#include "tools/tv2/batch_scenes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>

#include <sys/stat.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;
using namespace tv2;
using Texts = std::vector<std::string>;

/// Searches a folder, whose path is left out of what is found.
class BatchScenesTest : public testing::Test
{
protected:
    void Make(const std::string& name) const
    {
        fs::create_directories(fs::path(folder_.Path(name)).parent_path());
        folder_.Make(name, name);
    }

    BatchQuestion Question(const Texts& inputs, bool recursive = false) const
    {
        BatchQuestion question;
        for (const std::string& input : inputs)
            question.inputs.push_back(folder_.Path(input));
        question.folder = folder_.Path("out");
        question.recursive = recursive;
        return question;
    }

    /// "scene > output" of each, in their order.
    Texts Find(const BatchQuestion& question)
    {
        const TEV2_LOADER::Status status = FindScenes(question, found_);
        EXPECT_TRUE(status) << status.Reason();
        Texts pairs;
        for (const BatchScene& scene : found_.all)
        {
            pairs.push_back(Short(scene.scene) + " > " + scene.name);
            EXPECT_EQ(Short(scene.output), "out/" + scene.name);
        }
        return pairs;
    }

    Texts Find(const Texts& inputs, bool recursive = false) { return Find(Question(inputs, recursive)); }

    std::string Refusal(const BatchQuestion& question)
    {
        return Short(FindScenes(question, found_).Reason());
    }

    std::string Short(std::string text) const
    {
        const std::string folder = folder_.Path("");
        for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder))
            text.erase(at, folder.size());
        return text;
    }

    tv2_tests::ScratchFolder folder_;
    BatchScenes found_;
};

TEST_F(BatchScenesTest, FilesFoldersAndWildcards)
{
    for (const char* name :
         {"shots/b.FBX", "shots/a.bvh", "shots/x[1].bvh", "shots/notes.txt", "shots/.h.bvh",
          "shots/sub/e.bvh", "shots/sub/deep/f.dae", "shots/.git/g.bvh", "other/a.glb", "odd"})
        Make(name);
    struct Case
    {
        Texts inputs;
        bool recursive;
        Texts found;
    };
    const Case cases[] = {
        {{"shots"}, false, {"shots/a.bvh > a.tv2", "shots/b.FBX > b.tv2", "shots/x[1].bvh > x[1].tv2"}},
        {{"shots/"},
         true,
         {"shots/a.bvh > a.tv2", "shots/b.FBX > b.tv2", "shots/sub/deep/f.dae > sub/deep/f.tv2",
          "shots/sub/e.bvh > sub/e.tv2", "shots/x[1].bvh > x[1].tv2"}},
        {{"odd"}, false, {"odd > odd.tv2"}},                        // a file is a scene whatever its name
        {{"shots/x[1].bvh"}, false, {"shots/x[1].bvh > x[1].tv2"}}, // and no wildcard when it is there
        {{"shots/x[[]*"}, false, {"shots/x[1].bvh > x[1].tv2"}},
        {{"shots/[ab].*"}, false, {"shots/a.bvh > a.tv2", "shots/b.FBX > b.tv2"}},
        {{"shots/.*"}, false, {"shots/.git/g.bvh > .git/g.tv2", "shots/.h.bvh > .h.tv2"}},
        {{"*/?.*"},
         false,
         {"other/a.glb > other/a.tv2", "shots/a.bvh > shots/a.tv2", "shots/b.FBX > shots/b.tv2"}},
        {{"shots/**/*.bvh"},
         false,
         {"shots/a.bvh > a.tv2", "shots/sub/e.bvh > sub/e.tv2", "shots/x[1].bvh > x[1].tv2"}},
        {{"**/deep/*"}, false, {"shots/sub/deep/f.dae > shots/sub/deep/f.tv2"}},
        {{"shots/s*"}, false, {"shots/sub/e.bvh > sub/e.tv2"}}, // a folder that matches is one that is given
        {{"shots/s*"}, true, {"shots/sub/deep/f.dae > sub/deep/f.tv2", "shots/sub/e.bvh > sub/e.tv2"}},
        {{"gone.bvh", "other"}, false, {"gone.bvh > gone.tv2", "other/a.glb > a.tv2"}},
        {{"shots/a.bvh", "shots/../shots/*.bvh", "shots/sub/../a.bvh"},
         false,
         {"shots/../shots/x[1].bvh > x[1].tv2", "shots/a.bvh > a.tv2"}},
        {{"shots/sub/e.bvh", "shots/*/*.bvh"}, false, {"shots/sub/e.bvh > e.tv2"}}, // the first input decides
    };
    for (const Case& c : cases)
        EXPECT_EQ(Find(c.inputs, c.recursive), c.found) << c.inputs.front();
    Find({"shots", "shots"});
    EXPECT_EQ(found_.doubled, 3u);
    EXPECT_EQ(found_.passed_over, 2u);
}

TEST_F(BatchScenesTest, WhatCannotBeIsRefused)
{
    for (const char* name : {"in/a.bvh", "in/a.fbx", "space/my walk.bvh", "space/my_walk.bvh", "out/self.tv2",
                             "text/notes.txt", "one/a.bvh"})
        Make(name);
    EXPECT_EQ(Refusal(Question({"one", "in/*.zip"})), "no scene matches \"in/*.zip\"");
    EXPECT_EQ(Refusal(Question({"text/*"})),
              "no scene matches \"text/*\": 1 file that matches is no scene by its name");
    EXPECT_NE(
        Refusal(Question({"gone/*.bvh"})).find("no scene matches \"gone/*.bvh\": cannot read the folder"),
        std::string::npos);
    EXPECT_EQ(Refusal(Question({"text"})), "\"text\" has no scenes (--recursive also takes those below)");
    EXPECT_EQ(
        Refusal(Question({"in"})),
        "\"in/a.bvh\" and \"in/a.fbx\" would both be written to \"out/a.tv2\": export them to different "
        "folders");
    EXPECT_EQ(
        Refusal(Question({"in/a.fbx", "one/a.bvh"})),
        "\"in/a.fbx\" and \"one/a.bvh\" would both be written to \"out/a.tv2\": export them to different "
        "folders");
    BatchQuestion spaces = Question({"space"});
    EXPECT_NE(Refusal(spaces).find("would both be written to \"out/my_walk.tv2\""), std::string::npos);
    spaces.spaces_to_underscores = false;
    EXPECT_EQ(Find(spaces).size(), 2u);
    EXPECT_EQ(Refusal(Question({"out/self.tv2"})),
              "the output \"out/self.tv2\" of \"out/self.tv2\" is the scene \"out/self.tv2\"");
    BatchQuestion file = Question({"one"});
    file.folder = folder_.Path("one/a.bvh");
    EXPECT_EQ(Refusal(file), "the output \"one/a.bvh\" is not a folder");
}

TEST_F(BatchScenesTest, TheOutputFolderIsNotSearched)
{
    Make("in/a.bvh");
    Make("in/out/b.bvh");
    BatchQuestion question = Question({"in"}, true);
    question.folder = folder_.Path("in/out");
    ASSERT_TRUE(FindScenes(question, found_));
    ASSERT_EQ(found_.all.size(), 1u);
    EXPECT_EQ(Short(found_.all[0].output), "in/out/a.tv2");
    question.inputs = {folder_.Path("in/out")}; // unless it is the input
    ASSERT_TRUE(FindScenes(question, found_));
    EXPECT_EQ(found_.all.size(), 1u);
}

TEST_F(BatchScenesTest, ShardsHoldEachSceneOnce)
{
    constexpr std::size_t kScenes = 7;
    for (std::size_t i = 0; i < kScenes; ++i)
        Make("in/" + std::to_string(i) + ".bvh");
    for (std::size_t count = 1; count <= 9; ++count)
    {
        std::multiset<std::size_t> chosen;
        for (std::size_t number = 1; number <= count; ++number)
        {
            BatchQuestion question = Question({"in"});
            question.shard = {number, count};
            ASSERT_TRUE(FindScenes(question, found_));
            EXPECT_EQ(found_.chosen.size(), (kScenes + count - number) / count);
            chosen.insert(found_.chosen.begin(), found_.chosen.end());
        }
        EXPECT_EQ(chosen, (std::multiset<std::size_t>{0, 1, 2, 3, 4, 5, 6})) << count;
    }
    Shard shard;
    EXPECT_EQ(TakeShard("2/8", shard), "");
    EXPECT_EQ(shard.number, 2u);
    EXPECT_EQ(shard.count, 8u);
    for (const char* text :
         {"", "1", "0/2", "3/2", "/2", "1/", "1/0", "-1/2", "1/2x", " 1/2", "1/1000001", "1//2"})
        EXPECT_NE(TakeShard(text, shard), "") << text;
}

TEST_F(BatchScenesTest, ClashesOfTakesAreFound)
{
    for (const char* name :
         {"in/run.bvh", "in/walk.bvh", "in/walk a.bvh", "in/walk_a_b.bvh", "in/sub/walk_a.bvh"})
        Make(name);
    BatchQuestion question = Question({"in"}, true);
    question.takes_name_files = true;
    question.shard = {2, 2}; // "walk_a_b" and "walk a" are in the other one
    EXPECT_EQ(Find(question), (Texts{"in/run.bvh > run.tv2", "in/sub/walk_a.bvh > sub/walk_a.tv2",
                                     "in/walk a.bvh > walk a.tv2", "in/walk.bvh > walk.tv2",
                                     "in/walk_a_b.bvh > walk_a_b.tv2"}));
    using Indices = std::vector<std::size_t>;
    const FilesOfScenes files = {
        {2, {"walk_a_b_c.tv2", "walk_a_x.tv2"}}, {3, {"walk_x.tv2"}}, {4, {"walk_a_b_c.tv2"}}};
    EXPECT_EQ(ScenesToCompare(found_), (Indices{2, 3})); // the others come later, or cannot clash
    EXPECT_EQ(FindClashes(found_, files), (Texts{"", ""}));
    question.shard = {1, 2};
    Find(question);
    EXPECT_EQ(ScenesToCompare(found_), (Indices{2, 3, 4}));
    const Texts reasons = FindClashes(found_, files);
    ASSERT_EQ(reasons.size(), 3u);
    EXPECT_EQ(reasons[0] + reasons[1], "");
    EXPECT_EQ(Short(reasons[2]), "\"walk_a_b_c.tv2\" would also be written by \"in/walk a.bvh\"");
}

TEST_F(BatchScenesTest, LinksAndNamesOfAllKinds)
{
    Make("in/real/a.bvh");
    fs::create_directory_symlink("real", folder_.Path("in/alias")); // before "real" in the alphabet
    fs::create_directory_symlink("..", folder_.Path("in/real/loop"));
    fs::create_symlink("real/a.bvh", folder_.Path("in/latest.bvh"));
    fs::create_symlink("nowhere", folder_.Path("in/broken.bvh")); // its export will fail
    ASSERT_EQ(::mkfifo(folder_.Path("in/pipe.bvh").c_str(), 0600), 0);
    EXPECT_EQ(Find({"in"}, true), (Texts{"in/broken.bvh > broken.tv2", "in/latest.bvh > latest.tv2",
                                         "in/real/a.bvh > real/a.tv2"}));
    EXPECT_EQ(Find({"in/**/a.bvh"}), (Texts{"in/real/a.bvh > real/a.tv2"}));
    EXPECT_EQ(Find({"in/alias/*"}),
              (Texts{"in/alias/a.bvh > a.tv2", "in/alias/loop/broken.bvh > loop/broken.tv2",
                     "in/alias/loop/latest.bvh > loop/latest.tv2"}));

    for (const char* name : {"odd/q\"'\n*.bvh", "odd/\xFF.bvh", "odd/-o.bvh"})
        Make(name);
    EXPECT_EQ(Find({"odd/?.bvh"}), (Texts{"odd/\xFF.bvh > \xFF.tv2"}));
    EXPECT_EQ(Find({"odd"}),
              (Texts{"odd/-o.bvh > -o.tv2", "odd/q\"'\n*.bvh > q\"'\n*.tv2", "odd/\xFF.bvh > \xFF.tv2"}));
}

TEST_F(BatchScenesTest, OutputsThatAreLinks)
{
    Make("in/a.bvh");
    Make("in/b.bvh");
    Make("out/a.tv2");
    fs::create_symlink("a.tv2", folder_.Path("out/b.tv2"));
    EXPECT_NE(Refusal(Question({"in"})).find("would both be written to \"out/b.tv2\""), std::string::npos);
    fs::remove(folder_.Path("out/b.tv2"));
    fs::create_symlink("../in/a.bvh", folder_.Path("out/b.tv2"));
    EXPECT_EQ(Refusal(Question({"in"})),
              "the output \"out/b.tv2\" of \"in/b.bvh\" is the scene \"in/a.bvh\"");
}

TEST_F(BatchScenesTest, FoldersThatCannotBeReadAreFailures)
{
    constexpr uid_t kNobody = 65534;
    Make("in/a.bvh");
    fs::create_directory(folder_.Path("in/closed"));
    fs::permissions(folder_.Path("in/closed"), fs::perms::none);
    const bool is_root = ::geteuid() == 0;
    ASSERT_TRUE(!is_root || ::seteuid(kNobody) == 0);
    const Texts found = Find({"in"}, true);
    EXPECT_TRUE(!is_root || ::seteuid(0) == 0);
    fs::permissions(folder_.Path("in/closed"), fs::perms::owner_all);
    EXPECT_EQ(found, (Texts{"in/a.bvh > a.tv2"}));
    ASSERT_EQ(found_.unreadable.size(), 1u);
    EXPECT_EQ(Short(found_.unreadable[0]), "cannot read the folder \"in/closed\": Permission denied");
}

} // namespace
