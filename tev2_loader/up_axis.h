#pragma once

#include "tev2_loader/requirements.h"

#include <cstdint>

namespace TEV2_LOADER
{

class TEV2;

/// The direction of a file's world that was up (+Y) in MotionBuilder, or in the glTF scene that it was converted from.
/// The world is the space of the nodes' worldMatrix.
enum class TEV2_UP_AXIS : std::uint8_t
{
    Unknown,
    PlusY,  ///< a selection was exported, or a glTF scene was converted
    PlusZ,  ///< the whole scene, without "Keep positive Z?"
    MinusZ, ///< the whole scene, with "Keep positive Z?"
};

/// Which way is up in a scene that was loaded. No field of a file says so. Where the creator text begins with
/// kConverterCreator it is +Y. Of exported scenes it follows from how the exporter makes node 0:
///
/// - the creator text is the exporter's, "MotionBuilder v17.00  Tev2 Exporter v1.14" of any versions, and node 0 is
///   at top level, without scale, with no translation and one rotation in all its keys;
/// - that rotation is none, or half a turn about Y where "Keep positive Z?" was on;
/// - the node is called "Exporter Inserted Root" when a selection was exported, one model or several; otherwise it is
///   the scene's root model.
///
/// Unknown for every other scene: another program wrote or changed it. Keys of other nodes, names and key reduction
/// do not matter. Of a whole scene the answer holds as long as its root model was not turned, as in MotionBuilder it
/// cannot be; that cannot be seen in the file.
TEV2_UP_AXIS UpAxis(const TEV2& scene);

/// "+Y", "+Z", "-Z" or "unknown".
const char* UpAxisName(TEV2_UP_AXIS axis);

} // namespace TEV2_LOADER
