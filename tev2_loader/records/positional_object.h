#pragma once

#include "tev2_loader/format.h"
#include "tev2_loader/records/extended_properties.h"
#include "tev2_loader/records/object_bases.h"
#include "tev2_loader/tracks/animatable.h"

#include <cstdint>
#include <memory>

namespace TEV2_LOADER
{

/// The base of every placed object: cameras, lights, meshes, helpers, instances.
class TEV2_POSITIONAL_OBJECT : public TEV2_ENTITY, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    TEV2_WIDE_STRING secondText; ///< no meaning; kept
    TEV2_WIDE_STRING thirdText;  ///< no meaning; kept

    /// Index of the node in the hierarchy that places the object; kNone: it is placed in the world. As constructed
    /// the first node. May lie beyond the nodes: check it before use.
    std::uint32_t value = 0;

    TEV2_EXTENDED_PROPERTIES properties; ///< from version 1.04

    /// A box around the object in the axes of its node, metres. May be null.
    std::unique_ptr<TEV2_ANIMATABLE_BOUNDING_BOX> bounds; ///< from version 1.13

    template <typename Self, typename Archive>
    static void Fields(Self& object, Archive& archive)
    {
        TEV2_ENTITY::Fields(object, archive);
        archive.Text("secondText", object.secondText);
        archive.Text("thirdText", object.thirdText);
        archive.Value("value", object.value, Counts::kNever);
        if (archive.Since(kSinceProperties))
            archive.Record("properties", object.properties, Counts::kNever);
        if (archive.Since(kSinceBounds))
            archive.Track("bounds", object.bounds, Counts::kSave);
    }

    /// Always true. Save is true when the bounds were written.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;

    void Update(float delta_time) override;
    void SetTime(float time) override;
};

} // namespace TEV2_LOADER
