#pragma once

#include "host/sdk/property_state.h"

namespace mobu_host
{

/// Binds a property that shows another property of a control under a second name.
template <auto Member>
void BindSecondName(FBVisualComponent& owner, FBProperty& property, const char* name)
{
    Bind(
        owner, property, name,
        [](FBComponent& component, void* value)
        { (static_cast<FBVisualComponent&>(component).*Member).GetData(value, sizeof(ValueBytes)); },
        [](FBComponent& component, const void* value)
        { (static_cast<FBVisualComponent&>(component).*Member).SetData(const_cast<void*>(value)); });
}

} // namespace mobu_host
