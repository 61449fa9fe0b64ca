#pragma once

#include "tev2_loader/records/object_bases.h"
#include "tev2_loader/tracks/animatable.h"

#include <memory>
#include <vector>

namespace TEV2_LOADER
{

/// A named list of texts.
class TEV2_NAMED_STRING_ARRAY : public TEV2_ENTITY
{
public:
    std::vector<TEV2_WIDE_STRING> strings;

    template <typename Self, typename Archive>
    static void Fields(Self& array, Archive& archive)
    {
        TEV2_ENTITY::Fields(array, archive);
        archive.Texts("strings", array.strings, Counts::kBoth);
    }

    /// True when all strings were there; Save is true when their count was written.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;
};

/// A named value, constant or animated. Family is the family of its track: INT32, FLOAT32, VECTOR_3 or VECTOR_4.
template <typename Family>
class TEV2_NAMED_ANIMATABLE : public TEV2_ENTITY, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// May be null.
    std::unique_ptr<Family> track;

    template <typename Self, typename Archive>
    static void Fields(Self& value, Archive& archive)
    {
        TEV2_ENTITY::Fields(value, archive);
        archive.Track("track", value.track, Counts::kBoth);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;

    void Update(float delta_time) override { UpdateEach(delta_time, track); }
    void SetTime(float time) override { SetTimeEach(time, track); }
};

/// The user's own properties of a placed object or a node: named texts and named values of four kinds. They do not
/// move with the scene: SetTime moves them.
class TEV2_EXTENDED_PROPERTIES : public TEV2_SERIALISABLE_OBJECT
{
public:
    std::vector<TEV2_NAMED_STRING_ARRAY> stringArrays;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_INT32>> intValues;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>> floatValues;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_VECTOR_3>> vector3Values;
    std::vector<TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_VECTOR_4>> vector4Values;

    template <typename Self, typename Archive>
    static void Fields(Self& properties, Archive& archive)
    {
        archive.Records("stringArrays", properties.stringArrays, Counts::kBoth);
        archive.Records("intValues", properties.intValues, Counts::kBoth);
        archive.Records("floatValues", properties.floatValues, Counts::kBoth);
        archive.Records("vector3Values", properties.vector3Values, Counts::kBoth);
        archive.Records("vector4Values", properties.vector4Values, Counts::kBoth);
    }

    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override;
    bool Save(TEV2_FILE_WRITER& writer) const override;

    /// Seeks all values to a time in seconds. Neither the scene nor the node or object that has them does this.
    void SetTime(float time);
};

} // namespace TEV2_LOADER
