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
    if (const char* const utf8 = PyUnicode_AsUTF8(value.ptr()); utf8 != nullptr)
    {
        py::ssize_t size = 0;
        made = TEV2_WIDE_STRING::FromBytes(
            {PyUnicode_AsUTF8AndSize(value.ptr(), &size), static_cast<std::size_t>(size)});
    }
    else
    {
        PyErr_Clear(); // unpaired surrogates have no UTF-8
        const std::string bytes = value.attr("encode")("utf-16-le", "surrogatepass").cast<py::bytes>();
        std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
        bytes.copy(reinterpret_cast<char*>(units.data()), bytes.size());
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

py::str PathTitle(const std::string& path)
{
    return Checked<py::str>(PyUnicode_DecodeFSDefaultAndSize(path.data(), SizeOf(path.size())));
}

} // namespace tev2_python
