#include "host/import/collada/cameras.h"

#include "host/import/collada/numbers.h"
#include "numerics/trigonometry.h"

#include <cmath>
#include <numbers>

namespace mobu_host::collada
{
namespace
{

constexpr std::array<const char*, kLensNumbers> kElements{"xfov", "yfov", "aspect_ratio", "znear", "zfar"};
constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

double HalfTangent(double degrees)
{
    const auto [sine, cosine] = numerics::SineAndCosineOfDegrees(0.5 * degrees);
    return sine / cosine;
}

bool IsPossible(const std::optional<double>& degrees)
{
    return degrees && *degrees > 0.0 && *degrees < 180.0;
}

} // namespace

std::optional<LensNumber> Camera::Find(std::string_view sid) const
{
    std::optional<LensNumber> by_name;
    for (std::size_t i = 0; i < kLensNumbers; ++i)
    {
        if (numbers[i] && sids[i] == sid)
            return static_cast<LensNumber>(i);
        if (numbers[i] && kElements[i] == sid)
            by_name = static_cast<LensNumber>(i);
    }
    return by_name;
}

bool Camera::HasPossibleAngles() const
{
    return (!numbers[0] || IsPossible(numbers[0])) && (!numbers[1] || IsPossible(numbers[1]));
}

LensDescription Camera::Lens(double centimetres) const
{
    LensDescription lens;
    lens.orthographic = orthographic;
    const auto& [horizontal, vertical, aspect, near_plane, far_plane] = numbers;
    if (aspect && *aspect > 0.0)
        lens.aspect = *aspect;
    if (IsPossible(horizontal))
    {
        lens.horizontal_angle = *horizontal;
        if (lens.aspect <= 0.0 && IsPossible(vertical))
            lens.aspect = HalfTangent(*horizontal) / HalfTangent(*vertical);
    }
    else if (IsPossible(vertical))
    {
        if (lens.aspect <= 0.0)
            lens.aspect = 1.0; // as wide as high, where the file does not say
        lens.horizontal_angle = 2.0 * kDegreesPerRadian * std::atan(lens.aspect * HalfTangent(*vertical));
    }
    lens.near_plane = near_plane.value_or(0.0) * centimetres;
    lens.far_plane = far_plane.value_or(0.0) * centimetres;
    return lens;
}

Camera ReadCamera(const XmlDocument& document, Element element)
{
    const Element common = element.child("optics").child("technique_common");
    Camera camera;
    camera.orthographic = !common.child("perspective") && common.child("orthographic");
    const Element lens = common.child(camera.orthographic ? "orthographic" : "perspective");
    for (std::size_t i = 0; i < kLensNumbers; ++i)
    {
        const Element number = lens.child(kElements[i]);
        if (!number)
            continue;
        camera.numbers[i] = ReadNumber(document, number);
        camera.sids[i] = Attribute(number, "sid");
    }
    const Element width = lens.child("xmag"), height = lens.child("ymag");
    std::optional<double>& aspect = camera.numbers[static_cast<std::size_t>(LensNumber::Aspect)];
    if (camera.orthographic && !aspect && width && height)
    {
        const double ratio = ReadNumber(document, width) / ReadNumber(document, height);
        if (std::isfinite(ratio) && ratio > 0.0)
            aspect = ratio;
    }
    return camera;
}

} // namespace mobu_host::collada
