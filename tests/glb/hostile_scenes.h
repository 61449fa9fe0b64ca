#pragma once

#include "tev2_loader/tev2.h"

#include <span>

namespace tv2_tests
{

/// What a scene file can hold that glTF cannot, or that an importer stumbles over: one fault each in a scene that is
/// sound otherwise.
struct HostileScene
{
    const char* name; ///< of its file
    void (*fill)(TEV2_LOADER::TEV2&);
};

std::span<const HostileScene> HostileScenes();

} // namespace tv2_tests
