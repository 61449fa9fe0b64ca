#include "exporter/sampling/global_matrix.h"

namespace tev2_exporter
{
namespace
{

constexpr float kRadiansPerDegree = 0.017453292f;

/// The evaluated global matrix. The SDK reads it through a matrix that is not const.
FBMatrix GlobalMatrix(FBModel& model)
{
    FBMatrix matrix;
    model.GetMatrix(matrix, kModelTransformation, true, nullptr);
    return matrix;
}

TEV2_VECTOR_3 ConvertTranslation(FBMatrix& global)
{
    return {static_cast<float>(global(3, 0)) * kMetresPerCentimetre,
            static_cast<float>(global(3, 1)) * kMetresPerCentimetre,
            -static_cast<float>(global(3, 2)) * kMetresPerCentimetre};
}

TEV2_VECTOR_3 ConvertAxis(FBMatrix& global, int row)
{
    return Normalised({static_cast<float>(global(row, 0)), static_cast<float>(global(row, 1)),
                       -static_cast<float>(global(row, 2))});
}

float Radians(double degrees)
{
    return static_cast<float>(degrees) * kRadiansPerDegree;
}

/// The camera's basis with its roll (about its view axis) and its turn (about its up axis, around its interest
/// or, without one, around the origin).
TEV2_MATRIX_3X4 ConvertCamera(FBCamera& camera, FBMatrix& global)
{
    const TEV2_VECTOR_3 view = ConvertAxis(global, 0);
    TEV2_MATRIX_3X4 basis{};
    SetColumn(basis, 0, ConvertAxis(global, 2));
    SetColumn(basis, 1, ConvertAxis(global, 1));
    SetColumn(basis, 2, view);

    const TEV2_VECTOR_3 position = ConvertTranslation(global);
    const TEV2_QUATERNION roll = RotationAbout(view, -Radians(camera.Roll));
    const TEV2_MATRIX_3X4 rolled = RigidMatrix(Product(roll, ToQuaternion(basis)), position);

    TEV2_VECTOR_3 pivot{0.0f, 0.0f, 0.0f};
    if (FBModel* interest = camera.Interest)
    {
        FBMatrix interest_global = GlobalMatrix(*interest);
        pivot = ConvertTranslation(interest_global);
    }
    const TEV2_QUATERNION turn = RotationAbout(Column(rolled, 1), -Radians(camera.TurnTable));
    const TEV2_VECTOR_3 arm{position.x - pivot.x, position.y - pivot.y, position.z - pivot.z};
    const TEV2_VECTOR_3 turned = TransformPoint(RigidMatrix(turn, {0.0f, 0.0f, 0.0f}), arm);
    return RigidMatrix(Product(turn, ToQuaternion(rolled)),
                       {pivot.x + turned.x, pivot.y + turned.y, pivot.z + turned.z});
}

} // namespace

TEV2_MATRIX_3X4 ConvertGlobalMatrix(FBModel& model)
{
    FBMatrix global = GlobalMatrix(model);
    if (model.Is(FBCamera::TypeInfo))
        return ConvertCamera(static_cast<FBCamera&>(model), global);

    TEV2_MATRIX_3X4 converted;
    SetColumn(converted, 0, ConvertAxis(global, 0));
    SetColumn(converted, 1, ConvertAxis(global, 2));
    SetColumn(converted, 2, ConvertAxis(global, 1));
    SetColumn(converted, 3, ConvertTranslation(global));
    return converted;
}

} // namespace tev2_exporter
