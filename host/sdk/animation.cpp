#include "host/sdk/animation.h"

#include "host/sdk/model_space.h"
#include "host/sdk/property_state.h"

#include <algorithm>

namespace mobu_host
{
namespace
{

void DriveProperty(FBProperty& property, const PropertyFunction& function, double seconds)
{
    auto& state = SdkAccess::Of(property);
    for (int i = 0; i < NumberCount(state.type); ++i)
        SetNumberAt(state.type, state.current, i, function(seconds, i));
}

/// Moves a model to one of a take's two tables; without a function, out of both.
template <class Table, class Other, class Function>
void SetInOneOf(Table& table, Other& other, FBModel& model, Function function)
{
    const bool replaced = other.Remove(model);
    if (function)
        table.Set(model, std::move(function));
    else if (table.Remove(model) || replaced)
        RestoreTransform(model);
}

} // namespace

void Animation::Set(FBTake& take, FBModel& model, TransformFunction function)
{
    Tables& tables = takes_[&take];
    SetInOneOf(tables.transforms, tables.matrices, model, std::move(function));
}

void Animation::Set(FBTake& take, FBModel& model, MatrixFunction function)
{
    Tables& tables = takes_[&take];
    SetInOneOf(tables.matrices, tables.transforms, model, std::move(function));
}

void Animation::Set(FBTake& take, FBProperty& property, PropertyFunction function)
{
    auto& table = takes_[&take].properties;
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

void Animation::AddEffect(FBConstraint& constraint, FBModel& constrained, TransformFunction effect)
{
    effects_.push_back({&constraint, &constrained, std::move(effect)});
}

bool Animation::HasEffect(const FBConstraint& constraint) const
{
    return std::any_of(effects_.begin(), effects_.end(),
                       [&](const Effect& effect) { return effect.constraint == &constraint; });
}

bool Animation::Animates(const FBTake* take, const FBProperty& property) const
{
    const auto tables = takes_.find(take);
    if (tables == takes_.end())
        return false;
    if (tables->second.properties.Holds(property))
        return true;
    const auto* owner = dynamic_cast<const FBModel*>(SdkAccess::Of(property).owner);
    return owner &&
           (&property == &owner->Translation || &property == &owner->Rotation ||
            &property == &owner->Scaling) &&
           (tables->second.transforms.Holds(*owner) || tables->second.matrices.Holds(*owner));
}

void Animation::Copy(FBTake& from, FBTake& to)
{
    const auto tables = takes_.find(&from);
    if (tables == takes_.end())
        return;
    takes_.emplace(&to, tables->second);
    for (const auto& entry : tables->second.properties.Entries())
        ++SdkAccess::Of(*entry.target).animating_takes;
}

void Animation::Forget(FBModel& model)
{
    for (auto& [take, tables] : takes_)
    {
        tables.transforms.Remove(model);
        tables.matrices.Remove(model);
    }
    std::erase_if(effects_, [&](const Effect& effect) { return effect.constrained == &model; });
}

void Animation::Forget(FBProperty& property)
{
    for (auto& [take, tables] : takes_)
        tables.properties.Remove(property);
}

void Animation::Forget(FBConstraint& constraint)
{
    for (const Effect& effect : effects_)
        if (effect.constraint == &constraint)
            RestoreTransform(*effect.constrained);
    std::erase_if(effects_, [&](const Effect& effect) { return effect.constraint == &constraint; });
}

void Animation::Forget(FBTake& take)
{
    Restore(&take);
    if (const auto tables = takes_.find(&take); tables != takes_.end())
    {
        for (const auto& entry : tables->second.properties.Entries())
            --SdkAccess::Of(*entry.target).animating_takes;
        takes_.erase(tables);
    }
    if (applied_ == &take)
        applied_ = nullptr;
}

void Animation::Clear()
{
    for (auto& [take, tables] : takes_)
        for (const auto& entry : tables.properties.Entries())
            SdkAccess::Of(*entry.target).animating_takes = 0;
    takes_.clear();
    effects_.clear();
    applied_ = nullptr;
}

void Animation::Restore(FBTake* take)
{
    const auto tables = takes_.find(take);
    if (tables == takes_.end())
        return;
    for (const auto& entry : tables->second.properties.Entries())
        SdkAccess::Restore(*entry.target);
    for (const auto& entry : tables->second.transforms.Entries())
        RestoreTransform(*entry.target);
    for (const auto& entry : tables->second.matrices.Entries())
        RestoreTransform(*entry.target);
}

void Animation::Apply(FBTake* take, double seconds)
{
    if (applied_ != take)
        Restore(applied_);
    for (const Effect& effect : effects_)
        RestoreTransform(*effect.constrained);
    if (const auto tables = takes_.find(take); tables != takes_.end())
    {
        for (const auto& entry : tables->second.properties.Entries())
            DriveProperty(*entry.target, entry.function, seconds);
        for (const auto& entry : tables->second.transforms.Entries())
            DriveTransform(*entry.target, entry.function(seconds));
        for (const auto& entry : tables->second.matrices.Entries())
            DriveMatrix(*entry.target, entry.function(seconds));
    }
    for (const Effect& effect : effects_)
        if (SdkAccess::Current<bool>(effect.constraint->Active))
            DriveTransform(*effect.constrained, effect.function(seconds));
    applied_ = take;
}

} // namespace mobu_host
