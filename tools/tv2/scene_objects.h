#pragma once

#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"

#include <ostream>

namespace tv2
{

/// What tv2 info says of lights, meshes and everything else but nodes and cameras: the members of its answer, with the
/// bodies that are kept as bytes and why.
Json DescribeObjects(const LoadedFile& file);

/// The same for people. Prints nothing of kinds that a file does not have.
void PrintObjects(const Json& objects, std::ostream& out);

} // namespace tv2
