#include "tests/tev2_loader/bytes.h"

#include "tev2_loader/serialisation/wide_string.h"

using namespace TEV2_LOADER;
using namespace tev2_tests;

namespace
{

std::vector<std::uint8_t> Written(const TEV2_WIDE_STRING& string)
{
    return WrittenBy([&string](TEV2_FILE_WRITER& writer) { WriteWideString(*writer.stream, string); });
}

TEST(WideString, IsWrittenAsLengthAndUnitsWithoutTerminator)
{
    EXPECT_EQ(Written(TEV2_WIDE_STRING()), Bytes().U8({0, 0}).data);
    EXPECT_EQ(Written(Wide(u"a\u00E9\u4E2D")), Bytes().U8({3, 0, 0x61, 0, 0xE9, 0, 0x2D, 0x4E}).data);
}

TEST(WideString, CountsItsTerminator)
{
    EXPECT_EQ(TEV2_WIDE_STRING().Count(), 1u);
    EXPECT_EQ(Wide(u"abc").Count(), 4u);
}

TEST(WideString, WidensBytesWithoutSign)
{
    EXPECT_EQ(TEV2_WIDE_STRING::FromBytes("a\x80\xFF").Text(), (std::u16string{u'a', 0x80, 0xFF}));
}

TEST(WideString, IsCutWhereItsLengthFieldEnds)
{
    const std::u16string longest(65535, u'x');
    for (const std::size_t more : {std::size_t{0}, std::size_t{1}, std::size_t{70000}})
    {
        const std::vector<std::uint8_t> image =
            Written(TEV2_WIDE_STRING(longest + std::u16string(more, u'y')));
        TEV2_MEMORY_CURSOR cursor(image.data(), image.size());
        TEV2_WIDE_STRING read;
        ReadWideString(cursor, read);
        EXPECT_EQ(read.Text(), longest) << more;
        EXPECT_EQ(cursor.Remaining(), 0u) << more;
    }
}

TEST(WideString, KeepsTheUnitsThatArePresent)
{
    struct Case
    {
        Bytes image;
        std::u16string text;
        bool warned;
        bool failed;
    };
    const Case cases[] = {
        {Bytes().Text(u"whole"), u"whole", false, false},
        {Bytes().U16(5).U16(u'a').U16(u'b'), u"ab", true, false},
        {Bytes().U16(5).U16(u'a').U8({0x62}), u"a", true, false},
        {Bytes().U16(1), u"", true, false},
        {Bytes().U8({3}), u"", false, true},
    };
    for (const Case& item : cases)
    {
        TEV2_LOAD_REPORT report;
        TEV2_MEMORY_CURSOR cursor(item.image.data.data(), item.image.data.size(), &report);
        TEV2_WIDE_STRING read(u"before");
        ReadWideString(cursor, read);
        EXPECT_EQ(read.Text(), item.text);
        EXPECT_EQ(cursor.current, cursor.end);
        EXPECT_EQ(cursor.Failed(), item.failed);
        ASSERT_EQ(report.findings.size(), item.warned || item.failed ? 1u : 0u);
        if (item.warned)
        {
            EXPECT_EQ(report.findings[0].code, TEV2_LOAD_CODE::StringClamped);
        }
    }
}

} // namespace
