#include "python/track.h"

#include "python/arrays.h"
#include "python/bindings.h"
#include "python/class.h"
#include "python/gil.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

namespace
{

// By number.
constexpr auto kKindNames = std::to_array({"float", "range", "colour", "vector3", "vector2", "lerp", "slerp",
                                           "rectangle", "integer", "vector4", "binormal_tangent", "box"});
static_assert(kKindNames.size() == std::size(kTrackKinds));

template <typename Value>
constexpr std::size_t kWidth = 1;
template <ComponentValue Value>
constexpr std::size_t kWidth<Value> = std::tuple_size_v<decltype(std::declval<Value&>().Components())>;

template <typename Value>
using ComponentOf = std::conditional_t<std::is_same_v<Value, std::int32_t>, std::int32_t, float>;

/// The components of a value, which lie side by side.
template <typename Value>
const ComponentOf<Value>* ComponentsOf(const Value& value)
{
    if constexpr (ComponentValue<Value>)
        return &std::get<0>(value.Components());
    else
        return &value;
}

template <typename Value>
ComponentOf<Value>* ComponentsOf(Value& value)
{
    return const_cast<ComponentOf<Value>*>(ComponentsOf(std::as_const(value)));
}

/// (n,) of numbers, (n, components) of everything else.
template <typename Value>
std::vector<py::ssize_t> ShapeOf(std::size_t count)
{
    std::vector<py::ssize_t> shape = {static_cast<py::ssize_t>(count)};
    if (kWidth < Value >> 1)
        shape.push_back(kWidth<Value>);
    return shape;
}

template <typename Value>
py::array ArrayOf(std::span<const Value> values, py::handle owner)
{
    using Component = ComponentOf<Value>;
    std::vector<py::ssize_t> strides = {sizeof(Value)};
    if (kWidth < Value >> 1)
        strides.push_back(sizeof(Component));
    const void* const data = values.empty() ? nullptr : ComponentsOf(values[0]);
    return ViewOf(py::dtype::of<Component>(), ShapeOf<Value>(values.size()), std::move(strides), data, owner);
}

template <typename Component>
Component Narrowed(double number, const char* what, std::size_t row)
{
    constexpr auto most = static_cast<double>(std::numeric_limits<Component>::max());
    if (!(number >= static_cast<double>(std::numeric_limits<Component>::lowest()) && number <= most))
        throw py::value_error(
            std::string(what) + "[" + std::to_string(row) + "]: " + std::string(py::str(py::float_(number))) +
            (std::is_integral_v<Component> ? " is not a 32-bit integer" : " is not a finite 32-bit number"));
    return static_cast<Component>(number);
}

std::vector<float> TimesFrom(py::handle object)
{
    const Numbers numbers = NumbersFrom(object, "times", false);
    if (numbers.ndim() != 1 || numbers.size() == 0)
        throw py::value_error("times: expected the shape (n,) with at least one key, got " +
                              std::string(py::str(numbers.attr("shape"))));
    std::vector<float> times;
    times.reserve(static_cast<std::size_t>(numbers.size()));
    for (py::ssize_t key = 0; key < numbers.size(); ++key)
    {
        const auto row = static_cast<std::size_t>(key);
        times.push_back(Narrowed<float>(numbers.data()[key], "times", row));
        if (key > 0 && times[row] < times[row - 1])
            throw py::value_error("times: key " + std::to_string(key) + " is before the one before it");
    }
    return times;
}

template <typename Value>
std::vector<Value> ValuesFrom(py::handle object, std::size_t count)
{
    using Component = ComponentOf<Value>;
    const Numbers numbers = NumbersFrom(object, "values", std::is_integral_v<Component>);
    const std::vector<py::ssize_t> shape = ShapeOf<Value>(count);
    if (!std::equal(shape.begin(), shape.end(), numbers.shape(), numbers.shape() + numbers.ndim()))
        throw py::value_error("values: expected the shape " +
                              std::string(py::str(py::tuple(py::cast(shape)))) + ", got " +
                              std::string(py::str(numbers.attr("shape"))));
    std::vector<Value> values(count);
    const double* number = numbers.data();
    for (std::size_t row = 0; row < count; ++row)
        for (std::size_t component = 0; component < kWidth<Value>; ++component)
            ComponentsOf(values[row])[component] = Narrowed<Component>(*number++, "values", row);
    return values;
}

/// An empty track of a kind, as its class.
template <typename Make>
std::unique_ptr<TEV2_ANIMATABLE> MakeTrack(std::uint32_t kind, const Make& make)
{
    std::unique_ptr<TEV2_ANIMATABLE> made;
    const auto try_class = [&]<typename Class>(const Class*)
    {
        if (Class::kType != kind)
            return;
        auto track = std::make_unique<Class>();
        make(*track);
        made = std::move(track);
    };
    [&]<typename... Classes>(TEV2_CLASSES<TEV2_ANIMATABLE, Classes...>)
    { (try_class(static_cast<const Classes*>(nullptr)), ...); }(AllTracks());
    return made;
}

Track Owned(std::unique_ptr<TEV2_ANIMATABLE> made)
{
    const std::shared_ptr<TEV2_ANIMATABLE> owner = std::move(made);
    return {owner, owner.get()};
}

std::uint32_t KindNamed(const std::string& name)
{
    const auto found = std::find(kKindNames.begin(), kKindNames.end(), name);
    if (found != kKindNames.end())
        return static_cast<std::uint32_t>(found - kKindNames.begin());
    std::string known;
    for (const char* const kind : kKindNames)
        known += (known.empty() ? "" : ", ") + std::string(kind);
    throw py::value_error("no kind of tracks is called '" + name + "'; there are " + known);
}

Track NewTrack(const std::string& kind, const py::object& times, const py::object& values)
{
    return Owned(MakeTrack(KindNamed(kind),
                           [&](auto& track)
                           {
                               using Value = typename std::remove_reference_t<decltype(track)>::Value;
                               track.m_times = TimesFrom(times);
                               track.m_values = ValuesFrom<Value>(values, track.m_times.size());
                           }));
}

template <typename Class>
py::array Sampled(Class& track, const std::vector<float>& times)
{
    using Value = typename Class::Value;
    py::array_t<ComponentOf<Value>> samples(ShapeOf<Value>(times.size()));
    ComponentOf<Value>* out = samples.mutable_data();
    const WithoutGil no_gil;
    for (const float time : times)
    {
        track.SetTime(time);
        const Value value = track.GetValue();
        out = std::copy_n(ComponentsOf(value), kWidth<Value>, out);
    }
    return samples;
}

/// The values at times: one for a number, otherwise a row for each.
py::object SampleTrack(const Track& self, const py::object& times)
{
    const Numbers numbers = NumbersFrom(times, "times", false);
    const std::vector<float> seconds = SampleTimes(numbers);
    const std::unique_ptr<TEV2_ANIMATABLE> copy = self.keys->Clone(); // the cursor of the scene's own stays
    copy->m_current_key = 0;
    copy->m_fraction = 0.0f;
    py::object samples;
    AllTracks::VisitAs(*copy, [&](auto& track) { samples = Sampled(track, seconds); });
    return numbers.ndim() == 0 ? py::object(samples[py::int_(0)]) : samples;
}

py::object KeyTimes(const py::object& self)
{
    const std::vector<float>& times = self.cast<const Track&>().keys->m_times;
    return ArrayOf(std::span<const float>(times), self);
}

py::object KeyValues(const py::object& self)
{
    py::object array;
    VisitKeys(*self.cast<const Track&>().keys,
              [&](std::span<const float>, auto values) { array = ArrayOf(values, self); });
    return array;
}

} // namespace

const char* KindName(std::uint32_t kind)
{
    return kKindNames[kind];
}

std::unique_ptr<TEV2_ANIMATABLE> Constant(std::uint32_t kind, py::handle value)
{
    const py::list row(1);
    row[0] = value;
    return MakeTrack(kind,
                     [&](auto& track)
                     {
                         using Value = typename std::remove_reference_t<decltype(track)>::Value;
                         track.Append(0.0f, ValuesFrom<Value>(row, 1)[0]);
                     });
}

void BindTrack(py::module_& module)
{
    NewClass<Track>(module, "Track",
                    R"(An animated value: key times in seconds, and a value at each.

A track never changes: to change a scene, put another track, or a constant, in its place. The arrays of a track that
comes from a scene are read-only views of the scene's memory, and keep it alive.

Kinds, and the shape of their values: "float" and "integer" (n,), "range" and "vector2" (n, 2), "vector3" (n, 3),
"vector4", "colour", "rectangle" and the rotations "slerp" and "lerp" (n, 4), "box" and "binormal_tangent" (n, 6).
Rotations are quaternions x, y, z, w. Values between keys are interpolated; integers hold until the next key.

>>> import tev2
>>> walk = tev2.Track("vector3", times=[0, 1], values=[[0, 1, 0], [0, 1, 2]])
>>> walk.sample(0.25).tolist()
[0.0, 1.0, 0.5])")
        .def(py::init(&NewTrack), py::arg("kind"), py::arg("times"), py::arg("values"),
             "Makes a track from ascending times in seconds and a value for each.\n\n"
             "Raises ValueError for times that descend, numbers that are not finite or do not fit 32 bits, "
             "shapes that\n"
             "do not match and unknown kinds, TypeError for anything but numbers.")
        .def_property_readonly(
            "kind", [](const Track& self) { return KindName(self.keys->GetType()); },
            "The kind: \"vector3\".")
        .def_property_readonly("times", &KeyTimes, "Key times in seconds: float32 (n,), read-only.")
        .def_property_readonly(
            "values", &KeyValues,
            "Values: float32 or int32, (n,) or (n, components), read-only. A damaged file may have\n"
            "more or fewer of them than times. One value is a constant.")
        .def("__len__", [](const Track& self) { return self.keys->m_times.size(); })
        .def("sample", &SampleTrack, py::arg("times"),
             "The values at times in seconds: one value for a number, a row for each of an array of times.\n"
             "Before the first key and after the last one it is theirs.")
        .def(
            "__eq__", [](const Track& self, const Track& other) { return self.keys->IsEqual(*other.keys); },
            py::is_operator(), "Same kind, times and values.")
        .def("__repr__",
             [](const Track& self)
             {
                 const std::size_t keys = self.keys->m_times.size();
                 return "<tev2.Track " + std::string(KindName(self.keys->GetType())) + ", " +
                        std::to_string(keys) + (keys == 1 ? " key>" : " keys>");
             });
}

py::object TrackOf(const std::shared_ptr<Scene>& scene, const std::shared_ptr<Keeper>& keeper,
                   const TEV2_ANIMATABLE* track)
{
    if (track == nullptr)
        return py::none();
    // The track may be replaced, the record taken out, and the scene dropped.
    using Owners = std::array<std::shared_ptr<const void>, 3>;
    return py::cast(Track{std::make_shared<Owners>(Owners{scene, keeper, scene->KeeperOf(track)}), track});
}

} // namespace tev2_python
