// docs/format.md says what the library does.

#include "tests/tools/tool_test.h"

#include <sstream>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

TEST(FormatDocument, HexDumpIsTheFileOfAnEmptyScene)
{
    const std::string document = ReadText(TV2_FORMAT_DOCUMENT);
    const std::string fence = "```hexdump\n";
    const std::size_t begin = document.find(fence);
    ASSERT_NE(begin, std::string::npos);
    std::istringstream lines(
        document.substr(begin + fence.size(), document.find("```", begin + 3) - begin - fence.size()));

    // an offset, up to 8 bytes in columns 11 to 34, a remark
    std::vector<std::uint8_t> bytes;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.empty())
            continue;
        EXPECT_EQ(std::stoul(line.substr(0, 8), nullptr, 16), bytes.size()) << line;
        EXPECT_GT(line.size(), 37U) << "a line without a remark: " << line;
        std::istringstream columns(line.substr(10, 24));
        for (std::string byte; columns >> byte;)
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(byte, nullptr, 16)));
    }
    EXPECT_EQ(bytes, SceneImage(TEV2()));
}

TEST(FormatDocument, NamesEveryCodeOfTheLoader)
{
    const std::string document = ReadText(TV2_FORMAT_DOCUMENT);
    const std::string last_of_the_loader = CodeName(TEV2_LOAD_CODE::MoreWarnings);
    const auto codes = RunTv2({"check", "--codes", "--json"}).Json()["codes"];
    for (const auto& code : codes)
    {
        const std::string name = code["code"];
        ExpectParts(document, {"`" + name + "`"});
        if (name == last_of_the_loader)
            return;
    }
    FAIL() << "the codes of the loader do not end with " << last_of_the_loader;
}

} // namespace
