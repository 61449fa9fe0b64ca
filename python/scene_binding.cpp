#include "python/arrays.h"
#include "python/bindings.h"
#include "python/camera.h"
#include "python/class.h"
#include "python/matrices.h"
#include "python/remove.h"
#include "tev2_loader/file.h"
#include "tev2_loader/tracks/stepped_integer_track.h"
#include "tev2_loader/up_axis.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

namespace
{

using ScenePointer = std::shared_ptr<Scene>;

/// The nodes of a scene, as a sequence.
struct Nodes
{
    ScenePointer scene;

    std::size_t Count() const { return scene->records.matrixHierarchy.nodes.size(); }
};

py::object NodeOrNone(const ScenePointer& scene, const py::str& name)
{
    const auto& nodes = scene->records.matrixHierarchy.nodes;
    for (std::size_t index = 0; index < nodes.size(); ++index)
        if (Same(Text(nodes[index].name), name))
            return py::cast(Node(scene, index));
    return py::none();
}

py::list AllNodes(const Nodes& self)
{
    py::list nodes;
    for (std::size_t index = 0; index < self.Count(); ++index)
        nodes.append(Node(self.scene, index));
    return nodes;
}

py::object NodeOf(const Nodes& self, py::ssize_t index)
{
    const auto count = static_cast<py::ssize_t>(self.Count());
    if (index < -count || index >= count)
        throw py::index_error("node " + std::to_string(index) + " of " + std::to_string(count));
    return py::cast(Node(self.scene, static_cast<std::size_t>(index < 0 ? index + count : index)));
}

py::object NodeNamed(const Nodes& self, const py::str& name)
{
    py::object found = NodeOrNone(self.scene, name);
    if (!found.is_none())
        return found;
    PyErr_SetObject(PyExc_KeyError, name.ptr());
    throw py::error_already_set();
}

Node AddNode(const ScenePointer& scene, const py::str& name, const Node* parent,
             const py::object& translation, const py::object& rotation, const py::object& scale)
{
    TEV2_MATRIX_NODE made;
    SetText(made.name, name, "name");
    made.translation = TrackFrom<TEV2_ANIMATABLE_VECTOR_3>(translation);
    made.rotation = TrackFrom<TEV2_ANIMATABLE_QUATERNION>(rotation);
    made.scale = TrackFrom<TEV2_ANIMATABLE_VECTOR_3>(scale);
    made.parentIndex = static_cast<std::int32_t>(NodeIndex(*scene, parent)); // kNone is -1
    TEV2_MATRIX_HIERARCHY& hierarchy = scene->records.matrixHierarchy;
    hierarchy.nodes.push_back(std::move(made));
    hierarchy.LinkParents();
    scene->Changed();
    return {scene, hierarchy.nodes.size() - 1};
}

Camera AddCamera(const ScenePointer& scene, const py::str& name, const Node* node,
                 const py::object& field_of_view, const py::object& distance, const py::object& clip_range,
                 float inverse_aspect)
{
    auto made = std::make_unique<TEV2_CAMERA>();
    SetText(made->name, name, "name");
    made->fieldOfView = TrackFrom<TEV2_ANIMATABLE_FLOAT32>(field_of_view);
    made->distance = TrackFrom<TEV2_ANIMATABLE_FLOAT32>(distance);
    made->clipRange = TrackFrom<TEV2_ANIMATABLE_FLOAT32_RANGE>(clip_range);
    made->inverseAspect = inverse_aspect;
    made->value = NodeIndex(*scene, node);
    return {scene, *scene->records.cameras.emplace_back(std::move(made))};
}

/// Checks that something of a scene is used with that scene.
void CheckScene(const ScenePointer& scene, const ScenePointer& other)
{
    if (scene != other)
        throw py::value_error("it is of another scene");
}

py::list AllCameras(const ScenePointer& scene)
{
    py::list cameras;
    for (const auto& camera : scene->records.cameras)
        if (camera)
            cameras.append(Camera(scene, *camera));
    return cameras;
}

/// The scene's own keeper: what belongs to the scene itself is never taken out.
py::object Switcher(const ScenePointer& scene)
{
    return TrackOf(scene, nullptr, scene->records.cameraMan.cameraIndex.get());
}

py::list SwitcherCuts(const ScenePointer& scene)
{
    py::list cuts;
    const auto* const switcher =
        static_cast<const TEV2_ANIMATABLE_INT32_RLE*>(scene->records.cameraMan.cameraIndex.get());
    if (switcher == nullptr)
        return cuts;
    const auto& cameras = scene->records.cameras;
    for (std::size_t key = 0; key < std::min(switcher->m_times.size(), switcher->m_values.size()); ++key)
    {
        const auto camera = static_cast<std::size_t>(switcher->m_values[key]); // negative: beyond all
        cuts.append(py::make_tuple(switcher->m_times[key], camera < cameras.size() && cameras[camera]
                                                               ? py::cast(Camera(scene, *cameras[camera]))
                                                               : py::none()));
    }
    return cuts;
}

void SetSwitcher(const ScenePointer& scene, const py::object& track)
{
    SetTrack(*scene, scene->records.cameraMan.cameraIndex, TrackFrom<TEV2_ANIMATABLE_INT32>(track));
}

void SetSwitcherCuts(const ScenePointer& scene, const py::iterable& cuts)
{
    py::list times;
    py::list cameras;
    for (const py::handle cut : cuts)
    {
        const py::tuple pair(py::reinterpret_borrow<py::object>(cut));
        if (pair.size() != 2)
            throw py::type_error("a cut is a time and a Camera or None");
        times.append(pair[0]);
        std::int32_t index = -1;
        if (const py::object which = pair[1]; !which.is_none())
        {
            const auto& camera = Expected<Camera>(which, "a Camera or None").cast<const Camera&>();
            CheckScene(scene, camera.scene);
            index = static_cast<std::int32_t>(CameraIndex(camera));
        }
        cameras.append(index);
    }
    const py::object track = times.empty() ? py::none() : py::type::of<Track>()("integer", times, cameras);
    SetSwitcher(scene, track);
}

void SetTimeRange(const ScenePointer& scene, const std::pair<float, float>& range)
{
    const auto [start, end] = range;
    if (!std::isfinite(start) || !std::isfinite(end) || end < start)
        throw py::value_error("a time range is two finite times in seconds, the start not after the end");
    scene->records.environment.timeRange = {start, end};
    scene->Changed();
}

/// The lines "label:\ttext" of the information text.
py::dict InformationLines(const ScenePointer& scene)
{
    py::dict lines;
    for (const py::handle line : Text(scene->records.information.infoText).attr("splitlines")())
    {
        const py::tuple parts = line.attr("partition")(":\t");
        lines[parts[0]] = parts[2];
    }
    return lines;
}

void SetSceneTime(const ScenePointer& scene, float time)
{
    if (std::isnan(time))
        throw py::value_error("the time is NaN");
    scene->SetTime(time);
}

py::array_t<float> WorldMatrices(const ScenePointer& scene)
{
    const auto& nodes = scene->records.matrixHierarchy.nodes;
    scene->Evaluate();
    py::array_t<float> matrices({static_cast<py::ssize_t>(nodes.size()), py::ssize_t{4}, py::ssize_t{4}});
    float* out = matrices.mutable_data();
    for (const TEV2_MATRIX_NODE& node : nodes)
    {
        CopyMatrix(node.worldMatrix, out);
        out += 16;
    }
    return matrices;
}

py::list SaveScene(const ScenePointer& scene, const py::object& path)
{
    const std::string file = PathText(path);
    TEV2_SAVE_REPORT report;
    if (const Status saved = SaveFile(scene->records, file, &report); !saved)
    {
        const py::object type = py::module_::import("tev2._errors").attr("SaveError");
        const py::object error =
            type(PathTitle(file + ": " + saved.Reason()), PathTitle(file), PathTitle(saved.Reason()));
        PyErr_SetObject(type.ptr(), error.ptr());
        throw py::error_already_set();
    }
    py::list ignored;
    for (const std::string& object : report.ignored)
        ignored.append(PathTitle(object));
    return ignored;
}

void BindNodes(py::module_& module)
{
    NewClass<Nodes>(
        module, "Nodes",
        "The nodes of a scene, a sequence in which every parent comes before its children. Takes an\n"
        "index or a name: the first node of that name, or KeyError.")
        .def("__len__", &Nodes::Count)
        .def("__iter__", [](const Nodes& self) { return py::iter(AllNodes(self)); })
        .def("__getitem__", NodeOf, py::arg("index"))
        .def("__getitem__", NodeNamed, py::arg("name"))
        .def("__getitem__",
             [](const Nodes& self, const py::slice& slice) { return py::list(AllNodes(self)[slice]); })
        .def("__contains__",
             [](const Nodes& self, const py::str& name) { return !NodeOrNone(self.scene, name).is_none(); })
        .def("__contains__", [](const Nodes& self, const Node& node)
             { return node.scene == self.scene && node.keeper->InScene(); })
        .def("__contains__", [](const Nodes&, const py::object&) { return false; })
        .def("__repr__",
             [](const Nodes& self) { return "<tev2.Nodes, " + std::to_string(self.Count()) + " of them>"; });
}

using SceneClass = py::class_<Scene, ScenePointer>;

void DefineNodes(SceneClass& type)
{
    type.def_property_readonly(
            "nodes", [](const ScenePointer& scene) { return Nodes{scene}; },
            "All nodes: a sequence, see Nodes.")
        .def("find", NodeOrNone, py::arg("name"), "The first node of a name, or None.")
        .def("add_node", AddNode, py::arg("name"), py::arg("parent") = py::none(),
             py::arg("translation") = py::none(), py::arg("rotation") = py::none(),
             py::arg("scale") = py::none(),
             "Adds a node after all others and returns it. Tracks may be constants.")
        .def(
            "remove_node",
            [](const ScenePointer& scene, const Node& node)
            {
                CheckScene(scene, node.scene);
                RemoveNode(*scene, node.Index());
            },
            py::arg("node"),
            "Removes a node and all nodes below it. Other objects stay at their nodes. Raises ValueError, "
            "and removes\n"
            "nothing, if a camera, a mesh or another object is at one of them, or if the scene has objects "
            "of another\n"
            "layout, which may be.")
        .def("set_time", SetSceneTime, py::arg("time"),
             "Evaluates the scene at a time in seconds, clamped to the keys of each track.")
        .def_property_readonly("time", &Scene::Time,
                               "That of the last set_time; before it, the start of the time range.")
        .def_property_readonly(
            "world_matrices", WorldMatrices,
            "The transform of each node to the world at scene.time: float32 (nodes, 4, 4), a copy.\n"
            "Points are columns.");
}

void DefineCameras(SceneClass& type)
{
    type.def_property_readonly("cameras", AllCameras, "All cameras: a new list of them.")
        .def("add_camera", AddCamera, py::arg("name"), py::arg("node") = py::none(),
             py::arg("field_of_view") = py::none(), py::arg("distance") = py::none(),
             py::arg("clip_range") = py::none(), py::arg("inverse_aspect") = 0.5625f,
             "Adds a camera after all others and returns it. Tracks may be constants.")
        .def(
            "remove_camera",
            [](const ScenePointer& scene, const Camera& camera)
            {
                CheckScene(scene, camera.scene);
                RemoveCamera(*scene, CameraIndex(camera));
            },
            py::arg("camera"),
            "Removes a camera. Cuts to it become cuts to None. Raises ValueError, and removes nothing, if it "
            "has\n"
            "instances or if the scene has objects of another layout, which may refer to it.")
        .def_property(
            "switcher", Switcher, SetSwitcher,
            "The camera switcher: a Track of kind \"integer\" with places in scene.cameras, -1 for none, or "
            "None.\n"
            "A file may hold any numbers.")
        .def_property("cuts", SwitcherCuts, SetSwitcherCuts,
                      "The camera switcher as a list of (time, Camera or None). No cuts: no switcher.");
}

void DefineInformation(SceneClass& type)
{
    type.def_property(
            "time_range",
            [](const ScenePointer& scene)
            {
                const auto& range = scene->records.environment.timeRange;
                return std::make_pair(range.minimum, range.maximum);
            },
            SetTimeRange, "Start and end in seconds.")
        .def_property_readonly(
            "up_axis", [](const ScenePointer& scene) { return UpAxisName(UpAxis(scene->records)); },
            "The direction of the world that was up in the program that the scene was exported from: \"+Y\", "
            "\"+Z\",\n"
            "\"-Z\", or \"unknown\" where another program than the exporter made the file.")
        .def_property_readonly(
            "version", [](const ScenePointer& scene) { return scene->records.information.version; },
            "The version of the format of the file that was loaded. Files are saved in the newest.")
        .def_property(
            "creator", [](const ScenePointer& scene) { return Text(scene->records.information.creatorText); },
            [](const ScenePointer& scene, const py::str& text)
            { SetText(scene->records.information.creatorText, text, "creator text"); },
            "The program that made the scene.")
        .def_property(
            "information_text",
            [](const ScenePointer& scene) { return Text(scene->records.information.infoText); },
            [](const ScenePointer& scene, const py::str& text)
            { SetText(scene->records.information.infoText, text, "information text"); },
            "What the creator says about the scene, lines that end in \"\\r\\n\".")
        .def_property_readonly(
            "information", InformationLines,
            "The lines \"label:\\ttext\" of the information text: a new dict. The exporter writes the\n"
            "paths of the scene and the file, the user and the date.");
}

} // namespace

void BindScene(py::module_& module)
{
    SceneClass type = NewClass<Scene, ScenePointer>(
        module, "Scene", R"(A whole scene: nodes, cameras and everything else of a file.

>>> import tempfile, tev2
>>> scene = tev2.Scene()
>>> scene.time_range = (0, 1)
>>> hips = scene.add_node("Hips", translation=tev2.Track("vector3", [0, 1], [[0, 1, 0], [0, 1, 2]]))
>>> foot = scene.add_node("Foot", parent=hips, translation=(0, -1, 0))
>>> scene.set_time(0.5)
>>> foot.world_matrix[:3, 3].tolist()
[0.0, 0.0, 1.0]
>>> with tempfile.NamedTemporaryFile(suffix=".tv2") as file:
...     unsaved = scene.save(file.name)
...     print(tev2.load(file.name).nodes["Foot"].parent)
<tev2.Node 'Hips'>)");
    BindNodes(module);
    type.def(py::init<>(), "An empty scene.");
    DefineNodes(type);
    DefineCameras(type);
    DefineInformation(type);
    type.def("save", SaveScene, py::arg("path"),
             "Saves the scene: the file is complete, or as it was before. Raises SaveError with the "
             "reason.\n\n"
             "Returns the objects whose changes the file does not have, because they are kept as the bytes "
             "of another\n"
             "layout: a list of str.")
        .def("__repr__",
             [](const ScenePointer& scene)
             {
                 return "<tev2.Scene, " + std::to_string(scene->records.matrixHierarchy.nodes.size()) +
                        " nodes, " + std::to_string(scene->records.cameras.size()) + " cameras>";
             });
}

} // namespace tev2_python
