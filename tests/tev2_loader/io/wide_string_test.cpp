#include "tests/support/records.h"

#include "tev2_loader/io/wide_string.h"

#include <tuple>

using namespace TEV2_LOADER;
using namespace tv2_tests;

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

TEST(WideString, CountsItsTerminatorAndWidensBytesWithoutSign)
{
    EXPECT_EQ(TEV2_WIDE_STRING().Count(), 1u);
    EXPECT_EQ(Wide(u"abc").Count(), 4u);
    EXPECT_EQ(TEV2_WIDE_STRING::FromBytes("a\x80\xFF").Text(), (std::u16string{u'a', 0x80, 0xFF}));
}

TEST(WideString, IsReadAsBytesOfUtf8OrAsUtf16)
{
    const std::tuple<std::u16string, bool, std::string> cases[] = {
        {u"", true, ""},
        {u"Hips", true, "Hips"},
        {u"t\u00C3\u00AAte", true, "t\xC3\xAAte"}, // 8-bit text, widened
        {u"t\u00EAte", false, "t\xC3\xAAte"},
        {u"\u00C3", false, "\xC3\x83"}, // a sequence without its end
        {u"\u00C3\u00AA\u4E2D", false, "\xC3\x83\xC2\xAA\xE4\xB8\xAD"},
        {u"\u00ED\u00A0\u0080", false, "\xC3\xAD\xC2\xA0\xC2\x80"}, // a surrogate is not UTF-8
        {u"\u00C0\u00AF", false, "\xC3\x80\xC2\xAF"},               // an overlong form is not either
        {u"\u00F0\u009F\u0098\u0080", true, "\xF0\x9F\x98\x80"},
    };
    for (const auto& [units, widened, text] : cases)
    {
        EXPECT_EQ(IsWidenedUtf8(units), widened) << text;
        EXPECT_EQ(ReadableText(units), text);
    }
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
    const struct
    {
        Bytes image;
        std::u16string text;
        std::vector<TEV2_LOAD_CODE> codes;
    } cases[] = {
        {Bytes().Text(u"whole"), u"whole", {}},
        {Bytes().U16(5).U16(u'a').U16(u'b'), u"ab", {TEV2_LOAD_CODE::StringClamped}},
        {Bytes().U16(5).U16(u'a').U8({0x62}), u"a", {TEV2_LOAD_CODE::StringClamped}},
        {Bytes().U16(1), u"", {TEV2_LOAD_CODE::StringClamped}},
        {Bytes().U8({3}), u"", {TEV2_LOAD_CODE::RecordOverrun}},
    };
    for (const auto& item : cases)
    {
        TEV2_LOAD_REPORT report;
        TEV2_MEMORY_CURSOR cursor(item.image.data.data(), item.image.data.size(), &report);
        TEV2_WIDE_STRING read(u"before");
        ReadWideString(cursor, read);
        EXPECT_EQ(read.Text(), item.text);
        EXPECT_EQ(cursor.current, cursor.end);
        std::vector<TEV2_LOAD_CODE> codes;
        for (const TEV2_LOAD_FINDING& finding : report.findings)
            codes.push_back(finding.code);
        EXPECT_EQ(codes, item.codes);
        EXPECT_EQ(cursor.Failed(), codes == std::vector{TEV2_LOAD_CODE::RecordOverrun});
    }
}

} // namespace
