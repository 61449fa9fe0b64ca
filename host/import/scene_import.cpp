#include "host/import/scene_import.h"

#include "host/import/base/parse_error.h"
#include "host/import/formats.h"
#include "host/import/host_scene.h"

#include <mobu_host/scene.h>

#include <exception>
#include <filesystem>

namespace mobu_host
{
namespace
{

void Import(const SceneFile& file, const ImportOptions& options, SceneImportResult& result)
{
    const Format* const format = FormatOf(file.bytes);
    if (format == nullptr)
    {
        result.error = file.path + " is not a scene that can be read (" + ReadableFormats() + " are)";
        return;
    }
    if (options.sources != nullptr)
        options.sources->push_back(SourceOf(file.path, file.bytes));
    ImportNotes notes;
    try
    {
        if (format->read == nullptr)
            throw ParseError(std::string("this build does not read ") + format->name +
                             " scenes: it was made without " + format->library);
        SceneDescription scene = format->read(file, options, notes);
        result.source_files = std::move(scene.source_files);
        BuildHostScene(std::move(scene), options, notes);
        result.ok = true;
        SetSceneFilePath(
            std::filesystem::absolute(file.path).string().c_str()); // absolute, as applications report it
    }
    catch (const ParseError& damage)
    {
        result.error = "cannot read " + file.path + ": " + damage.what();
    }
    result.notes = notes.Lines();
}

} // namespace

SceneImportResult ImportScene(const std::string& path, const ImportOptions& options)
{
    SceneImportResult result;
    try
    {
        if (!(options.scene_rate >= 0.0 && options.scene_rate <= kHighestRate))
        {
            result.error = "the scene's rate must be above 0 and at most 1000000 frames per second";
            return result;
        }
        SceneFile file;
        if (ReadSceneFile(path, file, result.error))
            Import(file, options, result);
    }
    catch (const std::exception& error) // out of memory
    {
        NewScene();
        result.ok = false;
        result.error = "cannot read " + path + ": " + error.what();
    }
    return result;
}

} // namespace mobu_host
