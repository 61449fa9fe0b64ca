#include "python/camera.h"

#include "python/bindings.h"
#include "python/class.h"
#include "tev2_loader/tracks/stepped_integer_track.h"

#include <algorithm>
#include <string>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

std::size_t CameraIndex(const Camera& camera)
{
    const auto& cameras = camera.scene->records.cameras;
    const auto found = std::find_if(cameras.begin(), cameras.end(),
                                    [&](const auto& entry) { return entry.get() == camera.record; });
    if (found == cameras.end())
    {
        const std::string reason =
            "camera " + Quoted(Text(camera.Record().name)) + " was removed from its scene";
        PyErr_SetString(PyExc_ReferenceError, reason.c_str());
        throw py::error_already_set();
    }
    return static_cast<std::size_t>(found - cameras.begin());
}

void BindCamera(py::module_& module)
{
    auto type = NewClass<Camera>(module, "Camera",
                                 R"(A camera, whose position and rotation are those of its node.

Tracks may be set to a Track, to a constant or to None.)");
    DefinePlaced(type, "Camera");
    DefineTrack(type, "field_of_view", &TEV2_CAMERA::fieldOfView,
                "Radians: a Track of kind \"float\", or None.");
    DefineTrack(type, "distance", &TEV2_CAMERA::distance,
                "From the camera to its point of interest, metres: a Track of kind \"float\", or None.");
    DefineTrack(type, "clip_range", &TEV2_CAMERA::clipRange,
                "Near and far, metres: a Track of kind \"range\", or None.");
    DefineTrack(type, "secondary_range", &TEV2_CAMERA::secondaryRange,
                "A Track of kind \"range\" without a known meaning, or None.");
    type.def_property(
            "inverse_aspect", [](const Camera& self) { return self.Record().inverseAspect; },
            [](const Camera& self, float aspect) { self.Record().inverseAspect = aspect; },
            "Height of the picture over its width.")
        .def_property_readonly(
            "index", CameraIndex,
            "The place in scene.cameras. Raises ReferenceError once the camera was removed.")
        .def_property_readonly(
            "scene", [](const Camera& self) { return self.scene; }, "The scene of the camera.");
}

} // namespace tev2_python
