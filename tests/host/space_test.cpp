#include <algorithm>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "mobu_host/scene.h"

namespace mobu_host
{
namespace
{

struct Rows
{
    double m[16];
};

void ExpectMatrix(FBModel& model, const Rows& expected, FBModelTransformationType what = kModelTransformation,
                  bool global = true)
{
    FBMatrix matrix;
    model.GetMatrix(matrix, what, global);
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(matrix[i], expected.m[i], 1e-12) << "element " << i;
}

void ExpectVector(const FBVector3d& vector, double x, double y, double z, double tolerance = 1e-9)
{
    EXPECT_NEAR(vector[0], x, tolerance);
    EXPECT_NEAR(vector[1], y, tolerance);
    EXPECT_NEAR(vector[2], z, tolerance);
}

FBModel* OneModel()
{
    NewScene();
    return AddModel("Model");
}

// Every order against the product of three turns about single axes, each of which is known by heart. The spheric
// one counts as XYZ, and so does each that is not active.
TEST(Space, EveryOrderIsTheProductOfItsThreeTurns)
{
    const int axes[7][3] = {{0, 1, 2}, {0, 2, 1}, {1, 2, 0}, {1, 0, 2}, {2, 0, 1}, {2, 1, 0}, {0, 1, 2}};
    const double angles[3] = {33.0, -58.0, 117.0};
    FBModel* model = OneModel();
    model->Rotation = FBVector3d(angles[0], angles[1], angles[2]);
    Rows inactive = {};
    for (int order = kFBEulerXYZ; order <= kFBSphericXYZ; ++order)
    {
        SCOPED_TRACE(order);
        Rows expected = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        for (const int axis : axes[order])
        {
            const double turn = angles[axis] * std::numbers::pi / 180.0;
            const int a = (axis + 1) % 3;
            const int b = (axis + 2) % 3;
            for (int row = 0; row < 3; ++row)
            {
                const double va = expected.m[4 * row + a];
                const double vb = expected.m[4 * row + b];
                expected.m[4 * row + a] = std::cos(turn) * va - std::sin(turn) * vb;
                expected.m[4 * row + b] = std::sin(turn) * va + std::cos(turn) * vb;
            }
        }
        if (order == kFBEulerXYZ)
            inactive = expected;
        model->RotationOrder = static_cast<FBModelRotationOrder>(order);
        model->RotationActive = true;
        Scene().Evaluate();
        ExpectMatrix(*model, expected);
        model->RotationActive = false;
        Scene().Evaluate();
        ExpectMatrix(*model, inactive);
    }
}

TEST(Space, PreAndPostRotationStandAroundTheRotationWhenActive)
{
    FBModel* model = OneModel();
    model->PreRotation = FBVector3d(90.0, 0.0, 0.0);
    model->Rotation = FBVector3d(0.0, 0.0, 90.0);
    Scene().Evaluate();
    ExpectMatrix(*model, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    model->RotationActive = true;
    Scene().Evaluate();
    ExpectMatrix(*model, {0, 0, 1, 0, -1, 0, 0, 0, 0, -1, 0, 0, 0, 0, 0, 1});
    model->PreRotation = FBVector3d();
    model->Rotation = FBVector3d();
    model->PostRotation = FBVector3d(0.0, 90.0, 0.0); // undone: x goes to z
    Scene().Evaluate();
    ExpectMatrix(*model, {0, 0, 1, 0, 0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 0, 1});
}

TEST(Space, GlobalIsLocalTimesParent)
{
    FBModel* parent = OneModel();
    FBModel* child = AddModel("Child", parent);
    parent->Scaling = FBVector3d(2.0, 1.0, 1.0);
    parent->Rotation = FBVector3d(0.0, 0.0, 90.0);
    parent->Translation = FBVector3d(10.0, 0.0, 5.0);
    child->Translation = FBVector3d(1.0, 1.0, 0.0);
    child->Rotation = FBVector3d(0.0, 0.0, 90.0);
    Scene().Evaluate();
    ExpectMatrix(*parent, {0, 2, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 10, 0, 5, 1});
    ExpectMatrix(*child, {-1, 0, 0, 0, 0, -2, 0, 0, 0, 0, 1, 0, 9, 2, 5, 1});
    ExpectMatrix(*child, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 1, 0, 1}, kModelTransformation, false);
}

TEST(Space, KindsTakeTheMatrixApart)
{
    FBModel* model = OneModel();
    model->Scaling = FBVector3d(2.0, 4.0, 1.0);
    model->Rotation = FBVector3d(0.0, 0.0, 90.0);
    model->Translation = FBVector3d(8.0, 6.0, 3.0);
    model->GeometricTranslation = FBVector3d(1.0, 0.0, 0.0);
    Scene().Evaluate();
    const struct
    {
        FBModelTransformationType what;
        Rows expected;
    } cases[] = {
        {kModelTransformation, {0, 2, 0, 0, -4, 0, 0, 0, 0, 0, 1, 0, 8, 6, 3, 1}},
        {kModelRotation, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {kModelTranslation, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 8, 6, 3, 1}},
        {kModelScaling, {2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {kModelTransformation_Geometry, {0, 2, 0, 0, -4, 0, 0, 0, 0, 0, 1, 0, 8, 8, 3, 1}},
        {kModelInverse_Transformation, {0, -0.25, 0, 0, 0.5, 0, 0, 0, 0, 0, 1, 0, -3, 2, -3, 1}},
        {kModelInverse_Rotation, {0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {kModelInverse_Translation, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -8, -6, -3, 1}},
        {kModelInverse_Scaling, {0.5, 0, 0, 0, 0, 0.25, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}},
        {kModelInverse_Transformation_Geometry, {0, -0.25, 0, 0, 0.5, 0, 0, 0, 0, 0, 1, 0, -4, 2, -3, 1}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        ExpectMatrix(*model, c.expected, c.what);
    }
    FBVector3d vector;
    model->GetVector(vector);
    ExpectVector(vector, 8.0, 6.0, 3.0);
    model->GetVector(vector, kModelRotation);
    ExpectVector(vector, 0.0, 0.0, 90.0);
    model->GetVector(vector, kModelScaling);
    ExpectVector(vector, 2.0, 4.0, 1.0);
}

// What an animated matrix shows in the properties, and what SetMatrix puts there, gives the matrix back.
TEST(Space, MatricesAndPropertiesAgreeForEveryOrder)
{
    for (int order = kFBEulerXYZ; order <= kFBSphericXYZ; ++order)
        for (const double middle : {20.0, 90.0, -90.0}) // the outer two with both axes in one line
        {
            SCOPED_TRACE(testing::Message() << "order " << order << ", middle " << middle);
            FBModel* source = OneModel();
            source->Translation = FBVector3d(1.0, 2.0, 3.0);
            source->Rotation = FBVector3d(40.0, middle, -70.0);
            source->Scaling = FBVector3d(-1.0, 2.0, 3.0);
            FBModel* driven = AddModel("Driven");
            FBModel* placed = AddModel("Placed");
            for (FBModel* model : {driven, placed})
            {
                model->RotationActive = true;
                model->RotationOrder = static_cast<FBModelRotationOrder>(order);
                model->PreRotation = FBVector3d(10.0, 20.0, 30.0);
                model->PostRotation = FBVector3d(-15.0, 5.0, 60.0);
            }
            Scene().Evaluate();
            FBMatrix matrix;
            source->GetMatrix(matrix);
            FBTake* take = FBSystem().CurrentTake;
            AnimateLocalMatrix(*driven, *take, [matrix](double) { return matrix; });
            placed->SetMatrix(matrix);
            Scene().Evaluate();
            Rows expected;
            std::copy_n(static_cast<const double*>(matrix), 16, expected.m);
            ExpectMatrix(*driven, expected);
            ExpectMatrix(*placed, expected);

            const FBVector3d translation = driven->Translation;
            const FBVector3d rotation = driven->Rotation;
            const FBVector3d scaling = driven->Scaling;
            AnimateLocalMatrix(*driven, *take, {});
            ExpectVector(driven->Rotation, 0.0, 0.0, 0.0); // its own again
            driven->Translation = translation;
            driven->Rotation = rotation;
            driven->Scaling = scaling;
            Scene().Evaluate();
            ExpectMatrix(*driven, expected);
        }
}

TEST(Space, SetVectorAndSetMatrixPlaceAModelInTheWorld)
{
    FBModel* parent = OneModel();
    FBModel* child = AddModel("Child", parent);
    parent->Translation = FBVector3d(100.0, 0.0, 0.0);
    parent->Rotation = FBVector3d(0.0, 90.0, 0.0);
    Scene().Evaluate();
    child->SetVector(FBVector3d(100.0, 5.0, -7.0));
    ExpectVector(child->Translation, 7.0, 5.0, 0.0);
    Scene().Evaluate();
    FBVector3d where;
    child->GetVector(where);
    ExpectVector(where, 100.0, 5.0, -7.0);
    child->SetVector(FBVector3d(0.0, 90.0, 0.0), kModelRotation);
    ExpectVector(child->Rotation, 0.0, 0.0, 0.0);
    child->SetVector(FBVector3d(1.0, 2.0, 3.0), kModelTranslation, false);
    ExpectVector(child->Translation, 1.0, 2.0, 3.0);
}

} // namespace
} // namespace mobu_host
