#include "exporter/sampling/user_properties.h"

#include "exporter/base/text.h"

#include <map>
#include <type_traits>

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

std::int32_t ReadInteger(FBProperty& property)
{
    return Read<int>(property);
}

std::int32_t ReadBoolean(FBProperty& property)
{
    return Read<bool>(property) ? 1 : 0;
}

float ReadNumber(FBProperty& property)
{
    return static_cast<float>(Read<double>(property));
}

template <typename Source>
TEV2_VECTOR_3 ReadVector3(FBProperty& property)
{
    FBVector3d value = Read<Source>(property);
    return {static_cast<float>(value[0]), static_cast<float>(value[1]), static_cast<float>(value[2])};
}

TEV2_VECTOR_4 ReadVector4(FBProperty& property)
{
    FBVector4d value = Read<FBColorAndAlpha>(property);
    return {static_cast<float>(value[0]), static_cast<float>(value[1]), static_cast<float>(value[2]),
            static_cast<float>(value[3])};
}

/// Calls `visit` with the entry list and the reader of a property type. False for a type that has no track.
template <typename Visit>
bool VisitKind(TEV2_EXTENDED_PROPERTIES& block, FBPropertyType type, Visit&& visit)
{
    switch (type)
    {
    case kFBPT_int:
        visit(block.intValues, ReadInteger);
        return true;
    case kFBPT_bool:
        visit(block.intValues, ReadBoolean);
        return true;
    case kFBPT_double:
        visit(block.floatValues, ReadNumber);
        return true;
    case kFBPT_Vector3D:
        visit(block.vector3Values, ReadVector3<FBVector3d>);
        return true;
    case kFBPT_ColorRGB:
        visit(block.vector3Values, ReadVector3<FBColor>);
        return true;
    case kFBPT_ColorRGBA:
        visit(block.vector4Values, ReadVector4);
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
        const FBPropertyType type = property->GetPropertyType();
        const bool flip = keep_positive_z && type == kFBPT_Vector3D;
        const auto add_track = [&](auto& entries, auto read)
        {
            auto value = read(*property);
            if constexpr (std::is_same_v<decltype(value), TEV2_VECTOR_3>)
            {
                if (flip)
                    value = {-value.x, value.y, -value.z};
            }
            auto& entry = entries.emplace_back();
            entry.name = WideText(property->GetName());
            MakeTrack(entry.track, range).Append(range.start, value);
        };
        if (!VisitKind(block, type, add_track))
            AddTexts(block, *property);
    }
}

void BindProperties(TEV2_EXTENDED_PROPERTIES& block, const UserPropertySet& properties,
                    std::vector<PropertyBinding>& bindings)
{
    std::map<const void*, std::size_t> bound; // entries of each list
    for (FBProperty* property : properties)
    {
        const auto bind = [&](auto& entries, auto read)
        {
            const std::size_t next = bound[&entries]++;
            if (next < entries.size())
            {
                auto& owner = entries[next].track;
                using Family = typename std::decay_t<decltype(owner)>::element_type;
                bindings.push_back(TrackBinding<Family>{property, read, &SampledIn(owner)});
            }
        };
        VisitKind(block, property->GetPropertyType(), bind);
    }
}

void SampleProperties(const std::vector<PropertyBinding>& bindings, float time)
{
    for (const PropertyBinding& binding : bindings)
        std::visit([time](const auto& typed) { typed.Sample(time); }, binding);
}

} // namespace tev2_exporter
