#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fbsdk/fbsdk.h>

// Builds and animates the one scene of the headless host, and watches what is done to it. Importers, tools
// and tests use this; a plug-in never does. What is added belongs to the scene until the next NewScene or its
// FBDelete; the pointers are valid as long. Lengths are centimetres, angles degrees, times seconds. Nothing
// is safe to call from two threads.

namespace mobu_host
{

// ---- the scene
// ------------------------------------------------------------------------------------------------

// Deletes all and starts again: root model "Scene", one take "Take 001" of 0 to 0 s, the seven system
// cameras, player at 0, 30 frames a second, no snapping, no switcher, never saved, behaviour as by default.
FBSDK_DLL void NewScene();

FBSDK_DLL FBScene& Scene();
FBSDK_DLL void SetSceneFilePath(const char* path); // NULL: never saved
FBSDK_DLL void
SetTransportRate(double frames_per_second); // a standard rate when it is one, else a custom one

// Choices where the real application's behaviour is not known.
struct Behaviour
{
    bool clamp_goto_to_take = false;      // Goto lands inside the current take's local span
    bool empty_path_when_unsaved = false; // FBScene::FilePath of an unsaved scene is "" instead of NULL
};
FBSDK_DLL Behaviour& SceneBehaviour();

// ---- models and other objects
// -----------------------------------------------------------------------------------

// Below parent, or below the scene root when it is null. The place in the world is known after
// Scene::Evaluate.
FBSDK_DLL FBModel* AddModel(const std::string& long_name, FBModel* parent = nullptr);
FBSDK_DLL FBCamera* AddCamera(const std::string& long_name, FBModel* parent = nullptr);

// The same for a class of the caller's own, constructed from its name.
template <class Model>
Model* AddModelOf(const std::string& long_name, FBModel* parent = nullptr)
{
    Model* model = new Model(long_name.c_str());
    if (parent)
        model->Parent = parent;
    return model;
}

// Puts the scene's own cameras into this order in Scene().Cameras, after the system's. Cameras that `order` leaves out
// come last. Without a call they are in order of creation.
FBSDK_DLL void OrderCameras(const std::vector<FBCamera*>& order);

// The "Camera Switcher" of the scene, made by the first call. Animate CurrentCameraIndex to switch over time.
FBSDK_DLL FBCameraSwitcher* AddCameraSwitcher();

struct LocalTransform
{
    FBVector3d translation;
    FBVector3d rotation; // in the model's rotation order
    FBVector3d scaling{1.0, 1.0, 1.0};
};
using TransformFunction = std::function<LocalTransform(double seconds)>;
using MatrixFunction = std::function<FBMatrix(double seconds)>; // local; row-vector layout
using PropertyFunction = std::function<double(double seconds, int component)>;

// Where the model stands while nothing moves it, for places that translation, rotation and scaling cannot give (shear,
// pivots). Row-vector layout; from now on Translation, Rotation and Scaling are for reading.
FBSDK_DLL void SetLocalMatrix(FBModel& model, const FBMatrix& matrix);

// While the constraint is active, every evaluation places the constrained model by effect instead of by its
// own values and animation.
FBSDK_DLL FBConstraint* AddConstraint(const std::string& name, bool active, FBModel* constrained = nullptr,
                                      TransformFunction effect = {});
// Whether it moves anything while it is active; others stand in the list only.
FBSDK_DLL bool HasEffect(FBConstraint& constraint);
// An entry of the constraint list for which Is(FBConstraint::TypeInfo) is false; its Active is as given.
FBSDK_DLL FBConstraint* AddForeignConstraint(const std::string& name, bool active);

// ---- user properties
// --------------------------------------------------------------------------------------------

// Null for a kind that holds no value. Assign through its typed class or SetData.
FBSDK_DLL FBProperty* AddUserProperty(FBComponent& owner, const std::string& name, FBPropertyType type,
                                      bool animatable);
FBSDK_DLL FBProperty* AddUserEnum(FBComponent& owner, const std::string& name,
                                  const std::vector<std::string>& items, int current, bool animatable);

// ---- takes and animation
// ----------------------------------------------------------------------------------------

// The first take of a scene without one becomes the current take.
FBSDK_DLL FBTake* AddTake(const std::string& name, FBTime start, FBTime stop);
FBSDK_DLL FBTake* AddTake(const std::string& name, double start, double stop);
FBSDK_DLL void
RemoveTake(FBTake* take); // with its animation; the first remaining take becomes current in its place
FBSDK_DLL void ClearTakes();

// One function for each pair of take and target: a second one takes the place of the first, an empty one
// removes it. The functions are called by Scene::Evaluate, at the player's time in seconds, whatever the span
// of the take. A value that the current take does not animate is the one assigned last.
FBSDK_DLL void AnimateTransform(FBModel& model, FBTake& take, TransformFunction function);
// The matrix is taken as it is, whatever the rotation order and pre- and post-rotation say; Translation,
// Rotation and Scaling read as its parts.
FBSDK_DLL void AnimateLocalMatrix(FBModel& model, FBTake& take, MatrixFunction function);
// Any property that holds numbers, also one that is not animatable. Called once a component; integers and
// enumerations get the nearest whole number, booleans are true from 0.5.
FBSDK_DLL void AnimateProperty(FBProperty& property, FBTake& take, PropertyFunction function);

// ---- looking at the scene
// ---------------------------------------------------------------------------------------

// The model and all below it, parents before children, children in order. From the scene root when null.
FBSDK_DLL std::vector<FBModel*> ModelsInPreOrder(FBModel* from = nullptr);

// The first model of this long name below the scene root, or the root; null when there is none.
FBSDK_DLL FBModel* FindModel(std::string_view long_name);

FBSDK_DLL FBTime EvaluatedTime();               // the time of the last evaluation, 0 before the first
FBSDK_DLL unsigned long long EvaluationCount(); // since NewScene

// Is called until it is destroyed, across NewScene, after what it reports has happened.
struct ObserverCalls
{
    std::function<void(FBTime time, FBTake* take)> on_goto; // the time where the player landed
    std::function<void(FBTime time, FBTake* take)> on_evaluate;
};
class FBSDK_DLL SceneObserver
{
public:
    explicit SceneObserver(ObserverCalls calls);
    ~SceneObserver();
    SceneObserver(const SceneObserver&) = delete;
    SceneObserver& operator=(const SceneObserver&) = delete;

private:
    std::unique_ptr<ObserverCalls> calls_;
};

} // namespace mobu_host
