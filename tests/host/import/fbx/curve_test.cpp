#include "host/import/base/parse_error.h"
#include "host/import/fbx/curve_reader.h"
#include "host/import/fbx/layered_value.h"
#include "tests/host/import/builders/fbx_writer.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>

namespace
{

using namespace mobu_host;
using namespace mobu_host::fbx;
using fbx_writer::Letter;
using fbx_writer::TestKey;
using fbx_writer::Ticks;

constexpr std::int32_t kAuto = 0x108, kAutoClamped = 0x1108, kProgressive = 0x6108, kUser = 0x408,
                       kTcb = 0x208, kLinear = 4, kHold = 2, kHoldNext = 0x102;

Curve Read(const std::vector<TestKey>& keys, const std::vector<float>& data = {})
{
    fbx_writer::Node node = fbx_writer::CurveObject(1, keys);
    if (!data.empty())
        node.children[3].values = {data};
    const std::string file = fbx_writer::Binary(7400, {node});
    const RecordTree tree(file);
    return CurveReader().ReadArrays(tree.Root().Child("AnimationCurve"));
}

Curve ReadKeys(const std::vector<fbx_writer::Value>& values, bool text)
{
    const std::vector<fbx_writer::Node> nodes{{"Channel", {std::string("X")}, {{"Key", values, {}}}}};
    const std::string file = text ? fbx_writer::Text(6100, nodes) : fbx_writer::Binary(6100, nodes);
    const RecordTree tree(file);
    return CurveReader().ReadKeyList(tree.Root().Child("Channel"));
}

struct Sample
{
    double seconds;
    double value;
};

void ExpectValues(const Curve& curve, const std::vector<Sample>& samples)
{
    for (const Sample& sample : samples)
        EXPECT_NEAR(curve.At(sample.seconds), sample.value, 1e-6) << "at " << sample.seconds;
}

TEST(CurveTest, StepsAndLines)
{
    ExpectValues(
        Read({{1.0, 5.0F, kHold}, {2.0, 7.0F, kHoldNext}, {3.0, 9.0F, kLinear}, {5.0, 1.0F, kLinear}}),
        {{-1e5, 5}, {1, 5}, {1.99, 5}, {2.01, 9}, {3, 9}, {4, 5}, {5, 1}, {1e5, 1}, {3.5, 7}, {1.5, 5}});
}

// A cubic with given slopes is the Hermite curve through them.
TEST(CurveTest, GivenSlopes)
{
    const auto hermite = [](double u, double span, double from, double to, double right, double left)
    {
        const double v = u * u * (3 - 2 * u);
        return from + (to - from) * v + span * (u * (1 - u) * (1 - u) * right - u * u * (1 - u) * left);
    };
    const Curve curve = Read({{0.0, 1.0F, kUser, 4.0F, -2.0F}, {2.0, 3.0F, kUser, 0.0F, 0.0F}});
    for (const double u : {0.1, 0.25, 0.5, 0.9})
        EXPECT_NEAR(curve.At(2.0 * u), hermite(u, 2.0, 1.0, 3.0, 4.0, -2.0), 1e-9) << u;
}

TEST(CurveTest, AutomaticSlopes)
{
    // In the middle between the slopes 10 and 2 of the neighbours, 6 at the middle key; 10 and 2 at the ends.
    const Curve even = Read({{0.0, 0.0F, kAuto}, {1.0, 10.0F, kAuto}, {2.0, 12.0F, kAuto}});
    EXPECT_NEAR(even.At(0.5), 5.0 + (10.0 - 6.0) / 8.0, 1e-6);
    // A bias of 50 moves it halfway toward the slope after the key.
    const Curve biased =
        Read({{0.0, 0.0F, kAuto, 0.0F, -50.0F}, {1.0, 10.0F, kAuto, 50.0F, 0.0F}, {2.0, 12.0F, kAuto}});
    EXPECT_NEAR(biased.At(0.5), 5.0 + (10.0 - 4.0) / 8.0, 1e-6);
    // Time independent: from neighbour to neighbour, (12 - 0) / 3 s.
    const Curve uneven = Read({{0.0, 0.0F, kAuto | 0x2000}, {1.0, 10.0F, kAuto | 0x2000}, {3.0, 12.0F}});
    EXPECT_NEAR(uneven.At(0.5), 5.0 + (10.0 - 4.0) / 8.0, 1e-6);
    // The bias of one side counts for both, but where the tangent is broken.
    for (const bool broken : {false, true})
    {
        const Curve sided = Read({{0.0, 0.0F, kAuto},
                                  {1.0, 10.0F, broken ? kAuto | 0x800 : kAuto, 50.0F, 0.0F},
                                  {2.0, 12.0F, kAuto}});
        EXPECT_NEAR(sided.At(0.5), 5.0 + (10.0 - (broken ? 6.0 : 4.0)) / 8.0, 1e-6);
    }
    // A bias of -700: 7 times beyond the slope before, and 40 x 2 x 2 less.
    const Curve extreme = Read({{0.0, 0.0F, kAuto}, {1.0, 10.0F, kAuto, -700.0F, 0.0F}, {2.0, 12.0F, kAuto}});
    EXPECT_NEAR(extreme.At(1.5), 11.0 + (6.0 + 7.0 * 4.0 - 160.0 - 2.0) / 8.0, 1e-6);
    // Clamped: flat beside an equal value.
    const Curve clamped =
        Read({{0.0, 0.0F, kAutoClamped}, {1.0, 10.0F, kAutoClamped}, {2.0, 10.0F, kAutoClamped}});
    EXPECT_NEAR(clamped.At(0.5), 5.0 + 10.0 / 8.0, 1e-6);
    EXPECT_NEAR(clamped.At(1.5), 10.0, 1e-9);
    // Progressive: flat on a peak and never beyond a neighbour.
    const Curve peak =
        Read({{0.0, 0.0F, kProgressive}, {1.0, 10.0F, kProgressive}, {2.0, 0.0F, kProgressive}});
    EXPECT_NEAR(peak.At(1.0), 10.0, 1e-9);
    EXPECT_NEAR(peak.At(0.5), 5.0, 1e-6);
    const Curve steep =
        Read({{0.0, 0.0F, kProgressive}, {1.0, 100.0F, kProgressive}, {2.0, 101.0F, kProgressive}});
    for (double t = 1.0; t <= 2.0; t += 0.01)
        EXPECT_LE(steep.At(t), 101.0 + 1e-9) << t;
}

// At a key between slopes 10 and 2: tension 1 leaves none, continuity parts the sides, bias prefers one neighbour.
TEST(CurveTest, TensionContinuityBias)
{
    const auto middle = [](float tension, float continuity, float bias, double at)
    {
        return Read({{0.0, 0.0F, kLinear}, {1.0, 10.0F, kTcb}, {2.0, 12.0F, kTcb}},
                    {0, 0, 0, 0, tension, continuity, bias, 0, 0, 0, 0, 0})
            .At(at);
    };
    const double left = 2.0; // slope into the last key
    EXPECT_NEAR(middle(0, 0, 0, 1.5), 11.0 + (6.0 - left) / 8.0, 1e-6);
    EXPECT_NEAR(middle(1, 0, 0, 1.5), 11.0 + (0.0 - left) / 8.0, 1e-6);
    EXPECT_NEAR(middle(0, 0, 1, 1.5), 11.0 + (10.0 - left) / 8.0, 1e-6);
    EXPECT_NEAR(middle(0, 1, 0, 1.5), 11.0 + (10.0 - left) / 8.0, 1e-6);
    // At the ends the only slope counts whole: (1 - T)(1 - B)(1 - C) of 10 at the first, (1 - T)(1 + B)(1 - C) at the
    // last.
    const Curve ends =
        Read({{0.0, 0.0F, kTcb}, {1.0, 10.0F, kTcb}}, {0.5F, 0.2F, 0.4F, 0.0F, -0.5F, 0.5F, 0.2F, 0.0F});
    EXPECT_NEAR(ends.At(0.5), 5.0 + 10.0 * (0.5 * 0.6 * 0.8 - 1.5 * 1.2 * 0.5) / 8.0, 1e-5);
}

constexpr std::uint32_t kWeights = 6000U | 2000U << 16;

// Slopes of 0.5 and 2, weights of 0.6 and 0.2: the curve runs through the points of its Bezier form. From 7.2 on these
// are the bits of floats, before that decimals in which the packed weights are whatever float their bits make. Decimals
// from 7.2 on are other programs'.
TEST(CurveTest, WeightedTangentsInTextFiles)
{
    char decimal[32];
    std::snprintf(decimal, sizeof decimal, "%.9g", static_cast<double>(std::bit_cast<float>(kWeights)));
    const std::string bits = std::to_string(kWeights);
    const struct
    {
        const char* version;
        std::string data;
    } cases[] = {{"7.4.0", "1056964608,1073741824," + bits + ",0"},
                 {"7.2.0", "1056964608,1073741824," + bits + ",0"},
                 {"7.4.0", "0.5,2.0," + bits + ",0"},
                 {"7.1.0", std::string("0.5,2,") + decimal + ",0"}};
    for (const auto& item : cases)
    {
        const std::string file = std::string("; FBX ") + item.version +
                                 "\nCurve: {\nKeyTime: *2 {\na: 0,46186158000\n}\nKeyValueFloat: *2 {\n"
                                 "a: 0,1\n}\n;KeyAttrFlags: Cubic\nKeyAttrFlags: *1 {\na: 50332680\n}\n"
                                 "KeyAttrDataFloat: *4 {\na: " +
                                 item.data + "\n}\nKeyAttrRefCount: *1 {\na: 2\n}\n}\n";
        const RecordTree tree(file);
        const Curve curve = CurveReader().ReadArrays(tree.Root().Child("Curve"));
        for (const double s : {0.05, 0.3, 0.5, 0.8, 0.95})
        {
            const double t = 1.0 - s;
            const double time = 3 * t * t * s * 0.6 + 3 * t * s * s * 0.8 + s * s * s;
            const double value = 3 * t * t * s * 0.5 * 0.6 + 3 * t * s * s * (1.0 - 2.0 * 0.2) + s * s * s;
            EXPECT_NEAR(curve.At(time), value, 1e-6) << item.version << ' ' << item.data << ' ' << s;
        }
    }
}

// A line from (1, 0) to (2, 10), and how it goes on at 0.25 and 1.75 s from either end.
TEST(CurveTest, GoesOnOutsideItsKeys)
{
    const struct
    {
        char kind;
        std::int32_t repetitions;
        double far_before, before, after, far_after; // at -0.75, 0.75, 2.25, 3.75 s
    } cases[] = {
        {'C', -1, 0, 0, 10, 10},
        {'R', -1, 2.5, 7.5, 2.5, 7.5},
        {'M', -1, 2.5, 2.5, 7.5, 7.5},
        {'A', -1, -17.5, -2.5, 12.5, 27.5},
        {'K', -1, -17.5, -2.5, 12.5, 27.5},
        {'R', 1, 0, 7.5, 2.5, 10},
        {'M', 1, 10, 2.5, 7.5, 0},
        {'A', 1, -10, -2.5, 12.5, 20},
        {'R', 0, 0, 0, 10, 10},
    };
    for (const auto& item : cases)
    {
        fbx_writer::Node node = fbx_writer::CurveObject(1, {{1.0, 0.0F}, {2.0, 10.0F}});
        for (const char* const side : {"Pre-Extrapolation", "Post-Extrapolation"})
            node.children.push_back(
                {side, {}, {{"Type", {Letter{item.kind}}, {}}, {"Repetition", {item.repetitions}, {}}}});
        const std::string file = fbx_writer::Binary(7400, {node});
        const RecordTree tree(file);
        SCOPED_TRACE(item.kind);
        ExpectValues(CurveReader().ReadArrays(tree.Root().Child("AnimationCurve")), {{-0.75, item.far_before},
                                                                                     {0.75, item.before},
                                                                                     {1.5, 5.0},
                                                                                     {2.25, item.after},
                                                                                     {3.75, item.far_after}});
    }
}

TEST(CurveTest, KeyListsOfVersion6)
{
    for (const bool text : {false, true})
    {
        SCOPED_TRACE(text);
        ExpectValues(ReadKeys({Ticks(0.0), 1.0, Letter{'L'}, Ticks(1.0), 3.0, Letter{'C'}, Letter{'s'},
                               Ticks(2.0), 5.0, Letter{'C'}, Letter{'n'}, Ticks(3.0), 7.0, Letter{'L'}},
                              text),
                     {{0.5, 2}, {1.5, 3}, {2.5, 7}, {3.5, 7}});
        const Curve user = ReadKeys({Ticks(0.0), 0.0, Letter{'U'}, Letter{'s'}, 4.0, -2.0, Letter{'n'},
                                     Ticks(1.0), 0.0, Letter{'U'}, Letter{'b'}, 0.0, 0.0, Letter{'n'}},
                                    text);
        EXPECT_NEAR(user.At(0.5), (4.0 + 2.0) / 8.0, 1e-6);
        const Curve weighted = ReadKeys({Ticks(0.0), 0.0, Letter{'U'}, Letter{'s'}, 1.0, 1.0, Letter{'a'},
                                         0.5, 0.5, Ticks(1.0), 1.0, Letter{'U'}, Letter{'a'}, Letter{'n'}},
                                        text);
        EXPECT_NEAR(weighted.At(0.25), 0.25, 1e-6);
        EXPECT_THROW(ReadKeys({Ticks(0.0), 0.0, Letter{'Q'}}, text), ParseError);
        EXPECT_THROW(ReadKeys({Ticks(0.0), 0.0, Letter{'U'}, Letter{'s'}, 1.0}, text), ParseError);
        EXPECT_THROW(ReadKeys({Ticks(0.0)}, text), ParseError);
    }
}

TEST(CurveTest, DamagedArrays)
{
    EXPECT_THROW(Read({{0.0, std::nanf("")}, {1.0, 1.0F}}), ParseError);
    EXPECT_THROW(Read({{1e7, 1.0F}}), ParseError);
    EXPECT_THROW(Read({{0.0, 1.0F}, {1.0, 1.0F}}, {0.0F}), ParseError);
    // Keys out of order do not lead astray.
    ExpectValues(Read({{0.0, 1.0F}, {2.0, 3.0F}, {1.0, 9.0F}, {3.0, 5.0F}}), {{0, 1}, {3, 5}});
}

void ExpectSame(const Matrix3& have, const Matrix3& want, double about)
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            EXPECT_NEAR(have.at[row][column], want.at[row][column], 1e-12) << about;
}

LayerPart Part(const std::shared_ptr<Layer>& layer, double value)
{
    LayerPart part;
    part.layer = layer;
    part.constants = {value, value, value, value};
    return part;
}

std::shared_ptr<Layer> MakeLayer(bool base, Layer::Mode mode, double weight)
{
    auto layer = std::make_shared<Layer>();
    layer->base = base;
    layer->mode = mode;
    layer->weight = weight;
    return layer;
}

TEST(LayeredValueTest, LayersAddAndOverrideByWeight)
{
    using Mode = Layer::Mode;
    const struct
    {
        Blending blending;
        Mode mode;
        double weight, upper, expected;
    } cases[] = {
        {Blending::Numbers, Mode::Adds, 0.5, 10.0, 7.0},    {Blending::Numbers, Mode::Mixes, 0.5, 10.0, 6.0},
        {Blending::Numbers, Mode::Covers, 0.5, 10.0, 10.0}, {Blending::Numbers, Mode::Mixes, 1.0, 10.0, 10.0},
        {Blending::Scale, Mode::Adds, 1.0, 3.0, 6.0},       {Blending::Scale, Mode::Adds, 0.5, 9.0, 6.0},
        {Blending::Scale, Mode::Adds, 0.25, -16.0, -4.0},   {Blending::Scale, Mode::Adds, 0.0, 5.0, 2.0},
        {Blending::Scale, Mode::Mixes, 0.5, 8.0, 4.0},      {Blending::Steps, Mode::Adds, 1.0, 1.0, 1.0},
    };
    for (const auto& blend : cases)
    {
        LayeredValue value({1.0, 1.0, 1.0, 1.0}, blend.blending);
        value.Add(Part(MakeLayer(true, Mode::Adds, 1.0), 2.0));
        value.Add(Part(MakeLayer(false, blend.mode, blend.weight), blend.upper));
        EXPECT_NEAR(value.At(0.0)[0], blend.expected, 1e-12);
    }
}

TEST(LayeredValueTest, WeightsMoveToo)
{
    const auto upper = MakeLayer(false, Layer::Mode::Adds, 1.0);
    upper->weight_curve = std::make_shared<const Curve>(Read({{0.0, 0.0F}, {1.0, 100.0F}}));
    LayeredValue value({}, Blending::Numbers);
    value.Add(Part(upper, 8.0));
    EXPECT_NEAR(value.At(0.25)[0], 2.0, 1e-9);
}

// Turns about different axes: by turns the upper one acts in the lower one's frame, by angles they are summed.
TEST(LayeredValueTest, TurnsComposeOrAnglesAdd)
{
    const auto base = MakeLayer(true, Layer::Mode::Adds, 1.0);
    const auto upper = MakeLayer(false, Layer::Mode::Adds, 1.0);
    LayerPart lower_part = Part(base, 0.0), upper_part = Part(upper, 0.0);
    lower_part.constants[2] = 90.0; // about Z
    upper_part.constants[0] = 90.0; // about X
    LayeredValue value({}, Blending::Turn);
    value.Add(lower_part);
    value.Add(upper_part);
    ASSERT_TRUE(value.ComposesTurns());
    ExpectSame(value.TurnAt(0.0, 0), EulerTurn({0, 0, 90}, 0) * EulerTurn({90, 0, 0}, 0), 0);
    upper->turns_by_axis = true;
    EXPECT_FALSE(value.ComposesTurns());
    EXPECT_TRUE(value.TurnAt(0.0, 0) == EulerTurn({90, 0, 90}, 0));
}

// A layer that adds angles above one that adds turns: the angles of the turn and its own. The turn by half the weight
// is half the turn.
TEST(LayeredValueTest, AnglesAddAboveATurn)
{
    const auto turning = MakeLayer(false, Layer::Mode::Adds, 0.5);
    const auto adding = MakeLayer(false, Layer::Mode::Adds, 1.0);
    adding->turns_by_axis = true;
    for (int order = 0; order < 6; ++order)
    {
        LayeredValue value({10.0, 20.0, 30.0, 0.0}, Blending::Turn);
        LayerPart turn = Part(turning, 0.0), angles = Part(adding, 0.0);
        turn.constants[2] = 90.0;
        angles.constants = {1.0, 2.0, 3.0, 0.0};
        value.Add(turn);
        const Matrix3 half = EulerTurn({10, 20, 30}, order) * EulerTurn({0, 0, 45}, order);
        ExpectSame(EulerTurn(EulerAngles(half, order), order), half, order);
        ExpectSame(value.TurnAt(0.0, order), half, order);
        value.Add(angles);
        ExpectSame(value.TurnAt(0.0, order),
                   EulerTurn(EulerAngles(half, order) + mobu_host::Vector{1, 2, 3}, order), order);
    }
}

TEST(SpaceTest, PartOfATurn)
{
    const Matrix3 from = EulerTurn({10, 20, 30}, 0);
    const Matrix3 axis = EulerTurn({0, 0, 80}, 0);
    for (const double part : {0.0, 0.125, 0.3, 0.75, 1.0})
        ExpectSame(TurnBetween(from, from * axis, part), from * EulerTurn({0, 0, 80 * part}, 0), part);
}

} // namespace
