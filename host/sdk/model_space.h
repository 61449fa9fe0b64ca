#pragma once

#include "host/sdk/matrix.h"

// Where a model is: its local and global matrix, and what they are made from.

namespace mobu_host
{

/// How the model turns, with everything that RotationActive switches.
RotationRule RuleOf(FBModel& model);

/// Overrides the model's own values until RestoreTransform.
void DriveTransform(FBModel& model, const LocalTransform& transform);
void DriveMatrix(FBModel& model, const FBMatrix& matrix);
void RestoreTransform(FBModel& model);

/// Makes the matrices from the current values and the parent's global matrix.
void UpdateMatrices(FBModel& model);

} // namespace mobu_host
