#include "tev2_playback/clip.h"

#include "python/arrays.h"
#include "python/bindings.h"
#include "python/class.h"
#include "python/gil.h"
#include "python/load.h"
#include "python/matrices.h"
#include "python/scene.h"
#include "python/text.h"
#include "tev2_loader/file.h"
#include "tev2_playback/clip_file.h"
#include "tev2_playback/player.h"

#include <pybind11/numpy.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;
using namespace TEV2_PLAYBACK;

namespace
{

using Floats = py::array_t<float, py::array::c_style>;

/// Evaluations of nodes between two looks for ctrl-C, some 20 ms.
constexpr std::size_t kNodesBetweenLooks = 1'000'000;

Frame FrameOf(bool right_handed)
{
    return right_handed ? Frame::RightHandedYUp : Frame::AsStored;
}

std::vector<float> TimesOf(const py::object& times)
{
    return SampleTimes(NumbersFrom(times, "times", false));
}

/// A new array of this shape, or `out` where it fits.
Floats Output(const py::object& out, const std::vector<py::ssize_t>& shape)
{
    if (out.is_none())
        return Floats(shape);
    const bool fits = py::isinstance<Floats>(out);
    auto array = fits ? py::reinterpret_borrow<Floats>(out) : Floats();
    if (!fits || !array.writeable() ||
        !std::equal(shape.begin(), shape.end(), array.shape(), array.shape() + array.ndim()))
    {
        std::string text;
        for (const py::ssize_t size : shape)
            text += (text.empty() ? "" : ", ") + std::to_string(size);
        throw py::value_error("out is not a writable C-contiguous float32 array of the shape (" + text + ")");
    }
    return array;
}

/// Moves a player of its own to each time and calls step(player, row), without the GIL.
template <typename Step>
void AtEach(const Clip& clip, const std::vector<float>& times, Step step)
{
    const WithoutGil no_gil;
    Player player(clip);
    const std::size_t rows_between_looks = 1 + kNodesBetweenLooks / (1 + clip.NodeCount());
    for (std::size_t row = 0; row < times.size(); ++row)
    {
        if (row % rows_between_looks == rows_between_looks - 1)
        {
            const WithGil gil;
            if (PyErr_CheckSignals() != 0)
                throw py::error_already_set();
        }
        player.SetTime(times[row]);
        step(player, row);
    }
}

constexpr std::size_t kMatrix = 16;

TEV2_MATRIX_3X4 LocalMatrix(const Transform& local)
{
    TEV2_MATRIX_3X4 matrix = RigidMatrix(local.rotation, local.translation);
    for (auto& row : matrix.m)
    {
        row[0] *= local.scale.x;
        row[1] *= local.scale.y;
        row[2] *= local.scale.z;
    }
    return matrix;
}

Floats Sample(const Clip& clip, const py::object& when, bool world, const py::object& out)
{
    const std::vector<float> times = TimesOf(when);
    const std::size_t nodes = clip.NodeCount();
    Floats poses =
        Output(out, {static_cast<py::ssize_t>(times.size()), static_cast<py::ssize_t>(nodes), 4, 4});
    float* const to = poses.mutable_data();
    if (world)
    {
        AtEach(clip, times,
               [=](Player& player, std::size_t row)
               {
                   float* next = to + row * nodes * kMatrix;
                   for (const TEV2_MATRIX_3X4& matrix : player.World())
                   {
                       CopyMatrix(matrix, next);
                       next += kMatrix;
                   }
               });
        return poses;
    }
    std::vector<Transform> pose(nodes);
    AtEach(clip, times,
           [=, &pose](Player& player, std::size_t row)
           {
               player.Sample(pose);
               for (std::size_t node = 0; node < nodes; ++node)
                   CopyMatrix(LocalMatrix(pose[node]), to + (row * nodes + node) * kMatrix);
           });
    return poses;
}

/// A name as clips have it, from one of a scene: what is not a character is U+FFFD.
std::string ClipName(const py::str& name)
{
    const py::object units = name.attr("encode")("utf-16-le", "surrogatepass");
    return units.attr("decode")("utf-16-le", "replace").cast<std::string>();
}

std::size_t CameraOf(const Clip& clip, const py::object& camera)
{
    if (py::isinstance<py::str>(camera))
    {
        const int found = clip.FindCamera(ClipName(camera));
        if (found < 0)
            throw py::key_error("there is no camera " + std::string(py::repr(camera)));
        return static_cast<std::size_t>(found);
    }
    const py::ssize_t index = PyNumber_AsSsize_t(camera.ptr(), PyExc_IndexError); // or TypeError
    if (index == -1 && PyErr_Occurred() != nullptr)
        throw py::error_already_set();
    if (index < 0 || static_cast<std::size_t>(index) >= clip.CameraCount())
        throw py::index_error("camera " + std::to_string(index) + " of " +
                              std::to_string(clip.CameraCount()));
    return static_cast<std::size_t>(index);
}

py::dict SampleCamera(const Clip& clip, const py::object& which, const py::object& when)
{
    const std::size_t camera = CameraOf(clip, which);
    const std::vector<float> times = TimesOf(when);
    const auto rows = static_cast<py::ssize_t>(times.size());
    Floats world({rows, py::ssize_t{4}, py::ssize_t{4}});
    constexpr std::pair<const char*, float CameraView::*> kLens[] = {
        {"distance", &CameraView::distance},
        {"field_of_view", &CameraView::fieldOfView},
        {"near", &CameraView::nearPlane},
        {"far", &CameraView::farPlane},
        {"inverse_aspect", &CameraView::inverseAspect}};
    py::dict sampled;
    sampled["world"] = world;
    std::vector<float*> lens;
    for (const auto& [name, member] : kLens)
    {
        Floats values(rows);
        lens.push_back(values.mutable_data());
        sampled[name] = values;
    }
    AtEach(clip, times,
           [&, to = world.mutable_data()](Player& player, std::size_t row)
           {
               const CameraView view = player.Camera(camera);
               CopyMatrix(view.world, to + row * kMatrix);
               for (std::size_t i = 0; i < lens.size(); ++i)
                   lens[i][row] = view.*kLens[i].second;
           });
    return sampled;
}

py::array SampleActiveCamera(const Clip& clip, const py::object& when)
{
    const std::vector<float> times = TimesOf(when);
    py::array_t<std::int32_t> active(static_cast<py::ssize_t>(times.size()));
    AtEach(clip, times,
           [to = active.mutable_data()](Player& player, std::size_t row)
           { to[row] = player.ActiveCamera(); });
    return active;
}

/// Fills columns of a property with values of `components` numbers each.
template <typename Value, typename Number>
py::array SampleValues(const Clip& clip, Property<Value> property, const std::vector<float>& times)
{
    constexpr py::ssize_t kBytes = sizeof(Value);
    constexpr py::ssize_t kComponents = kBytes / py::ssize_t{sizeof(Number)};
    std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(times.size())};
    if constexpr (kComponents > 1)
        shape.push_back(kComponents);
    py::array_t<Number> values(shape);
    AtEach(clip, times,
           [=, to = values.mutable_data()](Player& player, std::size_t row)
           {
               const Value value = player.Value(property);
               std::memcpy(to + row * kComponents, &value, sizeof(value));
           });
    return values;
}

py::array SampleProperty(const Clip& clip, const std::string& owner, const std::string& name,
                         const py::object& when)
{
    const std::vector<float> times = TimesOf(when);
    const int node = clip.FindNode(owner);
    const int camera = clip.FindCamera(owner);
    for (const auto& [index, of] : {std::pair(node, &OfNode), std::pair(camera, &OfCamera)})
    {
        if (index < 0)
            continue;
        const Owner place = of(static_cast<std::size_t>(index));
        if (const auto whole = clip.FindProperty<std::int32_t>(place, name))
            return SampleValues<std::int32_t, std::int32_t>(clip, whole, times);
        if (const auto number = clip.FindProperty<float>(place, name))
            return SampleValues<float, float>(clip, number, times);
        if (const auto three = clip.FindProperty<TEV2_VECTOR_3>(place, name))
            return SampleValues<TEV2_VECTOR_3, float>(clip, three, times);
        if (const auto four = clip.FindProperty<TEV2_VECTOR_4>(place, name))
            return SampleValues<TEV2_VECTOR_4, float>(clip, four, times);
    }
    throw py::key_error("there is no property \"" + name + "\" with numbers at a node or camera \"" + owner +
                        "\"");
}

Clip LoadClipFile(const py::object& path, bool right_handed)
{
    const std::string name = PathText(path);
    const std::vector<std::uint8_t> image = ReadOrRaise(name);
    Clip clip;
    TEV2_LOAD_REPORT report;
    Status loaded;
    {
        const WithoutGil no_gil;
        const LoadClipOptions options = {.clip = {.frame = FrameOf(right_handed)}, .report = &report};
        loaded = LoadClipMemory(image.data(), image.size(), clip, options);
    }
    if (!loaded)
        RaiseNotLoaded(name, report);
    return clip;
}

template <typename Name>
py::list ListOf(std::size_t count, Name name)
{
    py::list names;
    for (std::size_t i = 0; i < count; ++i)
        names.append(py::str(std::string(name(i))));
    return names;
}

py::array_t<std::int32_t> ParentsOf(const Clip& clip)
{
    py::array_t<std::int32_t> parents(static_cast<py::ssize_t>(clip.NodeCount()));
    for (std::size_t node = 0; node < clip.NodeCount(); ++node)
        parents.mutable_at(node) = clip.Parent(node);
    return parents;
}

std::size_t ClipNode(const Clip& clip, const py::str& name)
{
    const int node = clip.FindNode(ClipName(name));
    if (node < 0)
        throw py::key_error("there is no node " + std::string(py::repr(name)));
    return static_cast<std::size_t>(node);
}

void BindSampling(py::class_<Clip>& clip)
{
    clip.def(
        "sample", Sample, py::arg("times"), py::kw_only(), py::arg("world") = true,
        py::arg("out") = py::none(),
        "Poses at times in seconds: a C-contiguous float32 array of the shape (times, nodes, 4, 4).\n\n"
        "Each matrix takes points of the node, as column vectors (x, y, z, 1), to the world or, with\n"
        "world=False, to its parent: rotation and scale in [:3, :3], the translation in [:3, 3], the last\n"
        "row (0, 0, 0, 1). Times are rounded to float32; those outside the clip hold its first and last "
        "keys.\n"
        "World poses are those of the C++ player, to the last bit.\n\n"
        "times: a number, or a list or array of them. Raises ValueError for NaN.\n"
        "out: the array to write to and return, in place of a new one.\n\n"
        "Other threads of Python run meanwhile, and may sample the same clip.");
    clip.def("sample_camera", SampleCamera, py::arg("camera"), py::arg("times"),
             "A camera over times, as a dict of float32 arrays: \"world\" (times, 4, 4), \"field_of_view\" "
             "across\n"
             "the width in radians, \"near\", \"far\" and \"distance\" in metres, \"inverse_aspect\".\n\n"
             "camera: its name or index. Raises KeyError or IndexError where there is none.");
    clip.def("sample_active_camera", SampleActiveCamera, py::arg("times"),
             "The index of the camera that the switcher shows at each time, -1 for none, as an int32 array.");
    clip.def("sample_property", SampleProperty, py::arg("owner"), py::arg("name"), py::arg("times"),
             "A user property of a node or camera over times: an array of int32 or float32, of the shape "
             "(times,)\n"
             "or (times, 3) or (times, 4). Raises KeyError where there is no such property with numbers.");
}

} // namespace

void BindClip(py::module_& module)
{
    auto clip =
        NewClass<Clip>(module, "Clip",
                       "What moves in a scene, laid out for playing. It never changes, so any number of "
                       "threads may sample it.\n\n"
                       "scene: not needed afterwards.\n"
                       "right_handed: deliver right-handed axes with +Y up, instead of those of the file.");
    clip.def(py::init([](const Scene& scene, bool right_handed)
                      { return Clip(scene.records, {.frame = FrameOf(right_handed)}); }),
             py::arg("scene"), py::kw_only(), py::arg("right_handed") = false);
    clip.def_property_readonly(
        "nodes",
        [](const Clip& self)
        { return ListOf(self.NodeCount(), [&](std::size_t i) { return self.NodeName(i); }); },
        "The names of the nodes, in the order of the arrays.");
    clip.def_property_readonly("parents", ParentsOf,
                               "The index of each node's parent, -1 at top level; int32.");
    clip.def_property_readonly(
        "cameras",
        [](const Clip& self)
        { return ListOf(self.CameraCount(), [&](std::size_t i) { return self.CameraName(i); }); },
        "The names of the cameras.");
    clip.def_property_readonly(
        "time_range",
        [](const Clip& self) { return std::pair(self.TimeRange().minimum, self.TimeRange().maximum); },
        "Start and end, in seconds.");
    clip.def("find_node", ClipNode, py::arg("name"),
             "The index of the first node of this name. Raises KeyError where there is none.");
    clip.def("__repr__",
             [](const Clip& self)
             {
                 return "<tev2.Clip, " + std::to_string(self.NodeCount()) + " nodes, " +
                        std::to_string(self.CameraCount()) + " cameras>";
             });
    BindSampling(clip);
    module.def("load_clip", LoadClipFile, py::arg("path"), py::kw_only(), py::arg("right_handed") = false,
               "Load the clip of a file without its scene, which is faster. Raises LoadError, as load does.");
}

} // namespace tev2_python
