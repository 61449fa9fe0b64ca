#pragma once

// Names as UTF-8.
//
//     #include "tev2_loader/names.h"
//
//     if (const TEV2_LOADER::TEV2_MATRIX_NODE* node = TEV2_LOADER::FindNode(scene, "Hips"))
//         std::printf("%s is node %td\n", TEV2_LOADER::Name(*node).c_str(), node - scene.matrixHierarchy.nodes.data());
//
// A file keeps names in UTF-16 units. Exporters that know 8-bit names store one unit per byte of UTF-8; others store
// UTF-16. These functions read both and write the former, which reads back as the same text in every case.

#include "tev2_loader/status.h"
#include "tev2_loader/tev2.h"

#include <string>
#include <string_view>

namespace TEV2_LOADER
{

/// The name of a node, an object or a property.
std::string Name(const TEV2_ENTITY& record);

/// Sets a name. Fails, and changes nothing, when the text is not UTF-8 or longer than kMostStringUnits bytes.
Status SetName(TEV2_ENTITY& record, std::string_view utf8);

/// The first node of that name, or null. The pointer is valid until the list of nodes changes; the node's index is its
/// distance from the first.
TEV2_MATRIX_NODE* FindNode(TEV2& scene, std::string_view utf8Name);
const TEV2_MATRIX_NODE* FindNode(const TEV2& scene, std::string_view utf8Name);

} // namespace TEV2_LOADER
