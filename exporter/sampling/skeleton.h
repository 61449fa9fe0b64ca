#pragma once

#include "exporter/sampling/rigid_transform.h"
#include "exporter/sampling/user_properties.h"
#include "tev2_loader/records/matrix_hierarchy.h"

#include <cstdint>
#include <vector>

namespace tev2_exporter
{

// One model of an exported subtree. The structure of the scene does not change while a take is sampled, so it
// is walked once.
struct ExportNode
{
    FBModel* model = nullptr;
    std::uint32_t parent = 0; // position of its parent in the subtree; of no meaning for the first node
    bool has_children = false;
    UserPropertySet user_properties;
    TEV2_MATRIX_3X4
    inverse{}; // inverse of the converted transform at the present instant; only with children
};

// An export model with all its descendants, depth first, every model before its children, siblings in the
// order of the scene.
using ExportSubtree = std::vector<ExportNode>;

ExportSubtree CollectSubtree(FBModel& model);

// Appends node 0 of an export that does not begin at the scene root: "Exporter Inserted Root", one identity
// key at `start` (seconds) in each track.
void InsertExporterRoot(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy, float start);

// How many nodes the subtrees need, with room for the inserted root when the export does not begin at the
// scene root.
std::uint32_t CountExportNodes(const std::vector<ExportSubtree>& subtrees, bool first_is_scene_root);

// Appends the nodes of one subtree with their names, parents, user properties and tracks, and takes their
// keys at the start of `range`. Returns the index of the export model's own node; its descendants follow in
// subtree order.
std::uint32_t BuildNodesForModel(ExportSubtree& subtree, TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy,
                                 const SamplingRange& range, bool keep_positive_z);

// Appends one key at `time` (seconds) to every track of the subtree's nodes, which begin at `node_index`: the
// export model's in the frame of the file, its descendants' relative to their parents.
void SampleModelFrame(ExportSubtree& subtree, TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy,
                      std::uint32_t node_index, float time);

// After the last frame: the scene root stands still at the origin, nodes without a parent hang below node 0,
// and every rotation track stays on one hemisphere.
void FinishHierarchy(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy, bool first_is_scene_root);

// Turns the whole hierarchy half about Y by way of node 0, whose rotation is the identity.
void KeepPositiveZ(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy);

// Leaves of each node name what follows its last ":", where anything follows.
void RemoveNamespaces(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy);

} // namespace tev2_exporter
