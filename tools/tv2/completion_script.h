#pragma once

#include "tools/tv2/verb.h"

#include <string>
#include <vector>

namespace tv2
{

/// A script for bash-completion that completes the command line: verbs, their options, the values of options that take
/// one of a few, and names of files that a verb reads. It starts no process.
std::string CompletionScript(const std::vector<VerbRow>& rows);

} // namespace tv2
