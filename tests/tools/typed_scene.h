#pragma once

#include "tev2_loader/tev2.h"

namespace tv2_tests
{

/// The sound scene with one or two of everything else that a file can hold, so that no check has anything to say:
/// lights "Key" (a spot at "Camera") and "Sun" (directional, in the world), materials "Skin" (standard) and "Metal"
/// (shader), one mesh of each kind ("Box", "Flag", "Face", "Body"), splines "Path", helper "Grip", instances of the
/// box and references.
void FillTypedScene(TEV2_LOADER::TEV2& scene);

} // namespace tv2_tests
