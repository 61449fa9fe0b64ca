#pragma once

// From the tree and the animations that the import library returns to models, cameras and takes of the host.

#include "host/scene_import/import_notes.h"
#include "host/scene_import/source_node.h"

#include <assimp/scene.h>

#include <functional>
#include <string>
#include <vector>

namespace mobu_host
{

// What the library's scene means; it differs by format.
struct SceneReading
{
    double centimetres = 1.0; // one unit of length
    double frames_per_second = 30.0;
    double seconds_per_tick = 0.0; // 0: as each animation states
    bool root_is_a_node = true;    // false: the top of the library's tree only carries unit and up axis
    std::vector<SourceProperty> scene_properties;
    std::function<SourceNode(const aiNode&)> describe;
    std::function<std::string(unsigned animation)> take_name; // empty: unnamed
    struct Steps
    {
        bool translation = false, rotation = false, scale = false;
    };
    std::function<Steps(unsigned animation, const std::string& node)>
        steps; // components that jump from key to key
};

// Empties the host's scene and builds this one. False, with a one-line cause and the host's scene as it was,
// when it holds a number or a time that no scene can hold.
bool BuildScene(const aiScene& scene, const SceneReading& reading, ImportNotes& notes, std::string& cause);

} // namespace mobu_host
