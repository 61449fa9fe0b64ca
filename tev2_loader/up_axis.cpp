#include "tev2_loader/up_axis.h"

#include "tev2_loader/tev2.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace TEV2_LOADER
{

namespace
{

bool IsByExporter(std::string_view creator)
{
    return creator.starts_with(kCreatorBegin) &&
           creator.find(std::string(kCreatorExporter) + "v") != std::string::npos;
}

/// Whether every value of a track of this kind is one that `fits` takes. Works without run-time type information.
template <typename Track, typename Family, typename Fits>
bool IsAlways(const std::unique_ptr<Family>& optional, Fits fits)
{
    if (!optional || optional->GetType() != Track::kType)
        return false;
    const auto& values = static_cast<const Track&>(*optional).m_values;
    return !values.empty() && std::all_of(values.begin(), values.end(), fits);
}

bool IsAtOrigin(const TEV2_MATRIX_NODE& node)
{
    return IsAlways<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(node.translation, [](const TEV2_VECTOR_3& value)
                                                     { return value == TEV2_VECTOR_3{}; });
}

/// Whether every key is this rotation, by either of its two quaternions.
bool HasRotation(const TEV2_MATRIX_NODE& node, const TEV2_QUATERNION& expected)
{
    return IsAlways<TEV2_ANIMATABLE_QUATERNION_SLERP>(node.rotation, [&expected](const TEV2_QUATERNION& value)
                                                      { return value == expected || value == -expected; });
}

} // namespace

TEV2_UP_AXIS UpAxis(const TEV2& scene)
{
    const std::string creator = ReadableText(scene.information.creatorText.Text());
    if (creator.starts_with(kConverterCreator))
        return TEV2_UP_AXIS::PlusY;
    if (scene.matrixHierarchy.nodes.empty() || !IsByExporter(creator))
        return TEV2_UP_AXIS::Unknown;
    const TEV2_MATRIX_NODE& root = scene.matrixHierarchy.nodes[0];
    if (root.parentIndex >= 0 || root.scale || !IsAtOrigin(root))
        return TEV2_UP_AXIS::Unknown;

    const bool as_it_is = HasRotation(root, {0.0f, 0.0f, 0.0f, 1.0f});
    const bool half_turn = HasRotation(root, {0.0f, 1.0f, 0.0f, 0.0f});
    if (!as_it_is && !half_turn)
        return TEV2_UP_AXIS::Unknown;
    if (root.name.Text() == kInsertedRootName)
        return TEV2_UP_AXIS::PlusY;
    return half_turn ? TEV2_UP_AXIS::MinusZ : TEV2_UP_AXIS::PlusZ;
}

const char* UpAxisName(TEV2_UP_AXIS axis)
{
    switch (axis)
    {
    case TEV2_UP_AXIS::PlusY:
        return "+Y";
    case TEV2_UP_AXIS::PlusZ:
        return "+Z";
    case TEV2_UP_AXIS::MinusZ:
        return "-Z";
    case TEV2_UP_AXIS::Unknown:
        break;
    }
    return "unknown";
}

} // namespace TEV2_LOADER
