#include "host/import/collada/scene_models.h"

#include "host/import/base/exportable_number.h"
#include "host/import/collada/transforms.h"
#include "host/import/collada/user_properties.h"

#include <algorithm>
#include <string>

namespace mobu_host::collada
{
namespace
{

// What nodes that are instantiated again may add: a few lines of text could ask for any number of models.
constexpr std::size_t kMostAddedModels = 20'000;
constexpr std::size_t kMostAddedBytes = std::size_t{4} << 20; // of names and user properties

std::size_t TextBytes(const ModelDescription& model)
{
    std::size_t bytes = model.name.size();
    for (const PropertyDescription& property : model.properties)
    {
        const auto* const text = std::get_if<std::string>(&property.value);
        bytes += sizeof property + property.name.size() + (text ? text->size() : 0);
    }
    return bytes;
}

} // namespace

std::vector<ModelDescription> SceneModels::Read(std::uint32_t visual_scene)
{
    const std::size_t most =
        std::min(index_.nodes.size() + (index_.instance_count > 0 ? kMostAddedModels : std::size_t{0}),
                 options_.most_models);
    models_.reserve(most);
    next_models_.reserve(most);
    cameras_.reserve(most);
    first_models_.assign(index_.nodes.size(), kNone);

    std::vector<bool> is_open(index_.nodes.size());
    std::vector<Open> open{{.next = index_.nodes[visual_scene].first_child}};
    while (!open.empty())
    {
        if (open.back().next == kNone)
        {
            if (open.back().instance_of != kNone)
                is_open[open.back().instance_of] = false;
            open.pop_back();
            continue;
        }
        const NodeRecord& child = index_.nodes[open.back().next];
        std::uint32_t record = open.back().next;
        const std::uint32_t parent = open.back().model;
        open.back().next = child.next;

        std::uint32_t instance_of = kNone;
        if (std::string_view(child.element.name()) == "instance_node")
        {
            record = instance_of = TargetOf(child.element);
            if (record == kNone)
                continue;
            if (is_open[record])
                document_.Fail(child.element, "puts a node into itself");
            is_open[record] = true;
        }
        if (open.size() > kDeepestModel)
            document_.Fail(child.element,
                           "is nested more than " + std::to_string(kDeepestModel) + " models deep");
        Add(record, parent);
        open.push_back(
            {index_.nodes[record].first_child, static_cast<std::uint32_t>(models_.size() - 1), instance_of});
    }
    return std::move(models_);
}

std::uint32_t SceneModels::TargetOf(Element instance)
{
    const std::string_view url = Attribute(instance, "url");
    if (const std::uint32_t* const found = index_.node_ids.Find(IdOf(url)))
        return *found;
    if (!url.empty() && !url.starts_with('#'))
    {
        static const NoteKind kKind{"node of another file is left out", "nodes of other files are left out"};
        notes_.Add(kKind, std::string(url));
        return kNone;
    }
    document_.Fail(instance, "has the url " + Quoted(url) + ", which is no node of this file");
}

void SceneModels::Add(std::uint32_t record, std::uint32_t parent)
{
    CheckModelCount(models_.size() + 1, options_);
    const auto index = static_cast<std::uint32_t>(models_.size());
    ModelDescription& model = models_.emplace_back();
    cameras_.emplace_back();
    model.parent = parent;
    const Element element = index_.nodes[record].element;
    const std::uint32_t first = first_models_[record];
    if (first == kNone)
        ReadModel(element, model, index);
    else
        CopyModel(first, model, index);
    next_models_.push_back(first == kNone ? kNone : next_models_[first]);
    (first == kNone ? first_models_[record] : next_models_[first]) = index;
    if (added_models_ > kMostAddedModels || added_bytes_ > kMostAddedBytes)
        document_.Fail(element, "is instantiated too often: instances may add " +
                                    std::to_string(kMostAddedModels) + " models and " +
                                    std::to_string(kMostAddedBytes) + " bytes of text to a scene");
}

void SceneModels::ReadModel(Element node, ModelDescription& model, std::uint32_t index)
{
    model.name = NameOf(node);
    model.rest = AffineOf(ReadTransforms(document_, node));
    model.rest.place = model.rest.place * centimetres_;
    if (!IsExportable(model.rest))
        document_.Fail(node, "has transforms that together are not finite");
    model.has_geometry = node.child("instance_geometry") || node.child("instance_controller");
    ReadLens(node, model, index);
    bool left_out = false;
    model.properties = ReadUserProperties(node, left_out);
    static const NoteKind kKind{
        "model has lines among its user properties that are not \"name = value\"",
        "models have lines among their user properties that are not \"name = value\""};
    if (left_out)
        notes_.Add(kKind, model.name);
}

void SceneModels::ReadLens(Element node, ModelDescription& model, std::uint32_t index)
{
    for (const Element instance : node.children("instance_camera"))
    {
        const std::string_view url = Attribute(instance, "url");
        const Element* const camera = index_.cameras.Find(IdOf(url));
        if (!camera)
        {
            static const NoteKind kKind{"camera is not in this file", "cameras are not in this file"};
            notes_.Add(kKind, std::string(url));
            continue;
        }
        if (model.lens)
        {
            static const NoteKind kKind{"model has further cameras, which are left out",
                                        "models have further cameras, which are left out"};
            notes_.Add(kKind, model.name);
            return;
        }
        const Camera& numbers = CameraOf(*camera);
        static const NoteKind kKind{"camera has an angle of view that is not between 0 and 180 degrees",
                                    "cameras have an angle of view that is not between 0 and 180 degrees"};
        if (!numbers.HasPossibleAngles())
            notes_.Add(kKind, model.name);
        model.lens = numbers.Lens(centimetres_);
        cameras_[index] = *camera;
        camera_models_[camera->internal_object()].push_back(index);
    }
}

void SceneModels::CopyModel(std::uint32_t from, ModelDescription& model, std::uint32_t index)
{
    ++added_models_;
    added_bytes_ += TextBytes(models_[from]);
    if (added_bytes_ > kMostAddedBytes)
        return; // refused at once
    const std::uint32_t parent = model.parent;
    model = models_[from];
    model.parent = parent;
    cameras_[index] = cameras_[from];
    if (cameras_[index])
        camera_models_[cameras_[index].internal_object()].push_back(index);
}

std::vector<std::uint32_t> SceneModels::ModelsOf(std::uint32_t node) const
{
    std::vector<std::uint32_t> models;
    for (std::uint32_t model = first_models_[node]; model != kNone; model = next_models_[model])
        models.push_back(model);
    return models;
}

const std::vector<std::uint32_t>& SceneModels::ModelsOf(Element camera) const
{
    static const std::vector<std::uint32_t> kNoModels;
    const auto found = camera_models_.find(camera.internal_object());
    return found == camera_models_.end() ? kNoModels : found->second;
}

const Camera& SceneModels::CameraOf(Element camera)
{
    const auto [found, is_new] = camera_numbers_.try_emplace(camera.internal_object());
    if (is_new)
        found->second = ReadCamera(document_, camera);
    return found->second;
}

} // namespace mobu_host::collada
