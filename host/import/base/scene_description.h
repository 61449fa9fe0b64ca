#pragma once

#include "host/math/affine.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What a scene file says, as models, takes and motion: what every reader makes of its bytes, and all that the host's
/// scene is built from. Nothing here depends on the SDK.

namespace mobu_host
{

inline constexpr std::uint32_t kNoModel = 0xFFFFFFFF;

/// Readers refuse models that are nested deeper, in every format: nothing that walks a scene then runs out of stack.
inline constexpr std::size_t kDeepestModel = 2000;

/// Readers refuse times further from 0, in seconds.
inline constexpr double kLongestTime = 1.0e6;

/// Red, green, blue.
struct Colour
{
    std::array<double, 3> parts{};
};

/// An item of an enumeration.
struct Choice
{
    int item = 0;
    std::vector<std::string> items;
};

/// A custom property. Three numbers are a vector; four numbers are a colour with alpha, the only kind of four numbers
/// that an export carries.
struct PropertyDescription
{
    using Value = std::variant<bool, int, double, std::string, std::array<double, 3>, std::array<double, 4>,
                               Colour, Choice>;

    std::string name;
    Value value;
    bool animatable = true;
};

/// A value of a property that every model or camera has, by its name in the SDK. Lengths are centimetres.
struct BuiltInValue
{
    const char* property;
    double value;
};

/// A camera that looks along its own -Z, +Y up. Lengths are centimetres, angles degrees.
struct LensDescription
{
    bool orthographic = false;     // has no angle of view
    double horizontal_angle = 0.0; // 0 where the file states none
    double aspect = 0.0;           // width / height; 0 where the file states none
    double near_plane = 0.0;       // 0 where the file states none
    double far_plane = 0.0;        // 0 where the file states none
};

enum class ModelKind : std::uint8_t
{
    Plain,
    Camera,       // looks along its own +X, +Y up
    SystemCamera, // one of those that every scene of the host has, by its name
    Switcher      // chooses the camera over time; the host has one
};

/// Centimetres, degrees, factors.
struct TransformParts
{
    Vector translation{}, rotation{}, scaling = kOnes;
};

/// A local transform in parts, as the host has it: scaling, post-rotation undone, rotation, pre-rotation, translation.
struct EulerTransform : TransformParts
{
    int rotation_order = 0;       // as of EulerTurn; 6 is spheric and counts as 0
    bool rotation_active = false; // whether rotation order, pre- and post-rotation count
    Vector pre_rotation{}, post_rotation{};
};

struct ModelDescription
{
    std::string name;                  // as its author gave it: may be empty or a duplicate
    std::uint32_t parent = kNoModel;   // comes before its children
    std::uint32_t interest = kNoModel; // what a ModelKind::Camera looks at
    ModelKind kind = ModelKind::Plain;
    bool has_geometry = false; // where a joint and the mesh on it share a name, the joint keeps it
    bool parts_are_whole =
        true; // else `rest` also has what `parts` cannot give: pivots, scale inherited in another way

    /// Local, in the file's axes, centimetres. Does not count where `parts` gives the whole transform.
    Affine rest;
    std::optional<LensDescription> lens; // of a camera whose kind is Plain

    /// For formats whose models are the host's: the model gets these parts, and keeps mirroring. Null elsewhere: the
    /// host makes its parts of `rest`.
    std::shared_ptr<const EulerTransform> parts;

    std::vector<BuiltInValue> values;
    std::vector<PropertyDescription> properties;
};

/// Local transform at a time in seconds, as `ModelDescription::rest`. Any finite time may be asked for, in any order;
/// it holds its own data, and is called from one thread.
using TransformOverTime = std::function<Affine(double seconds)>;

struct ModelMotion
{
    std::uint32_t model = 0;
    TransformOverTime transform;
};

/// Motion of a model whose parts are whole.
struct PartsMotion
{
    std::uint32_t model = 0;
    std::function<TransformParts(double seconds)> parts;
};

/// Moves a property that the model has by itself, in centimetres and degrees, or one of its custom properties.
struct PropertyMotion
{
    std::uint32_t model = 0;
    const char* built_in = nullptr; // its name in the SDK
    std::size_t custom = 0;         // where `built_in` is null: index in the model's `properties`
    std::function<double(double seconds, int component)> value;
};

/// Times at which something is keyed, seconds, ascending. Shared by all that is keyed at these times.
using KeyTimes = std::shared_ptr<const std::vector<double>>;

struct TakeDescription
{
    std::string name;   // may be empty or a duplicate
    double start = 0.0; // seconds
    double stop = 0.0;
    std::vector<ModelMotion> models; // at most one motion for a model, here or in `parts`
    std::vector<PartsMotion> parts;
    std::vector<PropertyMotion> properties; // of two for one property the later counts
    std::vector<KeyTimes> keys; // of all motions, each array once: a transport rate is chosen that meets them
};

/// Listed, not solved.
struct ConstraintDescription
{
    std::string name;
    std::string type;
    bool active = true;
};

struct SceneDescription
{
    /// Frames per second, where the file states it. Else the builder chooses the rate from the takes' keys and ends.
    std::optional<double> rate;

    /// From the file's axes to the host's, where +Y is up: applied in front of every model that has no parent and no
    /// parts.
    Affine axes;

    std::vector<ModelDescription> models; // parents before children, children in the file's order
    std::vector<std::uint32_t> cameras;   // the order in which a switcher counts; empty: that of the models
    std::vector<TakeDescription> takes;   // none: the scene gets "Take 001" from 0 to 0 s
    std::size_t current_take = 0;         // the last one where it is out of range
    bool takes_keep_ends = false;         // else takes are widened to whole frames
    std::vector<ConstraintDescription> constraints;
    std::vector<PropertyDescription> properties; // of the scene as a whole

    /// Other files that were read, as paths that can be opened: an export must not replace them.
    std::vector<std::string> source_files;
};

} // namespace mobu_host
