#pragma once

/// From the nodes of the shown visual scene to models.

#include "host/import/base/import_notes.h"
#include "host/import/base/import_options.h"
#include "host/import/base/scene_description.h"
#include "host/import/collada/cameras.h"
#include "host/import/collada/document_index.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace mobu_host::collada
{

class SceneModels
{
public:
    SceneModels(const XmlDocument& document, const DocumentIndex& index, double centimetres,
                const ImportOptions& options, ImportNotes& notes)
        : document_(document), index_(index), centimetres_(centimetres), options_(options), notes_(notes)
    {
    }

    /// The models below a <visual_scene>. Throws ParseError for what no scene can hold.
    std::vector<ModelDescription> Read(std::uint32_t visual_scene);

    bool IsInScene(std::uint32_t node) const { return first_models_[node] != kNone; }

    /// Those that a node became: more than one where it is instantiated more than once.
    std::vector<std::uint32_t> ModelsOf(std::uint32_t node) const;

    /// Those that look through a camera.
    const std::vector<std::uint32_t>& ModelsOf(Element camera) const;

    const Camera& CameraOf(Element camera);

private:
    /// What is left to do below a node that became a model.
    struct Open
    {
        std::uint32_t next = kNone; // record
        std::uint32_t model = kNoModel;
        std::uint32_t instance_of = kNone; // closed again after this node
    };

    void Add(std::uint32_t record, std::uint32_t parent);
    std::uint32_t TargetOf(Element instance);
    void ReadModel(Element node, ModelDescription& model, std::uint32_t index);
    void ReadLens(Element node, ModelDescription& model, std::uint32_t index);
    void CopyModel(std::uint32_t from, ModelDescription& model, std::uint32_t index);

    const XmlDocument& document_;
    const DocumentIndex& index_;
    double centimetres_;
    const ImportOptions& options_;
    ImportNotes& notes_;

    std::vector<ModelDescription> models_;
    std::vector<std::uint32_t> first_models_; // of each record
    std::vector<std::uint32_t> next_models_;  // of each model: the next one of the same record
    std::vector<Element> cameras_;            // of each model
    std::unordered_map<const void*, Camera> camera_numbers_;
    std::unordered_map<const void*, std::vector<std::uint32_t>> camera_models_;
    std::size_t added_models_ = 0; // by repeated instances
    std::size_t added_bytes_ = 0;
};

} // namespace mobu_host::collada
