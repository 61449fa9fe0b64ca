#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/sdk/matrix.h"
#include "host/sdk/property_state.h"
#include "mobu_host/scene.h"

// Everything the one scene, system and player know.

namespace mobu_host
{

// Room for one more, so that its joining the list cannot fail.
template <class T>
void MakeRoom(std::vector<T>& list)
{
    if (list.size() == list.capacity())
        list.reserve(2 * list.size() + 8);
}

// One function for each target, in no particular order.
template <class Target, class Function>
class AnimationTable
{
public:
    struct Entry
    {
        Target* target;
        Function function;
    };

    // True when the target was not in the table before.
    bool Set(Target& target, Function function)
    {
        MakeRoom(entries_);
        const auto [place, added] = index_.try_emplace(&target, entries_.size());
        if (added)
            entries_.push_back({&target, std::move(function)});
        else
            entries_[place->second].function = std::move(function);
        return added;
    }

    bool Remove(Target& target)
    {
        const auto place = index_.find(&target);
        if (place == index_.end())
            return false;
        const std::size_t position = place->second;
        index_.erase(place);
        if (position + 1 < entries_.size())
        {
            entries_[position] = std::move(entries_.back());
            index_[entries_[position].target] = position;
        }
        entries_.pop_back();
        return true;
    }

    bool Holds(const Target& target) const { return index_.contains(const_cast<Target*>(&target)); }
    const std::vector<Entry>& Entries() const { return entries_; }

private:
    std::vector<Entry> entries_;
    std::unordered_map<Target*, std::size_t> index_;
};

struct TakeAnimation
{
    AnimationTable<FBModel, TransformFunction> transforms;
    AnimationTable<FBModel, MatrixFunction> matrices;
    AnimationTable<FBProperty, PropertyFunction> properties;
};

struct ConstraintEffect
{
    FBConstraint* constraint;
    FBModel* constrained;
    TransformFunction effect;
};

class SceneState
{
public:
    SceneState();
    ~SceneState();
    void Reset();
    void Evaluate();
    void Goto(FBTime time);

    // Models and other objects join at their construction and leave at their destruction. They join as a whole
    // or, where memory runs out, not at all.
    void Adopt(FBModel& model, FBModel* parent); // parent null: a system object outside the tree
    void Adopt(FBCamera& camera);                // after the model of it was adopted
    void Adopt(FBConstraint& constraint);
    void Adopt(FBTake& take);
    void Forget(FBModel& model);
    void Forget(FBCamera& camera);
    void Forget(FBConstraint& constraint);
    void Forget(FBTake& take);
    void ForgetAnimation(FBProperty& property);

    void SetParent(FBModel& model, FBModel* parent); // null: the scene root; a loop is refused
    bool IsAnimated(const FBProperty& property);
    const std::vector<FBModel*>& TreeInPreOrder();
    FBModel* FindModel(const char* long_name);
    double TransportRate(FBTimeMode mode) const;
    FBCamera* UserCamera(int one_based);
    int UserCameraIndex(const FBCamera* camera); // 0 when it is none

    // Where memory ran out before all that every scene has was there, it is unmade again.
    enum class Stage
    {
        Unmade,
        Changing, // being made or destroyed
        Made,
    };
    Stage stage = Stage::Unmade;

    std::unique_ptr<FBScene> scene;
    std::unique_ptr<FBModel> system_root;
    FBModel* root = nullptr;
    FBCameraSwitcher* switcher = nullptr;
    FBCamera* switcher_override = nullptr;
    FBTake* current_take = nullptr;
    FBTime local_time;
    FBTime evaluated_time;
    FBTimeMode transport_mode = kFBTimeMode30Frames;
    double custom_rate = 0.0;
    int snap_mode = kFBTransportSnapModeNoSnap;
    bool has_path = false;
    std::string path;
    Behaviour behaviour;
    unsigned long long evaluations = 0;
    std::vector<const ObserverCalls*> observers;
    std::map<FBTake*, TakeAnimation> animation;
    std::vector<ConstraintEffect> effects;

private:
    void Make();
    void Own(FBComponent& component);
    void Disown(FBComponent& component);
    void Clear();
    void RestoreTake(FBTake* take);
    void ApplyTake(const TakeAnimation& take, double seconds);
    void Place(FBModel& model);

    std::vector<FBComponent*> owned_; // in order of creation
    std::vector<FBModel*> pre_order_; // of the tree, when not stale
    std::vector<FBModel*> system_models_;
    std::unordered_set<const FBTake*> takes_; // those of the scene
    bool order_stale_ = true;
    bool clearing_ = false;
    FBTake* evaluated_take_ = nullptr;
};

SceneState& TheScene();

// Puts the model where transform says until its own values are restored.
void DriveTransform(FBModel& model, const LocalTransform& transform);
void RestoreTransform(FBModel& model);

// What counts for the rotation of the model, with everything that RotationActive switches.
RotationRule RuleOf(FBModel& model);

} // namespace mobu_host
