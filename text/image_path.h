#pragma once

#include <string>
#include <string_view>

/// Why a program on any system may leave the scene's folder when it opens an image of this name (UTF-8): a reason that
/// completes "a name that ...". Empty for a name that stays below the folder.
std::string WhyItLeaves(std::string_view name);
