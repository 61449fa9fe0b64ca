#include "python/class.h"

#include <string>
#include <utility>

namespace tev2_python
{

namespace py = pybind11;

namespace
{

thread_local bool calling = false; // a class, whose object is not there yet

PyObject* CallClass(PyObject* type, PyObject* args, PyObject* named)
{
    const bool outer = std::exchange(calling, true);
    PyObject* const object = py::detail::get_internals().default_metaclass->tp_call(type, args, named);
    calling = outer;
    return object;
}

py::object NewObject(const py::handle& type, const py::args&, const py::kwargs&)
{
    auto* const made = reinterpret_cast<PyTypeObject*>(type.ptr());
    if (!std::exchange(calling, false))
        throw py::type_error(std::string(made->tp_name) + ".__new__ makes no object: call the class");
    auto* const base = reinterpret_cast<PyTypeObject*>(py::detail::get_internals().instance_base);
    return py::reinterpret_steal<py::object>(base->tp_new(made, nullptr, nullptr));
}

} // namespace

py::handle MetaClass()
{
    static const py::handle meta = [] // for as long as its classes are there, which is always
    {
        const py::handle type(reinterpret_cast<PyObject*>(&PyType_Type));
        const py::handle base(reinterpret_cast<PyObject*>(py::detail::get_internals().default_metaclass));
        py::object made = type("type_of_tev2", py::make_tuple(base), py::dict());
        reinterpret_cast<PyTypeObject*>(made.ptr())->tp_call = CallClass;
        return made.release();
    }();
    return meta;
}

void Seal(const py::handle& type, const char* name)
{
    py::setattr(type, "__new__", py::staticmethod(py::cpp_function(NewObject, py::name("__new__"))));
    const std::string refusal = std::string("cannot copy or pickle a tev2.") + name + ": save the scene";
    const auto refuse = [refusal](const py::object&) -> py::object { throw py::type_error(refusal); };
    py::setattr(type, "__reduce__", py::cpp_function(refuse, py::name("__reduce__"), py::is_method(type)));
}

} // namespace tev2_python
