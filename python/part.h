#pragma once

#include "python/node.h"
#include "python/property.h"
#include "python/scene.h"
#include "python/text.h"
#include "python/track.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace tev2_python
{

/// A reference to a record that its scene owns through a pointer: a camera, a light, a mesh.
template <typename RecordType>
struct Part
{
    std::shared_ptr<Scene> scene;
    std::shared_ptr<Keeper> keeper;
    RecordType* record;

    Part(std::shared_ptr<Scene> the_scene, RecordType& the_record)
        : scene(std::move(the_scene)), keeper(scene->KeeperOf(&the_record)), record(&the_record)
    {
    }

    RecordType& Record() const { return *record; }

    bool operator==(const Part& other) const { return record == other.record; }
};

/// Properties of everything that has a name: name, equality, hash and repr. Handle is Node or a Part.
template <typename Handle, typename... Options>
void DefineNamed(pybind11::class_<Handle, Options...>& type, const char* title)
{
    namespace py = pybind11;
    type.def_property(
            "name", [](const Handle& self) { return Text(self.Record().name); },
            [](const Handle& self, const py::str& name) { SetText(self.Record().name, name, "name"); },
            "The name. Code units that are no text, unpaired surrogates of UTF-16, are surrogates of the "
            "str, too.")
        .def(
            "__eq__", [](const Handle& self, const Handle& other) { return self == other; },
            py::is_operator())
        .def("__hash__", [](const Handle& self) { return std::hash<const void*>()(self.keeper.get()); })
        .def("__repr__", [title](const Handle& self)
             { return std::string("<tev2.") + title + " " + Quoted(Text(self.Record().name)) + ">"; });
}

/// Property `properties`.
template <typename Handle, typename... Options>
void DefineProperties(pybind11::class_<Handle, Options...>& type)
{
    type.def_property_readonly(
        "properties",
        [](const Handle& self)
        {
            const auto find = [self]() -> decltype(self.Record().properties)&
            { return self.Record().properties; };
            return Properties{self.scene, self.keeper, find};
        },
        "The user's own properties: Properties.");
}

/// Properties of every object that is placed at a node: DefineNamed, node, bounds, properties.
template <typename Record, typename... Options>
void DefinePlaced(pybind11::class_<Part<Record>, Options...>& type, const char* title)
{
    namespace py = pybind11;
    using Handle = Part<Record>;
    DefineNamed(type, title);
    DefineProperties(type);
    DefineTrack(type, "bounds", &Record::bounds,
                "A box around the object in the axes of its node, metres: minimum x, y, z, maximum\n"
                "x, y, z. A Track of kind \"box\", or None.");
    type.def_property(
        "node", [](const Handle& self) { return NodeAt(self.scene, self.Record().value); },
        [](const Handle& self, const Node* node) { self.Record().value = NodeIndex(*self.scene, node); },
        "The Node that places the object, or None: it is placed in the world.");
}

} // namespace tev2_python
