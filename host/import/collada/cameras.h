#pragma once

/// <camera> elements: lenses, and which of their numbers channels may move.

#include "host/import/base/scene_description.h"
#include "host/import/collada/xml_document.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace mobu_host::collada
{

enum class LensNumber : std::uint8_t
{
    HorizontalAngle, // degrees
    VerticalAngle,
    Aspect,    // width / height
    NearPlane, // in the file's unit, as the far plane
    FarPlane
};

inline constexpr std::size_t kLensNumbers = 5;

struct Camera
{
    bool orthographic = false;
    std::array<std::optional<double>, kLensNumbers> numbers;
    std::array<std::string_view, kLensNumbers> sids;

    /// The number with this sid or, where none has it, with this element name.
    std::optional<LensNumber> Find(std::string_view sid) const;

    /// False where an angle is stated that no lens has.
    bool HasPossibleAngles() const;

    LensDescription Lens(double centimetres) const;
};

Camera ReadCamera(const XmlDocument& document, Element camera);

} // namespace mobu_host::collada
