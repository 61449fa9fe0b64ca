#include "host/scene_import/scene_import.h"

#include "host/scene_import/fbx/fbx_import.h"
#include "host/scene_import/library_scenes.h"

#include <mobu_host/scene.h>

#include <exception>

namespace mobu_host
{
namespace
{

bool Import(const SceneFile& file, const ImportOptions& options, ImportNotes& notes, std::string& cause)
{
    switch (file.format)
    {
    case SceneFormat::Bvh:
        return ImportBvh(file, notes, cause);
    case SceneFormat::GltfText:
    case SceneFormat::GltfBinary:
        return ImportGltf(file, notes, cause);
    case SceneFormat::Collada:
        return ImportCollada(file, notes, cause);
    case SceneFormat::Fbx:
        return fbx::ImportFbx(file.bytes, notes, cause, options);
    }
    return false;
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
        if (!ReadSceneFile(path, file, result.error))
            return result;
        ImportNotes notes;
        std::string cause;
        result.ok = Import(file, options, notes, cause);
        result.notes = notes.Lines();
        if (result.ok)
            SetSceneFilePath(path.c_str());
        else
            result.error = "cannot read " + path + ": " + cause;
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
