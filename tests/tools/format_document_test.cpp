// docs/format.md says what the library does.

#include "tests/support/record_schema.h"
#include "tests/tools/tool_test.h"

#include <algorithm>
#include <set>
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

/// The cells of a row of a table: "| `name` | string |" is `name` and string.
std::vector<std::string> Cells(const std::string& row)
{
    std::vector<std::string> cells;
    for (std::size_t begin = 2, end = 0; (end = row.find(" |", begin - 1)) != std::string::npos;
         begin = end + 3)
        cells.push_back(begin < end ? row.substr(begin, end - begin) : "");
    return cells;
}

/// The type in a cell of the document in the words of RecordSchema.
std::string SchemaType(std::string cell)
{
    std::erase(cell, '`');
    const std::size_t index = cell.find("index");
    return index == std::string::npos ? cell : cell.replace(index, 5, "u32");
}

/// The first table after a line of the document, as a schema.
RecordSchema TableAfter(const std::string& document, const std::string& line)
{
    RecordSchema table;
    const std::size_t place = document.find("\n" + line);
    EXPECT_NE(place, std::string::npos) << line;
    std::istringstream rows(document.substr(std::min(document.size(), document.find("\n| ", place) + 1)));
    for (std::string row; std::getline(rows, row) && row.starts_with("|");)
    {
        if (!row.starts_with("| `"))
            continue;
        const std::vector<std::string> cells = Cells(row);
        std::string field = cells[0].substr(1, cells[0].size() - 2);
        for (const char* gate : {"*since ", "*up to "})
        {
            const std::size_t at = row.find(gate);
            if (at != std::string::npos)
                field += " " + row.substr(at + 1, row.find('*', at + 1) - at - 1);
        }
        table.fields.push_back(field);
        table.types.push_back(SchemaType(cells[1]));
        table.choices.push_back(cells.back());
    }
    return table;
}

/// How the document calls a record in front of its table.
template <typename Record>
std::string TitleOf(const RecordSchema& schema, bool inBody)
{
    const bool marked =
        inBody || std::find(schema.fields.begin(), schema.fields.end(), "layout") != schema.fields.end();
    return "**`" + ClassName<Record>() + "`**" + (marked ? " (layout 1)" : "");
}

/// Compares records with their tables and notes which tables it has seen.
class RecordTables : public testing::Test
{
protected:
    /// The table has the fields of a record but those of its bases; the example is of the record's class or of a class
    /// derived from it.
    template <typename Record, typename... Bases, typename Example>
    void ExpectOf(const Example& example, bool inBody)
    {
        RecordSchema bases;
        RecordSchema schema;
        (Bases::Fields(example, bases), ...);
        Record::Fields(example, schema);
        const std::string title = TitleOf<Record>(schema, inBody);
        const RecordSchema table = TableAfter(document_, title);
        seen_.insert(title);
        for (auto part : {&RecordSchema::fields, &RecordSchema::types})
            EXPECT_EQ(table.*part, std::vector<std::string>((schema.*part).begin() + bases.fields.size(),
                                                            (schema.*part).end()))
                << title;
        for (std::size_t row = 0;
             row < std::min(table.fields.size(), schema.fields.size() - bases.fields.size()); ++row)
            ExpectParts(table.choices[row], {schema.choices[bases.fields.size() + row]});
    }

    /// Of a record of a body with a layout number.
    template <typename Record, typename... Bases>
    void Expect()
    {
        ExpectOf<Record, Bases...>(Record(), true);
    }

    /// Of a record that has none.
    template <typename Record, typename... Bases>
    void ExpectPlain()
    {
        ExpectOf<Record, Bases...>(Record(), false);
    }

    /// No table of the document was left out.
    void ExpectSeenAll() const
    {
        std::set<std::string> titles;
        std::istringstream lines(document_);
        for (std::string line; std::getline(lines, line);)
        {
            const std::string layout = " (layout 1)";
            const std::size_t end = line.find("`**");
            if (line.starts_with("**`") && end != std::string::npos)
                titles.insert(line.substr(0, end + 3) +
                              (line.substr(end + 3).starts_with(layout) ? layout : ""));
        }
        EXPECT_EQ(titles, seen_);
    }

    const std::string document_ = ReadText(TV2_FORMAT_DOCUMENT);
    std::set<std::string> seen_;
};

TEST_F(RecordTables, NameFieldsAndTypesOfEachRecordInTheirOrder)
{
    using Placed = TEV2_POSITIONAL_OBJECT;
    ExpectPlain<TEV2_INF>();
    ExpectPlain<TEV2_ENVIRONMENT>();
    ExpectPlain<TEV2_CAMERA_MAN>();
    ExpectPlain<Placed>();
    ExpectPlain<TEV2_CAMERA, Placed>();
    ExpectPlain<TEV2_MATRIX_HIERARCHY>();
    ExpectPlain<TEV2_MATRIX_NODE>();
    ExpectPlain<TEV2_EXTENDED_PROPERTIES>();
    ExpectPlain<TEV2_NAMED_STRING_ARRAY>();
    ExpectPlain<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>>();
    ExpectPlain<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
    Expect<TEV2_CAMERA_MOTION_BLUR_EFFECT>();
    Expect<TEV2_CAMERA_DEPTH_OF_FIELD_EFFECT>();
    Expect<TEV2_GLOBAL_LIGHT_TINT>();
    Expect<TEV2_AMBIENT_LIGHT>();
    ExpectOf<TEV2_LIGHT, Placed>(TEV2_POINT_LIGHT(), true);
    Expect<TEV2_POINT_LIGHT, TEV2_LIGHT>();
    Expect<TEV2_DIRECTIONAL_LIGHT, TEV2_LIGHT>();
    Expect<TEV2_SPOT_LIGHT, TEV2_LIGHT>();
    Expect<TEV2_LIGHT_SHADOW_PARAMS>();
    Expect<TEV2_LIGHT_OBJECT_SHADOW_PARAMS>();
    Expect<TEV2_LIGHT_ATMOSPHERIC_SHADOW_PARAMS>();
    Expect<TEV2_LIGHT_SHADOW_MAP_PARAMS>();
    Expect<TEV2_MAX_LIGHT_PARAMS>();
    Expect<MAX_ATTENUATION>();
    ExpectOf<TEV2_MATERIAL_MAP>(TEV2_BITMAP_MATERIAL_MAP(), true);
    Expect<TEV2_BITMAP_MATERIAL_MAP, TEV2_MATERIAL_MAP>();
    Expect<TEV2_BITMAP_MATERIAL_MAP_BITMAP_PARAMS>();
    Expect<TEV2_BITMAP_CROP_PLACE>();
    Expect<TEV2_BITMAP_MATERIAL_MAP_COORDINATES>();
    Expect<TEV2_UV_MATERIAL_WRAP_MODE>();
    Expect<TEV2_BITMAP_MATERIAL_MAP_TIME>();
    Expect<TEV2_NORMAL_MATERIAL_MAP, TEV2_MATERIAL_MAP>();
    Expect<TEV2_NORMAL_CHANNEL_DIRECTION>();
    ExpectOf<TEV2_MATERIAL>(TEV2_STANDARD_MATERIAL(), true);
    Expect<TEV2_STANDARD_MATERIAL, TEV2_MATERIAL>();
    Expect<TEV2_CHANNEL_MAP>();
    Expect<TEV2_SHADER_MATERIAL, TEV2_MATERIAL>();
    Expect<TEV2_SHADER_STRING_PARAM>();
    Expect<TEV2_SHADER_LIGHT_PARAM>();
    Expect<TEV2_LIT_OBJECT>();
    Expect<TEV2_TRI_SUB_OBJECT>();
    Expect<TEV2_CARD32_TRIPLE>();
    Expect<TEV2_BEZIER_SPLINE_OBJECT, Placed>();
    ExpectOf<TEV2_IBEZIER_SPLINE>(TEV2_RIGID_BEZIER_SPLINE(), true);
    Expect<TEV2_RIGID_BEZIER_SPLINE, TEV2_IBEZIER_SPLINE>();
    Expect<TEV2_RIGID_BEZIER_CURVE>();
    Expect<TEV2_ANIM_BEZIER_SPLINE, TEV2_IBEZIER_SPLINE>();
    Expect<TEV2_ANIM_BEZIER_CURVE>();
    Expect<TEV2_HELPER, Placed>();
    Expect<TEV2_INSTANCE, Placed>();
    Expect<TEV2_GEOM_INSTANCE, TEV2_INSTANCE>();
    Expect<TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS, TEV2_GEOM_INSTANCE>();
    Expect<TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS, TEV2_GEOM_INSTANCE>();
    Expect<TEV2_XREF<15>>();
    Expect<TEV2_XREF_OBJECT, Placed, TEV2_LIT_OBJECT>();
    Expect<TEV2_XREF_SPEEDTREE, Placed, TEV2_LIT_OBJECT>();
    ExpectSeenAll();
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
