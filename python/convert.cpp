#include "gltf/convert/document_files.h"
#include "gltf/convert/from_gltf.h"
#include "gltf/convert/to_gltf.h"
#include "gltf/error.h"
#include "python/bindings.h"
#include "python/load.h"
#include "python/scene.h"
#include "python/text.h"
#include "tev2_loader/io/whole_file.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tev2_python
{

namespace py = pybind11;
using namespace TEV2_LOADER;
using namespace tev2_gltf;

namespace
{

using ScenePointer = std::shared_ptr<Scene>;

py::list ToPython(const ConversionReport& report)
{
    const py::object type = py::module_::import("tev2._errors").attr("Conversion");
    py::list list;
    for (const ReportEntry& entry : report.Entries())
        list.append(type(py::str(NameOf(entry.code)), py::str(NameOf(SeverityOf(entry.code))),
                         Utf8Text(entry.where), Utf8Text(entry.text), entry.count,
                         Utf8Text(EntryText(entry))));
    return list;
}

[[noreturn]] void Raise(const std::string& file, const std::string& reason, const py::list& report)
{
    const py::object type = py::module_::import("tev2._errors").attr("ConversionError");
    PyErr_SetObject(type.ptr(),
                    type(PathTitle(file + ": " + reason), PathTitle(file), PathTitle(reason), report).ptr());
    throw py::error_already_set();
}

/// Raises what `strict` asks for, otherwise returns the report.
py::list Checked(const ConversionReport& report, bool strict, const std::string& file, const char* not_done)
{
    py::list list = ToPython(report);
    if (strict && report.HasLost())
        Raise(file, std::string(not_done) + ", since something would be lost", list);
    return list;
}

ScenePointer SceneOf(py::handle object)
{
    return Expected<Scene>(object, "a Scene").cast<ScenePointer>();
}

/// One scene, a list of them or a dict from names to them.
std::vector<std::pair<std::string, ScenePointer>> SourcesOf(const py::object& scenes, const std::string& path)
{
    if (py::isinstance<Scene>(scenes))
        return {{StemOf(path), scenes.cast<ScenePointer>()}};
    std::vector<std::pair<std::string, ScenePointer>> sources;
    if (py::hasattr(scenes, "items"))
    {
        const py::dict named(scenes);
        for (const auto& [name, scene] : named)
            sources.emplace_back(std::string(py::str(Expected<py::str>(name, "a name"))), SceneOf(scene));
    }
    else
    {
        for (const py::handle scene : scenes)
            sources.emplace_back("animation " + std::to_string(sources.size() + 1), SceneOf(scene));
    }
    if (sources.empty())
        throw py::value_error("there is no scene to convert");
    return sources;
}

std::optional<World> WorldNamed(const std::optional<std::string>& name)
{
    const std::optional<World> world = name ? FindWorld(*name) : std::nullopt;
    if (name && !world)
        throw py::value_error("world is none of y-up, y-up-turned, z-up, z-up-turned");
    return world;
}

py::list ToGlb(const py::object& scenes, const py::object& output, const std::optional<float>& at,
               const std::optional<std::string>& world, bool strict)
{
    const std::string path = PathText(output);
    if (!IsGltfPath(path))
        throw py::value_error(path + ": the file to write ends in .glb or .gltf");
    const auto named = SourcesOf(scenes, path);
    std::vector<GltfSource> sources;
    sources.reserve(named.size());
    for (const auto& [name, scene] : named)
        sources.push_back({scene->records, name});
    if (at && sources.size() > 1)
        throw py::value_error("at makes a pose of one scene");
    gltf::DocumentBuilder builder;
    ConversionReport report;
    const ToGltfOptions options{.world = WorldNamed(world), .at = at};
    if (const Status made = tev2_gltf::ToGltf(sources, options, builder, report); !made)
        Raise(path, made.Reason(), ToPython(report));
    py::list list = Checked(report, strict, path, "not written");
    try
    {
        for (const DocumentFile& file : DocumentFiles(path, builder))
            if (const Status written = WriteWholeFile(file.path, file.bytes); !written)
                Raise(file.path, "cannot be written: " + written.Reason(), list);
    }
    catch (const gltf::Error& error)
    {
        Raise(path, error.what(), list);
    }
    return list;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// Moves all records from one scene into another, empty one.
void Take(TEV2& from, TEV2& to)
{
    VisitLists(to, [&](const auto& list, auto& member) { member = std::move(list.In(from)); });
    to.inverseBindMatrices = std::move(from.inverseBindMatrices);
}

py::dict FromGlb(const py::object& input, bool standard_materials, bool strict,
                 std::optional<py::list> report, std::optional<py::dict> images)
{
    const std::string path = PathText(input);
    const std::vector<std::uint8_t> image = ReadOrRaise(path);
    ConversionReport found;
    try
    {
        gltf::FolderFiles files(FolderOf(path));
        gltf::Document document({reinterpret_cast<const char*>(image.data()), image.size()}, files);
        FromGltf from(document, {.standard_materials = standard_materials, .image_stem = StemOf(path)},
                      found);
        py::dict scenes;
        std::size_t next = 0;
        for (const std::string& name : TakeNames(from))
        {
            const auto scene = std::make_shared<Scene>();
            Take(*from.MakeScene(next++), scene->records);
            scenes[Utf8Text(name)] = scene;
        }
        for (const InsideImage& inside : from.InsideImages())
            if (images)
                (*images)[Utf8Text(inside.file_name)] = py::bytes(inside.bytes.data(), inside.bytes.size());
        const py::list entries = Checked(found, strict, path, "not converted");
        if (report)
            for (const py::handle entry : entries)
                report->append(entry);
        return scenes;
    }
    catch (const gltf::Error& error)
    {
        Raise(path, error.what(), ToPython(found));
    }
}

} // namespace

void BindConvert(py::module_& module)
{
    module.def(
        "to_glb", ToGlb, py::arg("scenes"), py::arg("path"), py::kw_only(), py::arg("at") = py::none(),
        py::arg("world") = py::none(), py::arg("strict") = false,
        R"(Write scenes as a .glb or .gltf file and return a list of Conversion: what was lost or changed.

scenes: a Scene; or several of one skeleton, each of which becomes an animation: a list, or a dict from names
    of animations.
at: only the pose at this time in seconds, without animation.
world: the axes of the scenes, "y-up", "y-up-turned", "z-up" or "z-up-turned"; None: what the scenes say.
strict: write nothing and raise ConversionError when something would be lost.

Raises ConversionError, with what `tv2 convert` says, where nothing can be written.)");
    module.def(
        "from_glb", FromGlb, py::arg("path"), py::kw_only(), py::arg("standard_materials") = false,
        py::arg("strict") = false, py::arg("report") = py::none(), py::arg("images") = py::none(),
        R"(Read a .glb or .gltf file: a dict with one Scene for each animation, by its name, one where it has none.

standard_materials: instead of metallic-roughness ones, for engines that do not know those.
strict: raise ConversionError when something would be lost.
report: a list to which a Conversion is appended for everything that was lost or changed.
images: a dict that gets the images inside the file, bytes by file name: materials name these files, beside
    the scene's own.

Raises LoadError where the file cannot be read, ConversionError where it cannot be converted.)");
}

} // namespace tev2_python
