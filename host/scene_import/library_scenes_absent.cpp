// For systems without the import library.

#include "host/scene_import/library_scenes.h"

namespace mobu_host
{
namespace
{

bool Refuse(const char* kind, std::string& cause)
{
    cause =
        std::string(kind) + " scenes are not read by this build, which was made without the library assimp";
    return false;
}

} // namespace

bool ImportGltf(const SceneFile&, ImportNotes&, std::string& cause)
{
    return Refuse("glTF", cause);
}

} // namespace mobu_host
