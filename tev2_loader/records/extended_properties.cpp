#include "tev2_loader/records/extended_properties.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

bool TEV2_NAMED_STRING_ARRAY::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_NAMED_STRING_ARRAY::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

template <typename Family>
bool TEV2_NAMED_ANIMATABLE<Family>::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

template <typename Family>
bool TEV2_NAMED_ANIMATABLE<Family>::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

template class TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_INT32>;
template class TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_FLOAT32>;
template class TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_VECTOR_3>;
template class TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_VECTOR_4>;

bool TEV2_EXTENDED_PROPERTIES::Load(TEV2_MEMORY_CURSOR& cursor, float version)
{
    return LoadFields(*this, cursor, version);
}

bool TEV2_EXTENDED_PROPERTIES::Save(TEV2_FILE_WRITER& writer) const
{
    return SaveFields(*this, writer);
}

void TEV2_EXTENDED_PROPERTIES::SetTime(float time)
{
    const auto move = [time](auto& values)
    {
        for (auto& value : values)
            value.SetTime(time);
    };
    move(intValues);
    move(floatValues);
    move(vector3Values);
    move(vector4Values);
}

} // namespace TEV2_LOADER
