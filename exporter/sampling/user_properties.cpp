#include "exporter/sampling/user_properties.h"

#include "exporter/sampling/sampled_track.h"
#include "exporter/text.h"

#include <string>

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

template <typename Value>
Value Read(FBProperty& property)
{
    Value value{};
    property.GetData(&value, sizeof value);
    return value;
}

float Single(double value)
{
    return static_cast<float>(value);
}

TEV2_VECTOR_3 Vector3(FBVector3d value)
{
    return {Single(value[0]), Single(value[1]), Single(value[2])};
}

TEV2_VECTOR_4 Vector4(FBVector4d value)
{
    return {Single(value[0]), Single(value[1]), Single(value[2]), Single(value[3])};
}

// Hands the present value of an animatable kind of property to `take`, with the entry list that the kind
// belongs to. False for a kind that has no track.
template <typename Take>
bool VisitValue(TEV2_EXTENDED_PROPERTIES& block, FBProperty& property, Take&& take)
{
    switch (property.GetPropertyType())
    {
    case kFBPT_int:
        take(block.intValues, std::int32_t{Read<int>(property)});
        return true;
    case kFBPT_bool:
        take(block.intValues, std::int32_t{Read<bool>(property) ? 1 : 0});
        return true;
    case kFBPT_double:
        take(block.floatValues, Single(Read<double>(property)));
        return true;
    case kFBPT_Vector3D:
        take(block.vector3Values, Vector3(Read<FBVector3d>(property)));
        return true;
    case kFBPT_ColorRGB:
        take(block.vector3Values, Vector3(Read<FBColor>(property)));
        return true;
    case kFBPT_ColorRGBA:
        take(block.vector4Values, Vector4(Read<FBColorAndAlpha>(property)));
        return true;
    default:
        return false;
    }
}

void AddTexts(TEV2_EXTENDED_PROPERTIES& block, FBProperty& property)
{
    const FBPropertyType type = property.GetPropertyType();
    if (type != kFBPT_charptr && type != kFBPT_enum)
        return;

    TEV2_NAMED_STRING_ARRAY& texts = block.stringArrays.emplace_back();
    texts.name = WideText(property.GetName());
    if (type == kFBPT_charptr)
        texts.strings.push_back(WideText(Read<const char*>(property)));
    else
        for (int item = 0; const char* text = property.EnumList(item); ++item)
            texts.strings.push_back(WideText(text));
}

} // namespace

UserPropertySet CollectUserProperties(FBModel& model)
{
    UserPropertySet properties;
    const int count = model.PropertyList.GetCount();
    for (int i = 0; i < count; ++i)
        if (FBProperty* property = model.PropertyList[i]; property && property->IsUserProperty())
            properties.push_back(property);
    return properties;
}

void BuildExtendedProperties(TEV2_EXTENDED_PROPERTIES& block, const UserPropertySet& properties,
                             const SamplingRange& range, bool keep_positive_z)
{
    block = {};
    for (FBProperty* property : properties)
    {
        const bool flip = keep_positive_z && property->GetPropertyType() == kFBPT_Vector3D;
        const auto add_track = [&](auto& entries, auto value)
        {
            if constexpr (std::is_same_v<decltype(value), TEV2_VECTOR_3>)
                if (flip)
                    value = {-value.x, value.y, -value.z};
            auto& entry = entries.emplace_back();
            entry.name = WideText(property->GetName());
            MakeTrack(entry.track, range).Append(range.start, value);
        };
        if (!VisitValue(block, *property, add_track))
            AddTexts(block, *property);
    }
}

void SampleUserProperties(TEV2_EXTENDED_PROPERTIES& block, const UserPropertySet& properties, float time)
{
    std::size_t next_int = 0;
    std::size_t next_float = 0;
    std::size_t next_vector3 = 0;
    std::size_t next_vector4 = 0;
    const auto append = [&](auto& entries, const auto& value)
    {
        using Value = std::decay_t<decltype(value)>;
        std::size_t& next = std::is_same_v<Value, std::int32_t>    ? next_int
                            : std::is_same_v<Value, float>         ? next_float
                            : std::is_same_v<Value, TEV2_VECTOR_3> ? next_vector3
                                                                   : next_vector4;
        if (next < entries.size())
            Sampled(entries[next++].track).Append(time, value);
    };
    for (FBProperty* property : properties)
        VisitValue(block, *property, append);
}

} // namespace tev2_exporter
