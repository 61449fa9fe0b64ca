#include "exporter/sampling/skeleton.h"

#include "exporter/base/text.h"
#include "exporter/sampling/global_matrix.h"

#include <algorithm>

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

constexpr std::int32_t kNoParent = -1;

void AppendModels(FBModel& model, std::uint32_t parent, std::vector<ModelBinding>& models)
{
    const auto position = static_cast<std::uint32_t>(models.size());
    const int children = model.Children.GetCount();
    ModelBinding& binding = models.emplace_back();
    binding.model = &model;
    binding.parent = parent;
    binding.has_children = children > 0;
    binding.user_properties = CollectUserProperties(model);
    for (int child = 0; child < children; ++child)
        AppendModels(*model.Children[child], position, models);
}

void AppendKey(ModelBinding& binding, float time, const TEV2_VECTOR_3& translation,
               const TEV2_QUATERNION& rotation)
{
    binding.translation->Append(time, translation);
    binding.rotation->Append(time, rotation);
}

} // namespace

ExportSubtree CollectSubtree(FBModel& model)
{
    ExportSubtree subtree;
    AppendModels(model, 0, subtree.models);
    return subtree;
}

void InsertExporterRoot(TEV2_MATRIX_HIERARCHY& hierarchy, float start)
{
    const SamplingRange one_instant{start, start, 0.0f};
    TEV2_MATRIX_NODE& root = hierarchy.nodes.emplace_back();
    root.name = TEV2_WIDE_STRING(kInsertedRootName);
    root.parentIndex = kNoParent;
    MakeTrack(root.translation, one_instant).Append(start, {0.0f, 0.0f, 0.0f});
    MakeTrack(root.rotation, one_instant).Append(start, kIdentityQuaternion);
}

std::uint32_t CountExportNodes(const std::vector<ExportSubtree>& subtrees, bool first_is_scene_root)
{
    std::size_t count = first_is_scene_root ? 0 : 1;
    for (const ExportSubtree& subtree : subtrees)
        count += subtree.models.size();
    return static_cast<std::uint32_t>(count);
}

std::uint32_t BuildNodesForModel(ExportSubtree& subtree, TEV2_MATRIX_HIERARCHY& hierarchy,
                                 const SamplingRange& range, bool keep_positive_z)
{
    const auto first_node = static_cast<std::uint32_t>(hierarchy.nodes.size());
    for (ModelBinding& binding : subtree.models)
    {
        const bool is_top = &binding == &subtree.models.front();
        TEV2_MATRIX_NODE& node = hierarchy.nodes.emplace_back();
        node.name = WideText(binding.model->LongName);
        node.parentIndex = is_top ? kNoParent : static_cast<std::int32_t>(first_node + binding.parent);
        binding.translation = &MakeTrack(node.translation, range);
        binding.rotation = &MakeTrack(node.rotation, range);
        BuildExtendedProperties(node.properties, binding.user_properties, range, keep_positive_z);
        BindProperties(node.properties, binding.user_properties, subtree.properties);
    }
    SampleTransforms(subtree.models, range.start);
    return first_node;
}

/// Every parent's inverse comes from its own key, so that a child's key undoes exactly what the file applies.
void SampleTransforms(std::vector<ModelBinding>& models, float time)
{
    for (ModelBinding& binding : models)
    {
        const TEV2_MATRIX_3X4 converted = ConvertGlobalMatrix(*binding.model);
        const TEV2_VECTOR_3 translation = Column(converted, 3);
        const TEV2_QUATERNION rotation = ToQuaternion(converted);
        const TEV2_MATRIX_3X4 global = RigidMatrix(rotation, translation);
        if (binding.has_children)
            binding.inverse = Inverse(global);
        if (&binding == &models.front())
        {
            AppendKey(binding, time, translation, rotation);
            continue;
        }
        const TEV2_MATRIX_3X4 local = Product(models[binding.parent].inverse, global);
        AppendKey(binding, time, Column(local, 3), ToQuaternion(local));
    }
}

void FinishHierarchy(TEV2_MATRIX_HIERARCHY& hierarchy, bool first_is_scene_root)
{
    if (first_is_scene_root)
    {
        std::ranges::fill(SampledIn(hierarchy.nodes[0].translation).m_values,
                          TEV2_VECTOR_3{0.0f, 0.0f, 0.0f});
        std::ranges::fill(SampledIn(hierarchy.nodes[0].rotation).m_values, kIdentityQuaternion);
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
    for (TEV2_VECTOR_3& translation : SampledIn(hierarchy.nodes[0].translation).m_values)
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
