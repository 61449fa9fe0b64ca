#pragma once

// What a scene file says, as models, takes and motion: what every reader makes of its bytes, apart from any host. Nothing
// here knows the SDK.

#include "host/import/affine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace mobu_host
{

inline constexpr std::uint32_t kNoParent = 0xFFFFFFFF;

// Readers refuse models that are nested deeper, in every format: nothing that walks a scene then runs out of stack.
inline constexpr std::size_t kDeepestModel = 2000;

// Readers refuse times further from 0 than this, in seconds.
inline constexpr double kLongestTime = 1.0e6;

// A custom property as the scene file states it. Four numbers are a colour with alpha, the one kind of four numbers that
// an export carries.
struct PropertyDescription
{
    using Value = std::variant<bool, int, double, std::string, std::array<double, 3>, std::array<double, 4>>;

    std::string name;
    Value value;
};

// Lengths are centimetres, angles degrees.
struct LensDescription
{
    bool orthographic = false;     // has no angle of view
    double horizontal_angle = 0.0; // 0 where the file states none
    double aspect = 0.0;           // width / height; 0 where the file states none
    double near_plane = 0.0;       // 0 where the file states none
    double far_plane = 0.0;        // 0 where the file states none
};

struct ModelDescription
{
    std::string name;                    // as its author gave it: may be empty, or another model's as well
    std::uint32_t parent = kNoParent;    // comes before its children
    bool has_geometry = false;           // where a joint and the mesh on it share a name, the joint keeps it
    Affine rest;                         // local, in the file's axes, centimetres
    std::optional<LensDescription> lens; // a camera looks along its own -Z, +Y up
    std::vector<PropertyDescription> properties;
};

// Local transform at a time in seconds, as `ModelDescription::rest`. Any finite time may be asked for, in any order; it
// holds its own data, and is asked from one thread.
using TransformOverTime = std::function<Affine(double seconds)>;

struct ModelMotion
{
    std::uint32_t model = 0;
    TransformOverTime transform;
};

enum class LensValue
{
    HorizontalAngle,
    NearPlane,
    FarPlane
};

struct LensMotion
{
    std::uint32_t model = 0;
    LensValue value = LensValue::HorizontalAngle;
    std::function<double(double seconds)> at; // in the unit of `LensDescription`
};

// Times at which something is keyed, seconds, ascending. Shared by all that is keyed at these times.
using KeyTimes = std::shared_ptr<const std::vector<double>>;

struct TakeDescription
{
    std::string name;   // may be empty, or another take's as well
    double start = 0.0; // seconds
    double stop = 0.0;
    std::vector<ModelMotion> models; // at most one for a model
    std::vector<LensMotion> lenses;  // at most one for a value of a lens
    std::vector<KeyTimes> keys; // of all motions, each array once: a transport rate is chosen that meets them
};

struct SceneDescription
{
    // Frames per second, where the file states it. Else the builder chooses the rate from the takes' keys and ends.
    std::optional<double> rate;

    // From the file's axes to the host's, where +Y is up: applied in front of every model without a parent.
    Affine axes;

    std::vector<ModelDescription> models;        // parents before children, children in the file's order
    std::vector<TakeDescription> takes;          // none: the scene gets "Take 001" from 0 to 0 s
    std::vector<PropertyDescription> properties; // of the scene as a whole

    // Other files that were read, as paths that can be opened: an export must not replace them.
    std::vector<std::string> source_files;
};

} // namespace mobu_host
