#include "host/import/base/parse_error.h"
#include "host/import/fbx/arrays.h"
#include "host/import/fbx/document.h"
#include "tests/host/import/builders/fbx_writer.h"

#include <gtest/gtest.h>

namespace
{

using namespace mobu_host;
using namespace mobu_host::fbx;
using fbx_writer::Node;

std::string CauseOf(const std::string& file)
{
    try
    {
        const RecordTree tree(file);
        for (std::uint32_t i = 0; i < tree.Size(); ++i)
        {
            ValueCursor cursor(Record(&tree, i));
            for (Value value; cursor.Next(value);)
            {
            }
        }
        return "";
    }
    catch (const ParseError& damage)
    {
        return damage.what();
    }
}

// One description gives one tree, whichever way it is written.
TEST(RecordTreeTest, AllFormsReadAlike)
{
    const std::vector<Node> nodes{{"First",
                                   {std::int32_t{7}, std::int64_t{1} << 40, 2.5, std::string("a \"b\""),
                                    fbx_writer::Name{"ns:Hips", "Model"}},
                                   {{"Inner", {-1.5}, {{"Innermost", {std::string()}, {}}}},
                                    {"Longs", {std::vector<std::int64_t>{1, -2, std::int64_t{3} << 33}}, {}},
                                    {"Floats", {std::vector<float>{0.5F, -1e30F}}, {}}}},
                                  {"Second", {}, {{"Inner", {std::int32_t{1}}, {}}}}};
    const std::string files[] = {fbx_writer::Binary(7400, nodes), fbx_writer::Binary(7500, nodes),
                                 fbx_writer::Binary(7700, nodes, true), fbx_writer::Binary(6100, nodes),
                                 fbx_writer::Text(7300, nodes)};
    for (const std::string& file : files)
    {
        const RecordTree tree(file);
        SCOPED_TRACE(std::to_string(tree.Version()) + (tree.IsText() ? " text" : " binary"));
        const Record first = tree.Root().Child("First");
        ASSERT_TRUE(first);
        ASSERT_EQ(first.ValueCount(), 5U);
        EXPECT_EQ(first.ValueAt(0).Whole(), 7);
        EXPECT_EQ(first.ValueAt(1).Whole(), std::int64_t{1} << 40);
        EXPECT_EQ(first.ValueAt(2).Number(), 2.5);
        EXPECT_EQ(first.ValueAt(2).Whole(), 2);
        EXPECT_EQ(PlainText(first.TextAt(3), tree), "a \"b\"");
        EXPECT_EQ(NameOf(first.TextAt(4)), "ns:Hips");
        EXPECT_FALSE(first.ValueAt(5));
        EXPECT_FALSE(first.ValueAt(3).Number());
        EXPECT_EQ(first.Child("Inner").NumberAt(0, 0.0), -1.5);
        EXPECT_TRUE(first.Child("Inner").Child("Innermost").ValueAt(0));
        EXPECT_FALSE(first.Child("Inner").Child("Gone").Child("Gone"));
        EXPECT_EQ(tree.Root().Child("Second").Child("Inner").NumberAt(0, 0.0), 1.0);

        ArrayReader arrays;
        std::vector<std::int64_t> longs;
        arrays.Read(first.Child("Longs"), longs);
        EXPECT_EQ(longs, (std::vector<std::int64_t>{1, -2, std::int64_t{3} << 33}));
        std::vector<double> reals;
        arrays.Read(first.Child("Floats"), reals);
        ASSERT_EQ(reals.size(), 2U);
        EXPECT_EQ(reals[0], 0.5);
        EXPECT_NEAR(reals[1], -1e30, 1e24);
    }
}

TEST(RecordTreeTest, TextTakesWhatPeopleWrite)
{
    const std::string file = "\xEF\xBB\xBF; FBX 6.1.0 project file\r\n"
                             "Tool Settings:  {  ; a comment\r\n"
                             "\tList: 1,-2.5e1,\r\n\t\t+3 ; more\r\n\t\t,.5,Y\r\n"
                             "\tKey: \r\n\t\t10,L\r\n"
                             "\tEmpty: \r\n\t55_01: {\r\n\t}\r\n"
                             "\tContent: , \r\n\t\"base64\"\r\n"
                             "\tTrailing: 1,\r\n\tBehind: 2\r\n"
                             "}\n";
    const RecordTree tree(file);
    EXPECT_EQ(tree.Version(), 6100U);
    const Record settings = tree.Root().Child("Tool Settings");
    const Record list = settings.Child("List");
    ASSERT_EQ(list.ValueCount(), 5U);
    EXPECT_EQ(list.ValueAt(1).Number(), -25.0);
    EXPECT_EQ(list.ValueAt(2).Number(), 3.0);
    EXPECT_EQ(list.ValueAt(3).Number(), 0.5);
    EXPECT_EQ(list.ValueAt(4).Letter(), 'Y');
    EXPECT_EQ(settings.Child("Key").ValueAt(0).Whole(), 10);
    EXPECT_EQ(settings.Child("Empty").ValueCount(), 0U);
    EXPECT_TRUE(settings.Child("55_01"));
    EXPECT_EQ(settings.Child("Content").TextAt(0), "base64");
    EXPECT_EQ(settings.Child("Trailing").ValueCount(), 1U);
    EXPECT_EQ(settings.Child("Behind").NumberAt(0, 0.0), 2.0);
}

TEST(RecordTreeTest, DamageIsNamedWithItsPlace)
{
    const auto bent = [](std::string file, std::size_t at, char byte)
    {
        file[at] = byte;
        return file;
    };
    const std::vector<Node> one{{"Node", {std::int32_t{1}, std::string("text")}, {{"Child", {2.0}, {}}}}};
    const std::string file = fbx_writer::Binary(7400, one);
    std::vector<Node> deep{{"a", {}, {}}};
    for (int i = 0; i < 200; ++i)
        deep = {{"a", {}, deep}};
    const struct
    {
        std::string file;
        const char* cause;
    } cases[] = {
        {file.substr(0, 25), "ends inside its header (byte 25)"},
        {bent(file, 24, 0x10), "FBX version 4328"},
        {bent(file, 24, 0x30), "is not read (6000 to 7999"},
        {file.substr(0, 30), "ends inside a record's header (byte 27)"},
        {bent(file, 28, 0x7F), "ends after the list that holds it (byte 27)"},
        {bent(file, 27, 0x30), "the values of a record leave it (byte 27)"},
        {bent(file, 31, 0x60), "more values than bytes"},
        {bent(file, 44, 'X'), "there is no kind of value 'X' (byte 44)"},
        {bent(file, 50, 0x7F), "a value leaves its record"},
        {fbx_writer::Binary(7400, deep), "nested more than 100 deep"},
        {fbx_writer::Text(7400, deep), "nested more than 100 deep"},
        {"; FBX 7.4.0\nA: {\n", "ends inside a record (byte 15)"},
        {"; FBX 7.4.0\nA: \"x\n", "a text does not end (byte 15)"},
        {"; FBX 7.4.0\n}\n", "a brace closes what none opened (byte 12)"},
        {"; FBX 5.8.0\nA: 1\n", "FBX version 5800 is not read"},
        {"; FBX\nA: 1\n", "it states no FBX version"},
        {"; FBX 7.4.0\n", "it holds no record"},
    };
    for (const auto& damaged : cases)
        EXPECT_NE(CauseOf(damaged.file).find(damaged.cause), std::string::npos) << damaged.cause << "\n"
                                                                                << CauseOf(damaged.file);
    EXPECT_EQ(CauseOf(file), "");
}

// Neither a wrong length nor a small stream that claims to be huge gets memory.
TEST(ArrayReaderTest, LengthsHaveToFit)
{
    const std::vector<Node> nodes{{"List", {std::vector<double>(100, 1.0)}, {}}};
    const std::size_t count = 27 + 13 + 4 + 1; // header, record header, name, code
    for (const bool deflate : {false, true})
    {
        const std::string sound = fbx_writer::Binary(7400, nodes, deflate);
        for (const std::size_t at : {count, count + 3, count + 4, count + 20})
        {
            std::string file = sound;
            file[at] = static_cast<char>(file[at] ^ 0x41);
            const RecordTree tree(file);
            ArrayReader arrays;
            std::vector<double> numbers;
            if (at == count + 20 && !deflate)
                arrays.Read(tree.Root().Child("List"), numbers); // another number, no damage
            else
                EXPECT_THROW(arrays.Read(tree.Root().Child("List"), numbers), ParseError) << at;
        }
    }
    const std::string text = "; FBX 7.4.0\nList: *3 {\n a: 1,2\n}\nWords: 1,x\n";
    const RecordTree tree(text);
    ArrayReader arrays;
    std::vector<double> numbers;
    EXPECT_THROW(arrays.Read(tree.Root().Child("List"), numbers), ParseError);
    EXPECT_THROW(arrays.Read(tree.Root().Child("Words"), numbers), ParseError);
}

} // namespace
