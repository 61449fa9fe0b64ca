#include "exporter/sampling/skeleton.h"

#include "exporter/sampling/global_matrix.h"
#include "exporter/sampling/sampled_track.h"
#include "exporter/text.h"

#include <algorithm>

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

constexpr std::int32_t kNoParent = -1;

void AppendModels(FBModel& model, std::uint32_t parent, ExportSubtree& subtree)
{
    const auto position = static_cast<std::uint32_t>(subtree.size());
    const int children = model.Children.GetCount();
    ExportNode& node = subtree.emplace_back();
    node.model = &model;
    node.parent = parent;
    node.has_children = children > 0;
    node.user_properties = CollectUserProperties(model);
    for (int child = 0; child < children; ++child)
        AppendModels(*model.Children[child], position, subtree);
}

void AppendKey(TEV2_MATRIX_NODE& node, float time, const TEV2_VECTOR_3& translation,
               const TEV2_QUATERNION& rotation)
{
    Sampled(node.translation).Append(time, translation);
    Sampled(node.rotation).Append(time, rotation);
}

// Every parent's inverse is made from its own key, so that a child's key undoes exactly what the file will
// apply.
void AppendTransformKeys(ExportSubtree& subtree, TEV2_MATRIX_HIERARCHY& hierarchy, std::uint32_t node_index,
                         float time)
{
    for (std::size_t i = 0; i < subtree.size(); ++i)
    {
        ExportNode& exported = subtree[i];
        TEV2_MATRIX_NODE& node = hierarchy.nodes[node_index + i];
        const TEV2_MATRIX_3X4 converted = ConvertGlobalMatrix(*exported.model);
        const TEV2_VECTOR_3 translation = Column(converted, 3);
        const TEV2_QUATERNION rotation = ToQuaternion(converted);
        const TEV2_MATRIX_3X4 global = RigidMatrix(rotation, translation);
        if (exported.has_children)
            exported.inverse = Inverse(global);

        if (i == 0)
        {
            AppendKey(node, time, translation, rotation);
            continue;
        }
        const TEV2_MATRIX_3X4 local = Product(subtree[exported.parent].inverse, global);
        AppendKey(node, time, Column(local, 3), ToQuaternion(local));
    }
}

} // namespace

ExportSubtree CollectSubtree(FBModel& model)
{
    ExportSubtree subtree;
    AppendModels(model, 0, subtree);
    return subtree;
}

void InsertExporterRoot(TEV2_MATRIX_HIERARCHY& hierarchy, float start)
{
    const SamplingRange one_instant{start, start, 0.0f};
    TEV2_MATRIX_NODE& root = hierarchy.nodes.emplace_back();
    root.name = TEV2_WIDE_STRING(TEV2_LOADER::kInsertedRootName);
    root.parentIndex = kNoParent;
    MakeTrack(root.translation, one_instant);
    MakeTrack(root.rotation, one_instant);
    AppendKey(root, start, {0.0f, 0.0f, 0.0f}, kIdentityQuaternion);
}

std::uint32_t CountExportNodes(const std::vector<ExportSubtree>& subtrees, bool first_is_scene_root)
{
    std::size_t count = first_is_scene_root ? 0 : 1;
    for (const ExportSubtree& subtree : subtrees)
        count += subtree.size();
    return static_cast<std::uint32_t>(count);
}

std::uint32_t BuildNodesForModel(ExportSubtree& subtree, TEV2_MATRIX_HIERARCHY& hierarchy,
                                 const SamplingRange& range, bool keep_positive_z)
{
    const auto node_index = static_cast<std::uint32_t>(hierarchy.nodes.size());
    for (std::size_t i = 0; i < subtree.size(); ++i)
    {
        TEV2_MATRIX_NODE& node = hierarchy.nodes.emplace_back();
        node.name = WideText(subtree[i].model->LongName);
        node.parentIndex = i == 0 ? kNoParent : static_cast<std::int32_t>(node_index + subtree[i].parent);
        MakeTrack(node.translation, range);
        MakeTrack(node.rotation, range);
        BuildExtendedProperties(node.properties, subtree[i].user_properties, range, keep_positive_z);
    }
    AppendTransformKeys(subtree, hierarchy, node_index, range.start);
    return node_index;
}

void SampleModelFrame(ExportSubtree& subtree, TEV2_MATRIX_HIERARCHY& hierarchy, std::uint32_t node_index,
                      float time)
{
    AppendTransformKeys(subtree, hierarchy, node_index, time);
    for (std::size_t i = 0; i < subtree.size(); ++i)
        SampleUserProperties(hierarchy.nodes[node_index + i].properties, subtree[i].user_properties, time);
}

void FinishHierarchy(TEV2_MATRIX_HIERARCHY& hierarchy, bool first_is_scene_root)
{
    if (first_is_scene_root)
    {
        std::ranges::fill(Sampled(hierarchy.nodes[0].translation).m_values, TEV2_VECTOR_3{0.0f, 0.0f, 0.0f});
        std::ranges::fill(Sampled(hierarchy.nodes[0].rotation).m_values, kIdentityQuaternion);
    }
    for (std::size_t i = 0; i < hierarchy.nodes.size(); ++i)
    {
        TEV2_MATRIX_NODE& node = hierarchy.nodes[i];
        if (i > 0 && node.parentIndex == kNoParent)
            node.parentIndex = 0;
        node.rotation->MakeContinuous();
    }
}

void KeepPositiveZ(TEV2_MATRIX_HIERARCHY& hierarchy)
{
    const TEV2_MATRIX_3X4 half_turn{
        {{-1.0f, 0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f, 0.0f}, {0.0f, 0.0f, -1.0f, 0.0f}}};
    for (TEV2_VECTOR_3& translation : Sampled(hierarchy.nodes[0].translation).m_values)
        translation = {-translation.x, translation.y, -translation.z};
    hierarchy.nodes[0].rotation->Multiply(ToQuaternion(half_turn));
}

void RemoveNamespaces(TEV2_MATRIX_HIERARCHY& hierarchy)
{
    for (TEV2_MATRIX_NODE& node : hierarchy.nodes)
    {
        const std::u16string& name = node.name.Text();
        const std::size_t separator = name.rfind(u':');
        if (separator != std::u16string::npos && separator + 1 < name.size())
            node.name = TEV2_WIDE_STRING(name.substr(separator + 1));
    }
}

} // namespace tev2_exporter
