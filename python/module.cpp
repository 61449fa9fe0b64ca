#include "python/bindings.h"

PYBIND11_MODULE(_tev2, module)
{
    module.doc() = "The compiled part of tev2.";
    module.attr("__version__") = TV2_VERSION;
    tev2_python::BindTrack(module);
    tev2_python::BindProperties(module);
    tev2_python::BindNode(module);
    tev2_python::BindCamera(module);
    tev2_python::BindScene(module);
    tev2_python::BindLoad(module);
    tev2_python::BindClip(module);
    tev2_python::BindRecords(module);
    tev2_python::BindCheck(module);
    tev2_python::BindConvert(module);
}
