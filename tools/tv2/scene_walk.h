#pragma once

#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace tv2
{

/// Where a record stands in the file that a scene was loaded from.
struct RecordPlace
{
    std::string path;               ///< "matrixHierarchy.nodes[3].rotation"
    std::uint64_t offset = 0;       ///< of its first byte
    std::uint32_t chunk_id = 0;     ///< of the chunk around it
    std::uint64_t chunk_offset = 0; ///< of that chunk
};

/// Told of every node, camera and track, in file order within each chunk.
class SceneVisitor
{
public:
    virtual ~SceneVisitor() = default;

    virtual void VisitNode(const RecordPlace& /*place*/, std::size_t /*index*/) {}
    /// `lens` is the byte where inverseAspect is.
    virtual void VisitCamera(const RecordPlace& /*place*/, std::size_t /*index*/, std::uint64_t /*lens*/) {}
    /// A name or text; the path of the place ends in its label.
    virtual void VisitText(const RecordPlace& /*place*/, const TEV2_LOADER::TEV2_WIDE_STRING& /*text*/) {}
    /// The place is that of the flag in front of the track.
    virtual void VisitTrack(const RecordPlace& place, const TEV2_LOADER::TEV2_ANIMATABLE& track) = 0;
};

/// Walks a scene that was loaded whole; the report of that load tells where the chunks are.
void WalkScene(const TEV2_LOADER::TEV2& scene, const TEV2_LOADER::TEV2_LOAD_REPORT& report,
               SceneVisitor& visitor);

} // namespace tv2
