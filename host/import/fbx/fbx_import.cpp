#include "host/import/fbx/fbx_import.h"

#include "host/import/fbx/scene_data.h"
#include "host/import/frame_time.h"
#include "host/import/long_text.h"
#include "host/import/parse_error.h"
#include "host/import/unique_names.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace mobu_host::fbx
{
namespace
{

FBVector3d ToSdk(const Vector& vector)
{
    return FBVector3d(vector.data());
}

FBPropertyType TypeOf(PropertyKind kind)
{
    switch (kind)
    {
    case PropertyKind::Truth:
        return kFBPT_bool;
    case PropertyKind::Whole:
        return kFBPT_int;
    case PropertyKind::Number:
        return kFBPT_double;
    case PropertyKind::Text:
        return kFBPT_charptr;
    case PropertyKind::Choice:
        return kFBPT_enum;
    case PropertyKind::Vector3:
        return kFBPT_Vector3D;
    case PropertyKind::Colour:
        return kFBPT_ColorRGB;
    case PropertyKind::ColourAlpha:
        return kFBPT_ColorRGBA;
    }
    return kFBPT_unknown;
}

class HostScene
{
public:
    HostScene(SceneData&& data, ImportNotes& notes)
        : data_(std::make_shared<SceneData>(std::move(data))), notes_(notes)
    {
    }

    void Build()
    {
        NewScene();
        SetTransportRate(data_->frames_per_second);
        models_.resize(data_->models.size());
        for (std::uint32_t i = 0; i < data_->models.size(); ++i)
            AddModel(i);
        for (std::uint32_t i = 0; i < data_->models.size(); ++i)
            SetInterest(i);
        ListCameras();
        AddTakes();
        for (const ConstraintData& constraint : data_->constraints)
            AddConstraint(constraint);
        Scene().Evaluate();
    }

private:
    FBModel* SystemCamera(const std::string& label) const
    {
        FBPropertyListCamera& cameras = Scene().Cameras; // the system's come first
        for (int i = 0; i < cameras.GetCount() && cameras[i]->SystemCamera; ++i)
            if (label == static_cast<const char*>(cameras[i]->LongName))
                return cameras[i];
        return nullptr;
    }

    // In the order of the file's objects, whatever the tree is: indices of a switcher count cameras so.
    void ListCameras() const
    {
        std::vector<std::pair<ObjectIndex, FBCamera*>> found;
        for (std::size_t i = 0; i < models_.size(); ++i)
            if (data_->models[i].kind == ModelKind::Camera)
                found.emplace_back(data_->models[i].object, static_cast<FBCamera*>(models_[i]));
        std::sort(found.begin(), found.end());
        std::vector<FBCamera*> cameras;
        cameras.reserve(found.size());
        for (const auto& [object, camera] : found)
            cameras.push_back(camera);
        OrderCameras(cameras);
    }

    FBModel* MakeModel(const ModelData& model, FBModel* parent) const
    {
        switch (model.kind)
        {
        case ModelKind::Plain:
            return mobu_host::AddModel(model.label, parent);
        case ModelKind::Camera:
            return AddCamera(model.label, parent);
        case ModelKind::SystemCamera:
            return SystemCamera(model.label);
        case ModelKind::Switcher:
            return AddCameraSwitcher();
        }
        return nullptr;
    }

    void AddModel(std::uint32_t index)
    {
        const ModelData& source = data_->models[index];
        const RigNode& node = data_->rig.nodes[index];
        FBModel* const model = MakeModel(source, node.parent == kNoNode ? nullptr : models_[node.parent]);
        models_[index] = model;
        if (source.kind == ModelKind::Switcher && switcher_ == kNoNode)
            switcher_ = index;
        first_user_property_.push_back(user_properties_.size());
        if (!model)
            return; // a system camera that the host does not know
        model->RotationOrder = static_cast<FBModelRotationOrder>(std::clamp(node.rotation_order, 0, 6));
        model->RotationActive = node.rotation_active;
        model->PreRotation = ToSdk(node.pre_rotation);
        model->PostRotation = ToSdk(node.post_rotation);
        model->Translation = ToSdk(node.translation);
        model->Rotation = ToSdk(node.rotation);
        model->Scaling = ToSdk(node.scaling);
        if (!data_->rig.IsPlain(index))
            SetLocalMatrix(*model, Local(index, Rig::kAtRest, 0.0));
        for (const BuiltInValue& value : source.values)
            if (FBProperty* property = Settable(*model, value.property))
                SetNumber(*property, value.value);
        for (const UserProperty& property : source.user_properties)
            user_properties_.push_back(Add(*model, property));
    }

    // The switcher's index is not for assigning: that would switch for ever.
    static FBProperty* Settable(FBModel& model, const char* name)
    {
        return std::string_view(name) == "Camera Index" ? nullptr : model.PropertyList.Find(name);
    }

    static void SetNumber(FBProperty& property, double number)
    {
        if (property.GetPropertyType() == kFBPT_double)
            property.SetData(&number);
        else
            property.SetInt(static_cast<int>(std::clamp(number, -2147483648.0, 2147483647.0)));
    }

    static FBProperty* Add(FBModel& model, const UserProperty& source)
    {
        if (source.kind == PropertyKind::Choice)
            return AddUserEnum(model, source.name, source.items, static_cast<int>(source.value[0]),
                               source.animatable);
        FBProperty* const property =
            AddUserProperty(model, source.name, TypeOf(source.kind), source.animatable);
        const char* text = source.text.c_str();
        Components value = source.value;
        switch (source.kind)
        {
        case PropertyKind::Text:
            property->SetData(&text);
            break;
        case PropertyKind::Truth:
        case PropertyKind::Whole:
            property->SetInt(static_cast<int>(value[0]));
            break;
        default:
            property->SetData(value.data());
        }
        return property;
    }

    void SetInterest(std::uint32_t index)
    {
        const std::uint32_t interest = data_->rig.nodes[index].interest;
        if (interest != kNoNode && models_[index] && models_[interest])
            static_cast<FBCamera*>(models_[index])->Interest = models_[interest];
    }

    FBMatrix Local(std::uint32_t node, std::size_t take, double seconds) const
    {
        double rows[16];
        data_->rig.LocalMatrix(node, take, seconds, rows);
        return FBMatrix(rows);
    }

    void AddTakes()
    {
        if (data_->takes.empty())
            return; // the fresh scene's "Take 001" of 0 to 0 s
        ClearTakes();
        UniqueNames labels;
        std::vector<FBTake*> takes;
        const double rate = FBPlayerControl().GetTransportFpsValue();
        for (std::size_t t = 0; t < data_->takes.size(); ++t)
        {
            const TakeData& source = data_->takes[t];
            char nameless[32];
            std::snprintf(nameless, sizeof nameless, "Take %03zu", t + 1);
            NoteLongText(source.name, source.name, "", notes_);
            const std::string name = labels.Make(source.name, nameless, notes_);
            takes.push_back(
                AddTake(name, OnFrame(FBTime(source.start), rate), OnFrame(FBTime(source.stop), rate)));
            MoveModels(t, *takes.back());
            MoveProperties(t, *takes.back());
        }
        FBSystem().CurrentTake = takes[std::min(data_->current_take, takes.size() - 1)];
    }

    void MoveModels(std::size_t t, FBTake& take)
    {
        for (const std::uint32_t i : data_->rig.MovingNodes(t))
        {
            if (!models_[i])
                continue;
            const std::shared_ptr<SceneData> data = data_;
            if (data_->rig.IsPlain(i))
                AnimateTransform(*models_[i], take,
                                 [data, i, &motion = data_->rig.takes[t].at(i)](double seconds)
                                 { return PlainTransform(data->rig.nodes[i], motion, seconds); });
            else
                AnimateLocalMatrix(*models_[i], take,
                                   [data, i, t](double seconds)
                                   {
                                       double rows[16];
                                       data->rig.LocalMatrix(i, t, seconds, rows);
                                       return FBMatrix(rows);
                                   });
        }
    }

    static LocalTransform PlainTransform(const RigNode& node, const NodeMotion& motion, double seconds)
    {
        const auto value = [seconds](const std::shared_ptr<const LayeredValue>& moving, const Vector& rest)
        { return moving ? FBVector3d(moving->At(seconds).data()) : ToSdk(rest); };
        return {value(motion.translation, node.translation), value(motion.rotation, node.rotation),
                value(motion.scaling, node.scaling)};
    }

    void MoveProperties(std::size_t t, FBTake& take)
    {
        for (const PropertyMotion& motion : data_->takes[t].motions)
        {
            FBModel* const model = models_[motion.model];
            if (!model)
                continue;
            FBProperty* const property =
                motion.built_in ? model->PropertyList.Find(motion.built_in)
                                : user_properties_[first_user_property_[motion.model] + motion.user_property];
            if (property)
                AnimateProperty(*property, take,
                                [value = motion.value, unit = motion.unit](double seconds, int component)
                                { return value->At(seconds)[static_cast<std::size_t>(component)] * unit; });
        }
        HoldSwitcher(t, take);
    }

    // Where the take does not switch, the switcher stands at the file's index.
    void HoldSwitcher(std::size_t t, FBTake& take)
    {
        const auto& motions = data_->takes[t].motions;
        if (switcher_ == kNoNode ||
            std::any_of(motions.begin(), motions.end(),
                        [this](const PropertyMotion& motion) { return motion.model == switcher_; }))
            return;
        FBModel& model = *models_[switcher_];
        for (const BuiltInValue& value : data_->models[switcher_].values)
            if (FBProperty* property =
                    Settable(model, value.property) ? nullptr : model.PropertyList.Find(value.property))
                AnimateProperty(*property, take, [index = value.value](double, int) { return index; });
    }

    void AddConstraint(const ConstraintData& source)
    {
        FBConstraint* const constraint = mobu_host::AddConstraint(source.name, source.active);
        constraint->Description = source.type.c_str();
        if (source.active)
            notes_.Add({"constraint is not solved; what it holds moves as it is keyed",
                        "constraints are not solved; what they hold moves as it is keyed"},
                       source.name + " (" + source.type + ")");
    }

    std::shared_ptr<SceneData> data_;
    ImportNotes& notes_;
    std::vector<FBModel*> models_;     // null for what the host does not have
    std::uint32_t switcher_ = kNoNode; // the first: they are all one in the host
    std::vector<FBProperty*> user_properties_;
    std::vector<std::size_t> first_user_property_; // of each model
};

} // namespace

bool ImportFbx(std::string_view file, ImportNotes& notes, std::string& cause, const ImportOptions& options)
{
    try
    {
        const RecordTree tree(file);
        SceneData scene = ReadScene(Document(tree), notes);
        CheckModelCount(scene.models.size(), options);
        if (options.scene_rate > 0.0)
            scene.frames_per_second = options.scene_rate;
        HostScene(std::move(scene), notes).Build();
        return true;
    }
    catch (const ParseError& damage)
    {
        cause = damage.what();
        return false;
    }
}

} // namespace mobu_host::fbx
