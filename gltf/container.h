#pragma once

#include <optional>
#include <string_view>

namespace gltf
{

/// What a file consists of; refers to its bytes.
struct Container
{
    std::string_view json;
    std::optional<std::string_view> binary; // the second chunk of a GLB, if it has one
};

/// Of a GLB or of a .gltf, which is JSON alone. Throws Error when the header or a chunk of a GLB is cut off or not of
/// version 2.
Container OpenContainer(std::string_view bytes);

} // namespace gltf
