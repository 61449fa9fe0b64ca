#include "exporter/sampling/camera_index_table.h"
#include "exporter/sampling/rigid_transform.h"
#include "tests/support/bytes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace tev2_exporter
{
namespace
{

using tv2_tests::Bits;

TEST(RigidTransform, TakesTheQuaternionOfAMatrix)
{
    const float root = std::sqrt(0.5f);
    struct
    {
        const char* what;
        TEV2_MATRIX_3X4 matrix;
        TEV2_QUATERNION expected;
    } const cases[] = {
        {"identity", {{{1, 0, 0, 9}, {0, 1, 0, 9}, {0, 0, 1, 9}}}, {0, 0, 0, 1}},
        {"quarter about X", {{{1, 0, 0, 0}, {0, 0, -1, 0}, {0, 1, 0, 0}}}, {root, 0, 0, root}},
        {"half about X", {{{1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, -1, 0}}}, {1, 0, 0, 0}},
        {"half about Y", {{{-1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, -1, 0}}}, {0, 1, 0, 0}},
        {"half about Z", {{{-1, 0, 0, 0}, {0, -1, 0, 0}, {0, 0, 1, 0}}}, {0, 0, 1, 0}},
    };
    for (const auto& c : cases)
    {
        const TEV2_QUATERNION q = ToQuaternion(c.matrix);
        for (const auto part :
             {&TEV2_QUATERNION::x, &TEV2_QUATERNION::y, &TEV2_QUATERNION::z, &TEV2_QUATERNION::w})
            EXPECT_NEAR(q.*part, c.expected.*part, 1e-7f) << c.what;
    }
    // The bytes that "Keep positive Z?" writes into every file: the half turn's w is a negative zero.
    const TEV2_QUATERNION half = ToQuaternion({{{-1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, -1, 0}}});
    EXPECT_EQ(Bits(half.w), 0x80000000u);
    EXPECT_EQ(Bits(half.x), 0u);
    EXPECT_EQ(Bits(half.z), 0u);
}

TEST(RigidTransform, InvertsAndComposesWhatItMadeOfQuaternions)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> any(-1.0f, 1.0f);
    for (int i = 0; i < 1000; ++i)
    {
        const TEV2_VECTOR_3 axis = Normalised({any(random), any(random), any(random)});
        const TEV2_QUATERNION a = RotationAbout(axis, 6.0f * any(random));
        const TEV2_QUATERNION b =
            RotationAbout(Normalised({any(random), 1.0f, any(random)}), 6.0f * any(random));
        const TEV2_MATRIX_3X4 product = Product(RigidMatrix(a, {1, 2, 3}), RigidMatrix(b, {4, 5, 6}));
        const TEV2_MATRIX_3X4 composed = RigidMatrix(Product(a, b), {0, 0, 0});
        const TEV2_MATRIX_3X4 identity = Product(Inverse(product), product);
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
            {
                if (column < 3)
                {
                    EXPECT_NEAR(product.m[row][column], composed.m[row][column], 2e-6f);
                }
                EXPECT_NEAR(identity.m[row][column], row == column ? 1.0f : 0.0f, 1e-5f);
            }
        // A turn about an axis leaves the axis where it is and has the sense of a right hand.
        const TEV2_VECTOR_3 turned = TransformPoint(RigidMatrix(a, {0, 0, 0}), axis);
        EXPECT_NEAR(turned.x, axis.x, 2e-6f);
    }
    const TEV2_VECTOR_3 y =
        TransformPoint(RigidMatrix(RotationAbout({1, 0, 0}, 1.5707964f), {0, 0, 0}), {0, 1, 0});
    EXPECT_NEAR(y.z, 1.0f, 1e-6f);
}

TEST(CameraIndexTable, ProbesPastCollisionsAndRoundTheEnd)
{
    const auto camera = [](std::uint64_t address) { return reinterpret_cast<const void*>(address); };
    CameraIndexTable table;
    table.Insert(camera(126), 0);
    table.Insert(camera(126 + 127), 1);     // the same home slot: wraps to slot 0
    table.Insert(camera(126 + 2 * 127), 2); // and to slot 1
    table.Insert(camera(1), 3);             // whose own slot is then taken
    EXPECT_EQ(table.Find(camera(126)), 0);
    EXPECT_EQ(table.Find(camera(253)), 1);
    EXPECT_EQ(table.Find(camera(380)), 2);
    EXPECT_EQ(table.Find(camera(1)), 3);
    EXPECT_EQ(table.Find(camera(2)), -1);
    EXPECT_EQ(table.Find(nullptr), -1);
    table.Insert(camera(253), 9);
    EXPECT_EQ(table.Find(camera(253)), 9);
    // Only the low 32 bits choose the slot, all 64 tell cameras apart.
    EXPECT_EQ(table.Find(camera(0x100000000 + 126)), -1);
}

TEST(CameraIndexTable, TakesNoMoreThanItHolds)
{
    CameraIndexTable table;
    for (std::uint64_t i = 1; i <= 200; ++i)
        table.Insert(reinterpret_cast<const void*>(i), static_cast<std::int32_t>(i));
    EXPECT_EQ(table.Find(reinterpret_cast<const void*>(127)), 127);
    EXPECT_EQ(table.Find(reinterpret_cast<const void*>(128)), -1);
}

} // namespace
} // namespace tev2_exporter
