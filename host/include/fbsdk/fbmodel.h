#pragma once

#include <fbsdk/fbcomponent.h>

// Models: the nodes of the scene tree.

namespace FBSDKNamespace
{

class FBModel;
typedef FBPropertyBaseComponent<FBModel*> FBPropertyModel;
typedef FBPropertyBaseList<FBModel> FBPropertyListModel;

enum FBModelTransformationType
{
    kModelTransformation,
    kModelRotation,
    kModelTranslation,
    kModelScaling,
    kModelTransformation_Geometry,
    kModelInverse_Transformation,
    kModelInverse_Rotation,
    kModelInverse_Translation,
    kModelInverse_Scaling,
    kModelInverse_Transformation_Geometry
};

// Names the axes in the order in which the rotations are applied.
enum FBModelRotationOrder
{
    kFBEulerXYZ,
    kFBEulerXZY,
    kFBEulerYZX,
    kFBEulerYXZ,
    kFBEulerZXY,
    kFBEulerZYX,
    kFBSphericXYZ
};

typedef FBPropertyBaseEnum<FBModelRotationOrder> FBPropertyModelRotationOrder;

// A model is part of the scene from its construction, below the scene root, until it is deleted; the scene
// deletes what is left. pObject other than NULL makes an object outside the scene.
class FBSDK_DLL FBModel : public FBBox
{
    FBSDKClassDeclare(FBModel, FBBox);

    explicit FBModel(const char* pName, HIObject pObject = nullptr);
    ~FBModel() override;

    // Reads what the last evaluation of the scene gave. Rotations in degrees (XYZ for a global one).
    void GetMatrix(FBMatrix& pMatrix, FBModelTransformationType pWhat = kModelTransformation,
                   bool pGlobalInfo = true, FBEvaluateInfo* pEvaluateInfo = nullptr);
    void GetVector(FBVector3d& pVector, FBModelTransformationType pWhat = kModelTranslation,
                   bool pGlobalInfo = true, FBEvaluateInfo* pEvaluateInfo = nullptr);
    // Change Translation, Rotation and Scaling; the new place is current after the next evaluation. Inverse
    // and geometry kinds are ignored.
    void SetMatrix(const FBMatrix& pMatrix, FBModelTransformationType pWhat = kModelTransformation,
                   bool pGlobalInfo = true);
    void SetVector(const FBVector3d& pVector, FBModelTransformationType pWhat = kModelTranslation,
                   bool pGlobalInfo = true);

    FBPropertyListModel Children;
    FBPropertyModel Parent; // null for the scene root
    FBPropertyAnimatableVector3d Translation;
    FBPropertyAnimatableVector3d Rotation; // degrees, in the model's rotation order
    FBPropertyAnimatableVector3d Scaling;
    FBPropertyAnimatableBool Visibility;
    FBPropertyBool Show;
    FBPropertyModel LookAt;
    FBPropertyModel UpVector;
    FBPropertyModelRotationOrder RotationOrder;
    FBPropertyVector3d PreRotation;
    FBPropertyVector3d PostRotation;
    FBPropertyBool RotationActive; // rotation order, pre- and post-rotation count only when set
    FBPropertyVector3d GeometricTranslation;
    FBPropertyVector3d GeometricRotation;
    FBPropertyVector3d GeometricScaling;

private:
    friend struct ::mobu_host::SdkAccess;
    struct Space;
    std::unique_ptr<Space> space_;
};

// The first model with this long name, in the tree or among the system objects; null when there is none.
FBSDK_DLL FBModel* FBFindModelByLabelName(const char* pModelLabelName);

} // namespace FBSDKNamespace
