#include "compare/pose_error.h"
#include "compare/rewound_scene.h"
#include "tests/support/tracks.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>

namespace
{

using namespace TEV2_LOADER;
using namespace tev2_compare;

constexpr double kRadians = std::numbers::pi / 180.0;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// A matrix with these rows of its rotation and this place.
TEV2_MATRIX_3X4 Matrix(const double (&rows)[3][3], const TEV2_VECTOR_3& place = {})
{
    TEV2_MATRIX_3X4 matrix;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            matrix.m[row][column] = static_cast<float>(rows[row][column]);
    matrix.m[0][3] = place.x;
    matrix.m[1][3] = place.y;
    matrix.m[2][3] = place.z;
    return matrix;
}

/// The rotation about a unit axis, by Rodrigues' formula, with the columns scaled.
TEV2_MATRIX_3X4 Turned(double degrees, const double (&axis)[3], const double (&scale)[3] = {1.0, 1.0, 1.0})
{
    const double cosine = std::cos(degrees * kRadians);
    const double sine = std::sin(degrees * kRadians);
    const double cross[3][3] = {{0, -axis[2], axis[1]}, {axis[2], 0, -axis[0]}, {-axis[1], axis[0], 0}};
    double rows[3][3];
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            rows[row][column] = ((row == column ? cosine : 0.0) + sine * cross[row][column] +
                                 (1.0 - cosine) * axis[row] * axis[column]) *
                                scale[column];
    return Matrix(rows);
}

TEST(PoseErrorTest, DegreesAreTheAngleBetweenRotationsWhateverTheScale)
{
    const double axes[][3] = {{1, 0, 0}, {0, 0.6, 0.8}, {2.0 / 3, -2.0 / 3, 1.0 / 3}};
    for (const auto& axis : axes)
    {
        for (const double degrees : {0.0, 0.001, 0.5, 10.0, 90.0, 120.0, 179.5, 179.999, 180.0})
        {
            const PoseError error = ErrorBetween(Turned(20.0, axis, {2.0, 0.001, 5000.0}),
                                                 Turned(20.0 + degrees, axis, {3.0, 1.0, 1.0}));
            EXPECT_NEAR(error.degrees, degrees, 2e-5) << degrees; // matrices are in single precision
            EXPECT_EQ(error.millimetres, 0.0);
        }
    }
}

TEST(PoseErrorTest, ShearIsTakenOut)
{
    // symmetric and positive, with axes 1 long: the rotation closest to it is none, and to R * it is R
    const double a = std::sqrt(1.0 - 2.0 * 0.3 * 0.3);
    const double stretch[3][3] = {{a, 0.3, 0.3}, {0.3, a, 0.3}, {0.3, 0.3, a}};
    const TEV2_MATRIX_3X4 turned = Product(Turned(30.0, {0, 0.6, 0.8}), Matrix(stretch));
    EXPECT_NEAR(ErrorBetween(Matrix({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}), turned).degrees, 30.0, 2e-5);
    EXPECT_EQ(ErrorBetween(turned, turned).degrees, 0.0);
}

TEST(PoseErrorTest, MillimetresAreTheDistanceOfTheOrigins)
{
    const TEV2_MATRIX_3X4 left = Matrix({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {0.25f, 0.5f, 1.0f});
    const TEV2_MATRIX_3X4 right = Matrix({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {1.25f, 2.5f, 3.0f});
    EXPECT_EQ(ErrorBetween(left, right).millimetres, 3000.0); // 1, 2 and 2 metres
}

TEST(PoseErrorTest, MatricesThatAreNoRotations)
{
    const TEV2_MATRIX_3X4 none;
    const TEV2_MATRIX_3X4 flat = Turned(40.0, {0, 1, 0}, {1.0, 0.0, 1.0});
    const TEV2_MATRIX_3X4 line = Turned(40.0, {0, 1, 0}, {1.0, 0.0, 0.0});
    const TEV2_MATRIX_3X4 sheared_flat = Matrix({{1, 1, 0}, {0, 0, 0}, {0, 1, 1}});
    const TEV2_MATRIX_3X4 mirrored = Turned(0.0, {0, 1, 0}, {-1.0, 1.0, 1.0});
    TEV2_MATRIX_3X4 not_a_number = none;
    not_a_number.m[1][1] = kNaN;
    TEV2_MATRIX_3X4 far_off = none;
    far_off.m[0][3] = kInfinity;
    TEV2_MATRIX_3X4 far_off_otherwise = none;
    far_off_otherwise.m[0][3] = -kInfinity;
    const double endless = std::numeric_limits<double>::infinity();
    const struct
    {
        const char* what;
        TEV2_MATRIX_3X4 left, right;
        double millimetres, degrees;
    } rows[] = {
        {"one axis without length follows from the others", none, flat, 0.0, 40.0},
        {"two axes without length", none, line, 0.0, 0.0},
        {"three axes in a plane", none, sheared_flat, 0.0, 0.0},
        {"mirrored in one", none, mirrored, 0.0, 180.0},
        {"mirrored in both", mirrored, mirrored, 0.0, 0.0},
        {"NaN in both", not_a_number, not_a_number, 0.0, 0.0},
        {"NaN in one", none, not_a_number, 0.0, endless},
        {"infinite in both", far_off, far_off, 0.0, 0.0},
        {"infinite in both, on other sides", far_off, far_off_otherwise, endless, 0.0},
    };
    for (const auto& row : rows)
    {
        for (const bool turned_round : {false, true})
        {
            const PoseError error =
                turned_round ? ErrorBetween(row.right, row.left) : ErrorBetween(row.left, row.right);
            EXPECT_TRUE(error.degrees == row.degrees || std::abs(error.degrees - row.degrees) < 2e-5)
                << row.what << ": " << error.degrees;
            EXPECT_EQ(error.millimetres, row.millimetres) << row.what;
        }
    }
}

TEST(PoseErrorTest, OverTimeTheWorstTheFirstTimeOfItAndTheMean)
{
    NodeErrors errors;
    EXPECT_EQ(errors.degrees.Mean(), 0.0);
    errors.Add(0.5f, {1.0, 0.0});
    errors.Add(1.0f, {4.0, 0.0});
    errors.Add(1.5f, {4.0, 0.0});
    EXPECT_EQ(errors.millimetres.Worst(), 4.0);
    EXPECT_EQ(errors.millimetres.WorstTime(), 1.0f);
    EXPECT_EQ(errors.millimetres.Mean(), 3.0);
    EXPECT_EQ(errors.millimetres.Times(), 3u);
    EXPECT_EQ(errors.degrees.Worst(), 0.0);
}

TEST(RewoundSceneTest, ShowsTheSameAtATimeWhateverCameBefore)
{
    // two keys at 1 s: coming from below the scene stays at the first of them, coming from above at the second
    TEV2 scene;
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    node.translation = tv2_tests::MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(
        {{0.0f, {0, 0, 0}}, {1.0f, {1, 0, 0}}, {1.0f, {5, 0, 0}}, {2.0f, {6, 0, 0}}});
    RewoundScene rewound(scene);
    rewound.SetTime(1.0f);
    const float first = rewound.Node(0).worldMatrix.m[0][3];
    scene.SetTime(2.0f);
    rewound.SetTime(1.0f);
    EXPECT_EQ(rewound.Node(0).worldMatrix.m[0][3], first);
    EXPECT_EQ(first, 1.0f);
}

} // namespace
