#pragma once

#include "tev2_loader/records/object_bases.h"

#include <cstdint>
#include <vector>

namespace TEV2_LOADER
{

/// The lights that shine on an object.
class TEV2_LIT_OBJECT : public TEV2_SERIALISABLE_OBJECT
{
public:
    /// Indices in the scene's lights; empty: all of them.
    std::vector<std::uint32_t> lights;

    template <typename Self, typename Archive>
    static void Fields(Self& object, Archive& archive)
    {
        archive.Values("lights", object.lights, Counts::kSave);
    }

    /// Always true. Save is true when the count was written.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
};

} // namespace TEV2_LOADER
