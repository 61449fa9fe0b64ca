#pragma once

#include "tools/tv2/json_answer.h"

#include <string>
#include <vector>

namespace tv2
{

/// Everything that the host knows of the open scene, in the order of its lists: the answer of tv2 scene.
Json DescribeScene(const std::string& path, const std::vector<std::string>& notes);

} // namespace tv2
