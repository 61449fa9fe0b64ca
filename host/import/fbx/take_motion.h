#pragma once

#include "host/import/fbx/scene_models.h"

#include <functional>
#include <optional>

namespace mobu_host::fbx
{

/// Gathers what the layers of one take say of each property, and moves transforms and properties by it.
class TakeMotion
{
public:
    TakeMotion(const Document& document, const ModelList& models, SceneData& data, ImportNotes& notes);

    /// `object` is a model or an attribute; others are ignored, with a note. Layers come from the lowest up.
    void Add(ObjectIndex object, std::string_view property, LayerPart part);

    /// For notes and errors: "Hips.Lcl Rotation".
    std::string FullName(ObjectIndex object, std::string_view property) const;

    /// What the property is without animation; the neutral value where the file does not say.
    Components RestOf(ObjectIndex object, std::string_view property) const;

    /// Ends the take `index` of the scene.
    void Finish(std::size_t index);

private:
    struct Target
    {
        std::uint32_t model;
        std::string_view property;
        bool operator==(const Target&) const = default;
    };
    struct HashTarget
    {
        std::size_t operator()(const Target& target) const
        {
            return std::hash<std::string_view>()(target.property) * 31 + target.model;
        }
    };
    struct Moved
    {
        Target target;
        std::shared_ptr<LayeredValue> value;
    };

    std::optional<Target> TargetOf(ObjectIndex object, std::string_view property) const;
    static Blending BlendingOf(const Target& target, const PropertyRow* row);
    bool MoveNode(std::size_t take, const Moved& moved);
    bool MoveProperty(TakeDescription& take, const Moved& moved);
    void HoldSwitcher(TakeDescription& take) const;

    const Document& document_;
    const ModelList& models_;
    SceneDescription& scene_;
    TransformEvaluator& transforms_;
    const double centimetres_;
    ImportNotes& notes_;
    std::uint32_t switcher_ = kNoModel; // the first: they are all one in the host
    std::vector<Moved> moved_;          // in file order
    std::unordered_map<Target, std::size_t, HashTarget> by_target_;
    std::unordered_map<Target, std::size_t, HashTarget> custom_; // properties that numbers can move
};

} // namespace mobu_host::fbx
