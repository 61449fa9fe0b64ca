#include "host/sdk/scene_graph.h"

#include "host/sdk/lists.h"
#include "host/sdk/property_state.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace mobu_host
{
namespace
{

const char* const kSystemCameras[] = {"Producer Perspective", "Producer Front", "Producer Back",
                                      "Producer Right",       "Producer Left",  "Producer Top",
                                      "Producer Bottom"};

} // namespace

SceneGraph::SceneGraph() = default;
SceneGraph::~SceneGraph() = default;

void SceneGraph::MakeScene()
{
    if (!scene)
        scene = SdkAccess::MakeScene();
    if (!system_root)
        system_root = std::make_unique<FBModel>("Root", scene.get());
}

void SceneGraph::MakeSystemObjects()
{
    auto new_root = std::make_unique<FBModel>("Scene", scene.get());
    SdkAccess::Space(*new_root).in_tree = true;
    Own(*new_root);
    root = new_root.release();
    order_is_stale_ = true;
    for (const char* name : kSystemCameras)
    {
        auto camera = std::make_unique<FBCamera>(name, scene.get());
        SdkAccess::Store(camera->SystemCamera, true);
        Add(*camera, nullptr);
        Add(*camera.release());
    }
}

void SceneGraph::Clear()
{
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
}

void SceneGraph::Own(FBComponent& component)
{
    MakeRoom(owned_);
    MakeRoom(SdkAccess::Items(scene->Components));
    owned_.push_back(&component);
    SdkAccess::Items(scene->Components).push_back(&component);
}

void SceneGraph::Disown(FBComponent& component)
{
    EraseLast(owned_, &component);
    EraseLast(SdkAccess::Items(scene->Components), &component);
    for (FBComponent* other : owned_)
        for (FBProperty* property : SdkAccess::Properties(*other))
            if (SdkAccess::Of(*property).type == kFBPT_object &&
                SdkAccess::Current<FBComponent*>(*property) == &component)
                SdkAccess::Store(*property, static_cast<FBComponent*>(nullptr));
}

void SceneGraph::Add(FBModel& model, FBModel* parent)
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
    order_is_stale_ = true;
}

void SceneGraph::Add(FBCamera& camera)
{
    SdkAccess::Items(scene->Cameras).push_back(&camera);
}

void SceneGraph::Add(FBConstraint& constraint)
{
    auto& constraints = SdkAccess::Items(scene->Constraints);
    MakeRoom(constraints);
    Own(constraint);
    constraints.push_back(&constraint);
}

bool SceneGraph::Add(FBTake& take)
{
    if (takes_.contains(&take))
        return false;
    auto& takes = SdkAccess::Items(scene->Takes);
    MakeRoom(takes);
    takes_.insert(&take);
    Own(take);
    takes.push_back(&take);
    return true;
}

bool SceneGraph::Holds(FBModel& model) const
{
    return SdkAccess::Space(model).owned || &model == root;
}

void SceneGraph::Remove(FBModel& model)
{
    auto& space = SdkAccess::Space(model);
    if (space.parent)
    {
        while (FBModel* child = model.Children[0])
            SetParent(*child, space.parent);
        EraseLast(SdkAccess::Items(space.parent->Children), static_cast<FBComponent*>(&model));
    }
    EraseLast(system_models_, &model);
    if (switcher == static_cast<FBModel*>(&model))
        switcher = nullptr;
    order_is_stale_ = true;
    Disown(model);
}

void SceneGraph::Remove(FBCamera& camera)
{
    EraseLast(SdkAccess::Items(scene->Cameras), static_cast<FBComponent*>(&camera));
    if (switcher_override == &camera)
        switcher_override = nullptr;
}

void SceneGraph::Remove(FBConstraint& constraint)
{
    EraseLast(SdkAccess::Items(scene->Constraints), static_cast<FBComponent*>(&constraint));
    Disown(constraint);
}

void SceneGraph::Remove(FBTake& take)
{
    EraseLast(SdkAccess::Items(scene->Takes), static_cast<FBComponent*>(&take));
    takes_.erase(&take);
    Disown(take);
}

void SceneGraph::SetParent(FBModel& model, FBModel* parent)
{
    auto& space = SdkAccess::Space(model);
    if (!parent)
        parent = root;
    if (!space.parent ||
        !SdkAccess::Space(*parent).in_tree) // the root and system objects stay where they are
        return;
    if (!SdkAccess::Items(model.Children).empty()) // else there can be no loop
        for (FBModel* above = parent; above; above = SdkAccess::Space(*above).parent)
            if (above == &model)
                return;
    if (parent == &model)
        return;
    EraseLast(SdkAccess::Items(space.parent->Children), static_cast<FBComponent*>(&model));
    SdkAccess::Items(parent->Children).push_back(&model);
    space.parent = parent;
    order_is_stale_ = true;
}

void SceneGraph::OrderCameras(const std::vector<FBCamera*>& order)
{
    std::unordered_map<const FBComponent*, std::size_t> places;
    for (const FBCamera* const camera : order)
        places.emplace(camera, places.size());
    auto& cameras = SdkAccess::Items(scene->Cameras);
    const auto own =
        std::find_if(cameras.begin(), cameras.end(),
                     [](FBComponent* camera) { return !static_cast<FBCamera*>(camera)->SystemCamera; });
    for (auto camera = own; camera != cameras.end(); ++camera)
        places.emplace(*camera, places.size());
    std::sort(own, cameras.end(),
              [&](const FBComponent* a, const FBComponent* b) { return places.at(a) < places.at(b); });
}

const std::vector<FBModel*>& SceneGraph::TreeInPreOrder()
{
    if (order_is_stale_)
    {
        pre_order_ = ModelsInPreOrder(root);
        names_version_ = 0;
        order_is_stale_ = false;
    }
    return pre_order_;
}

FBModel* SceneGraph::FindInTree(std::string_view long_name)
{
    const std::vector<FBModel*>& tree = TreeInPreOrder();
    if (names_version_ != TextVersion())
    {
        names_.clear();
        for (FBModel* model : tree)
            names_.emplace(SdkAccess::Of(model->LongName).Text(), model);
        names_version_ = TextVersion();
    }
    const auto found = names_.find(long_name);
    return found == names_.end() ? nullptr : found->second;
}

FBModel* SceneGraph::FindModel(const char* long_name)
{
    if (!long_name)
        return nullptr;
    if (FBModel* model = FindInTree(long_name))
        return model;
    const auto found = std::find_if(
        system_models_.begin(), system_models_.end(),
        [=](FBModel* model) { return std::strcmp(SdkAccess::Of(model->LongName).Text(), long_name) == 0; });
    return found == system_models_.end() ? nullptr : *found;
}

FBCamera* SceneGraph::UserCamera(int one_based) const
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

int SceneGraph::UserCameraIndex(const FBCamera* camera) const
{
    for (int index = 1; FBCamera* candidate = UserCamera(index); ++index)
        if (candidate == camera)
            return index;
    return 0;
}

} // namespace mobu_host
