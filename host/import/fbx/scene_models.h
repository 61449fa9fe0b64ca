#pragma once

#include "host/import/fbx/scene_data.h"

#include <optional>
#include <unordered_map>

namespace mobu_host::fbx
{

/// The rows that describe one model: its own, those of its attribute (a camera's lens in 7.x), and its classes'.
struct ModelSource
{
    ObjectIndex object = 0;
    ObjectIndex attribute = 0; // 0: none
    PropertyRows own;
    std::unique_ptr<PropertyRows> attribute_rows;
    const PropertyRows* model_defaults = nullptr;
    const PropertyRows* attribute_defaults = nullptr;

    PropertyView View() const { return {&own, attribute_rows.get(), model_defaults, attribute_defaults}; }
};

/// One of the host's own properties that a file can set and move.
struct BuiltIn
{
    const char* name; // the same in file and host
    bool is_length;
};
const BuiltIn* FindBuiltIn(std::string_view name);

/// The models of a document in the order of the tree, with everything but their motion. sources[i] is of model i.
struct ModelList
{
    std::vector<ModelSource> sources;
    std::unordered_map<ObjectIndex, std::uint32_t> by_object; // also by attribute
};
ModelList ReadModels(const Document& document, SceneData& data, ImportNotes& notes);

/// Nothing for kinds that the host does not have.
std::optional<PropertyDescription> ReadUserProperty(const PropertyRow& row, const RecordTree& tree,
                                                    const std::string& model, ImportNotes& notes);

inline constexpr const char* kSwitcherIndex = "Camera Index";

} // namespace mobu_host::fbx
