#include "python/text.h"

#include <string_view>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

namespace
{

constexpr int kLittleEndian = -1;

/// The object of a call to Python's C functions; raises what the call did.
template <typename Object>
Object Checked(PyObject* made)
{
    if (made == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<Object>(made);
}

py::ssize_t SizeOf(std::size_t bytes)
{
    return static_cast<py::ssize_t>(bytes);
}

} // namespace

py::str Text(const TEV2_WIDE_STRING& text)
{
    const std::u16string& units = text.Text();
    if (IsWidenedUtf8(units))
        return NarrowUtf8(units);
    int order = kLittleEndian;
    return Checked<py::str>(PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(units.data()),
                                                  SizeOf(units.size() * sizeof(char16_t)), "surrogatepass",
                                                  &order));
}

void SetText(TEV2_WIDE_STRING& text, const py::str& value, const char* what)
{
    if (Same(Text(text), value))
        return;
    TEV2_WIDE_STRING made;
    py::ssize_t size = 0;
    if (const char* const utf8 = PyUnicode_AsUTF8AndSize(value.ptr(), &size); utf8 != nullptr)
    {
        made = TEV2_WIDE_STRING::FromBytes({utf8, static_cast<std::size_t>(size)});
    }
    else
    {
        PyErr_Clear(); // unpaired surrogates have no UTF-8
        std::u16string units;
        for (py::ssize_t index = 0; index < PyUnicode_GET_LENGTH(value.ptr()); ++index)
        {
            const char32_t point = PyUnicode_READ_CHAR(value.ptr(), index);
            if (point >= 0x10000)
                units += static_cast<char16_t>(0xD7C0 + (point >> 10));
            units += static_cast<char16_t>(point < 0x10000 ? point : 0xDC00 + (point & 0x3FF));
        }
        made = TEV2_WIDE_STRING(std::move(units));
    }
    if (made.Text().size() > kMostStringUnits)
        throw py::value_error(std::string("the ") + what + " is longer than " +
                              std::to_string(kMostStringUnits) + " bytes");
    text = std::move(made);
}

std::string PathText(const py::object& path)
{
    PyObject* bytes = nullptr;
    if (PyUnicode_FSConverter(path.ptr(), &bytes) == 0)
        throw py::error_already_set();
    return py::reinterpret_steal<py::bytes>(bytes);
}

py::str Utf8Text(const std::string& text)
{
    return Checked<py::str>(PyUnicode_DecodeUTF8(text.data(), SizeOf(text.size()), "surrogateescape"));
}

py::str PathTitle(const std::string& path)
{
    return Checked<py::str>(PyUnicode_DecodeFSDefaultAndSize(path.data(), SizeOf(path.size())));
}

} // namespace tev2_python
