#pragma once

#include "exporter/base/export_context.h"
#include "exporter/base/export_options.h"
#include "exporter/sampling/camera_index_table.h"
#include "exporter/sampling/sampling_range.h"
#include "tev2_loader/tev2.h"

#include <vector>

namespace tev2_exporter
{

/// What of the scene is sampled. Nothing is owned.
struct SampledModels
{
    const std::vector<FBModel*>&
        export_models; ///< topmost exported models; the scene root alone for the whole scene
    FBCameraSwitcher* switcher = nullptr;             ///< none: no switcher track
    const CameraIndexTable* camera_indices = nullptr; ///< required with a switcher
};

/// Converts the current take into `scene`: moves the player through the instants of `range`, evaluates the
/// scene once at each, and appends one key a track. The player is left at the end of the range. Always returns
/// true.
bool SampleTake(ExportContext& context, const SampledModels& models, const SamplingRange& range,
                const ExportOptions& options, TEV2_LOADER::TEV2& scene);

} // namespace tev2_exporter
