#pragma once

#include "exporter/sampling/rigid_transform.h"
#include "exporter/sampling/user_properties.h"
#include "tev2_loader/records/matrix_hierarchy.h"

#include <cstdint>
#include <vector>

namespace tev2_exporter
{

/// An exported model bound to its node.
struct ModelBinding
{
    FBModel* model = nullptr;
    std::uint32_t parent = 0; ///< position of its parent in the subtree; unused for the first model
    bool has_children = false;
    UserPropertySet user_properties;
    TEV2_MATRIX_3X4 inverse{}; ///< of the converted transform at the current instant; only with children
    SampledTrack<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3>* translation = nullptr;
    SampledTrack<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION>* rotation = nullptr;
};

/// A camera bound to its entity.
struct CameraBinding
{
    FBCamera* camera = nullptr;
    SampledTrack<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32>* distance = nullptr;
    SampledTrack<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32>* field_of_view = nullptr;
    SampledTrack<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_RANGE>* clip_range = nullptr;
    std::vector<PropertyBinding> properties;
};

/// An export model with its descendants and all that is sampled of them, in pre-order, siblings in the order of the
/// scene. The structure of the scene does not change while a take is sampled: it is walked and bound once per take.
struct ExportSubtree
{
    std::vector<ModelBinding> models;
    std::vector<PropertyBinding> properties; ///< of the nodes
    std::vector<CameraBinding> cameras;
};

/// Walks the subtree of `model`; nothing is bound yet.
ExportSubtree CollectSubtree(FBModel& model);

/// Appends node 0 of an export that does not begin at the scene root, with one identity key at `start` (seconds) in
/// each track.
void InsertExporterRoot(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy, float start);

/// Nodes of all subtrees, and one for the inserted root when the export does not begin at the scene root.
std::uint32_t CountExportNodes(const std::vector<ExportSubtree>& subtrees, bool first_is_scene_root);

/// Appends the nodes of one subtree with names, parents, user properties and tracks, binds the models and properties to
/// them and appends the keys at the start of `range`. Returns the index of the export model's own node; its descendants
/// follow in subtree order.
std::uint32_t BuildNodesForModel(ExportSubtree& subtree, TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy,
                                 const SamplingRange& range, bool keep_positive_z);

/// Appends one key at `time` (seconds) to the translation and rotation of every model: the export model's in the frame
/// of the file, its descendants' relative to their parents.
void SampleTransforms(std::vector<ModelBinding>& models, float time);

/// After the last frame: keeps an exported scene root at the origin, makes node 0 the parent of nodes without one, and
/// makes every rotation track continuous.
void FinishHierarchy(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy, bool first_is_scene_root);

/// Turns the whole hierarchy by 180 degrees about Y: the keys of node 0, whose rotation is the identity.
void KeepPositiveZ(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy);

/// Shortens each node name to the text after its last ":", if there is any.
void RemoveNamespaces(TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy);

} // namespace tev2_exporter
