#include "tests/host/import/builders/collada_text.h"
#include "tests/host/import/collada/read_document.h"

#include <cmath>
#include <functional>
#include <numbers>

namespace
{

using namespace collada_text;
using mobu_host::Affine;
using mobu_host::Matrix3;
using mobu_host::SceneDescription;

constexpr double kRadians = std::numbers::pi / 180.0;

const std::string kNode = R"(<node id="n" name="Box"><translate sid="t">1 2 3</translate>
<rotate sid="rz">0 0 1 20</rotate><rotate sid="ry">0 1 0 0</rotate><scale sid="s">1 1 1</scale></node>)";

// The motion of the one model of `node` that one animation gives.
std::function<Affine(double)> MotionOf(const Sampled& sampled, const std::string& node = kNode)
{
    const SceneDescription scene = Read(Document(Animations(Animation("a", sampled)), node));
    EXPECT_EQ(scene.takes.size(), 1u);
    if (scene.takes.size() != 1 || scene.takes[0].models.size() != 1)
        return {};
    return scene.takes[0].models[0].transform;
}

double Cubic(double p0, double p1, double p2, double p3, double s)
{
    return (1 - s) * (1 - s) * (1 - s) * p0 + 3 * (1 - s) * (1 - s) * s * p1 + 3 * (1 - s) * s * s * p2 +
           s * s * s * p3;
}

struct Point
{
    double time, value;
};

// By halving: the curve's time rises with the parameter.
double BezierAt(Point a, Point b, Point c, Point d, double time)
{
    double low = 0.0, high = 1.0;
    for (int i = 0; i < 200; ++i)
    {
        const double s = 0.5 * (low + high);
        (Cubic(a.time, b.time, c.time, d.time, s) < time ? low : high) = s;
    }
    return Cubic(a.value, b.value, c.value, d.value, low);
}

TEST(ColladaMotionTest, BezierCurvesAreExact)
{
    // Keys (0, 1) and (2, 5); two-dimensional tangents, in then out, for each of the keys.
    const struct
    {
        const char *in, *out;
        std::size_t stride;
        Point first, second; // control points
        const char* way = "BEZIER BEZIER";
    } cases[] = {
        {"-1 0 1.5 5", "0.5 1 3 0", 2, {0.5, 1}, {1.5, 5}},                   // ease in and out
        {"-1 0 1.9 -40", "0.05 60 3 0", 2, {0.05, 60}, {1.9, -40}},           // beyond both values
        {"-1 0 0 5", "2 1 3 0", 2, {2, 1}, {0, 5}},                           // as steep as can be
        {"-1 0 -7 5", "9 1 3 0", 2, {2, 1}, {0, 5}},                          // times outside are clamped
        {"0 4", "3 0", 1, {2.0 / 3, 3}, {4.0 / 3, 4}},                        // values alone: a third away
        {"9 9 1.5 6", "1.5 6 9 9", 2, {0.5, 3}, {1.5, 3}, "HERMITE HERMITE"}, // derivatives
        {"9 -6", "12 9", 1, {2.0 / 3, 5}, {4.0 / 3, 7}, "HERMITE HERMITE"},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(std::string(item.in) + " | " + item.out);
        const auto motion = MotionOf({"n/t.X", "0 2", "1 5", 1, item.way, item.in, item.out, item.stride});
        ASSERT_TRUE(motion);
        for (const double time : {-1.0, 0.0, 1e-6, 0.1, 0.4, 0.9, 1.37, 1.9, 2.0, 3.0})
        {
            const double x = time <= 0.0   ? 1.0
                             : time >= 2.0 ? 5.0
                                           : BezierAt({0, 1}, item.first, item.second, {2, 5}, time);
            EXPECT_NEAR(motion(time).place[0], x, 1e-9) << time;
            EXPECT_EQ(motion(time).place[1], 2.0);
        }
    }
    // cubic-bezier(0.25, 0.1, 0.25, 1), the "ease" of style sheets, has well-known values.
    const auto ease = MotionOf({"n/t.X", "0 1", "0 1", 1, "BEZIER BEZIER", "0 0 0.25 1", "0.25 0.1 1 1"});
    EXPECT_NEAR(ease(0.25).place[0], 0.4085, 5e-5);
    EXPECT_NEAR(ease(0.5).place[0], 0.8024, 5e-5);
    EXPECT_NEAR(ease(0.75).place[0], 0.9605, 5e-5);
}

TEST(ColladaMotionTest, EachKeySaysHowItGoesOn)
{
    const auto motion = MotionOf({"n/t.X", "0 1 2 3", "0 10 20 30", 1, "STEP LINEAR BEZIER LINEAR",
                                  "0 0 0 0 0 0 2.5 30", "0 0 0 0 2.5 20 0 0"});
    for (const auto& [time, x] : {std::pair{-1.0, 0.0},
                                  {0.5, 0.0},
                                  {0.999, 0.0},
                                  {1.0, 10.0},
                                  {1.25, 12.5},
                                  {2.5, 25.0},
                                  {3.0, 30.0},
                                  {9.0, 30.0},
                                  {0.5, 0.0}})
        EXPECT_NEAR(motion(time).place[0], x, 1e-9) << time;
    const auto jump = MotionOf({"n/t.X", "0 1 1 2", "0 10 20 30"});
    EXPECT_NEAR(jump(0.9).place[0], 9.0, 1e-9);
    EXPECT_EQ(jump(1.0).place[0], 20.0);
    EXPECT_NEAR(jump(1.5).place[0], 25.0, 1e-9);
}

TEST(ColladaMotionTest, FindsEveryKindOfTarget)
{
    const std::string matrix =
        R"(<node id="n"><matrix sid="m">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix></node>)";
    const std::string nested =
        R"(<node id="n"><node sid="k"><translate sid="t.x">0 0 0</translate></node></node>)";
    const double c = std::cos(30 * kRadians), s = std::sin(30 * kRadians);
    const struct
    {
        const char* target;
        std::string node;
        const char* values; // two keys
        std::size_t stride;
        int row, column; // column 3: the place
        double value;    // half way
    } cases[] = {
        {"n/t", kNode, "0 0 0 2 4 6", 3, 2, 3, 3},
        {"n/t.Y", kNode, "0 6", 1, 1, 3, 3},
        {"n/t(2)", kNode, "0 6", 1, 2, 3, 3},
        {"n/rz.ANGLE", kNode, "0 60", 1, 0, 1, -s},
        {"n/rz", kNode, "0 60", 1, 1, 1, c}, // the angle alone
        {"n/rz", kNode, "0 0 1 0 0 0 1 60", 4, 1, 0, s},
        {"n/s.Z", kNode, "1 3", 1, 2, 2, 2},
        {"n/m(3)(1)", matrix, "0 6", 1, 1, 3, 3}, // column, row
        {"n/m(7)", matrix, "0 6", 1, 1, 3, 3},
        {"n/k/t.x", nested, "0 0 0 2 4 6", 3, 1, 3, 2},
        {"n/k/t.x.Z", nested, "0 6", 1, 2, 3, 3},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.target);
        const auto motion = MotionOf({item.target, "0 2", item.values, item.stride}, item.node);
        ASSERT_TRUE(motion);
        const Affine affine = motion(1.0);
        const double value = item.column == 3 ? affine.place[static_cast<std::size_t>(item.row)]
                                              : affine.linear.at[item.row][item.column];
        EXPECT_NEAR(value, item.value, 1e-12);
    }
}

// Angles go on past half a turn, and two of them are not one turn along the shorter arc.
TEST(ColladaMotionTest, AnglesAreInterpolatedOneByOne)
{
    const SceneDescription scene = Read(Document(Animations(Animation("a", {"n/rz.ANGLE", "0 1", "0 720"}) +
                                                            Animation("b", {"n/ry.ANGLE", "0 1", "0 90"})),
                                                 kNode));
    ASSERT_EQ(scene.takes.size(), 1u);
    ASSERT_EQ(scene.takes[0].models.size(), 1u);
    EXPECT_EQ(scene.takes[0].name, "a");
    const Matrix3 turned = scene.takes[0].models[0].transform(0.125).linear;
    const double z = 90 * kRadians, y = 11.25 * kRadians; // z-turn x y-turn
    EXPECT_NEAR(turned.at[0][0], std::cos(z) * std::cos(y), 1e-12);
    EXPECT_NEAR(turned.at[1][0], std::sin(z) * std::cos(y), 1e-12);
    EXPECT_NEAR(turned.at[2][0], -std::sin(y), 1e-12);
}

TEST(ColladaMotionTest, MatricesTurnAlongTheArc)
{
    const std::string node =
        R"(<node id="n"><matrix sid="m">1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1</matrix></node>)";
    // From scale 1 to a quarter turn around z with scale 3, then the same mirrored along z.
    const auto turned = MotionOf(
        {"n/m", "0 1", "1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1 0 -3 0 8 3 0 0 0 0 0 3 0 0 0 0 1", 16}, node)(0.5);
    EXPECT_NEAR(turned.linear.at[0][0], 2 * std::cos(45 * kRadians), 1e-12);
    EXPECT_NEAR(turned.linear.at[0][1], -2 * std::sin(45 * kRadians), 1e-12);
    EXPECT_NEAR(turned.linear.at[2][2], 2.0, 1e-12);
    EXPECT_NEAR(turned.place[0], 4.0, 1e-12);
    const auto mirrored = MotionOf(
        {"n/m", "0 1", "1 0 0 0 0 1 0 0 0 0 -1 0 0 0 0 1 0 -3 0 8 3 0 0 0 0 0 -3 0 0 0 0 1", 16}, node);
    EXPECT_NEAR(mirrored(0.5).linear.at[1][0], 2 * std::sin(45 * kRadians), 1e-12);
    EXPECT_NEAR(mirrored(0.5).linear.at[2][2], -2.0, 1e-12);
    // A flat one stays finite, and is itself at its keys.
    const auto flat =
        MotionOf({"n/m", "0 1", "0 0 0 0 0 1 0 0 0 0 0 0 0 0 0 1 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1", 16}, node);
    EXPECT_NEAR(flat(1e-9).linear.at[1][1], 1.0, 1e-8);
    EXPECT_NEAR(flat(0.5).linear.at[0][0], 0.5, 1e-12);
}

TEST(ColladaMotionTest, TellsWhatIsReadAsStraightLines)
{
    std::vector<std::string> notes;
    const SceneDescription scene =
        Read(Document(Animations(Animation("a", {"n/t.X", "0 1", "0 1", 1, "BSPLINE CARDINAL"}) +
                                 Animation("b", {"n/t.Y", "0 1", "0 1", 1, "BEZIER BEZIER"})),
                      kNode),
             &notes);
    EXPECT_NEAR(scene.takes.at(0).models.at(0).transform(0.25).place[0], 0.25, 1e-12);
    EXPECT_NEAR(scene.takes.at(0).models.at(0).transform(0.25).place[1], 0.25, 1e-12);
    ASSERT_EQ(notes.size(), 2u);
    for (const std::string& note : notes)
        EXPECT_TRUE(note.ends_with("read as straight lines: Box")) << note;
}

TEST(ColladaMotionTest, TakesFollowClipsOrTargets)
{
    const std::string a = Animation("a", {"n/t.X", "-1 1", "0 2"}),
                      b = Animation("b", {"n/t.Y", "0 5", "0 2"}),
                      c = Animation("c", {"n/t.X", "0 3", "0 2"});
    const auto clip = [](const std::string& attributes, const std::string& url) {
        return "<animation_clip " + attributes + "><instance_animation url=\"#" + url +
               "\"/></animation_clip>";
    };
    const std::string clips = "<library_animation_clips>" +
                              clip("id=\"1\" name=\"cut\" start=\"2\" end=\"4\"", "b") +
                              clip("id=\"whole\"", "c") + "</library_animation_clips>";
    struct Span
    {
        std::string name;
        double start, stop;
        std::size_t models, keys;
        bool operator==(const Span&) const = default;
    };
    const struct
    {
        std::string libraries;
        std::vector<Span> spans;
        std::size_t notes;
    } cases[] = {
        {"", {}, 0},
        {Animations("<animation name=\"all\">" + a + b + "</animation>"), {{"all", -1, 5, 1, 2}}, 0},
        {Animations(a + b), {{"a", -1, 5, 1, 2}}, 0},
        {Animations(a + b + c),
         {{"a", -1, 1, 1, 1}, {"b", 0, 5, 1, 1}, {"c", 0, 3, 1, 1}},
         0}, // a and c both move X
        {Animations("<animation>" + Sampler("x", {"n/t.X", "0 1", "0 1"}) + "</animation>"),
         {{"animation", 0, 1, 1, 1}},
         0},
        {Animations(a + b + c) + clips, {{"cut", 2, 4, 1, 1}, {"whole", 0, 3, 1, 1}}, 1}, // a is in no clip
    };
    for (const auto& item : cases)
    {
        std::vector<std::string> notes;
        std::vector<Span> spans;
        for (const auto& take : Read(Document(item.libraries, kNode), &notes).takes)
            spans.push_back({take.name, take.start, take.stop, take.models.size(), take.keys.size()});
        EXPECT_TRUE(spans == item.spans) << item.libraries;
        EXPECT_EQ(notes.size(), item.notes);
    }
}

TEST(ColladaMotionTest, InstancesMoveTogether)
{
    const SceneDescription scene = Read(Document(
        "<library_nodes>" + kNode + "</library_nodes>" + Animations(Animation("a", {"n/t.X", "0 1", "0 1"})),
        R"(<node><instance_node url="#n"/></node><node><instance_node url="#n"/></node>)"));
    ASSERT_EQ(scene.takes.at(0).models.size(), 2u);
    EXPECT_EQ(scene.takes[0].models[0].model, 1u);
    EXPECT_EQ(scene.takes[0].models[1].model, 3u);
    EXPECT_NEAR(scene.takes[0].models[1].transform(0.5).place[0], 0.5, 1e-12);
}

TEST(ColladaMotionTest, LensesMove)
{
    const std::string camera = R"(<library_cameras><camera id="c"><optics><technique_common><perspective>
<yfov sid="angle">40</yfov><aspect_ratio>1.5</aspect_ratio><znear sid="znear">1</znear><zfar>9</zfar></perspective>
</technique_common></optics></camera></library_cameras>)";
    const SceneDescription scene =
        Read(Document(camera + Animations(Animation("a", {"c/angle", "0 1", "40 60"}) +
                                          Animation("b", {"c/znear", "0 1", "1 3"})),
                      "<node><instance_camera url=\"#c\"/></node>", "<unit meter=\"1\"/>"));
    const auto& lenses = scene.takes.at(0).properties;
    ASSERT_EQ(lenses.size(), 2u);
    for (const auto& lens : lenses)
    {
        if (lens.built_in == std::string("FieldOfView"))
            EXPECT_NEAR(lens.value(0.5, 0), 2 * std::atan(1.5 * std::tan(25 * kRadians)) / kRadians, 1e-9);
        else
            EXPECT_NEAR(lens.value(0.5, 0), 200.0, 1e-9);
    }
}

} // namespace
