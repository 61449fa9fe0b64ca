#pragma once

#include "gltf/json_tree.h"

#include <string>

namespace gltf
{

/// A value as JSON on one line, members in their order; "null" for nothing.
std::string JsonText(JsonValue value);

} // namespace gltf
