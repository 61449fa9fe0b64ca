#pragma once

#include <pybind11/pybind11.h>

namespace tev2_python
{

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
