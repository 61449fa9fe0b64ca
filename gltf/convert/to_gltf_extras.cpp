#include "gltf/convert/to_gltf_extras.h"

#include "gltf/convert/to_gltf_tracks.h"

#include <set>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

class Extras
{
public:
    Extras(ToGltfContext& context, const std::string& where) : context_(context), where_(where) {}

    void Add(const TEV2_NAMED_STRING_ARRAY& texts)
    {
        Json values = Json::array();
        for (const TEV2_WIDE_STRING& text : texts.strings)
            values.push_back(ReadableText(text.Text()));
        Set(texts, values.size() == 1 ? values[0] : values);
    }

    template <typename Family>
    void Add(const TEV2_NAMED_ANIMATABLE<Family>& value)
    {
        const auto values = value.track ? ValuesOf<typename Family::Value>(*value.track)
                                        : std::span<const typename Family::Value>();
        if (values.empty())
            return context_.report.Add(Code::ExtrasLost, PlaceOf(value), "it has no value");
        if (!IsFinite(values[0]))
            return context_.report.Add(Code::ValueDropped, PlaceOf(value), "it is not a finite number");
        if (context_.options.at)
            return Set(value, ToJson(ValueAt(value.track, *context_.options.at, values[0])));
        if (Moves(value.track))
            context_.report.Add(Code::PropertyAnimationLost, PlaceOf(value),
                                "it moves; its first value is kept");
        Set(value, ToJson(values[0]));
    }

    Json Take() { return std::move(json_); }

private:
    std::string PlaceOf(const TEV2_ENTITY& property) const
    {
        return where_ + ", property \"" + Name(property) + '"';
    }

    void Set(const TEV2_ENTITY& property, Json value)
    {
        const std::string name = Name(property);
        if (!names_.insert(name).second)
            return context_.report.Add(Code::ExtrasLost, PlaceOf(property), "another one has this name");
        json_.get_ref<Json::object_t&>().push_back({name, std::move(value)}); // [] searches all members
    }

    ToGltfContext& context_;
    const std::string& where_;
    Json json_ = Json::object();
    std::set<std::string> names_; // of its members
};

} // namespace

Json ExtrasOf(ToGltfContext& context, const TEV2_EXTENDED_PROPERTIES& properties, const std::string& where)
{
    Extras extras(context, where);
    const auto add_all = [&](const auto& list)
    {
        for (const auto& property : list)
            extras.Add(property);
    };
    add_all(properties.stringArrays);
    add_all(properties.intValues);
    add_all(properties.floatValues);
    add_all(properties.vector3Values);
    add_all(properties.vector4Values);
    return extras.Take();
}

void SetExtras(ToGltfContext& context, Json& json, const TEV2_EXTENDED_PROPERTIES& properties,
               const std::string& where)
{
    Json extras = ExtrasOf(context, properties, where);
    if (!extras.empty())
        json["extras"] = std::move(extras);
}

} // namespace tev2_gltf
