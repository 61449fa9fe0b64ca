#pragma once

#include "exporter/sampling/camera_index_table.h"
#include "exporter/sampling/skeleton.h"
#include "tev2_loader/tev2.h"

namespace tev2_exporter
{

// Gives every camera below the export models its index, in the order in which camera entities are created.
void IndexExportCameras(const std::vector<FBModel*>& models, CameraIndexTable& table);

// Appends an entity for every camera of the subtree, whose nodes begin at `node_index`, with its first keys
// at the start of `range`.
void CreateCameraEntities(const ExportSubtree& subtree, TEV2_LOADER::TEV2& scene, std::uint32_t node_index,
                          const SamplingRange& range, bool keep_positive_z);

// Appends one key at `time` (seconds) to every track of the subtree's camera entities. `next_camera` counts
// the entities through all subtrees of one instant. Only models of exactly the camera type take part: a class
// derived from it keeps its first keys alone, and later cameras use the entity before theirs.
void SampleCamerasInSubtree(const ExportSubtree& subtree, TEV2_LOADER::TEV2& scene, std::size_t& next_camera,
                            float time);

// How many cameras of the scene's list are system cameras; they stand first in it.
int CountSystemCameras(FBScene& scene);

// Appends the exported index of the camera that `switcher` shows at `time` (seconds), or -1 for a camera that
// is not exported, to the scene's switcher track, which has to exist.
void SampleSwitcherFrame(TEV2_LOADER::TEV2& scene, FBScene& source, FBCameraSwitcher& switcher,
                         const CameraIndexTable& table, int system_cameras, float time);

} // namespace tev2_exporter
