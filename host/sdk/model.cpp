#include <algorithm>

#include "host/sdk/model_space.h"
#include "host/sdk/property_state.h"
#include "host/sdk/scene_state.h"

namespace mobu_host
{
namespace
{

const char* const kRotationOrders[] = {"Euler XYZ", "Euler XZY", "Euler YZX",   "Euler YXZ",
                                       "Euler ZXY", "Euler ZYX", "Spheric XYZ", nullptr};

void ReadParent(FBComponent& owner, void* value)
{
    *static_cast<FBComponent**>(value) = SdkAccess::Space(static_cast<FBModel&>(owner)).parent;
}

void WriteParent(FBComponent& owner, const void* value)
{
    TheScene().graph.SetParent(static_cast<FBModel&>(owner),
                               static_cast<FBModel*>(*static_cast<FBComponent* const*>(value)));
}

void AddChild(FBComponent& owner, FBComponent& child)
{
    TheScene().graph.SetParent(static_cast<FBModel&>(child), static_cast<FBModel*>(&owner));
}

void RemoveChild(FBComponent&, FBComponent& child)
{
    TheScene().graph.SetParent(static_cast<FBModel&>(child), nullptr);
}

} // namespace
} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBModel);

FBModel::FBModel(const char* pName, HIObject pObject)
    : FBBox(pName, pObject), space_(std::make_unique<Space>())
{
    SetIdentity(space_->local);
    SetIdentity(space_->global);
    PublishList(*this, Children, "Children", AddChild, RemoveChild);
    Publish(*this, Parent, "Parent", ReadParent, WriteParent);
    Publish(*this, Translation, "Lcl Translation");
    Publish(*this, Rotation, "Lcl Rotation");
    Publish(*this, Scaling, "Lcl Scaling");
    Publish(*this, Visibility, "Visibility");
    Publish(*this, Show, "Show");
    Publish(*this, LookAt, "LookAtProperty");
    Publish(*this, UpVector, "UpVectorProperty");
    PublishEnum(*this, RotationOrder, "RotationOrder", kRotationOrders);
    Publish(*this, PreRotation, "PreRotation");
    Publish(*this, PostRotation, "PostRotation");
    Publish(*this, RotationActive, "RotationActive");
    Publish(*this, GeometricTranslation, "GeometricTranslation");
    Publish(*this, GeometricRotation, "GeometricRotation");
    Publish(*this, GeometricScaling, "GeometricScaling");
    Scaling = FBVector3d(1.0, 1.0, 1.0);
    GeometricScaling = FBVector3d(1.0, 1.0, 1.0);
    Visibility = true;
    Show = true;
    if (!pObject)
        TheScene().graph.Add(*this, TheScene().graph.root);
}

FBModel::~FBModel()
{
    TheScene().Forget(*this);
}

void FBModel::GetMatrix(FBMatrix& pMatrix, FBModelTransformationType pWhat, bool pGlobalInfo, FBEvaluateInfo*)
{
    const bool inverse = pWhat >= kModelInverse_Transformation;
    const Matrix& whole = pGlobalInfo ? space_->global : space_->local;
    Matrix result;
    std::copy_n(whole, 16, result);
    switch (pWhat)
    {
    case kModelTransformation:
    case kModelInverse_Transformation:
        break;
    case kModelTransformation_Geometry:
    case kModelInverse_Transformation_Geometry:
    {
        Matrix offset;
        Compose({GeometricTranslation, GeometricRotation, GeometricScaling}, {}, offset);
        Multiply(offset, whole, result);
        break;
    }
    case kModelRotation:
    case kModelInverse_Rotation:
        Compose({{}, Decompose(whole, {}).rotation, {1.0, 1.0, 1.0}}, {}, result);
        break;
    case kModelTranslation:
    case kModelInverse_Translation:
        Compose({Decompose(whole, {}).translation, {}, {1.0, 1.0, 1.0}}, {}, result);
        break;
    case kModelScaling:
    case kModelInverse_Scaling:
        Compose({{}, {}, Decompose(whole, {}).scaling}, {}, result);
        break;
    }
    if (inverse)
    {
        Matrix inverted;
        Invert(result, inverted);
        pMatrix.Set(inverted);
    }
    else
    {
        pMatrix.Set(result);
    }
}

void FBModel::GetVector(FBVector3d& pVector, FBModelTransformationType pWhat, bool pGlobalInfo,
                        FBEvaluateInfo* pEvaluateInfo)
{
    FBMatrix matrix;
    GetMatrix(matrix, pWhat, pGlobalInfo, pEvaluateInfo);
    Matrix values;
    std::copy_n(static_cast<const double*>(matrix), 16, values);
    const LocalTransform parts = Decompose(values, {});
    switch (pWhat)
    {
    case kModelRotation:
        pVector = pGlobalInfo ? parts.rotation : static_cast<FBVector3d>(Rotation);
        break;
    case kModelInverse_Rotation:
        pVector = parts.rotation;
        break;
    case kModelScaling:
    case kModelInverse_Scaling:
        pVector = parts.scaling;
        break;
    default:
        pVector = parts.translation;
        break;
    }
}

void FBModel::SetMatrix(const FBMatrix& pMatrix, FBModelTransformationType pWhat, bool pGlobalInfo)
{
    Matrix local;
    std::copy_n(static_cast<const double*>(pMatrix), 16, local);
    if (pGlobalInfo && space_->parent)
    {
        Matrix given, into_parent;
        std::copy_n(local, 16, given);
        Invert(space_->parent->space_->global, into_parent);
        Multiply(given, into_parent, local);
    }
    const LocalTransform parts = Decompose(local, RuleOf(*this));
    if (pWhat == kModelTransformation || pWhat == kModelTranslation)
        Translation = parts.translation;
    if (pWhat == kModelTransformation || pWhat == kModelRotation)
        Rotation = parts.rotation;
    if (pWhat == kModelTransformation || pWhat == kModelScaling)
        Scaling = parts.scaling;
}

void FBModel::SetVector(const FBVector3d& pVector, FBModelTransformationType pWhat, bool pGlobalInfo)
{
    if (!pGlobalInfo)
    {
        if (pWhat == kModelTranslation)
            Translation = pVector;
        else if (pWhat == kModelRotation)
            Rotation = pVector;
        else if (pWhat == kModelScaling)
            Scaling = pVector;
        return;
    }
    LocalTransform parts = Decompose(space_->global, {});
    if (pWhat == kModelTranslation)
        parts.translation = pVector;
    else if (pWhat == kModelRotation)
        parts.rotation = pVector;
    else if (pWhat == kModelScaling)
        parts.scaling = pVector;
    Matrix values;
    Compose(parts, {}, values);
    SetMatrix(FBMatrix(values), pWhat, true);
}

void FBMatrix::Set(const double* pValues)
{
    std::copy_n(pValues, 16, &mValue[0][0]);
}

void FBMatrix::Identity()
{
    Matrix identity;
    SetIdentity(identity);
    Set(identity);
}

FBModel* FBFindModelByLabelName(const char* pModelLabelName)
{
    return TheScene().graph.FindModel(pModelLabelName);
}

} // namespace FBSDKNamespace
