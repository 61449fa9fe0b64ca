#include "host/sdk/scene_state.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/sdk/frame_rates.h"
#include "host/sdk/matrix.h"

namespace mobu_host
{
namespace
{

const char* const kSystemCameras[] = {"Producer Perspective", "Producer Front", "Producer Back",
                                      "Producer Right",       "Producer Left",  "Producer Top",
                                      "Producer Bottom"};

// New objects are mostly deleted or moved soon after they came: look from the back.
template <class T>
void EraseLast(std::vector<T*>& list, const T* item)
{
    const auto found = std::find(list.rbegin(), list.rend(), item);
    if (found != list.rend())
        list.erase(std::next(found).base());
}

void DriveMatrix(FBModel& model, const FBMatrix& matrix)
{
    auto& space = SdkAccess::Space(model);
    std::copy_n(static_cast<const double*>(matrix), 16, space.local);
    DriveTransform(model, Decompose(space.local, RuleOf(model)));
    space.matrix_driven = true;
}

void DriveProperty(FBProperty& property, const PropertyFunction& function, double seconds)
{
    auto& state = SdkAccess::Of(property);
    for (int i = 0; i < NumberCount(state.type); ++i)
        SetNumberAt(state.type, state.current, i, function(seconds, i));
}

} // namespace

RotationRule RuleOf(FBModel& model)
{
    RotationRule rule;
    if (SdkAccess::Current<bool>(model.RotationActive))
    {
        rule.order = SdkAccess::Current<FBModelRotationOrder>(model.RotationOrder);
        rule.pre = SdkAccess::Current<FBVector3d>(model.PreRotation);
        rule.post = SdkAccess::Current<FBVector3d>(model.PostRotation);
    }
    return rule;
}

SceneState& TheScene()
{
    static SceneState state;
    if (state.stage == SceneState::Stage::Unmade) // not in the constructor: what it makes asks for it
        state.Reset();
    return state;
}

void DriveTransform(FBModel& model, const LocalTransform& transform)
{
    SdkAccess::Drive(model.Translation, transform.translation);
    SdkAccess::Drive(model.Rotation, transform.rotation);
    SdkAccess::Drive(model.Scaling, transform.scaling);
    SdkAccess::Space(model).matrix_driven = false;
}

void RestoreTransform(FBModel& model)
{
    SdkAccess::Restore(model.Translation);
    SdkAccess::Restore(model.Rotation);
    SdkAccess::Restore(model.Scaling);
    auto& space = SdkAccess::Space(model);
    space.matrix_driven = space.rest != nullptr;
    if (space.rest)
        std::copy_n(space.rest->data(), 16, space.local);
}

SceneState::SceneState() = default;
SceneState::~SceneState()
{
    stage = Stage::Changing;
    Clear();
}

void SceneState::Clear()
{
    clearing_ = true;
    for (auto& [take, tables] : animation)
        for (const auto& entry : tables.properties.Entries())
            SdkAccess::Of(*entry.target).animating_takes = 0;
    animation.clear();
    effects.clear();
    while (!owned_.empty())
    {
        FBComponent* last = owned_.back();
        owned_.pop_back();
        last->FBDelete();
    }
    system_models_.clear();
    takes_.clear();
    pre_order_.clear();
    if (scene)
        for (FBPropertyListComponent* list : std::initializer_list<FBPropertyListComponent*>{
                 &scene->Takes, &scene->Cameras, &scene->Constraints, &scene->Components})
            SdkAccess::Items(*list).clear();
    root = nullptr;
    switcher = nullptr;
    switcher_override = nullptr;
    current_take = nullptr;
    evaluated_take_ = nullptr;
    clearing_ = false;
}

void SceneState::Reset()
{
    stage = Stage::Changing;
    try
    {
        Make();
    }
    catch (...)
    {
        stage = Stage::Unmade;
        throw;
    }
    stage = Stage::Made;
}

void SceneState::Make()
{
    if (!scene)
        scene = SdkAccess::MakeScene();
    if (!system_root)
        system_root = std::make_unique<FBModel>("Root", scene.get());
    Clear();
    local_time = evaluated_time = FBTime();
    transport_mode = kFBTimeMode30Frames;
    custom_rate = 0.0;
    snap_mode = kFBTransportSnapModeNoSnap;
    has_path = false;
    path.clear();
    behaviour = Behaviour();
    evaluations = 0;

    auto new_root = std::make_unique<FBModel>("Scene", scene.get());
    SdkAccess::Space(*new_root).in_tree = true;
    Own(*new_root);
    root = new_root.release();
    order_stale_ = true;
    for (const char* name : kSystemCameras)
    {
        auto camera = std::make_unique<FBCamera>(name, scene.get());
        SdkAccess::Store(camera->SystemCamera, true);
        Adopt(*camera, nullptr);
        Adopt(*camera.release());
    }
    AddTake("Take 001", FBTime(), FBTime());
}

void SceneState::Own(FBComponent& component)
{
    MakeRoom(owned_);
    MakeRoom(SdkAccess::Items(scene->Components));
    owned_.push_back(&component);
    SdkAccess::Items(scene->Components).push_back(&component);
}

void SceneState::Disown(FBComponent& component)
{
    EraseLast(owned_, &component);
    EraseLast(SdkAccess::Items(scene->Components), &component);
    if (clearing_)
        return;
    for (FBComponent* other : owned_)
        for (FBProperty* property : SdkAccess::Properties(*other))
            if (SdkAccess::Of(*property).type == kFBPT_object &&
                SdkAccess::Current<FBComponent*>(*property) == &component)
                SdkAccess::Store(*property, static_cast<FBComponent*>(nullptr));
}

void SceneState::Adopt(FBModel& model, FBModel* parent)
{
    auto& space = SdkAccess::Space(model);
    if (!parent)
    {
        MakeRoom(system_models_);
        Own(model);
        space.owned = true;
        system_models_.push_back(&model);
        return;
    }
    auto& children = SdkAccess::Items(parent->Children);
    MakeRoom(children);
    Own(model);
    space.owned = true;
    space.in_tree = true;
    space.parent = parent;
    children.push_back(&model);
    order_stale_ = true;
}

void SceneState::Adopt(FBCamera& camera)
{
    SdkAccess::Items(scene->Cameras).push_back(&camera);
}

void SceneState::Adopt(FBConstraint& constraint)
{
    auto& constraints = SdkAccess::Items(scene->Constraints);
    MakeRoom(constraints);
    Own(constraint);
    constraints.push_back(&constraint);
}

void SceneState::Adopt(FBTake& take)
{
    if (takes_.contains(&take))
        return;
    auto& takes = SdkAccess::Items(scene->Takes);
    MakeRoom(takes);
    takes_.insert(&take);
    Own(take);
    takes.push_back(&take);
    if (!current_take)
        current_take = &take;
}

void SceneState::Forget(FBModel& model)
{
    auto& space = SdkAccess::Space(model);
    if (clearing_ || !(space.owned || &model == root))
        return;
    if (space.parent)
    {
        while (FBModel* child = model.Children[0])
            SetParent(*child, space.parent);
        EraseLast(SdkAccess::Items(space.parent->Children), static_cast<FBComponent*>(&model));
    }
    EraseLast(system_models_, &model);
    for (auto& [take, tables] : animation)
    {
        tables.transforms.Remove(model);
        tables.matrices.Remove(model);
    }
    std::erase_if(effects, [&](const ConstraintEffect& effect) { return effect.constrained == &model; });
    if (switcher == static_cast<FBModel*>(&model))
        switcher = nullptr;
    order_stale_ = true;
    Disown(model);
}

void SceneState::Forget(FBCamera& camera)
{
    if (clearing_)
        return;
    EraseLast(SdkAccess::Items(scene->Cameras), static_cast<FBComponent*>(&camera));
    if (switcher_override == &camera)
        switcher_override = nullptr;
}

void SceneState::Forget(FBConstraint& constraint)
{
    if (clearing_)
        return;
    for (const ConstraintEffect& effect : effects)
        if (effect.constraint == &constraint)
            RestoreTransform(*effect.constrained);
    std::erase_if(effects, [&](const ConstraintEffect& effect) { return effect.constraint == &constraint; });
    EraseLast(SdkAccess::Items(scene->Constraints), static_cast<FBComponent*>(&constraint));
    Disown(constraint);
}

void SceneState::Forget(FBTake& take)
{
    if (clearing_)
        return;
    RestoreTake(&take);
    if (const auto tables = animation.find(&take); tables != animation.end())
    {
        for (const auto& entry : tables->second.properties.Entries())
            --SdkAccess::Of(*entry.target).animating_takes;
        animation.erase(tables);
    }
    EraseLast(SdkAccess::Items(scene->Takes), static_cast<FBComponent*>(&take));
    takes_.erase(&take);
    if (current_take == &take)
        current_take = scene->Takes[0];
    if (evaluated_take_ == &take)
        evaluated_take_ = nullptr;
    Disown(take);
}

void SceneState::ForgetAnimation(FBProperty& property)
{
    for (auto& [take, tables] : animation)
        tables.properties.Remove(property);
}

void SceneState::SetParent(FBModel& model, FBModel* parent)
{
    auto& space = SdkAccess::Space(model);
    if (!parent)
        parent = root;
    if (!space.parent ||
        !SdkAccess::Space(*parent).in_tree) // the root and system objects stay where they are
        return;
    if (!SdkAccess::Items(model.Children).empty()) // else nothing is below it: no loop
        for (FBModel* above = parent; above; above = SdkAccess::Space(*above).parent)
            if (above == &model)
                return;
    if (parent == &model)
        return;
    EraseLast(SdkAccess::Items(space.parent->Children), static_cast<FBComponent*>(&model));
    SdkAccess::Items(parent->Children).push_back(&model);
    space.parent = parent;
    order_stale_ = true;
}

bool SceneState::IsAnimated(const FBProperty& property)
{
    const auto tables = animation.find(current_take);
    if (tables == animation.end())
        return false;
    if (tables->second.properties.Holds(property))
        return true;
    const auto* owner = dynamic_cast<const FBModel*>(SdkAccess::Of(property).owner);
    return owner &&
           (&property == &owner->Translation || &property == &owner->Rotation ||
            &property == &owner->Scaling) &&
           (tables->second.transforms.Holds(*owner) || tables->second.matrices.Holds(*owner));
}

const std::vector<FBModel*>& SceneState::TreeInPreOrder()
{
    if (order_stale_)
    {
        pre_order_ = ModelsInPreOrder(root);
        order_stale_ = false;
    }
    return pre_order_;
}

FBModel* SceneState::FindModel(const char* long_name)
{
    if (!long_name)
        return nullptr;
    const std::vector<FBModel*>* const groups[] = {&TreeInPreOrder(), &system_models_};
    for (const auto* models : groups)
        for (FBModel* model : *models)
            if (std::strcmp(SdkAccess::Of(model->LongName).Text(), long_name) == 0)
                return model;
    return nullptr;
}

double SceneState::TransportRate(FBTimeMode mode) const
{
    return FramesPerSecond(mode == kFBTimeModeDefault ? transport_mode : mode, custom_rate);
}

FBCamera* SceneState::UserCamera(int one_based)
{
    int index = 0;
    for (FBComponent* item : SdkAccess::Items(scene->Cameras))
    {
        auto* camera = static_cast<FBCamera*>(item);
        if (!SdkAccess::Current<bool>(camera->SystemCamera) && ++index == one_based)
            return camera;
    }
    return nullptr;
}

int SceneState::UserCameraIndex(const FBCamera* camera)
{
    for (int index = 1; FBCamera* candidate = UserCamera(index); ++index)
        if (candidate == camera)
            return index;
    return 0;
}

void SceneState::Goto(FBTime time)
{
    if (snap_mode == kFBTransportSnapModeSnapOnFrames || snap_mode == kFBTransportSnapModeSnapAndPlayOnFrames)
    {
        const double rate = TransportRate(kFBTimeModeDefault);
        if (rate > 0.0)
            time.SetSecondDouble(std::round(time.GetSecondDouble() * rate) / rate);
    }
    if (behaviour.clamp_goto_to_take && current_take)
    {
        const FBTimeSpan span = current_take->LocalTimeSpan;
        const FBTime low = std::min(span.GetStart(), span.GetStop());
        const FBTime high = std::max(span.GetStart(), span.GetStop());
        time = std::clamp(time, low, high);
    }
    local_time = time;
    for (std::size_t i = 0; i < observers.size(); ++i)
        if (observers[i]->on_goto)
            observers[i]->on_goto(local_time, current_take);
}

void SceneState::RestoreTake(FBTake* take)
{
    const auto tables = animation.find(take);
    if (tables == animation.end())
        return;
    for (const auto& entry : tables->second.properties.Entries())
        SdkAccess::Restore(*entry.target);
    for (const auto& entry : tables->second.transforms.Entries())
        RestoreTransform(*entry.target);
    for (const auto& entry : tables->second.matrices.Entries())
        RestoreTransform(*entry.target);
}

void SceneState::ApplyTake(const TakeAnimation& take, double seconds)
{
    for (const auto& entry : take.properties.Entries())
        DriveProperty(*entry.target, entry.function, seconds);
    for (const auto& entry : take.transforms.Entries())
        DriveTransform(*entry.target, entry.function(seconds));
    for (const auto& entry : take.matrices.Entries())
        DriveMatrix(*entry.target, entry.function(seconds));
}

void SceneState::Place(FBModel& model)
{
    auto& space = SdkAccess::Space(model);
    if (!space.matrix_driven)
        Compose({SdkAccess::Current<FBVector3d>(model.Translation),
                 SdkAccess::Current<FBVector3d>(model.Rotation),
                 SdkAccess::Current<FBVector3d>(model.Scaling)},
                RuleOf(model), space.local);
    if (space.parent)
        Multiply(space.local, SdkAccess::Space(*space.parent).global, space.global);
    else
        std::copy_n(space.local, 16, space.global);
}

void SceneState::Evaluate()
{
    const double seconds = local_time.GetSecondDouble();
    if (evaluated_take_ != current_take)
        RestoreTake(evaluated_take_);
    for (const ConstraintEffect& effect : effects)
        RestoreTransform(*effect.constrained);
    if (const auto tables = animation.find(current_take); tables != animation.end())
        ApplyTake(tables->second, seconds);
    for (const ConstraintEffect& effect : effects)
        if (SdkAccess::Current<bool>(effect.constraint->Active))
            DriveTransform(*effect.constrained, effect.effect(seconds));
    for (FBModel* model : TreeInPreOrder())
        Place(*model);
    for (FBModel* model : system_models_)
        Place(*model);
    evaluated_take_ = current_take;
    evaluated_time = local_time;
    ++evaluations;
    for (std::size_t i = 0; i < observers.size(); ++i)
        if (observers[i]->on_evaluate)
            observers[i]->on_evaluate(evaluated_time, current_take);
}

// ---- the host's interface
// -----------------------------------------------------------------------------------------

void NewScene()
{
    TheScene().Reset();
}
FBScene& Scene()
{
    return *TheScene().scene;
}

void SetSceneFilePath(const char* path)
{
    TheScene().has_path = path != nullptr;
    TheScene().path = path ? path : "";
}

void SetTransportRate(double frames_per_second)
{
    TheScene().transport_mode = ModeOfRate(frames_per_second);
    TheScene().custom_rate = frames_per_second;
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
    std::unordered_map<const FBComponent*, std::size_t> places;
    for (const FBCamera* const camera : order)
        places.emplace(camera, places.size());
    auto& cameras = SdkAccess::Items(Scene().Cameras);
    const auto own =
        std::find_if(cameras.begin(), cameras.end(),
                     [](FBComponent* camera) { return !static_cast<FBCamera*>(camera)->SystemCamera; });
    for (auto camera = own; camera != cameras.end(); ++camera)
        places.emplace(*camera, places.size());
    std::sort(own, cameras.end(),
              [&](const FBComponent* a, const FBComponent* b) { return places.at(a) < places.at(b); });
}

FBCameraSwitcher* AddCameraSwitcher()
{
    SceneState& state = TheScene();
    if (!state.switcher)
    {
        auto switcher = std::make_unique<FBCameraSwitcher>();
        state.Adopt(*switcher, nullptr);
        state.switcher = switcher.release();
    }
    return state.switcher;
}

FBConstraint* AddConstraint(const std::string& name, bool active, FBModel* constrained,
                            TransformFunction effect)
{
    auto* constraint = new FBConstraint(name.c_str());
    constraint->Active = active;
    if (constrained && effect)
        TheScene().effects.push_back({constraint, constrained, std::move(effect)});
    return constraint;
}

bool HasEffect(FBConstraint& constraint)
{
    const auto& effects = TheScene().effects;
    return std::any_of(effects.begin(), effects.end(),
                       [&](const ConstraintEffect& effect) { return effect.constraint == &constraint; });
}

namespace
{

// In C++ a constraint, by its run-time type only a box.
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
    TakeAnimation& tables = TheScene().animation[&take];
    const bool replaced = tables.matrices.Remove(model);
    if (function)
        tables.transforms.Set(model, std::move(function));
    else if (tables.transforms.Remove(model) || replaced)
        RestoreTransform(model);
}

void AnimateLocalMatrix(FBModel& model, FBTake& take, MatrixFunction function)
{
    TakeAnimation& tables = TheScene().animation[&take];
    const bool replaced = tables.transforms.Remove(model);
    if (function)
        tables.matrices.Set(model, std::move(function));
    else if (tables.matrices.Remove(model) || replaced)
        RestoreTransform(model);
}

void SetLocalMatrix(FBModel& model, const FBMatrix& matrix)
{
    auto& space = SdkAccess::Space(model);
    space.rest = std::make_unique<std::array<double, 16>>();
    std::copy_n(static_cast<const double*>(matrix), 16, space.rest->data());
    RestoreTransform(model);
}

void AnimateProperty(FBProperty& property, FBTake& take, PropertyFunction function)
{
    auto& table = TheScene().animation[&take].properties;
    auto& state = SdkAccess::Of(property);
    if (function)
    {
        if (table.Set(property, std::move(function)))
            ++state.animating_takes;
    }
    else if (table.Remove(property))
    {
        --state.animating_takes;
        SdkAccess::Restore(property);
    }
}

std::vector<FBModel*> ModelsInPreOrder(FBModel* from)
{
    std::vector<FBModel*> models;
    std::vector<FBModel*> open{from ? from : TheScene().root};
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

FBTime EvaluatedTime()
{
    return TheScene().evaluated_time;
}
unsigned long long EvaluationCount()
{
    return TheScene().evaluations;
}

SceneObserver::SceneObserver(ObserverCalls calls) : calls_(std::make_unique<ObserverCalls>(std::move(calls)))
{
    TheScene().observers.push_back(calls_.get());
}

SceneObserver::~SceneObserver()
{
    std::erase(TheScene().observers, calls_.get());
}

} // namespace mobu_host
