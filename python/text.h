#pragma once

#include "tev2_loader/io/wide_string.h"

#include <pybind11/pybind11.h>

#include <string>

namespace tev2_python
{

/// A name or text of a scene. Units that are no character, unpaired surrogates, are those of the str.
pybind11::str Text(const TEV2_LOADER::TEV2_WIDE_STRING& text);

/// Sets a text to what Text then gives; the units stay as they are where they read so already. Raises ValueError where
/// the text is longer than a file can hold: "the name is longer than 65535 bytes".
void SetText(TEV2_LOADER::TEV2_WIDE_STRING& text, const pybind11::str& value, const char* what = "text");

/// Whether two texts are the same, without running code of subclasses.
inline bool Same(const pybind11::str& left, const pybind11::str& right)
{
    return PyUnicode_Compare(left.ptr(), right.ptr()) == 0;
}

/// A path for the system: str, bytes or os.PathLike. Raises TypeError for anything else.
std::string PathText(const pybind11::object& path);

/// UTF-8 in any locale: names and what is said about them. Other bytes, of paths, become surrogates of the str.
pybind11::str Utf8Text(const std::string& text);

/// What messages call a file: its path as str.
pybind11::str PathTitle(const std::string& path);

} // namespace tev2_python
