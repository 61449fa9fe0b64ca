#include "gltf/light.h"

namespace gltf
{
namespace
{

constexpr const char* kExtension = "KHR_lights_punctual";

JsonValue LightsOf(const Document& document)
{
    return document.Root()["extensions"][kExtension]["lights"];
}

LightType TypeIn(JsonValue json, const Place& place)
{
    const std::string_view type = json["type"].Text();
    if (type == "directional")
        return LightType::Directional;
    if (type == "spot")
        return LightType::Spot;
    if (type != "point")
        place.Fail("type", "is none of directional, point and spot");
    return LightType::Point;
}

} // namespace

std::size_t LightCount(const Document& document)
{
    return LightsOf(document).Size();
}

Place PlaceOfLight(const Document& document, std::size_t index)
{
    return {"lights", index, LightsOf(document)[index]["name"].Text()};
}

Light LightAt(const Document& document, std::size_t index)
{
    Light light;
    light.json = LightsOf(document)[index];
    light.name = light.json["name"].Text();
    const Place place = PlaceOfLight(document, index);
    light.type = TypeIn(light.json, place);
    std::array<double, 3> colour;
    if (ReadNumbersIn(light.json, "color", colour, place))
        light.colour = colour;
    light.intensity = NumberIn(light.json, "intensity", place);
    light.range = NumberIn(light.json, "range", place);
    light.inner_cone = NumberIn(light.json["spot"], "innerConeAngle", place);
    light.outer_cone = NumberIn(light.json["spot"], "outerConeAngle", place);
    return light;
}

std::optional<std::size_t> LightOfNode(const Document& document, std::size_t node)
{
    const JsonValue extension = document.Root()["nodes"][node]["extensions"][kExtension];
    return OptionalIndexIn(extension, "light", LightCount(document), document.PlaceOf("nodes", node));
}

} // namespace gltf
