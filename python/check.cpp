#include "check/lint.h"
#include "python/bindings.h"
#include "python/gil.h"
#include "python/load.h"
#include "python/scene.h"
#include "python/text.h"
#include "tev2_loader/file.h"
#include "tev2_loader/io/file_image.h"

#include <memory>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;
using tev2_check::CheckCode;
using tev2_check::Finding;
using tev2_check::LoadedFile;

namespace
{

/// The bytes that a scene is saved as; raises SaveError where it cannot be.
std::vector<std::uint8_t> ImageOf(const Scene& scene)
{
    const int file = memfd_create("tev2", MFD_CLOEXEC);
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    std::vector<std::uint8_t> image;
    Status done = SaveFile(scene.records, path);
    if (done)
        done = ReadFileImage(path, image);
    close(file);
    if (!done)
    {
        const py::object type = py::module_::import("tev2._errors").attr("SaveError");
        const py::object reason = PathTitle(done.Reason());
        PyErr_SetObject(type.ptr(), type("the scene cannot be saved: " + done.Reason(), "", reason).ptr());
        throw py::error_already_set();
    }
    return image;
}

LoadedFile FileOf(const py::object& scene_or_path)
{
    LoadedFile file;
    if (py::isinstance<Scene>(scene_or_path))
    {
        file.title = "the scene";
        file.image = ImageOf(scene_or_path.cast<const Scene&>());
    }
    else
    {
        file.argument = file.title = PathText(scene_or_path);
        file.image = ReadOrRaise(file.argument);
    }
    const WithoutGil no_gil;
    LoadSceneOf(file);
    return file;
}

py::object ToPython(const Finding& finding)
{
    return py::module_::import("tev2._errors")
        .attr("CheckFinding")(finding.code, SeverityName(finding.severity), finding.offset,
                              finding.chunk_id ? py::object(py::int_(*finding.chunk_id)) : py::none(),
                              finding.chunk_offset, Utf8Text(finding.path), Utf8Text(finding.name),
                              Utf8Text(finding.message), Utf8Text(FindingText(finding)));
}

py::list Check(const py::object& scene_or_path, const py::object& like, bool files)
{
    LoadedFile rig;
    if (!like.is_none())
    {
        rig = FileOf(like);
        if (!rig.loaded)
            RaiseNotLoaded(rig.title, rig.report);
    }
    const LoadedFile file = FileOf(scene_or_path);
    if (files && file.argument.empty())
        throw py::value_error("files needs to know the folder of the file: give its path instead of a scene");
    std::vector<Finding> findings;
    {
        const WithoutGil no_gil;
        findings = Examine(file, {.files = files, .like = like.is_none() ? nullptr : rig.scene.get()});
    }
    py::list list;
    for (const Finding& finding : findings)
        list.append(ToPython(finding));
    return list;
}

py::dict Codes()
{
    py::dict codes;
    for (const CheckCode& code : tev2_check::CheckCodes())
        codes[py::str(code.code)] = py::make_tuple(SeverityName(code.severity), py::str(code.sentence));
    return codes;
}

} // namespace

void BindCheck(py::module_& module)
{
    module.def(
        "check", Check, py::arg("scene_or_path"), py::arg("like") = py::none(), py::kw_only(),
        py::arg("files") = false,
        R"(Errors and suspicious values in a scene or a file, as `tv2 check` finds them: a list of CheckFinding.

scene_or_path: a path, or a Scene, which is checked as it would be saved: offsets are those of that file.
like: a Scene or path of a rig that the animation has to fit.
files: look whether the images that the file names are there, beside it; needs a path.

A file that is not sound has findings of severity "error". Raises LoadError where a file cannot be read or the
rig is not sound, SaveError where the scene cannot be saved.)");
    module.def("check_codes", Codes,
               "All codes that check can find: a dict from code to (severity, sentence).");
}

} // namespace tev2_python
