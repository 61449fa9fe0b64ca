#pragma once

#include "host/sdk/lists.h"
#include "mobu_host/scene.h"

#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

namespace mobu_host
{

/// One function for each target, in no particular order.
template <class Target, class Function>
class AnimationTable
{
public:
    struct Entry
    {
        Target* target;
        Function function;
    };

    /// True when the target was not in the table before.
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

/// What moves models and properties: the functions of each take, and the effects of constraints.
class Animation
{
public:
    /// An empty function removes the one that is there.
    void Set(FBTake& take, FBModel& model, TransformFunction function);
    void Set(FBTake& take, FBModel& model, MatrixFunction function);
    void Set(FBTake& take, FBProperty& property, PropertyFunction function);
    void AddEffect(FBConstraint& constraint, FBModel& constrained, TransformFunction effect);

    bool HasEffect(const FBConstraint& constraint) const;
    bool Animates(const FBTake* take, const FBProperty& property) const;

    void Copy(FBTake& from, FBTake& to);
    void Forget(FBModel& model);
    void Forget(FBProperty& property);
    void Forget(FBConstraint& constraint);
    void Forget(FBTake& take);
    void Clear();

    /// Gives models and properties their values at a time of the take, which may be null.
    void Apply(FBTake* take, double seconds);

private:
    struct Tables
    {
        AnimationTable<FBModel, TransformFunction> transforms;
        AnimationTable<FBModel, MatrixFunction> matrices;
        AnimationTable<FBProperty, PropertyFunction> properties;
    };

    struct Effect
    {
        FBConstraint* constraint;
        FBModel* constrained;
        TransformFunction function;
    };

    void Restore(FBTake* take);

    std::map<const FBTake*, Tables> takes_;
    std::vector<Effect> effects_;
    FBTake* applied_ = nullptr;
};

} // namespace mobu_host
