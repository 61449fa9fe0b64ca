#pragma once

#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace TEV2_LOADER
{

/// A field of a record in the file that a scene was loaded from.
struct TEV2_FIELD
{
    static constexpr std::size_t kNoIndex = ~std::size_t{0};

    std::string record;            ///< "matrixHierarchy.nodes[3]"
    const char* label = "";        ///< "parentIndex"
    std::size_t item = kNoIndex;   ///< in an array of texts or numbers
    std::size_t component = 0;     ///< in a value of several numbers
    std::size_t index = kNoIndex;  ///< the last index in `record`: 3
    std::uint64_t offset = 0;      ///< of its first byte in the file
    std::uint32_t chunkId = 0;     ///< of the chunk around it
    std::uint64_t chunkOffset = 0; ///< of that chunk

    /// "matrixHierarchy.nodes[3].parentIndex", "cameras[0].properties.stringArrays[0].strings[2]"
    std::string Path() const;
};

/// Called for each field of a scene, in file order within each chunk. Override what is of interest.
class TEV2_FIELD_VISITOR
{
public:
    virtual ~TEV2_FIELD_VISITOR() = default;

    /// One call for each component of a value.
    virtual void Number(const TEV2_FIELD& /*field*/, double /*number*/) {}
    virtual void Text(const TEV2_FIELD& /*field*/, const TEV2_WIDE_STRING& /*text*/) {}
    /// Null where the track is absent. The field begins at the flag in front of the track.
    virtual void Track(const TEV2_FIELD& /*field*/, const TEV2_ANIMATABLE* /*track*/) {}
    /// A body that is kept as bytes, or reserved bytes.
    virtual void Bytes(const TEV2_FIELD& /*field*/, std::span<const std::uint8_t> /*bytes*/) {}
};

/// Visits every field of a scene that was loaded whole from `image`; `report` is that of the load.
///
///     struct Names : TEV2_FIELD_VISITOR
///     {
///         void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
///         {
///             std::printf("%s at byte %zu\n", field.Path().c_str(), std::size_t(field.offset));
///         }
///     };
///     Names names;
///     WalkScene(scene, image.data(), report, names);
///
/// First come the objects of arrays in the order of their chunks, then the records that a scene has once, in the order
/// in which they are saved; where a file repeats one of these, the last chunk counts.
void WalkScene(const TEV2& scene, const std::uint8_t* image, const TEV2_LOAD_REPORT& report,
               TEV2_FIELD_VISITOR& visitor);

/// Bytes that a track takes in a file, with the flag and the kind in front.
std::uint64_t TrackSize(const TEV2_ANIMATABLE& track);

} // namespace TEV2_LOADER
