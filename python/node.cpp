#include "python/node.h"

#include "python/arrays.h"
#include "python/bindings.h"
#include "python/class.h"
#include "python/matrices.h"
#include "python/part.h"

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

TEV2_MATRIX_NODE& Node::Record() const
{
    return keeper->InScene() ? scene->records.matrixHierarchy.nodes[keeper->index]
                             : *static_cast<TEV2_MATRIX_NODE*>(keeper->removed.get());
}

std::size_t Node::Index() const
{
    if (!keeper->InScene())
    {
        const std::string reason = "node " + Quoted(Text(Record().name)) + " was removed from its scene";
        PyErr_SetString(PyExc_ReferenceError, reason.c_str());
        throw py::error_already_set();
    }
    return keeper->index;
}

py::object NodeAt(const std::shared_ptr<Scene>& scene, std::uint32_t index)
{
    return index < scene->records.matrixHierarchy.nodes.size() ? py::cast(Node(scene, index)) : py::none();
}

std::uint32_t NodeIndex(const Scene& scene, const Node* node)
{
    if (node == nullptr)
        return kNone;
    if (node->scene.get() != &scene)
        throw py::value_error("node " + Quoted(Text(node->Record().name)) + " is of another scene");
    return static_cast<std::uint32_t>(node->Index());
}

std::string Quoted(const py::str& name)
{
    return py::repr(name);
}

namespace
{

py::object Parent(const Node& self)
{
    return NodeAt(self.scene, static_cast<std::uint32_t>(self.Record().parentIndex)); // negative: beyond all
}

void SetParent(const Node& self, const Node* parent)
{
    const std::uint32_t index = NodeIndex(*self.scene, parent);
    if (index != kNone && index >= self.Index())
        throw py::value_error("node " + Quoted(Text(self.Record().name)) + " is not after its new parent " +
                              Quoted(Text(parent->Record().name)) + " in the list of nodes");
    self.Record().parentIndex = static_cast<std::int32_t>(index); // kNone is -1
    self.scene->records.matrixHierarchy.LinkParents();
    self.scene->Changed();
}

py::list Children(const Node& self)
{
    py::list children;
    const auto index = static_cast<std::int32_t>(self.Index());
    const auto& nodes = self.scene->records.matrixHierarchy.nodes;
    for (std::size_t child = 0; child < nodes.size(); ++child)
        if (nodes[child].parentIndex == index)
            children.append(Node(self.scene, child));
    return children;
}

py::object WorldMatrix(const Node& self)
{
    const std::size_t index = self.Index();
    self.scene->Evaluate();
    const auto& nodes = self.scene->records.matrixHierarchy.nodes;
    py::array_t<float> matrix({4, 4});
    CopyMatrix(nodes[index].worldMatrix, matrix.mutable_data());
    return matrix;
}

} // namespace

void BindNode(py::module_& module)
{
    auto type = NewClass<Node>(module, "Node",
                               R"(A joint of the skeleton: a transform relative to its parent, over time.

Tracks may be set to a Track, to a constant or to None. A node that was removed from its scene keeps what it had.)");
    DefineNamed(type, "Node");
    DefineProperties(type);
    DefineTrack(type, "translation", &TEV2_MATRIX_NODE::translation,
                "Relative to the parent, metres: a Track of kind \"vector3\", or None.");
    DefineTrack(
        type, "rotation", &TEV2_MATRIX_NODE::rotation,
        "Relative to the parent, quaternions x, y, z, w: a Track of kind \"slerp\" or \"lerp\", or None.");
    DefineTrack(
        type, "scale", &TEV2_MATRIX_NODE::scale,
        "Along the node's own axes, applied before the rotation: a Track of kind \"vector3\", or None.");
    type.def_property_readonly("index", &Node::Index,
                               "The place in scene.nodes. Raises ReferenceError once the node was removed.")
        .def_property(
            "parent", Parent, SetParent,
            "The parent, or None at top level. A parent comes before its children: setting another one\n"
            "raises ValueError.")
        .def_property_readonly("children", Children, "The nodes whose parent this is: a list.")
        .def_property(
            "user_text", [](const Node& self) { return Text(self.Record().userText); },
            [](const Node& self, const py::str& text) { SetText(self.Record().userText, text, "user text"); },
            "A text for whatever the user wants.")
        .def_property_readonly(
            "world_matrix", WorldMatrix,
            "The transform to the world at scene.time: float32 (4, 4), a copy. Points are columns.")
        .def_property_readonly(
            "scene", [](const Node& self) { return self.scene; }, "The scene of the node.");
}

} // namespace tev2_python
