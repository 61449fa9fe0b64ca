#pragma once

// The JSON part of a glTF scene, read for what the import library loses (which of two nodes with one name a
// channel moves, exact angles of view, extras, steps) and reduced to what it is needed for: hierarchy and
// animation.

#include "host/scene_import/import_notes.h"
#include "host/scene_import/scene_file.h"
#include "host/scene_import/source_node.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mobu_host
{

struct GltfAnimation
{
    struct Steps // components of a node that hold their value from key to key
    {
        std::set<std::size_t> translation, rotation, scale; // node indices
    };

    std::string name; // empty where the file gives none
    Steps steps;
};

struct GltfDocument
{
    // The document without meshes, cameras and extras, in the form (text or binary) it came in. Node i is
    // named GltfNodeName(i).
    std::string bytes;

    std::vector<SourceNode> nodes;
    std::vector<GltfAnimation> animations;
    std::vector<SourceProperty> scene_properties;
};

std::string GltfNodeName(std::size_t index);

// The other way round; nothing for a name that GltfNodeName does not give.
std::optional<std::size_t> GltfNodeIndex(std::string_view name);

// False with a one-line cause when the file is damaged: no JSON, no glTF 2, links that lead nowhere or in a
// circle.
bool ReadGltfDocument(const SceneFile& file, GltfDocument& document, ImportNotes& notes, std::string& cause);

} // namespace mobu_host
