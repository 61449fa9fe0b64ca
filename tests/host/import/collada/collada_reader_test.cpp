#include "host/import/base/parse_error.h"
#include "tests/host/import/builders/collada_text.h"
#include "tests/host/import/collada/read_document.h"

#include <cmath>
#include <numbers>

namespace
{

using namespace collada_text;
using mobu_host::Affine;
using mobu_host::Matrix3;
using mobu_host::SceneDescription;

std::string CauseOf(const std::string& document)
{
    try
    {
        mobu_host::ImportNotes notes;
        mobu_host::collada::ReadScene(document, {}, notes);
        return "none";
    }
    catch (const mobu_host::ParseError& error)
    {
        return error.what();
    }
}

std::vector<std::string> NamesOf(const SceneDescription& scene)
{
    std::vector<std::string> names;
    for (const auto& model : scene.models)
        names.push_back((model.parent == mobu_host::kNoModel ? "" : scene.models[model.parent].name + "/") +
                        model.name);
    return names;
}

void ExpectRows(const Affine& affine, const double (&rows)[12], double tolerance = 1e-12)
{
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(affine.linear.at[row][column], rows[4 * row + column], tolerance)
                << row << "," << column;
        EXPECT_NEAR(affine.place[static_cast<std::size_t>(row)], rows[4 * row + 3], tolerance) << row;
    }
}

double Sine(double degrees)
{
    return std::sin(degrees * std::numbers::pi / 180.0);
}

double Cosine(double degrees)
{
    return std::cos(degrees * std::numbers::pi / 180.0);
}

TEST(ColladaReaderTest, AppliesEveryKindOfTransform)
{
    const double third = 1.0 / 3.0; // of a turn around (1,1,1), which takes x to y to z
    const struct
    {
        const char* transforms;
        double rows[12];
    } cases[] = {
        {"", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}},
        {"<translate>1 2 3</translate>", {1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3}},
        {"<rotate>0 0 1 30</rotate>", {Cosine(30), -Sine(30), 0, 0, Sine(30), Cosine(30), 0, 0, 0, 0, 1, 0}},
        {"<rotate>2 2 2 120</rotate>", {0, 0, 3 * third, 0, 1, 0, 0, 0, 0, 1, 0, 0}},
        {"<rotate>0 0 0 90</rotate>", {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}},
        {"<scale>2 -3 4</scale>", {2, 0, 0, 0, 0, -3, 0, 0, 0, 0, 4, 0}},
        {"<matrix>1 2 3 4 5 6 7 8 9 10 11 12 0 0 0 1</matrix>", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {"<skew>45 0 3 0 2 0 0</skew>", {1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0}}, // x moves along with y
        {"<lookat>1 2 3  1 2 13  0 5 5</lookat>",
         {-1, 0, 0, 1, 0, 1, 0, 2, 0, 0, -1, 3}}, // up not at right angles
        {"<lookat>1 2 3  1 2 3  0 1 0</lookat>", {1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3}},
        {"<translate>1 0 0</translate><extra/><rotate>0 0 1 90</rotate><scale>2 1 1</scale>"
         "<translate>0 5 0</translate>",
         {0, -1, 0, -4, 2, 0, 0, 0, 0, 0, 1, 0}},
        {"<translate>\n\t 1e0,<!-- or so --> +2. .3e1</translate>", {1, 0, 0, 1, 0, 1, 0, 2, 0, 0, 1, 3}},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.transforms);
        std::string transforms = item.transforms;
        std::erase(transforms, ',');
        ExpectRows(Read(Document("", "<node>" + transforms + "</node>")).models.at(0).rest, item.rows);
    }
}

TEST(ColladaReaderTest, UnitAndUpAxis)
{
    const struct
    {
        const char* asset;
        double metres;
        Matrix3 axes;
    } cases[] = {
        {"", 1.0, {}},
        {R"(<unit name="inch" meter=" 0.0254 "/><up_axis>X_UP</up_axis>)",
         0.0254,
         {{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}}},
        {R"(<unit meter="1"/><up_axis> Z_UP </up_axis>)", 1.0, {{{1, 0, 0}, {0, 0, 1}, {0, -1, 0}}}},
    };
    for (const auto& item : cases)
    {
        const SceneDescription scene =
            Read(Document("", "<node><translate>0 1 0</translate></node>", item.asset));
        EXPECT_TRUE(scene.axes == (Affine{item.axes, {}})) << item.asset;
        EXPECT_DOUBLE_EQ(scene.models.at(0).rest.place[1], 100 * item.metres);
    }
    std::vector<std::string> notes;
    EXPECT_EQ(Read(Document("", "<node><translate>0 1 0</translate></node>", "<unit meter=\"0\"/>"), &notes)
                  .models.at(0)
                  .rest.place[1],
              100.0);
    EXPECT_EQ(notes.size(), 1u);
}

TEST(ColladaReaderTest, NamesAndInstances)
{
    const std::string library = R"(<library_nodes><node id="wheel" name="Wheel"><translate>0 1 0</translate>
<node id="tyre"><instance_geometry url="#g"/></node></node></library_nodes>)";
    const SceneDescription scene = Read(Document(library, R"(<node id="a" name="Car">
<instance_node url="#wheel"/><node id="b" sid="s"/><node sid="only"/><node/><instance_node url="#wheel"/></node>)"));
    EXPECT_EQ(NamesOf(scene), (std::vector<std::string>{"Car", "Car/b", "Car/only", "Car/", "Car/Wheel",
                                                        "Wheel/tyre", "Car/Wheel", "Wheel/tyre"}));
    EXPECT_TRUE(scene.models[5].has_geometry && scene.models[7].has_geometry);
    EXPECT_EQ(scene.models[6].rest.place[1], 1.0);
    EXPECT_EQ(scene.models[7].parent, 6u);

    std::vector<std::string> notes;
    EXPECT_EQ(Read(Document("", R"(<node><instance_node url="other.dae#n"/></node>)"), &notes).models.size(),
              1u);
    EXPECT_EQ(notes, (std::vector<std::string>{"1 node of another file is left out: other.dae#n"}));
}

TEST(ColladaReaderTest, ShowsTheSceneThatIsInstantiated)
{
    const std::string scenes =
        R"(<COLLADA version="1.4.1"><library_visual_scenes><visual_scene id="a"><node id="A"/>
</visual_scene><visual_scene id="b"><node id="B"/></visual_scene></library_visual_scenes>)";
    EXPECT_EQ(NamesOf(Read(scenes + "</COLLADA>")), (std::vector<std::string>{"A"}));
    EXPECT_EQ(NamesOf(Read(scenes + R"(<scene><instance_visual_scene url="#b"/></scene></COLLADA>)")),
              (std::vector<std::string>{"B"}));
}

TEST(ColladaReaderTest, ReadsEveryEncoding)
{
    const std::string text = R"(<?xml version="1.0"?><COLLADA version="1.4.1"><library_visual_scenes>
<visual_scene id="a"><node id="A"><translate>1 2 3</translate></node></visual_scene></library_visual_scenes>
</COLLADA>)";
    for (const std::string& document : {text, "\xEF\xBB\xBF" + text, Utf16(text, false), Utf16(text, true),
                                        Utf16(text, false, false), Utf16(text, true, false)})
        EXPECT_EQ(Read(document).models.at(0).rest.place[2], 300.0);
    const std::string latin =
        "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><COLLADA><library_visual_scenes>"
        "<visual_scene><node name=\"t\xEAte\"/></visual_scene></library_visual_scenes></COLLADA>";
    EXPECT_EQ(NamesOf(Read(latin)), (std::vector<std::string>{"t\xC3\xAAte"}));
}

TEST(ColladaReaderTest, ReadsUserProperties)
{
    const std::string text = "count = 3\r\nweight=0.5\nhero = true\nnote =a = b\n\nsaid before\n =";
    std::vector<std::string> notes;
    const auto properties =
        Read(Document("", "<node name=\"n\"><extra><technique profile=\"FCOLLADA\"><user_properties>" + text +
                              "</user_properties></technique></extra></node>"),
             &notes)
            .models.at(0)
            .properties;
    ASSERT_EQ(properties.size(), 4u);
    EXPECT_EQ(properties[0].name, "count");
    EXPECT_EQ(std::get<int>(properties[0].value), 3);
    EXPECT_EQ(std::get<double>(properties[1].value), 0.5);
    EXPECT_EQ(std::get<bool>(properties[2].value), true);
    EXPECT_EQ(std::get<std::string>(properties[3].value), "a = b");
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_TRUE(notes[0].ends_with(": n")) << notes[0];
}

TEST(ColladaReaderTest, SaysWhatIsWrongAndWhere)
{
    const std::string node = R"(<node id="n"><translate sid="t">0 0 0</translate></node>)";
    const auto animated = [&node](const Sampled& sampled)
    { return Document(Animations(Animation("a", sampled)), node); };
    std::string cut_count = animated({"n/t", "0 1", "0 0 0 1 1 1", 3});
    cut_count.replace(cut_count.find("count=\"6\""), 9, "count=\"5\"");
    std::string deep;
    for (int i = 0; i < 2001; ++i)
        deep += "<node>";
    for (int i = 0; i < 2001; ++i)
        deep += "</node>";
    const struct
    {
        std::string document;
        const char* cause;
    } cases[] = {
        {"<COLLADA", "well-formed XML"},
        {"<a/>", "outermost element is \"a\""},
        {"<COLLADA></COLLADA>", "no visual scene"},
        {Document("", "<node id=\"n\"><translate>1 2</translate></node>"),
         "<translate> of <node> \"n\" holds 2 numbers where there have to be 3 (line 2)"},
        {Document("", "\n\n<node><translate sid=\"t\">1 nan 2</translate></node>"),
         "\"nan\", which is not finite"},
        {Document("", "\n\n<node><translate>1 1e400 2</translate></node>"), "(line 4)"},
        {Document("", "<node><scale>1 1 1e39</scale></node>"), "\"1e39\""},
        {Document("", "<node><scale>1 1 0x1</scale></node>"), "\"0x1\" where a number"},
        {Document("", "<node><scale>1 1,5 1</scale></node>"), "\"1,5\" where a number"},
        {Document("", "<node><scale>1 1 inf</scale></node>"), "\"inf\""},
        {Document("", "<node id=\"n\"/>", "<unit meter=\"x\"/>"), "\"x\" where a number"},
        {Document("", "<node id=\"n\"/>", "<up_axis>UP</up_axis>"), "\"UP\""},
        {Document("", "<node><instance_node url=\"#m\"/></node>"), "\"#m\", which is no node"},
        {Document("", "<node id=\"n\"><instance_node url=\"#n\"/></node>"), "puts a node into itself"},
        {Document("", deep), "more than 2000 models deep"},
        {animated({"n/t", "0 1", "0 0 0", 3}), "2 times and 1 values"},
        {animated({"n/t", "0 1", "0 0 1 1", 2}), "gives 2 values a key where \"n/t\" has 3"},
        {animated({"n/t.X", "1 0", "0 1"}), "times that go back"},
        {animated({"n/t.X", "0 1e7", "0 1"}), "million seconds"},
        {animated({"n/t.X", "0 inf", "0 1"}), "\"inf\""},
        {animated({"n/t.X", "0 1", "0 1", 1, "BEZIER BEZIER", "0 0 1 0 0 1", "0 0 1 0 0 1", 3}),
         "3 numbers a tangent"},
        {animated({"n/t.X", "0 1", "0 1", 1, "LINEAR"}), "1 rows for 2 keys"},
        {cut_count, "holds 6 numbers where there have to be 5"},
        {Document(Animations("<animation><channel source=\"#s\" target=\"n/t\"/></animation>"), node),
         "\"#s\", which is no sampler"},
        {Utf16("<COLLADA>\n<asset>\n<up_axis>UP</up_axis></asset></COLLADA>", true), "(line 3)"},
    };
    for (const auto& item : cases)
    {
        const std::string cause = CauseOf(item.document);
        EXPECT_NE(cause.find(item.cause), std::string::npos) << item.cause << ": " << cause;
    }
}

// What concerns no motion may be as it likes.
TEST(ColladaReaderTest, DoesNotReadWhatItDoesNotNeed)
{
    const std::string unused =
        R"(<library_effects><effect><color> 1 x</color></effect></library_effects><library_geometries><geometry><mesh>
<source><float_array count="9">  nan</float_array></source></mesh></geometry></library_geometries>
<library_cameras><camera id="c"><optics><technique_common><perspective><xfov>x</xfov></perspective></technique_common>
</optics></camera></library_cameras>)";
    EXPECT_EQ(Read(Document(unused, "<node id=\"n\"/>")).models.size(), 1u);
    std::vector<std::string> notes;
    Read(Document(Animations(Animation("a", {"material/colour.R", "0 x", "1"})), "<node id=\"n\"/>"), &notes);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_TRUE(notes[0].ends_with(": material/colour.R")) << notes[0];
}

} // namespace
