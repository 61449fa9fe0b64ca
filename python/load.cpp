#include "python/load.h"

#include "python/bindings.h"
#include "python/gil.h"
#include "python/scene.h"
#include "python/text.h"
#include "tev2_loader/file.h"
#include "tev2_loader/io/file_image.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;

namespace
{

py::object FindingOf(const TEV2_LOAD_FINDING& finding)
{
    const bool in_chunk = finding.chunkId != TEV2_LOAD_FINDING::kNoChunk;
    return py::module_::import("tev2._errors")
        .attr("Finding")(CodeName(finding.code),
                         finding.severity == TEV2_LOAD_SEVERITY::Error ? "error" : "warning", finding.offset,
                         in_chunk ? py::object(py::int_(finding.chunkId)) : py::none(), finding.chunkOffset,
                         finding.path, finding.expected, finding.found, FindingText(finding));
}

[[noreturn]] void RaiseLoadError(const std::string& message, const std::string& file,
                                 const std::string& reason, const py::list& findings)
{
    const py::object type = py::module_::import("tev2._errors").attr("LoadError");
    const py::object error = type(PathTitle(message), PathTitle(file), PathTitle(reason), findings);
    PyErr_SetObject(type.ptr(), error.ptr());
    throw py::error_already_set();
}

} // namespace

Status Read(const std::string& path, std::vector<std::uint8_t>& image, std::size_t most_bytes)
{
    bool interrupted = false;
    const auto watch = [&interrupted](std::uint64_t, std::uint64_t)
    {
        const WithGil gil;
        interrupted = PyErr_CheckSignals() != 0;
        return !interrupted;
    };
    Status read;
    {
        const WithoutGil no_gil;
        read = ReadFileImage(path, image, most_bytes, watch);
    }
    if (interrupted)
        throw py::error_already_set();
    return read;
}

std::vector<std::uint8_t> ReadOrRaise(const std::string& path, std::size_t most_bytes)
{
    std::vector<std::uint8_t> image;
    if (const Status read = Read(path, image, most_bytes); !read)
        RaiseLoadError(path + ": " + read.Reason(), path, read.Reason(), py::list());
    return image;
}

void RaiseNotLoaded(const std::string& file, const TEV2_LOAD_REPORT& report)
{
    py::list findings;
    for (const TEV2_LOAD_FINDING& finding : report.findings)
        findings.append(FindingOf(finding));
    RaiseLoadError(WhyNotLoaded(file, report), file, FailureOf(report).Reason(), findings);
}

namespace
{

struct Limits
{
    std::size_t bytes;
    std::size_t nodes;
    std::size_t nesting;
};

std::shared_ptr<Scene> LoadImage(const void* bytes, std::size_t size, const std::string& file,
                                 const Limits& limits, const std::optional<py::list>& report)
{
    auto scene = std::make_shared<Scene>();
    TEV2_LOAD_REPORT found;
    bool loaded = false;
    {
        const WithoutGil no_gil;
        const LoadOptions options = {.applyStartTime = false,
                                     .limits = {limits.bytes, limits.nodes, limits.nesting},
                                     .report = &found};
        loaded = LoadMemory(bytes, size, scene->records, options).Ok();
    }
    py::list findings = report.value_or(py::list());
    for (const TEV2_LOAD_FINDING& finding : found.findings)
        findings.append(FindingOf(finding));
    if (!loaded && !report)
        RaiseLoadError(WhyNotLoaded(file, found), file, FailureOf(found).Reason(), findings);
    return scene;
}

std::shared_ptr<Scene> Load(const py::object& path, std::size_t max_file_bytes, std::size_t max_bytes,
                            std::size_t max_nodes, std::size_t max_nesting,
                            const std::optional<py::list>& report)
{
    const std::string name = PathText(path);
    const std::vector<std::uint8_t> image = ReadOrRaise(name, max_file_bytes);
    return LoadImage(image.data(), image.size(), name, {max_bytes, max_nodes, max_nesting}, report);
}

std::shared_ptr<Scene> LoadBytes(const py::buffer& data, const py::object& file, std::size_t max_bytes,
                                 std::size_t max_nodes, std::size_t max_nesting,
                                 const std::optional<py::list>& report)
{
    // A copy, unless it is bytes already: others could be changed by another thread.
    const auto unchanging = py::reinterpret_steal<py::object>(PyBytes_FromObject(data.ptr()));
    if (!unchanging)
        throw py::error_already_set();
    const std::string_view bytes = py::reinterpret_borrow<py::bytes>(unchanging);
    return LoadImage(bytes.data(), bytes.size(), PathText(file), {max_bytes, max_nodes, max_nesting}, report);
}

} // namespace

void BindLoad(py::module_& module)
{
    module.def(
        "load", Load, py::arg("path"), py::kw_only(), py::arg("max_file_bytes") = 0, py::arg("max_bytes") = 0,
        py::arg("max_nodes") = 0, py::arg("max_nesting") = 0, py::arg("report") = py::none(),
        "Load a scene file.\n\n"
        "path: str, bytes or os.PathLike; a pipe is read to its end.\n"
        "max_file_bytes, max_bytes, max_nodes, max_nesting: what a file may cost: its size, the memory for "
        "its\n"
        "    scene, its nodes, the depth of their hierarchy. 0: no limit.\n"
        "report: a list to which every Finding is appended, instead of an exception: the scene is then what\n"
        "    was loaded up to the error, if there is one.\n\n"
        "Raises LoadError where the file cannot be read or, without a report, is not sound. Other threads "
        "of\n"
        "Python run meanwhile.");
    module.def("loads", LoadBytes, py::arg("data"), py::kw_only(), py::arg("file") = "<bytes>",
               py::arg("max_bytes") = 0, py::arg("max_nodes") = 0, py::arg("max_nesting") = 0,
               py::arg("report") = py::none(),
               "Load a scene from the bytes of a file (bytes, bytearray, memoryview ...), which errors call "
               "`file`.\n"
               "See load.");
}

} // namespace tev2_python
