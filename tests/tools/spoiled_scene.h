#pragma once

#include "tests/support/sample_scenes.h"

#include <limits>
#include <set>
#include <span>
#include <string>

namespace tv2_tests
{

inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

/// A scene that is sound but for what `spoil` does to it.
struct SpoiledScene
{
    const char* code;
    std::string path;
    std::uint32_t word; ///< the value in the file at the offset of the finding
    void (*spoil)(TEV2_LOADER::TEV2&);
    std::set<std::string> others = {}; ///< further codes that it deserves
    std::string message = {};          ///< a part of it
};

/// Spoiled scenes of FillTypedScene.
std::span<const SpoiledScene> SpoiledTypedScenes();

} // namespace tv2_tests
