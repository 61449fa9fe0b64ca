#pragma once

#include <pybind11/pybind11.h>
#include <pybind11/stl.h> // here, so that no source casts lists differently

#include <string>

namespace tev2_python
{

/// The object, which is one of a class: not None, as a cast allows. Raises TypeError otherwise; `what` says the class.
template <typename Class>
pybind11::object Expected(pybind11::handle object, const char* what)
{
    if (!pybind11::isinstance<Class>(object))
        throw pybind11::type_error(std::string("expected ") + what + ", got " +
                                   std::string(pybind11::str(pybind11::type::of(object))));
    return pybind11::reinterpret_borrow<pybind11::object>(object);
}

// Each adds one concept to the module; module.cpp calls them in the order in which they need each other.
void BindTrack(pybind11::module_& module);
void BindProperties(pybind11::module_& module);
void BindNode(pybind11::module_& module);
void BindCamera(pybind11::module_& module);
void BindScene(pybind11::module_& module);
void BindLoad(pybind11::module_& module);
void BindClip(pybind11::module_& module);
void BindRecords(pybind11::module_& module);
void BindCheck(pybind11::module_& module);
void BindConvert(pybind11::module_& module);

} // namespace tev2_python
