#pragma once

#include "host/sdk/property_state.h"
#include "mobu_host/ui.h"

#include <algorithm>

namespace FBSDKNamespace
{

struct FBLayout::Regions
{
    std::vector<mobu_host::Region> regions;

    mobu_host::Region* Find(const char* name)
    {
        const auto found =
            std::find_if(regions.begin(), regions.end(),
                         [&](const mobu_host::Region& region) { return name && region.name == name; });
        return found == regions.end() ? nullptr : &*found;
    }
};

} // namespace FBSDKNamespace
