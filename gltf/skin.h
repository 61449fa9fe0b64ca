#pragma once

/// Skins: the joints that a mesh follows.

#include "gltf/accessor.h"
#include "gltf/document.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace gltf
{

struct Skin
{
    std::string_view name;
    std::size_t index = 0;
    std::vector<std::size_t> joints; // nodes, at least one
    std::optional<std::size_t>
        inverse_bind_matrices;           // accessor of at least one matrix a joint; nothing: identities
    std::optional<std::size_t> skeleton; // node
    JsonValue json;
};

/// Every index, number of elements and type is checked.
Skin SkinAt(const Document& document, std::size_t index);

} // namespace gltf
