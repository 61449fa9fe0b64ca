#pragma once

#include "tools/tv2/verb.h"

#include <string>
#include <vector>

namespace tv2
{

/// The verbs that open scenes: export, scene, menu. They are in a module, so that verbs of files start without the host.
/// None when it cannot be loaded; `error` then says why. On Windows they are part of the program, and none are here.
std::vector<VerbRow> HostVerbs(std::string& error);

} // namespace tv2
