#pragma once

#include "tev2_loader/records/matrix_hierarchy.h"

namespace tev2_exporter
{

/// Thins runs of constant value in every node's translation, rotation and user-property tracks. A track keeps
/// its first key, and every later one that differs by more than 0.0001 in a component (an integer: at all)
/// from the last key kept or from the key after it; its last key stays when it differs from the one before it.
void ReduceKeys(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy);

} // namespace tev2_exporter
