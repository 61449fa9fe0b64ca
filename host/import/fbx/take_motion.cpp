#include "host/import/fbx/take_motion.h"

namespace mobu_host::fbx
{

TakeMotion::TakeMotion(const Document& document, const ModelList& models, SceneData& scene,
                       ImportNotes& notes)
    : document_(document), models_(models), scene_(scene), notes_(notes)
{
    for (std::uint32_t model = 0; model < scene.models.size(); ++model)
    {
        const std::vector<UserProperty>& properties = scene.models[model].user_properties;
        for (std::uint32_t i = 0; i < properties.size(); ++i)
            if (properties[i].kind != PropertyKind::Text)
                user_properties_.emplace(Target{model, properties[i].name}, i);
    }
}

std::optional<TakeMotion::Target> TakeMotion::TargetOf(ObjectIndex object, std::string_view property) const
{
    const auto found = models_.by_object.find(object);
    if (found == models_.by_object.end())
        return std::nullopt;
    return Target{found->second, property};
}

std::string TakeMotion::FullName(ObjectIndex object, std::string_view property) const
{
    const auto target = TargetOf(object, property);
    const std::string name =
        target ? scene_.models[target->model].label : PlainText(document_.At(object).name, document_.Tree());
    return name + "." + PlainText(property, document_.Tree());
}

Components TakeMotion::RestOf(ObjectIndex object, std::string_view property) const
{
    const double neutral = property == "Lcl Scaling" ? 1.0 : 0.0;
    Components rest{neutral, neutral, neutral, neutral};
    if (const auto target = TargetOf(object, property))
        if (const PropertyRow* row = models_.sources[target->model].View().Find(property))
            for (std::size_t i = 0; i < rest.size(); ++i)
                rest[i] = FiniteNumber(*row, i, neutral);
    return rest;
}

Blending TakeMotion::BlendingOf(const Target& target, const PropertyRow* row)
{
    if (target.property == "Lcl Rotation")
        return Blending::Turn;
    if (target.property == "Lcl Scaling")
        return Blending::Scale;
    const bool steps = row && (row->kind == "bool" || row->kind == "Bool" || row->kind == "enum" ||
                               row->kind == "Enum" || row->kind == "Visibility");
    return steps ? Blending::Steps : Blending::Numbers;
}

void TakeMotion::Add(ObjectIndex object, std::string_view property, LayerPart part)
{
    const auto target = TargetOf(object, property);
    if (!target)
    {
        notes_.Add({"animated property of an object that is no model is passed over",
                    "animated properties of objects that are no models are passed over"},
                   FullName(object, property));
        return;
    }
    const auto [place, added] = by_target_.try_emplace(*target, moved_.size());
    if (added)
    {
        const PropertyRow* const row = models_.sources[target->model].View().Find(property);
        moved_.push_back(
            {*target, std::make_shared<LayeredValue>(RestOf(object, property), BlendingOf(*target, row))});
    }
    moved_[place->second].value->Add(std::move(part));
}

bool TakeMotion::MoveNode(std::size_t take, const Moved& moved)
{
    std::shared_ptr<const LayeredValue> NodeMotion::*part = nullptr;
    if (moved.target.property == "Lcl Translation")
        part = &NodeMotion::translation;
    else if (moved.target.property == "Lcl Rotation")
        part = &NodeMotion::rotation;
    else if (moved.target.property == "Lcl Scaling")
        part = &NodeMotion::scaling;
    else
        return false;
    scene_.rig.takes[take][moved.target.model].*part = moved.value;
    if (part == &NodeMotion::rotation && !moved.value->IsConstant() &&
        models_.sources[moved.target.model].View().Number("QuaternionInterpolate", 0.0) != 0.0)
        notes_.Add({"rotation goes by its angles; the file has it interpolated as quaternions",
                    "rotations go by their angles; the file has them interpolated as quaternions"},
                   scene_.models[moved.target.model].label);
    return true;
}

bool TakeMotion::MoveProperty(TakeData& take, const Moved& moved)
{
    const ModelData& model = scene_.models[moved.target.model];
    PropertyMotion motion{moved.target.model, kNoNode, nullptr, 1.0, moved.value};
    const std::string name = PlainText(moved.target.property, document_.Tree());
    if (const auto found = user_properties_.find({moved.target.model, name}); found != user_properties_.end())
    {
        motion.user_property = found->second;
    }
    else
    {
        const BuiltIn* const built_in = FindBuiltIn(moved.target.property);
        if (!built_in || (model.kind == ModelKind::Plain && moved.target.property != "Visibility"))
            return false;
        motion.built_in = built_in->name;
        if (moved.target.property == "FocalLength" && !moved.value->IsConstant())
            notes_.Add({"focal length moves, but not the field of view with it",
                        "focal lengths move, but not the fields of view with them"},
                       model.label);
        motion.unit = built_in->is_length ? scene_.centimetres : 1.0;
    }
    take.motions.push_back(std::move(motion));
    return true;
}

void TakeMotion::Finish(std::size_t index)
{
    for (const Moved& moved : moved_)
        if (!MoveNode(index, moved) && !MoveProperty(scene_.takes[index], moved))
            notes_.Add({"animated property that the host does not have is passed over",
                        "animated properties that the host does not have are passed over"},
                       scene_.models[moved.target.model].label + "." +
                           PlainText(moved.target.property, document_.Tree()));
    moved_.clear();
    by_target_.clear();
}

} // namespace mobu_host::fbx
