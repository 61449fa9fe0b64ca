#include "host/import/fbx/take_motion.h"

#include <algorithm>

namespace mobu_host::fbx
{

TakeMotion::TakeMotion(const Document& document, const ModelList& models, SceneData& data, ImportNotes& notes)
    : document_(document),
      models_(models),
      scene_(data.scene),
      transforms_(*data.transforms),
      centimetres_(data.centimetres),
      notes_(notes)
{
    for (std::uint32_t model = 0; model < scene_.models.size(); ++model)
    {
        if (scene_.models[model].kind == ModelKind::Switcher && switcher_ == kNoModel)
            switcher_ = model;
        const std::vector<PropertyDescription>& properties = scene_.models[model].properties;
        for (std::size_t i = 0; i < properties.size(); ++i)
            if (!std::holds_alternative<std::string>(properties[i].value))
                custom_.emplace(Target{model, properties[i].name}, i);
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
        target ? scene_.models[target->model].name : PlainText(document_.At(object).name, document_.Tree());
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
        notes_.Add({"animated property of an object that is not a model is ignored",
                    "animated properties of objects that are not models are ignored"},
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
    transforms_.takes[take][moved.target.model].*part = moved.value;
    if (part == &NodeMotion::rotation && !moved.value->IsConstant() &&
        models_.sources[moved.target.model].View().Number("QuaternionInterpolate", 0.0) != 0.0)
        notes_.Add({"rotation goes by its angles; the file has it interpolated as quaternions",
                    "rotations go by their angles; the file has them interpolated as quaternions"},
                   scene_.models[moved.target.model].name);
    return true;
}

bool TakeMotion::MoveProperty(TakeDescription& take, const Moved& moved)
{
    const ModelDescription& model = scene_.models[moved.target.model];
    PropertyMotion motion{moved.target.model, nullptr, 0, {}};
    double unit = 1.0;
    const std::string name = PlainText(moved.target.property, document_.Tree());
    if (const auto found = custom_.find({moved.target.model, name}); found != custom_.end())
    {
        motion.custom = found->second;
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
                       model.name);
        unit = built_in->is_length ? centimetres_ : 1.0;
    }
    motion.value = [value = moved.value, unit](double seconds, int component)
    { return value->At(seconds)[static_cast<std::size_t>(component)] * unit; };
    take.properties.push_back(std::move(motion));
    return true;
}

// Where the take does not switch, the switcher stays at the file's index.
void TakeMotion::HoldSwitcher(TakeDescription& take) const
{
    if (switcher_ == kNoModel ||
        std::any_of(take.properties.begin(), take.properties.end(),
                    [this](const PropertyMotion& motion) { return motion.model == switcher_; }))
        return;
    const PropertyRow* const row = models_.sources[switcher_].View().Find(kSwitcherIndex);
    if (row && !row->Has('U'))
        take.properties.push_back({switcher_, kSwitcherIndex, 0,
                                   [index = FiniteNumber(*row, 0, 0.0)](double, int) { return index; }});
}

void TakeMotion::Finish(std::size_t index)
{
    for (const Moved& moved : moved_)
        if (!MoveNode(index, moved) && !MoveProperty(scene_.takes[index], moved))
            notes_.Add({"animated property that the host does not have is ignored",
                        "animated properties that the host does not have are ignored"},
                       scene_.models[moved.target.model].name + "." +
                           PlainText(moved.target.property, document_.Tree()));
    HoldSwitcher(scene_.takes[index]);
    moved_.clear();
    by_target_.clear();
}

} // namespace mobu_host::fbx
