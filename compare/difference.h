#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tev2_compare
{

/// How a thing of the right scene differs from that of the left one. Names are stable: scripts may rely on them.
enum class Change : std::uint8_t
{
    Missing,   ///< "missing": only the left scene has it
    Added,     ///< "added": only the right scene has it
    Renamed,   ///< "renamed"
    Moved,     ///< "moved": below another parent, or at another node
    Reordered, ///< "reordered": in another order in the file
    Retyped,   ///< "retyped": of another type
    Changed,   ///< "changed": another pose, value, text or number of elements
};

std::string_view NameOf(Change change);

enum class Unit : std::uint8_t
{
    Millimetres, ///< "mm"
    Degrees,     ///< "degrees"
    Percent,     ///< "percent", of the largest number
    Value,       ///< "value": not the same; there is no measure
};

std::string_view NameOf(Unit unit);

/// How far values are apart.
struct Deviation
{
    Unit unit = Unit::Percent;
    double worst = 0.0;    ///< may be infinite; 0 of values
    bool over_time = true; ///< whether the times are meant
    float worst_time = 0.0f;
    float first_time = 0.0f; ///< the first that was looked at beyond the tolerance
};

/// The difference between two numbers; 0 between NaN and NaN, infinite where only one is finite.
double Apart(double left, double right);

/// From when on two scenes count as different.
struct Tolerance
{
    double millimetres = 0.01;
    double degrees = 0.01;
    double percent = 0.01;

    double Of(Unit unit) const
    {
        return unit == Unit::Millimetres ? millimetres
               : unit == Unit::Degrees   ? degrees
               : unit == Unit::Percent   ? percent
                                         : 0.0;
    }
};

/// Collects one deviation, time by time.
class DeviationOverTime
{
public:
    explicit DeviationOverTime(Unit unit = Unit::Percent) { deviation_.unit = unit; }

    void Add(float time, double value, double tolerance);

    /// Whether one value was above its tolerance.
    bool Beyond() const { return beyond_; }

    const Deviation& Result() const { return deviation_; }

private:
    Deviation deviation_;
    bool beyond_ = false;
};

/// The parts of a comparison, in the order in which they are reported.
enum class Topic : std::uint8_t
{
    Rig,      ///< "rig": what there is
    Scene,    ///< "scene": time range, up axis, surroundings
    Motion,   ///< "motion": poses of nodes
    Property, ///< "property": values of user properties
    Camera,   ///< "camera": lenses and the switcher
    Object,   ///< "object": lights, meshes, materials and everything else
};

inline constexpr std::size_t kTopics = 6;

std::string_view NameOf(Topic topic);

/// What of an object a difference is about.
enum class Aspect : std::uint8_t
{
    Object,    ///< "object": the object as such, or for nodes their place in the tree
    Namespace, ///< "namespace": the part of names up to a colon
    Bone,      ///< "bone": a node that a skin follows
    Property,  ///< "property": a user property
    Field,     ///< "field"
    Pose,      ///< "pose": a node's own transform, seen from where the left scene has its parent
    WorldPose, ///< "world pose": where a node is in the world
};

std::string_view NameOf(Aspect aspect);

/// One difference between two scenes.
struct Difference
{
    Topic topic = Topic::Rig;
    Change change = Change::Changed;
    std::string object;                    ///< "node", "camera", "weighted mesh", "camera switcher"
    std::string name;                      ///< of the object, of several that of the first
    std::vector<std::string> more_names{}; ///< of the others of the list that changed in the same way
    Aspect aspect = Aspect::Object;
    std::string part{}; ///< the name of the property, the field or the bone; otherwise empty

    /// Nodes that it is about, one beside the other where both scenes have them.
    std::vector<std::uint32_t> left_nodes{};
    std::vector<std::uint32_t> right_nodes{};

    /// What each has: the parent of a node, a value, a type, a number of elements; may be empty. Nodes by their names,
    /// where these do not say which by their paths.
    std::string left{};
    std::string right{};

    /// The same as numbers, where they are numbers: a value in the units of the file, the ends of the time range.
    std::vector<double> left_numbers{};
    std::vector<double> right_numbers{};

    std::size_t below = 0;     ///< nodes below those that it is about and that go with them
    std::size_t animated = 0;  ///< nodes that the left scene moves, among all of these
    std::size_t differing = 0; ///< elements of an array that differ
    std::size_t elements = 0;  ///< of how many; 0: no array, or arrays of different lengths
    std::vector<Deviation> deviations{};
};

} // namespace tev2_compare
