#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/interfaces.h"

namespace TEV2_LOADER
{

/// A named record. Load and Save are always true.
class TEV2_ENTITY : public TEV2_SERIALISABLE_OBJECT
{
public:
    TEV2_WIDE_STRING name;

    template <typename Self, typename Archive>
    static void Fields(Self& entity, Archive& archive)
    {
        archive.Text("name", entity.name);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
};

} // namespace TEV2_LOADER
