#pragma once

#include "gltf/convert/to_gltf_context.h"

namespace tev2_gltf
{

/// Reports what glTF has no place for: records by kind, and every body that is kept as bytes.
void ReportLosses(ToGltfContext& context);

} // namespace tev2_gltf
