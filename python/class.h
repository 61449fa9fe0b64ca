#pragma once

#include <pybind11/pybind11.h>

namespace tev2_python
{

/// The type of the module's classes. Only calling a class makes an object.
pybind11::handle MetaClass();

/// Lets `__new__` by itself, copy and pickle raise TypeError: what they make would hold no part of a scene.
void Seal(const pybind11::handle& type, const char* name);

/// A class of the module.
template <typename Class, typename... Options>
pybind11::class_<Class, Options...> NewClass(pybind11::module_& module, const char* name, const char* doc)
{
    pybind11::class_<Class, Options...> type(module, name, doc, pybind11::metaclass(MetaClass()));
    Seal(type, name);
    return type;
}

} // namespace tev2_python
