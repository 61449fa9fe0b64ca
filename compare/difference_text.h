#pragma once

#include "compare/difference.h"
#include "compare/scene_match.h"

#include <string>

namespace tev2_compare
{

/// A difference in words, on one line: what the right scene has instead of what the left one has. It is about the right
/// scene: `"LeftHand" below "LeftArm" is missing, and 15 nodes below it`.
std::string DifferenceText(const Difference& difference, const SceneMatch& match);

/// "3.2 mm at 0.417 s, first at 0.3 s"
std::string DeviationText(const Deviation& deviation);

/// A time in seconds, with at most three places: "0.417 s".
std::string TimeText(float time);

} // namespace tev2_compare
