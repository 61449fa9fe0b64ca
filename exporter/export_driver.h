#pragma once

#include "exporter/base/export_context.h"
#include "exporter/base/export_options.h"

namespace tev2_exporter
{

/// The options for a scripted export. Nothing is validated: a start after the end or a rate of 0 is passed on.
ExportOptions FillOptionsFromScript(ExportContext& context, const ExportCall& call);

/// One whole export of the open scene: one file for the current take or for each take, named from `path` (8-bit, zero
/// terminated). Selected models are exported with their subtrees; with nothing selected, the whole scene.
///
/// Returns 1 when the run completed, 0 when a conversion failed. Also returns 0, with nothing changed in the scene and
/// nothing written, when the rate is so high that the time does not advance or no file could hold the samples. A file
/// that cannot be written, or a read-only one that the user keeps, is left unchanged and does not affect the result.
///
/// Afterwards take, time (to single precision) and constraints are restored, except after a failed conversion and when
/// memory runs out, which throws std::bad_alloc.
unsigned ExportScene(ExportContext& context, const ExportOptions& options, const char* path);

/// Whether the exports that follow drop keys that repeat their neighbours, as they do unless this says otherwise. With
/// every key a file says what key reduction costs.
void SetKeyReduction(bool reduce);

} // namespace tev2_exporter
