#include "python/property.h"

#include "python/bindings.h"
#include "python/class.h"
#include "python/node.h"
#include "python/text.h"
#include "python/track.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

namespace
{

/// Calls visit(list) for the five lists of properties, in file order.
template <typename Record, typename Visit>
void VisitPropertyLists(Record& record, const Visit& visit)
{
    visit(record.stringArrays);
    visit(record.intValues);
    visit(record.floatValues);
    visit(record.vector3Values);
    visit(record.vector4Values);
}

py::object PropertyValue(const Properties&, const TEV2_NAMED_STRING_ARRAY& entry)
{
    py::list texts;
    for (const TEV2_WIDE_STRING& text : entry.strings)
        texts.append(Text(text));
    return texts;
}

template <typename Family>
py::object PropertyValue(const Properties& self, const TEV2_NAMED_ANIMATABLE<Family>& entry)
{
    return TrackOf(self.scene, self.keeper, entry.track.get());
}

/// Calls visit(entry) for each property, in file order.
template <typename Visit>
void VisitProperties(const Properties& self, const Visit& visit)
{
    VisitPropertyLists(self.record(),
                       [&](auto& list)
                       {
                           for (auto& entry : list)
                               visit(entry);
                       });
}

py::list PropertyNames(const Properties& self)
{
    py::list names;
    VisitProperties(self, [&](const auto& entry) { names.append(Text(entry.name)); });
    return names;
}

py::list PropertyValues(const Properties& self)
{
    py::list values;
    VisitProperties(self, [&](const auto& entry) { values.append(PropertyValue(self, entry)); });
    return values;
}

py::list PropertyItems(const Properties& self)
{
    py::list items;
    VisitProperties(self, [&](const auto& entry)
                    { items.append(py::make_tuple(Text(entry.name), PropertyValue(self, entry))); });
    return items;
}

std::size_t PropertyCount(const Properties& self)
{
    std::size_t count = 0;
    VisitPropertyLists(self.record(), [&](const auto& list) { count += list.size(); });
    return count;
}

/// The value of the first property of that name; null where there is none.
py::object FindProperty(const Properties& self, const py::str& name)
{
    py::object found;
    VisitProperties(self,
                    [&](const auto& entry)
                    {
                        if (!found && Same(Text(entry.name), name))
                            found = PropertyValue(self, entry);
                    });
    return found;
}

py::object GetProperty(const Properties& self, const py::str& name)
{
    py::object found = FindProperty(self, name);
    if (found)
        return found;
    PyErr_SetObject(PyExc_KeyError, name.ptr());
    throw py::error_already_set();
}

void Discard(Scene&, TEV2_NAMED_STRING_ARRAY&) {}

template <typename Family>
void Discard(Scene& scene, TEV2_NAMED_ANIMATABLE<Family>& entry)
{
    scene.Remove(std::move(entry.track));
}

/// Deletes the properties of a name but the first of the list to keep; returns how many there were.
std::size_t DeleteProperties(const Properties& self, const py::str& name, const void* list_to_keep = nullptr)
{
    std::size_t found = 0;
    VisitPropertyLists(self.record(),
                       [&](auto& list)
                       {
                           bool keep = &list == list_to_keep;
                           std::erase_if(list,
                                         [&](auto& entry)
                                         {
                                             if (!Same(Text(entry.name), name))
                                                 return false;
                                             ++found;
                                             if (std::exchange(keep, false))
                                                 return false;
                                             Discard(*self.scene, entry);
                                             return true;
                                         });
                       });
    return found;
}

/// The entry of a name in a list, made if need be. No other list has one of the name afterwards.
template <typename Entry>
Entry& EntryOf(const Properties& self, std::vector<Entry>& list, const py::str& name)
{
    Entry made;
    SetText(made.name, name, "name");
    DeleteProperties(self, name, &list);
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const Entry& entry) { return Same(Text(entry.name), name); });
    return found != list.end() ? *found : list.emplace_back(std::move(made));
}

void SetTexts(const Properties& self, const py::str& name, const py::tuple& texts)
{
    std::vector<TEV2_WIDE_STRING> made;
    for (const py::handle text : texts)
        SetText(made.emplace_back(), py::reinterpret_borrow<py::str>(text));
    EntryOf(self, self.record().stringArrays, name).strings = std::move(made);
}

template <typename Family>
using ValueList = std::vector<TEV2_NAMED_ANIMATABLE<Family>> TEV2_EXTENDED_PROPERTIES::*;

template <typename Family>
void SetValue(const Properties& self, ValueList<Family> list, const py::str& name, const py::object& value)
{
    std::unique_ptr<Family> made = TrackFrom<Family>(value); // first: it may run code that changes the scene
    SetTrack(*self.scene, EntryOf(self, self.record().*list, name).track, std::move(made));
}

bool AreTexts(const py::tuple& values)
{
    return std::all_of(values.begin(), values.end(),
                       [](py::handle text) { return py::isinstance<py::str>(text); });
}

/// The kind of track that a value of Python becomes.
std::uint32_t KindFor(const py::object& value)
{
    if (py::isinstance<Track>(value))
        return value.cast<const Track&>().keys->GetType();
    if (PyIndex_Check(value.ptr()) != 0 && !py::isinstance<py::sequence>(value))
        return kIntegerTrack;
    if (PyNumber_Check(value.ptr()) != 0 && !py::isinstance<py::sequence>(value))
        return kFloatTrack;
    return py::isinstance<py::sequence>(value) && py::len(value) == 4 ? kVector4Track : kVector3Track;
}

void SetProperty(const Properties& self, const py::str& name, const py::object& value)
{
    if (value.is_none())
        throw py::type_error("a property is a Track, a number, 3 or 4 numbers, a str or several, not None");
    if (py::isinstance<py::str>(value))
        return SetTexts(self, name, py::make_tuple(value));
    if (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value))
        if (const py::tuple values(value); AreTexts(values)) // a subclass may iterate otherwise another time
            return SetTexts(self, name, values);
    const std::uint32_t kind = KindFor(value);
    if (kind == kIntegerTrack)
        SetValue(self, &TEV2_EXTENDED_PROPERTIES::intValues, name, value);
    else if (kind == kFloatTrack)
        SetValue(self, &TEV2_EXTENDED_PROPERTIES::floatValues, name, value);
    else if (kind == kVector4Track)
        SetValue(self, &TEV2_EXTENDED_PROPERTIES::vector4Values, name, value);
    else
        SetValue(self, &TEV2_EXTENDED_PROPERTIES::vector3Values, name,
                 value); // which refuses all other kinds
}

} // namespace

void BindProperties(py::module_& module)
{
    auto type = NewClass<Properties>(module, "Properties",
                                     R"(The user's own properties of a node or an object, by name.

A property is a list of str or a Track of kind "integer", "float", "vector3" or "vector4". Set it to one of these, or to
a constant: a str, an int, a float, 3 or 4 numbers. They are in the order of the file: texts, integers, floats, vectors.
Where a file has a name several times, keys(), values() and items() have all of them, and the name gives the first.

>>> import tev2
>>> node = tev2.Scene().add_node("Hips")
>>> node.properties["Mass"] = 12.5
>>> node.properties["Tags"] = ["left", "heavy"]
>>> list(node.properties)
['Tags', 'Mass']
>>> node.properties["Mass"].values.tolist()
[12.5])");
    type.def("__len__", PropertyCount)
        .def("__iter__", [](const Properties& self) { return py::iter(PropertyNames(self)); })
        .def("__contains__",
             [](const Properties& self, const py::str& name) { return bool(FindProperty(self, name)); })
        .def("__contains__", [](const Properties&, const py::object&) { return false; })
        .def("__getitem__", GetProperty, py::arg("name"))
        .def("__setitem__", SetProperty, py::arg("name"), py::arg("value"))
        .def("__delitem__",
             [](const Properties& self, const py::str& name)
             {
                 GetProperty(self, name);
                 DeleteProperties(self, name);
             })
        .def(
            "get",
            [](const Properties& self, const py::str& name, const py::object& otherwise)
            {
                const py::object found = FindProperty(self, name);
                return found ? found : otherwise;
            },
            py::arg("name"), py::arg("default") = py::none(), "The value of a name, or the default.")
        .def("keys", PropertyNames, "All names, a list.")
        .def("values", PropertyValues, "All values, a list.")
        .def("items", PropertyItems, "Names with their values, a list of tuples.")
        .def("__repr__", [](const Properties& self)
             { return "<tev2.Properties " + std::string(py::repr(PropertyNames(self))) + ">"; });
}

} // namespace tev2_python
