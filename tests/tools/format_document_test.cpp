// docs/format.md says what the library does.

#include "tests/support/record_schema.h"
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
    for (const TEV2_LOAD_CODE_ROW& row : LoadCodes())
        ExpectParts(document, {std::string("`") + row.name + "`"});
}

/// The fields that the first table after a line of the document names, with the versions that have them.
std::vector<std::string> TableAfter(const std::string& document, const std::string& line)
{
    std::vector<std::string> fields;
    const std::size_t place = document.find("\n" + line + "\n");
    EXPECT_NE(place, std::string::npos) << line;
    std::istringstream rows(document.substr(std::min(document.size(), document.find("\n| ", place) + 1)));
    for (std::string row; std::getline(rows, row) && row.starts_with("|");)
    {
        if (!row.starts_with("| `"))
            continue;
        std::string field = row.substr(3, row.find('`', 3) - 3);
        for (const char* gate : {"*since ", "*up to "})
        {
            const std::size_t at = row.find(gate);
            if (at != std::string::npos)
                field += " " + row.substr(at + 1, row.find('*', at + 1) - at - 1);
        }
        fields.push_back(field);
    }
    return fields;
}

TEST(FormatDocument, NamesTheFieldsOfEachRecordInTheirOrder)
{
    const std::string document = ReadText(TV2_FORMAT_DOCUMENT);
    const auto expect =
        [&document](const std::string& line, const RecordSchema& schema, std::size_t skipped = 0)
    {
        const std::vector<std::string> fields(schema.fields.begin() + static_cast<std::ptrdiff_t>(skipped),
                                              schema.fields.end());
        EXPECT_EQ(TableAfter(document, line), fields) << line;
    };
    expect("### Chunk 0: information", RecordSchema::Of<TEV2_INF>());
    expect("### Chunk 2: environment", RecordSchema::Of<TEV2_ENVIRONMENT>());
    expect("### Chunk 22: camera switcher", RecordSchema::Of<TEV2_CAMERA_MAN>());
    expect("### Placed object", RecordSchema::Of<TEV2_POSITIONAL_OBJECT>());
    expect("### Chunk 6: camera", RecordSchema::Of<TEV2_CAMERA>(),
           RecordSchema::Of<TEV2_POSITIONAL_OBJECT>().fields.size());
    expect("### Chunk 12: matrix hierarchy", RecordSchema::Of<TEV2_MATRIX_HIERARCHY>());
    expect("One node:", RecordSchema::Of<TEV2_MATRIX_NODE>());
    expect("### Extended properties", RecordSchema::Of<TEV2_EXTENDED_PROPERTIES>());
    expect("### The record", RecordSchema::Of<TEV2_ANIMATABLE_VECTOR_3_LINEAR>());
}

TEST(FormatDocument, NamesEveryChunkAndKindOfTrack)
{
    const std::string document = ReadText(TV2_FORMAT_DOCUMENT);
    const auto row = [](const TEV2_KIND& kind)
    { return "\n| " + std::to_string(kind.number) + " | `" + kind.className + "` | "; };
    for (std::uint32_t id = 0; FindChunkKind(id) != nullptr; ++id)
        ExpectParts(document, {row(*FindChunkKind(id))});
    for (const TEV2_KIND& kind : kTrackKinds)
        ExpectParts(document, {row(kind)});
}

} // namespace
