#include <algorithm>

#include "host/sdk/property_state.h"
#include "host/sdk/scene_state.h"

namespace mobu_host
{
namespace
{

void ReadRoot(FBComponent&, void* value)
{
    *static_cast<FBComponent**>(value) = TheScene().graph.root;
}

void ReadFilePath(FBComponent&, void* value)
{
    const SceneState& scene = TheScene();
    const bool none = !scene.has_path && !scene.behaviour.empty_path_when_unsaved;
    *static_cast<const char**>(value) = none ? nullptr : scene.path.c_str();
}

void AddToTakes(FBComponent&, FBComponent& take)
{
    TheScene().Adopt(static_cast<FBTake&>(take));
}
void RemoveFromTakes(FBComponent&, FBComponent& take)
{
    TheScene().Forget(static_cast<FBTake&>(take));
}

} // namespace
} // namespace mobu_host

namespace FBSDKNamespace
{

using namespace mobu_host;

FBSDKClassImplementation(FBConstraint);
FBSDKClassImplementation(FBTake);
FBSDKClassImplementation(FBScene);

FBConstraint::FBConstraint(const char* pName, HIObject pObject) : FBBox(pName, pObject)
{
    Publish(*this, Active, "Active");
    Publish(*this, Lock, "Lock");
    Publish(*this, Weight, "Weight");
    Publish(*this, Description, "Description");
    Publish(*this, Snap, "Snap");
    Weight = 100.0;
    if (!pObject)
        TheScene().graph.Add(*this);
}

FBConstraint::~FBConstraint()
{
    TheScene().Forget(*this);
}

FBTake::FBTake(const char* pName, HIObject pObject) : FBComponent(pObject)
{
    LongName = pName;
    Publish(*this, Comments, "Comments");
    Publish(*this, LocalTimeSpan, "LocalTimeSpan");
    Publish(*this, ReferenceTimeSpan, "ReferenceTimeSpan");
}

FBTake::~FBTake()
{
    TheScene().Forget(*this);
}

FBTake* FBTake::CopyTake(const char* pNewName)
{
    auto copy = std::make_unique<FBTake>(pNewName);
    copy->Comments = Comments;
    copy->LocalTimeSpan = LocalTimeSpan;
    copy->ReferenceTimeSpan = ReferenceTimeSpan;
    TheScene().Adopt(*copy); // if the next line fails, its destruction removes it from the scene
    TheScene().animation.Copy(*this, *copy);
    return copy.release();
}

FBScene::FBScene()
{
    LongName = "Scene";
    Publish(*this, RootModel, "RootModel", ReadRoot);
    PublishList(*this, Lights, "Lights", RefuseChange, RefuseChange);
    PublishList(*this, Cameras, "Cameras", RefuseChange, RefuseChange);
    PublishList(*this, Constraints, "Constraints", RefuseChange, RefuseChange);
    PublishList(*this, Takes, "Takes", AddToTakes, RemoveFromTakes);
    Publish(*this, FilePath, "FilePath", ReadFilePath);
}

FBScene::~FBScene() = default;

bool FBScene::Evaluate()
{
    TheScene().Evaluate();
    return true;
}

// The host has no meshes: no deformation or candidate is ever pending.
bool FBScene::EvaluateDeformations()
{
    return true;
}
bool FBScene::CandidateEvaluationAndResolve()
{
    return true;
}

} // namespace FBSDKNamespace
