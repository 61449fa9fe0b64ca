// docs/format.md says what the library does.

#include "tests/tools/command.h"
#include "tests/tools/scene_files.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace TEV2_LOADER;

namespace
{

std::string Document()
{
    std::ifstream stream(TV2_FORMAT_DOCUMENT);
    EXPECT_TRUE(stream.is_open()) << TV2_FORMAT_DOCUMENT;
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

TEST(FormatDocument, HexDumpIsTheFileOfAnEmptyScene)
{
    const std::string document = Document();
    const std::string fence = "```hexdump\n";
    const std::size_t begin = document.find(fence);
    ASSERT_NE(begin, std::string::npos);
    std::istringstream lines(
        document.substr(begin + fence.size(), document.find("```", begin + 3) - begin - fence.size()));

    // an offset, up to 8 bytes in columns 11 to 34, a remark
    Bytes bytes;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.empty())
        {
            continue;
        }
        EXPECT_EQ(std::stoul(line.substr(0, 8), nullptr, 16), bytes.size()) << line;
        EXPECT_GT(line.size(), 37U) << "a line without a remark: " << line;
        std::istringstream columns(line.substr(10, 24));
        for (std::string byte; columns >> byte;)
        {
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(byte, nullptr, 16)));
        }
    }
    const ScratchFolder folder;
    SaveScene(TEV2(), folder.Path("empty.tv2"));
    EXPECT_EQ(bytes, ReadBytes(folder.Path("empty.tv2")));
}

TEST(FormatDocument, NamesEveryCodeOfTheLoader)
{
    const std::string document = Document();
    const auto codes = RunTv2({"check", "--codes", "--json"}).Json()["codes"];
    const auto last_of_the_loader = std::string(CodeName(TEV2_LOAD_CODE::MoreWarnings));
    for (const auto& code : codes)
    {
        const std::string name = code["code"];
        EXPECT_NE(document.find("`" + name + "`"), std::string::npos) << name;
        if (name == last_of_the_loader)
        {
            return;
        }
    }
    FAIL() << "the codes of the loader do not end with " << last_of_the_loader;
}

} // namespace
