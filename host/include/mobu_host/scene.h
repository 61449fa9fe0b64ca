#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fbsdk/fbsdk.h>

// Builds and animates the one scene of the headless host, and observes it. For importers, tools and tests; a plug-in
// never uses this. Objects belong to the scene and are valid until NewScene or their FBDelete. Lengths are centimetres,
// angles degrees, times seconds. Not thread-safe.

namespace mobu_host
{

// ---- the scene
// ------------------------------------------------------------------------------------------------

// Deletes everything and starts again: root model "Scene", one take "Take 001" of 0 to 0 s, the seven system
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

// Sorts the scene's own cameras in Scene().Cameras, after the system's; cameras missing from `order` come last. The
// default is the order of creation.
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

// The local matrix of a model without animation, where translation, rotation and scaling cannot express it (shear,
// pivots). Row-vector layout; afterwards Translation, Rotation and Scaling are read-only views of it.
FBSDK_DLL void SetLocalMatrix(FBModel& model, const FBMatrix& matrix);

// While the constraint is active, each evaluation moves the constrained model by `effect` instead of its own values and
// animation.
FBSDK_DLL FBConstraint* AddConstraint(const std::string& name, bool active, FBModel* constrained = nullptr,
                                      TransformFunction effect = {});
// Whether it moves anything while it is active.
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

// One function for each pair of take and target: a second one replaces the first, an empty one removes it. Called by
// Scene::Evaluate with the player's time in seconds, regardless of the take's span. A value that the current take does
// not animate is the one assigned last.
FBSDK_DLL void AnimateTransform(FBModel& model, FBTake& take, TransformFunction function);
// The matrix is used as it is, regardless of rotation order and pre- and post-rotation; Translation, Rotation and
// Scaling read as its parts.
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

// Callbacks, made after the event, from construction to destruction; they survive NewScene.
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
