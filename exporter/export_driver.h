#pragma once

#include "exporter/export_options.h"

namespace tev2_exporter
{

// One whole export of the open scene: one file for the current take or for each take, named from `path`
// (8-bit, zero terminated). Selected models are exported with their subtrees; with nothing selected, the
// whole scene.
//
// Returns 1 when the run completed, 0 when a conversion failed. 0 as well, with nothing changed in the scene and nothing
// written, when the rate is so high that the time does not advance or that no file could hold the samples. A file that
// cannot be written, or one that is read-only and that the user wants kept, is left as it was and does not change the
// result. Afterwards the take, the time (to
// single precision) and the constraints are as they were; after a failed conversion they are left as they
// stand, and so they are where memory runs out, which throws std::bad_alloc.
unsigned ExportScene(ExportContext& context, const ExportOptions& options, const char* path);

} // namespace tev2_exporter
