#include "tev2_loader/skinning.h"

#include "tests/support/sample_scenes.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// The columns of some vertices, with memory of their own.
struct Columns
{
    std::vector<TEV2_VECTOR_3> positions;
    std::vector<TEV2_VECTOR_3> normals;
    std::vector<TEV2_VERTEX_FRAME> frames;

    VerticesIn In() const { return {positions, normals, frames}; }
    VerticesOut Out() { return {positions, normals, frames}; }
};

// The formulas of skinning.h, one number after another.

TEV2_VECTOR_3 PlainUnit(const TEV2_VECTOR_3& v)
{
    const double x = v.x;
    const double y = v.y;
    const double z = v.z;
    const double factor = 1.0 / std::sqrt(x * x + y * y + z * z);
    return {static_cast<float>(x * factor), static_cast<float>(y * factor), static_cast<float>(z * factor)};
}

TEV2_MATRIX_3X4 PlainBlend(const PosedSkin& skin, std::size_t vertex)
{
    TEV2_MATRIX_3X4 sum{{{0.0f}, {0.0f}, {0.0f}}};
    for (std::size_t k = 0; k < skin.influences; ++k)
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
            {
                const std::size_t entry = vertex * skin.influences + k;
                sum.m[row][column] += skin.weights[entry] * skin.palette[skin.bones[entry]].m[row][column];
            }
    return sum;
}

TEV2_VECTOR_3 PlainDirection(const TEV2_MATRIX_3X4& matrix, const TEV2_VECTOR_3& v)
{
    const auto row = [&](int r)
    { return matrix.m[r][0] * v.x + matrix.m[r][1] * v.y + matrix.m[r][2] * v.z; };
    return {row(0), row(1), row(2)};
}

/// Bits, so that a zero of the other sign or a NaN is seen.
template <typename Value>
std::vector<std::uint32_t> Bits(const std::vector<Value>& values)
{
    std::vector<std::uint32_t> bits;
    for (const Value& value : values)
        std::apply([&](const auto&... part) { (bits.push_back(std::bit_cast<std::uint32_t>(part)), ...); },
                   value.Components());
    return bits;
}

class SkinVerticesTest : public testing::TestWithParam<std::size_t>
{
protected:
    float Any() { return std::uniform_real_distribution<float>(-2.0f, 2.0f)(random_); }
    TEV2_VECTOR_3 Vector() { return {Any(), Any(), Any()}; }

    /// Of any scale and shear; half of them mirror.
    TEV2_MATRIX_3X4 Matrix()
    {
        TEV2_MATRIX_3X4 matrix;
        for (auto& row : matrix.m)
            for (float& number : row)
                number = Any();
        return matrix;
    }

    std::mt19937 random_{7};
};

TEST_P(SkinVerticesTest, FollowsTheFormulaToTheLastBit)
{
    constexpr std::size_t kVertices = 500;
    std::vector<TEV2_MATRIX_3X4> palette(11);
    for (TEV2_MATRIX_3X4& matrix : palette)
        matrix = Matrix();
    Columns base;
    std::vector<std::uint32_t> bones;
    std::vector<float> weights;
    for (std::size_t vertex = 0; vertex < kVertices; ++vertex)
    {
        base.positions.push_back(Vector());
        base.normals.push_back(Vector());
        base.frames.push_back({Vector(), Vector()});
        for (std::size_t k = 0; k < GetParam(); ++k)
        {
            bones.push_back(static_cast<std::uint32_t>(random_() % palette.size()));
            weights.push_back(Any()); // of any sum
        }
    }
    const PosedSkin skin{GetParam(), bones, weights, palette};

    Columns expected = base;
    for (std::size_t vertex = 0; vertex < kVertices; ++vertex)
    {
        const TEV2_MATRIX_3X4 matrix = PlainBlend(skin, vertex);
        const TEV2_VECTOR_3 turned = PlainDirection(matrix, base.positions[vertex]);
        expected.positions[vertex] = {turned.x + matrix.m[0][3], turned.y + matrix.m[1][3],
                                      turned.z + matrix.m[2][3]};
        for (TEV2_VECTOR_3* direction :
             {&expected.normals[vertex], &expected.frames[vertex].binormal, &expected.frames[vertex].tangent})
            *direction = PlainUnit(PlainDirection(matrix, *direction));
    }
    Columns skinned = base;
    SkinVertices(skinned.In(), skin, skinned.Out()); // in place
    EXPECT_EQ(Bits(skinned.positions), Bits(expected.positions));
    EXPECT_EQ(Bits(skinned.normals), Bits(expected.normals));
    EXPECT_EQ(Bits(skinned.frames), Bits(expected.frames));
}

INSTANTIATE_TEST_SUITE_P(Influences, SkinVerticesTest, testing::Values(1, 4, 8));

struct SkinCase
{
    const char* what;
    std::vector<TEV2_MATRIX_3X4> palette;
    std::vector<std::uint32_t> bones;
    std::vector<float> weights;
    TEV2_VECTOR_3 normal;
    TEV2_VECTOR_3 expected_position; // of (1, 2, 3)
    TEV2_VECTOR_3 expected_normal;
};

TEST(Skinning, TreatsWeightsAndMatricesAsTheyAre)
{
    const TEV2_MATRIX_3X4 moved{{{1, 0, 0, 10}, {0, 1, 0, 20}, {0, 0, 1, 30}}};
    const TEV2_MATRIX_3X4 mirrored{{{-1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
    const TEV2_MATRIX_3X4 stretched{{{3, 0, 0, 0}, {0, 4, 0, 0}, {0, 0, 1, 0}}};
    const TEV2_MATRIX_3X4 flat{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 0}}};
    const TEV2_VECTOR_3 none;
    const SkinCase cases[] = {
        {"one bone", {moved}, {0}, {1}, {0, 0, 1}, {11, 22, 33}, {0, 0, 1}},
        {"weights of sum 0.5", {moved}, {0, 0}, {0.25f, 0.25f}, {0, 0, 1}, {5.5f, 11, 16.5f}, {0, 0, 1}},
        {"weights of sum 2", {moved}, {0}, {2}, {0, 0, 1}, {22, 44, 66}, {0, 0, 1}},
        {"no weight at all", {moved}, {0}, {0}, {0, 0, 1}, {0, 0, 0}, {0, 0, 0}},
        {"mirrored", {mirrored}, {0}, {1}, {1, 0, 0}, {-1, 2, 3}, {-1, 0, 0}},
        {"half mirrored", {mirrored, moved}, {0, 1}, {0.5f, 0.5f}, {1, 0, 0}, {5, 12, 18}, {0, 0, 0}},
        {"not the inverse transpose", {stretched}, {0}, {1}, {1, 1, 0}, {3, 8, 3}, {0.6f, 0.8f, 0}},
        {"a bone beyond the palette", {moved}, {1}, {1}, {0, 0, 5}, {1, 2, 3}, {0, 0, 1}},
        {"the last of all numbers", {moved}, {0xFFFFFFFFu}, {1}, {0, 0, 5}, {1, 2, 3}, {0, 0, 1}},
        {"an empty palette", {}, {0}, {1}, {0, 0, 5}, {1, 2, 3}, {0, 0, 1}},
        {"a normal of no length", {moved}, {0}, {1}, none, {11, 22, 33}, none},
        {"a very short and a very long one", {moved}, {0}, {1}, {0, 0, 1e-38f}, {11, 22, 33}, {0, 0, 1}},
        {"an infinite one", {flat}, {0}, {1}, {1e38f, 0, 0}, {1, 2, 0}, {1, 0, 0}},
    };
    for (const SkinCase& skinned : cases)
    {
        Columns columns{{{1, 2, 3}}, {skinned.normal}, {}};
        const PosedSkin skin{skinned.bones.size(), skinned.bones, skinned.weights, skinned.palette};
        SkinVertices(columns.In(), skin, columns.Out());
        EXPECT_EQ(columns.positions[0], skinned.expected_position) << skinned.what;
        EXPECT_EQ(columns.normals[0], skinned.expected_normal) << skinned.what;
    }
}

TEST(Skinning, DoesWhatAllSpansSufficeFor)
{
    const std::vector<TEV2_MATRIX_3X4> palette{{{{1, 0, 0, 1}, {0, 1, 0, 0}, {0, 0, 1, 0}}}};
    const std::vector<std::uint32_t> bones(7, 0);
    const std::vector<float> weights(5, 0.5f);
    const TEV2_VECTOR_3 zero;
    const TEV2_VECTOR_3 done{1, 0, 0};
    const TEV2_VECTOR_3 untouched{9, 9, 9};
    struct Case
    {
        std::size_t in, out, influences;
        std::vector<TEV2_VECTOR_3> expected;
    };
    const Case cases[] = {
        {9, 4, 2, {done, done, untouched, untouched}}, // weights for two and a half
        {1, 3, 2, {done, untouched, untouched}},
        {9, 1, 2, {done}},
        {9, 2, 6, {untouched, untouched}},
        {2, 3, 0, {zero, zero, untouched}},
        {0, 1, 2, {untouched}},
    };
    for (const Case& sizes : cases)
    {
        const std::vector<TEV2_VECTOR_3> in(sizes.in);
        Columns out{std::vector<TEV2_VECTOR_3>(sizes.out, untouched), {untouched}, {{untouched, untouched}}};
        SkinVertices({.positions = in}, {sizes.influences, bones, weights, palette}, out.Out());
        EXPECT_EQ(out.positions, sizes.expected);
        EXPECT_EQ(out.normals[0], untouched);
        EXPECT_EQ(out.frames[0].tangent, untouched);
    }
}

TEST(Morphing, AddsWeightedOffsetsToTheListedVertices)
{
    const Columns base{{{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}, {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}}, {}};
    const std::vector<std::uint32_t> some{0, 2, 3, 0xFFFFFFFFu}; // two beyond all vertices
    const std::vector<TEV2_VECTOR_3> offsets(4, {4, 0, 0});
    const std::vector<TEV2_VECTOR_3> turns(3, {0, 8, -1}); // fewer than vertices
    const std::vector<std::uint32_t> last{2};
    const std::vector<TEV2_VECTOR_3> away{{0, 2, 0}};
    const std::vector<TEV2_VECTOR_3> infinite{{kInfinity, 0, 0}};
    const MorphTarget targets[] = {
        {0.5f, some, offsets, turns, {}}, {-1.0f, last, away, {}, {}}, {0.0f, last, infinite, infinite, {}}};
    Columns morphed{std::vector<TEV2_VECTOR_3>(3), std::vector<TEV2_VECTOR_3>(3), {}};
    MorphVertices(base.In(), targets, morphed.Out());
    EXPECT_EQ(morphed.positions, (std::vector<TEV2_VECTOR_3>{{2, 0, 0}, {1, 1, 1}, {4, 0, 2}}));
    const TEV2_VECTOR_3 turned = PlainUnit({0, 4, 0.5f});
    EXPECT_EQ(morphed.normals, (std::vector<TEV2_VECTOR_3>{turned, {0, 0, 1}, turned}));

    std::vector<TEV2_VECTOR_3> one(2, {9, 9, 9}); // less room than vertices
    MorphVertices({.positions = std::span(base.positions).first(1)}, targets, {.positions = one});
    EXPECT_EQ(one, (std::vector<TEV2_VECTOR_3>{{2, 0, 0}, {9, 9, 9}}));
}

TEST(Morphing, FormsBinormalsAnewOnTheirSide)
{
    const TEV2_VECTOR_3 x{1, 0, 0};
    const TEV2_VECTOR_3 y{0, 1, 0};
    const TEV2_VECTOR_3 z{0, 0, 1};
    const TEV2_VECTOR_3 aslant{0.6f, 0.8f, 0}; // a binormal that no cross product gives
    // cross(z, x) is y: the first two are on that side, the third is on the other, the fourth is not listed.
    const Columns base{{}, {z, z, z, z}, {{y, x}, {aslant, x}, {-y, x}, {aslant, x}}};
    const std::vector<std::uint32_t> vertices{0, 1, 2};
    const std::vector<TEV2_VECTOR_3> turns(3, {-1, 3, 0}); // tangents to (0, 3, 0)
    Columns morphed = base;
    const MorphTarget turned[] = {{1.0f, vertices, {}, {}, turns}};
    MorphVertices(base.In(), turned, morphed.Out());
    EXPECT_EQ(morphed.normals, base.normals);
    const std::vector<TEV2_VERTEX_FRAME> expected{{-x, y}, {-x, y}, {x, y}, {aslant, x}};
    EXPECT_EQ(morphed.frames, expected);

    // Without weight too, so that nothing jumps when it begins; but not by a target of positions alone.
    const MorphTarget resting[] = {{0.0f, vertices, {}, {}, turns}};
    MorphVertices(base.In(), resting, morphed.Out());
    EXPECT_EQ(morphed.frames[1], (TEV2_VERTEX_FRAME{y, x}));
    const MorphTarget moving[] = {{1.0f, vertices, turns, {}, {}}};
    MorphVertices(base.In(), moving, morphed.Out());
    EXPECT_EQ(morphed.frames, base.frames);
}

} // namespace
