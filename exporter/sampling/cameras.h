#pragma once

#include "exporter/sampling/camera_index_table.h"
#include "exporter/sampling/skeleton.h"
#include "tev2_loader/tev2.h"

namespace tev2_exporter
{

/// The camera switcher of the scene bound to its track.
struct SwitcherBinding
{
    FBCameraSwitcher* switcher = nullptr;
    FBScene* source = nullptr;
    const CameraIndexTable* indices = nullptr;
    int system_cameras = 0; ///< at the start of the source's list of cameras
    SampledTrack<TEV2_LOADER::TEV2_ANIMATABLE_INT32>* track = nullptr;
};

/// Gives every camera in the subtrees of the export models its index, in the order in which entities are created.
void IndexExportCameras(const std::vector<FBModel*>& models, CameraIndexTable& table);

/// Appends an entity for every camera of the subtree, whose nodes begin at `node_index`, with its first keys at the
/// start of `range`, and binds the cameras that later frames sample. Only cameras of exactly the camera type are bound,
/// each to the next entity of the scene (`next_camera`): a camera of a derived class keeps only its first keys, and
/// later cameras use the entity before theirs.
void CreateCameraEntities(ExportSubtree& subtree, TEV2_LOADER::TEV2& scene, std::uint32_t node_index,
                          std::size_t& next_camera, const SamplingRange& range, bool keep_positive_z);

/// Appends one key at `time` (seconds) to every track of the bound cameras.
void SampleCameras(const std::vector<CameraBinding>& cameras, float time);

/// The number of system cameras in the scene's list; they come first in it.
int CountSystemCameras(FBScene& scene);

/// Appends the exported index of the camera that the switcher shows at `time` (seconds), or -1 for a camera that is not
/// exported.
void SampleSwitcher(const SwitcherBinding& binding, float time);

} // namespace tev2_exporter
