// The functions of mobu_host/scene.h.

#include "host/sdk/frame_rates.h"
#include "host/sdk/model_space.h"
#include "host/sdk/property_state.h"
#include "host/sdk/scene_state.h"

#include <algorithm>

namespace mobu_host
{

void NewScene()
{
    TheScene().Reset();
}
FBScene& Scene()
{
    return *TheScene().graph.scene;
}

void SetSceneFilePath(const char* path)
{
    TheScene().has_path = path != nullptr;
    TheScene().path = path ? path : "";
}

void SetTransportRate(double frames_per_second)
{
    TheScene().player.transport_mode = ModeOfRate(frames_per_second);
    TheScene().player.custom_rate = frames_per_second;
}

Behaviour& SceneBehaviour()
{
    return TheScene().behaviour;
}

FBModel* AddModel(const std::string& long_name, FBModel* parent)
{
    return AddModelOf<FBModel>(long_name, parent);
}

FBCamera* AddCamera(const std::string& long_name, FBModel* parent)
{
    return AddModelOf<FBCamera>(long_name, parent);
}

void OrderCameras(const std::vector<FBCamera*>& order)
{
    TheScene().graph.OrderCameras(order);
}

FBCameraSwitcher* AddCameraSwitcher()
{
    SceneGraph& graph = TheScene().graph;
    if (!graph.switcher)
    {
        auto switcher = std::make_unique<FBCameraSwitcher>();
        graph.Add(*switcher, nullptr);
        graph.switcher = switcher.release();
    }
    return graph.switcher;
}

FBConstraint* AddConstraint(const std::string& name, bool active, FBModel* constrained,
                            TransformFunction effect)
{
    auto* constraint = new FBConstraint(name.c_str());
    constraint->Active = active;
    if (constrained && effect)
        TheScene().animation.AddEffect(*constraint, *constrained, std::move(effect));
    return constraint;
}

bool HasEffect(FBConstraint& constraint)
{
    return TheScene().animation.HasEffect(constraint);
}

namespace
{

// A constraint in C++, but only a box by its run-time type.
class ForeignConstraint : public FBConstraint
{
    FBSDKClassDeclare(ForeignConstraint, FBBox);
    using FBConstraint::FBConstraint;
};

FBSDKClassImplementation(ForeignConstraint); // NOLINT(bugprone-parent-virtual-call): a box on purpose

} // namespace

FBConstraint* AddForeignConstraint(const std::string& name, bool active)
{
    auto* constraint = new ForeignConstraint(name.c_str());
    constraint->Active = active;
    return constraint;
}

FBProperty* AddUserProperty(FBComponent& owner, const std::string& name, FBPropertyType type, bool animatable)
{
    return owner.PropertyCreate(name.c_str(), type, "", animatable, true);
}

FBProperty* AddUserEnum(FBComponent& owner, const std::string& name, const std::vector<std::string>& items,
                        int current, bool animatable)
{
    FBProperty* property = AddUserProperty(owner, name, kFBPT_enum, animatable);
    FBStringList* list = property->GetEnumStringList(true);
    for (const std::string& item : items)
        list->Add(item.c_str());
    property->NotifyEnumStringListChanged();
    property->SetInt(current);
    return property;
}

FBTake* AddTake(const std::string& name, FBTime start, FBTime stop)
{
    auto take = std::make_unique<FBTake>(name.c_str());
    take->LocalTimeSpan = FBTimeSpan(start, stop);
    take->ReferenceTimeSpan = FBTimeSpan(start, stop);
    TheScene().Adopt(*take);
    return take.release();
}

FBTake* AddTake(const std::string& name, double start, double stop)
{
    FBTime start_time;
    FBTime stop_time;
    start_time.SetSecondDouble(start);
    stop_time.SetSecondDouble(stop);
    return AddTake(name, start_time, stop_time);
}

void RemoveTake(FBTake* take)
{
    if (take)
        take->FBDelete();
}

void ClearTakes()
{
    while (FBTake* take = Scene().Takes[0])
        RemoveTake(take);
}

void AnimateTransform(FBModel& model, FBTake& take, TransformFunction function)
{
    TheScene().animation.Set(take, model, std::move(function));
}

void AnimateLocalMatrix(FBModel& model, FBTake& take, MatrixFunction function)
{
    TheScene().animation.Set(take, model, std::move(function));
}

void AnimateProperty(FBProperty& property, FBTake& take, PropertyFunction function)
{
    TheScene().animation.Set(take, property, std::move(function));
}

void SetLocalMatrix(FBModel& model, const FBMatrix& matrix)
{
    auto& space = SdkAccess::Space(model);
    space.rest = std::make_unique<std::array<double, 16>>();
    std::copy_n(static_cast<const double*>(matrix), 16, space.rest->data());
    RestoreTransform(model);
}

std::vector<FBModel*> ModelsInPreOrder(FBModel* from)
{
    std::vector<FBModel*> models;
    std::vector<FBModel*> open{from ? from : TheScene().graph.root};
    while (!open.empty())
    {
        FBModel* model = open.back();
        open.pop_back();
        models.push_back(model);
        const auto& children = SdkAccess::Items(model->Children);
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            open.push_back(static_cast<FBModel*>(*child));
    }
    return models;
}

FBModel* FindModel(std::string_view long_name)
{
    return TheScene().graph.FindInTree(long_name);
}

FBTime EvaluatedTime()
{
    return TheScene().player.evaluated_time;
}
unsigned long long EvaluationCount()
{
    return TheScene().player.evaluations;
}

SceneObserver::SceneObserver(ObserverCalls calls) : calls_(std::make_unique<ObserverCalls>(std::move(calls)))
{
    TheScene().player.observers.push_back(calls_.get());
}

SceneObserver::~SceneObserver()
{
    std::erase(TheScene().player.observers, calls_.get());
}

} // namespace mobu_host
