#pragma once

/// Lights of the extension KHR_lights_punctual.

#include "gltf/document.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace gltf
{

enum class LightType : std::uint8_t
{
    Point,
    Directional,
    Spot
};

/// What the document does not state is absent. Lights shine along -Z of their node.
struct Light
{
    std::string_view name;
    LightType type = LightType::Point;
    std::optional<std::array<double, 3>> colour;  // linear
    std::optional<double> intensity;              // candela; of directional lights lux
    std::optional<double> range;                  // metres
    std::optional<double> inner_cone, outer_cone; // half angles, radians
    JsonValue json;
};

std::size_t LightCount(const Document& document);
Light LightAt(const Document& document, std::size_t index);
Place PlaceOfLight(const Document& document, std::size_t index);

/// The light of a node; nothing where it has none.
std::optional<std::size_t> LightOfNode(const Document& document, std::size_t node);

} // namespace gltf
