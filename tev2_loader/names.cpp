#include "tev2_loader/names.h"

#include "tev2_loader/io/utf8.h"

#include <algorithm>

namespace TEV2_LOADER
{

std::string Name(const TEV2_ENTITY& record)
{
    return ReadableText(record.name.Text());
}

Status SetName(TEV2_ENTITY& record, std::string_view utf8)
{
    if (!IsUtf8(utf8))
        return Status::Failure("the name is not UTF-8");
    if (utf8.size() > kMostStringUnits)
        return Status::Failure("the name is longer than " + std::to_string(kMostStringUnits) + " bytes");
    record.name = TEV2_WIDE_STRING::FromBytes(utf8);
    return {};
}

const TEV2_MATRIX_NODE* FindNode(const TEV2& scene, std::string_view utf8Name)
{
    const auto& nodes = scene.matrixHierarchy.nodes;
    const auto found =
        std::ranges::find_if(nodes, [utf8Name](const auto& node) { return Name(node) == utf8Name; });
    return found == nodes.end() ? nullptr : &*found;
}

TEV2_MATRIX_NODE* FindNode(TEV2& scene, std::string_view utf8Name)
{
    return const_cast<TEV2_MATRIX_NODE*>(FindNode(std::as_const(scene), utf8Name));
}

} // namespace TEV2_LOADER
