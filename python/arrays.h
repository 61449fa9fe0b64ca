#pragma once

#include <pybind11/numpy.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
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

using Numbers = pybind11::array_t<double, pybind11::array::c_style | pybind11::array::forcecast>;

/// Numbers of a Python object, of which every 32-bit number is exact. Raises TypeError for anything else.
inline Numbers NumbersFrom(pybind11::handle object, const char* what, bool whole)
{
    const pybind11::array array = pybind11::array::ensure(object);
    const char kind = array ? array.dtype().kind() : 'O';
    if (array && array.size() != 0 && (kind == 'b' || kind == 'i' || kind == 'u' || (kind == 'f' && !whole)))
        return array;
    if (array && array.size() == 0)
        return Numbers(std::vector<pybind11::ssize_t>(array.shape(), array.shape() + array.ndim()));
    throw pybind11::type_error(
        std::string(what) + ": expected " + (whole ? "whole numbers" : "numbers") + ", got " +
        std::string(pybind11::str(array && kind != 'O' ? pybind11::object(array.dtype())
                                                       : pybind11::object(pybind11::type::of(object)))));
}

/// Times to evaluate at, in seconds: a number or a list of them. Raises TypeError or ValueError for anything else, and
/// for NaN; what no float reaches becomes the nearest that one does.
inline std::vector<float> SampleTimes(const Numbers& times)
{
    if (times.ndim() > 1)
        throw pybind11::value_error("times: expected a number or the shape (n,), got " +
                                    std::string(pybind11::str(times.attr("shape"))));
    std::vector<float> seconds(static_cast<std::size_t>(times.size()));
    for (std::size_t row = 0; row < seconds.size(); ++row)
    {
        const double time = times.data()[row];
        if (std::isnan(time))
            throw pybind11::value_error("times[" + std::to_string(row) + "] is NaN");
        constexpr auto kMost = static_cast<double>(std::numeric_limits<float>::max());
        seconds[row] = static_cast<float>(std::clamp(time, -kMost, kMost));
    }
    return seconds;
}

} // namespace tev2_python
