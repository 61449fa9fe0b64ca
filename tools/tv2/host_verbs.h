#pragma once

#include "tools/tv2/verb.h"

#include <string>
#include <vector>

namespace tv2
{

/// The verbs that open scenes: export, scene, menu. They are in a module, so that the other verbs start without the
/// host. None when it cannot be loaded; `error` then says why. On Windows they are in the program, and this is empty.
std::vector<VerbRow> HostVerbs(std::string& error);

/// All verbs of the command, in the order of the help. Without those of the host where `error` says why.
std::vector<VerbRow> AllVerbs(std::string& error);

} // namespace tv2
