// docs/format.md says what the library does.

#include "tests/support/record_schema.h"
#include "tests/support/records.h"
#include "tests/support/tracks.h"
#include "tests/tools/tool_test.h"

#include <algorithm>
#include <set>
#include <sstream>
#include <utility>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// The bytes of the dump after a fence of the document. A line is an offset, up to `width` bytes from column 11 on, and
/// a remark.
std::vector<std::uint8_t> DumpedBytes(const std::string& fence, std::size_t width)
{
    const std::string document = ReadText(TV2_FORMAT_DOCUMENT);
    const std::size_t begin = document.find(fence) + fence.size();
    EXPECT_GT(begin, fence.size()) << fence;
    std::istringstream lines(document.substr(begin, document.find("```", begin) - begin));
    std::vector<std::uint8_t> bytes;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.empty())
            continue;
        EXPECT_EQ(std::stoul(line.substr(0, 8), nullptr, 16), bytes.size()) << line;
        EXPECT_GT(line.size(), 3 * width + 10) << "a line without a remark: " << line;
        std::istringstream columns(line.substr(10, 3 * width));
        for (std::string byte; columns >> byte;)
            bytes.push_back(static_cast<std::uint8_t>(std::stoul(byte, nullptr, 16)));
    }
    return bytes;
}

TEST(FormatDocument, HexDumpIsTheFileOfAnEmptyScene)
{
    EXPECT_EQ(DumpedBytes("```hexdump\n", 8), SceneImage(TEV2()));
}

TEST(FormatDocument, HexDumpIsTheChunkOfASkinnedMesh)
{
    TEV2 scene;
    scene.weightedMeshes.push_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    TEV2_WEIGHTED_MESH& mesh = *scene.weightedMeshes[0];
    mesh.name = Wide(u"flag");
    mesh.value = kNone;
    mesh.subObjects.resize(1);
    mesh.subObjects[0].triangles = {{0, 1, 2}};
    mesh.vertices->positions = {{0, 0, 0}, {0, 1, 0}, {2, 1, 0}};
    mesh.vertices->uvs.push_back({{0, 1}, {0, 0}, {1, 0}});
    mesh.skin->influences = 2;
    mesh.skin->boneIndices = {0, 0, 0, 0, 0, 1};
    mesh.skin->weights = {1, 0, 1, 0, 0.25f, 0.75f};
    mesh.skin->bones = {0, 1};
    mesh.skin->bindMatrices.resize(2);
    mesh.skin->bindMatrices[1].m[0][3] = -1;

    const std::vector<std::uint8_t> image = SceneImage(scene);
    std::size_t at = 4;
    while (at < image.size() && WordAt(image, at + 4) != kWeightedMeshChunk)
        at += WordAt(image, at);
    ASSERT_LT(at, image.size());
    const auto begin = image.begin() + static_cast<std::ptrdiff_t>(at);
    EXPECT_EQ(DumpedBytes("```hexdump16\n", 16), std::vector<std::uint8_t>(begin, begin + WordAt(image, at)));
}

/// What the second of two like entries adds to columns, after `add` has added one.
template <typename Columns>
std::string BytesOfEntry(const std::function<void(Columns&)>& add)
{
    Columns columns;
    add(columns);
    const std::size_t one = RecordSize(columns, kVersion);
    add(columns);
    return std::to_string(RecordSize(columns, kVersion) - one);
}

std::string BytesOfVertex(const TEV2_RIGID_VERT& vertex)
{
    return BytesOfEntry<TEV2_RIGID_VERTICES>([&](TEV2_RIGID_VERTICES& vertices) { vertices.Append(vertex); });
}

std::string BytesOfOffset(TEV2_TARGET_VERT offset)
{
    offset.vertex = 0;
    return BytesOfEntry<TEV2_TARGET_VERTICES>(
        [&](TEV2_TARGET_VERTICES& target)
        {
            target.SetOffset(offset);
            ++offset.vertex;
        });
}

TEST(FormatDocument, SizesAreThoseOfTheRecords)
{
    const auto sizeOf = [](const auto& record) { return std::to_string(RecordSize(record, kVersion)); };
    TEV2_RIGID_VERT vertex;
    vertex.normal.emplace();
    vertex.uvs.resize(1);
    const std::string plain = BytesOfVertex(vertex);
    vertex.frame.emplace();
    TEV2_TARGET_VERT offset;
    offset.normal.emplace();
    TEV2_VERTEX_TRACKS moving;
    moving.position = SampleTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({}, {});
    const std::string rows[][2] = {
        {"a point light without name and tracks", sizeOf(TEV2_POINT_LIGHT())},
        {"a triangle", sizeOf(TEV2_CARD32_TRIPLE())},
        {"a vertex with position, normal and one set of texture coordinates", plain},
        {"the same with binormal and tangent", BytesOfVertex(vertex)},
        {"four weights of a vertex", std::to_string(4 * RecordSize(TEV2_BONE_WEIGHT_DATA(), kVersion))},
        {"a vertex of a target with a position, or with a normal, too",
         BytesOfOffset({}) + ", or " + BytesOfOffset(offset)},
        {"a vertex of an anim mesh with two keys of its position and no other track", sizeOf(moving)},
    };
    for (const auto& [what, bytes] : rows)
        ExpectParts(ReadText(TV2_FORMAT_DOCUMENT), {"| " + what + " | " + bytes + " |"});
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
    for (const auto& [word, type] : {std::pair{"index", "u32"}, {"N · K", "N"}})
        if (const std::size_t at = cell.find(word); at != std::string::npos)
            cell.replace(at, std::string(word).size(), type);
    return cell;
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
    using Strings = std::vector<std::string>;
    using Placed = TEV2_POSITIONAL_OBJECT;

    /// The table of a class has what the schema has from field `first` on.
    template <typename Record>
    void ExpectTable(const RecordSchema& schema, std::size_t first, bool inBody)
    {
        const std::string title = TitleOf<Record>(schema, inBody);
        const RecordSchema table = TableAfter(document_, title);
        seen_.insert(title);
        for (auto part : {&RecordSchema::fields, &RecordSchema::types})
            EXPECT_EQ(table.*part, Strings((schema.*part).begin() + static_cast<std::ptrdiff_t>(first),
                                           (schema.*part).end()))
                << title;
        for (std::size_t row = 0; row < std::min(table.fields.size(), schema.fields.size() - first); ++row)
            ExpectParts(table.choices[row], {schema.choices[first + row]});
    }

    /// The fields of a record but those of its bases; the example is of the record's class or of one derived from it.
    template <typename Record, typename... Bases, typename Example>
    void ExpectOf(const Example& example, bool inBody)
    {
        RecordSchema bases;
        RecordSchema schema;
        (Bases::Fields(example, bases), ...);
        Record::Fields(example, schema);
        ExpectTable<Record>(schema, bases.fields.size(), inBody);
    }

    /// Of a part of a mesh whose length is that of another part.
    template <typename Record>
    void ExpectColumns()
    {
        const Record record;
        RecordSchema schema;
        Record::Fields(record, schema, 0);
        ExpectTable<Record>(schema, 0, true);
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

    void ExpectScene()
    {
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
    }

    void ExpectLook()
    {
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
    }

    void ExpectMeshes()
    {
        Expect<TEV2_RIGID, TEV2_TRI_OBJECT>();
        Expect<TEV2_ANIM_MESH, TEV2_TRI_OBJECT>();
        Expect<TEV2_MORPH_MESH, TEV2_TRI_OBJECT>();
        Expect<TEV2_WEIGHTED_MESH, TEV2_TRI_OBJECT>();
        Expect<TEV2_TRI_OBJECT, TEV2_GEOM_OBJECT>();
        Expect<TEV2_GEOM_OBJECT, Placed, TEV2_LIT_OBJECT>();
        Expect<TEV2_LIT_OBJECT>();
        Expect<TEV2_TRI_SUB_OBJECT>();
        Expect<TEV2_CARD32_TRIPLE>();
        ExpectColumns<TEV2_VERT_COLUMNS>();
        Expect<TEV2_RIGID_VERTICES>();
        Expect<TEV2_ANIM_VERTICES>();
        Expect<TEV2_VERTEX_TRACKS>();
        ExpectColumns<TEV2_SKIN>();
        Expect<TEV2_MORPH_TARGET>();
        Expect<TEV2_TARGET_VERTICES>();
        Expect<TEV2_VERT>();
        Expect<TEV2_RIGID_VERT, TEV2_VERT>();
        Expect<TEV2_ANIM_MESH_VERT, TEV2_VERT>();
        Expect<TEV2_MORPH_MESH_VERT, TEV2_RIGID_VERT>();
        Expect<TEV2_TARGET_VERT>();
        Expect<TEV2_WEIGHTED_MESH_VERT, TEV2_RIGID_VERT>();
        Expect<TEV2_BONE_WEIGHT_DATA>();
        Expect<TEV2_TRI_CLIPPER_RIGID_VERT, TEV2_RIGID_VERT>();
    }

    void ExpectOthers()
    {
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
    }

    const std::string document_ = ReadText(TV2_FORMAT_DOCUMENT);
    std::set<std::string> seen_;
};

TEST_F(RecordTables, NameFieldsAndTypesOfEachRecordInTheirOrder)
{
    ExpectScene();
    ExpectLook();
    ExpectMeshes();
    ExpectOthers();
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
