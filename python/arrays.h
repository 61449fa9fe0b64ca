#pragma once

#include <pybind11/numpy.h>

#include <vector>

namespace tev2_python
{

/// A read-only array over memory that `owner` keeps alive. Strides are in bytes.
inline pybind11::array ViewOf(const pybind11::dtype& type, std::vector<pybind11::ssize_t> shape,
                              std::vector<pybind11::ssize_t> strides, const void* data,
                              pybind11::handle owner)
{
    pybind11::array view(type, std::move(shape), std::move(strides), data, owner);
    view.attr("setflags")(pybind11::arg("write") = false);
    return view;
}

} // namespace tev2_python
