#pragma once

#include <fbsdk/fbcamera.h>

// The scene and what it holds beside models.

namespace FBSDKNamespace
{

class FBConstraint;
class FBScene;
class FBTake;
typedef FBPropertyBaseComponent<FBTake*> FBPropertyTake;
typedef FBPropertyBaseComponent<FBScene*> FBPropertyScene;
typedef FBPropertyBaseList<FBTake> FBPropertyListTake;
typedef FBPropertyBaseList<FBConstraint> FBPropertyListConstraint;

// Part of the scene from its construction until it is deleted.
class FBSDK_DLL FBConstraint : public FBBox
{
    FBSDKClassDeclare(FBConstraint, FBBox);

    explicit FBConstraint(const char* pName, HIObject pObject = nullptr);
    ~FBConstraint() override;

    FBPropertyBool Active; // counts from the next evaluation on
    FBPropertyBool Lock;
    FBPropertyAnimatableDouble Weight; // percent
    FBPropertyString Description;
    FBPropertyAction Snap;
};

// A take belongs to the caller until Scene->Takes.Add() gives it to the scene.
class FBSDK_DLL FBTake : public FBComponent
{
    FBSDKClassDeclare(FBTake, FBComponent);

    explicit FBTake(const char* pName, HIObject pObject = nullptr);
    ~FBTake() override;
    FBTake* CopyTake(const char* pNewName); // with its animation, added to the scene

    FBPropertyString Comments;
    FBPropertyTimeSpan LocalTimeSpan;
    FBPropertyTimeSpan ReferenceTimeSpan;
};

class FBSDK_DLL FBScene : public FBComponent
{
    FBSDKClassDeclare(FBScene, FBComponent);

    ~FBScene() override;

    bool Evaluate(); // brings every value to the player's time and the current take; true
    bool EvaluateDeformations();
    bool CandidateEvaluationAndResolve();

    FBPropertyModel RootModel;
    FBPropertyListComponent Lights;
    FBPropertyListCamera Cameras; // the system cameras first
    FBPropertyListConstraint Constraints;
    FBPropertyListTake Takes;
    FBPropertyString FilePath; // NULL for a scene that was never saved

private:
    friend struct ::mobu_host::SdkAccess;
    FBScene();
};

} // namespace FBSDKNamespace
