#pragma once

/// What a <channel> moves: "id/sid", "id/sid.X", "id/sid(1)(2)", or with nodes in between "id/sid/sid.ANGLE".

#include "host/import/collada/cameras.h"
#include "host/import/collada/document_index.h"

#include <cstdint>
#include <string_view>

namespace mobu_host::collada
{

struct ChannelTarget
{
    std::uint32_t node = kNone; // of a transform; else a camera is meant, or nothing
    std::uint32_t transform = 0;
    std::string_view member; // of the transform
    Element camera;          // where a lens is moved
    std::string_view lens_sid;
};

ChannelTarget FindTarget(const DocumentIndex& index, std::string_view target);

} // namespace mobu_host::collada
