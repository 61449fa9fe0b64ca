#include "host/import/formats.h"
#include "tests/support/scratch_folder.h"

namespace
{

using namespace mobu_host;

TEST(Formats, AreKnownByTheirFirstBytes)
{
    const std::pair<std::string, const char*> cases[] = {
        {"Kaydara FBX Binary  ", "FBX"},
        {"; FBX 7.4.0 project file", "FBX"},
        {"; a comment\nFBXHeaderExtension:  {", "FBX"},
        {"\xEF\xBB\xBF \nHierarchy\nROOT", "BVH"},
        {std::string("glTF\2\0\0\0", 8), "glTF"},
        {"\xEF\xBB\xBF{\"asset\"", "glTF"},
        {"<?xml version=\"1.0\"?>\n<COLLADA>", "Collada"},
        {std::string("\xFF\xFE<\0C\0O\0L\0L\0A\0D\0A\0", 18), "Collada"},
        {"<svg>", nullptr},
        {"solid", nullptr},
        {"", nullptr},
    };
    for (const auto& [bytes, name] : cases)
    {
        const Format* const format = FormatOf(bytes);
        EXPECT_EQ(format ? format->name : std::string("none"), name ? name : "none") << bytes;
    }
}

TEST(Formats, ScenesInFoldersAreKnownByTheirExtension)
{
    for (const char* name : {"a.fbx", "a.FBX", "a.b.bvh", "a.glTF", "a.glb", "a.dae", " .bvh"})
        EXPECT_TRUE(IsNamedAsScene(name)) << name;
    for (const char* name : {"", "a", "fbx", ".fbx", "a.", "a.fb", "a.fbxx", "a.glb ", "a.bvh.txt"})
        EXPECT_FALSE(IsNamedAsScene(name)) << name;
}

TEST(Formats, AreAllDocumentedAndListed)
{
    const std::string page = tv2_tests::ReadText(TV2_DOCS_DIR "/scene_files.md");
    for (const Format& format : Formats())
    {
        EXPECT_NE(page.find(std::string("\n## ") + format.name + "\n"), std::string::npos) << format.name;
        EXPECT_EQ(FormatNamed(format.name), &format);
    }
    EXPECT_EQ(ReadableFormats(), "FBX, BVH, glTF and Collada");
    EXPECT_EQ(ReadableFormats(", "), "FBX, BVH, glTF, Collada");
}

} // namespace
