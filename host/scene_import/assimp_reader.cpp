#include "host/scene_import/assimp_reader.h"

#include <assimp/config.h>
#include <assimp/DefaultIOSystem.h>
#include <assimp/MemoryIOWrapper.h>

#include <cstdint>
#include <exception>

namespace
{

unsigned g_violated_assertions = 0;

}

namespace Assimp
{

// The import library calls this where one of its own assumptions fails. Its version ends the process; a scene
// that is odd enough to get here is read on, and the user is told.
__attribute__((visibility("default"))) void
aiAssertViolation(const char*, const char*, int) // NOLINT(readability-redundant-declaration)
{
    ++g_violated_assertions;
}

} // namespace Assimp

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TV2_CHECKS_LEAKS
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(TV2_CHECKS_LEAKS)
// Where a damaged file makes the import library give up, it forgets some of its memory.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the sanitizer's
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() // NOLINT(bugprone-reserved-identifier)
{
    return "leak:libassimp";
}
#endif

namespace mobu_host
{
namespace
{

// One file that is in memory; everything else as it lies on disk.
class SceneFileSystem : public Assimp::DefaultIOSystem
{
public:
    SceneFileSystem(std::string path, const std::string& bytes) : path_(std::move(path)), bytes_(bytes) {}

    bool Exists(const char* path) const override
    {
        return path == path_ || Assimp::DefaultIOSystem::Exists(path);
    }

    Assimp::IOStream* Open(const char* path, const char* mode) override
    {
        if (path != path_)
            return Assimp::DefaultIOSystem::Open(path, mode);
        return new Assimp::MemoryIOStream(reinterpret_cast<const std::uint8_t*>(bytes_.data()),
                                          bytes_.size());
    }

private:
    std::string path_;
    const std::string& bytes_;
};

// The library goes by a name that nobody gave the file.
std::string WithPath(std::string text, const std::string& name, const std::string& path)
{
    for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + path.size()))
        text.replace(at, name.size(), path);
    return text;
}

std::string OneLine(std::string text)
{
    for (char& c : text)
        c = static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    return text;
}

} // namespace

const aiScene* ReadWithAssimp(Assimp::Importer& importer, const std::string& path, const std::string& bytes,
                              const char* extension, ImportNotes& notes, std::string& cause)
{
    const std::string name = path + extension;
    const unsigned violations_before = g_violated_assertions;
    const aiScene* scene = nullptr;
    SceneFileSystem files(name, bytes);
    try
    {
        importer.SetIOHandler(&files);
        importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
        scene = importer.ReadFile(name, 0);
        cause = OneLine(WithPath(importer.GetErrorString(), name, path));
    }
    catch (const std::exception& error)
    {
        scene = nullptr;
        cause = OneLine(WithPath(error.what(), name, path));
    }
    importer.SetIOHandler(nullptr); // takes the file system back; the importer would delete it

    for (unsigned i = violations_before; i < g_violated_assertions; ++i)
        notes.Add("self-checks of the import library failed; the scene may be read wrongly");
    if (scene && !scene->mRootNode)
    {
        cause = "it holds no node";
        return nullptr;
    }
    return scene;
}

} // namespace mobu_host
