#include "tev2_playback/clip.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

Clip ClipOfNames(const std::vector<std::u16string>& names)
{
    TEV2 scene;
    scene.matrixHierarchy.nodes.resize(names.size());
    for (std::size_t node = 0; node < names.size(); ++node)
        scene.matrixHierarchy.nodes[node].name = TEV2_WIDE_STRING(names[node]);
    return Clip(scene);
}

} // namespace

TEST(ClipNames, AreUtf8HoweverTheyAreStored)
{
    const struct
    {
        std::u16string stored;
        std::string_view utf8;
    } rows[] = {
        {u"Hips", "Hips"},
        {u"", ""},
        {u"H\u00C3\u00BCfte", "H\xC3\xBC"
                              "fte"}, // a unit per byte of UTF-8
        {u"\u00FC", "\xC3\xBC"},      // UTF-16
        {u"\u8155 1", "\xE8\x85\x95 1"},
        {std::u16string(1, u'\xD800'), "\xEF\xBF\xBD"}, // half a character
        {std::u16string(u"a\0b", 3), std::string_view("a\0b", 3)},
    };
    std::vector<std::u16string> names;
    for (const auto& row : rows)
        names.push_back(row.stored);
    const Clip clip = ClipOfNames(names);
    for (std::size_t node = 0; node < names.size(); ++node)
    {
        EXPECT_EQ(clip.NodeName(node), rows[node].utf8) << node;
        EXPECT_EQ(clip.NodeName(node).data()[rows[node].utf8.size()], '\0') << node;
        EXPECT_EQ(clip.FindNode(rows[node].utf8), static_cast<int>(node));
    }
    for (const std::string_view absent : {"hips", "Hip", "Hips ", "\xFC", "a"})
        EXPECT_EQ(clip.FindNode(absent), -1) << absent;
    EXPECT_EQ(Clip().FindNode(""), -1);
}

TEST(ClipNames, FindTheFirstOfSeveral)
{
    // Ten thousand nodes, two of each name; and as many of one name.
    std::vector<std::u16string> names;
    for (int node = 0; node < 10'000; ++node)
    {
        const std::string number = std::to_string(node / 2);
        names.push_back(u"bone" + std::u16string(number.begin(), number.end()));
    }
    const Clip clip = ClipOfNames(names);
    for (int node = 0; node < 10'000; node += 2)
        ASSERT_EQ(clip.FindNode("bone" + std::to_string(node / 2)), node);
    EXPECT_EQ(clip.FindNode("bone5000"), -1);

    EXPECT_EQ(ClipOfNames(std::vector<std::u16string>(10'000, u"same")).FindNode("same"), 0);
}
