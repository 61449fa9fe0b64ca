#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/record_of.h"

#include <array>
#include <cstdint>

namespace TEV2_LOADER
{

enum class TEV2_HELPER_SHAPE : std::uint32_t
{
    Point,
    Box, ///< of its bounds
};

constexpr auto ChoiceNames(TEV2_HELPER_SHAPE)
{
    return std::to_array({"point", "box"});
}

/// A marker for game code and artists. The scene does not move it with time.
class TEV2_HELPER final
    : public TEV2_MOVING_RECORD_OF<TEV2_HELPER, TEV2_POSITIONAL_OBJECT, TEV2_CHUNK_OBJECT, TEV2_KEPT_BODY>
{
public:
    TEV2_HELPER_SHAPE shape = TEV2_HELPER_SHAPE::Point;

    template <typename Self, typename Archive>
    static void Fields(Self& helper, Archive& archive)
    {
        TEV2_POSITIONAL_OBJECT::Fields(helper, archive);
        archive.Layout();
        archive.Choice("shape", helper.shape);
    }

    std::uint32_t GetChunkId() const override { return kHelperChunk; }
};

} // namespace TEV2_LOADER
