#include "host/import/host_scene.h"

#include "host/import/base/exportable_number.h"
#include "host/import/base/parse_error.h"
#include "host/import/base/unique_names.h"
#include "host/import/transport_rate.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <type_traits>
#include <utility>

namespace mobu_host
{
namespace
{

// Local +X looks along -Z, +Y is up.
constexpr Matrix3 kCameraTurn{{{0.0, 0.0, 1.0}, {0.0, 1.0, 0.0}, {-1.0, 0.0, 0.0}}};
constexpr Matrix3 kReverseRight{{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, -1.0}}};

// Reverses the axis that points most against its own direction in `matrix`.
Matrix3 ReverseOneAxis(const Matrix3& matrix)
{
    double along[3];
    for (std::size_t axis = 0; axis < 3; ++axis)
        along[axis] = matrix.at[axis][axis] / Length(Column(matrix, axis));
    const auto axis = std::min_element(along, along + 3) - along;
    Matrix3 reverse;
    reverse.at[axis][axis] = -1.0;
    return reverse;
}

constexpr double kRightAngle = 1.0e-6;   // cosine
constexpr double kVisibleShear = 1.0e-3; // cosine: matrices of files have some digits only

// Whether translation, rotation and scaling cannot give it. `tolerance` is the cosine of what counts as a right angle.
bool IsSheared(const Matrix3& matrix, double tolerance)
{
    const Vector axes[] = {Column(matrix, 0), Column(matrix, 1), Column(matrix, 2)};
    const auto leans = [tolerance](const Vector& a, const Vector& b)
    { return std::abs(a[0] * b[0] + a[1] * b[1] + a[2] * b[2]) > tolerance * Length(a) * Length(b); };
    return leans(axes[0], axes[1]) || leans(axes[1], axes[2]) || leans(axes[2], axes[0]);
}

// The SDK multiplies points from the left.
FBMatrix ToSdk(const Affine& affine)
{
    const auto& m = affine.linear.at;
    const Vector& p = affine.place;
    const double rows[16] = {m[0][0], m[1][0], m[2][0], 0.0, m[0][1], m[1][1], m[2][1], 0.0,
                             m[0][2], m[1][2], m[2][2], 0.0, p[0],    p[1],    p[2],    1.0};
    return FBMatrix(rows);
}

constexpr const char* kNotFinite = " is not finite in single precision";

void CheckTime(double seconds, const TakeDescription& take)
{
    if (!(std::abs(seconds) <= kLongestTime))
        throw ParseError("take \"" + take.name + "\" has times beyond a million seconds");
}

void CheckNumbers(const std::vector<PropertyDescription>& properties, const std::string& owner)
{
    const auto is_exportable = [](const auto& value)
    {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, double>)
            return IsExportable(value);
        else if constexpr (std::is_same_v<Value, std::array<double, 3>> ||
                           std::is_same_v<Value, std::array<double, 4>>)
            return std::all_of(value.begin(), value.end(),
                               [](double number) { return IsExportable(number); });
        else
            return true;
    };
    for (const PropertyDescription& property : properties)
        if (!std::visit(is_exportable, property.value))
            throw ParseError("the property \"" + property.name + "\" of " + owner + kNotFinite);
}

void CheckNumbers(const ModelDescription& model)
{
    const std::string quoted = "\"" + model.name + "\"";
    if (!IsExportable(model.rest))
        throw ParseError("the transform of " + quoted + kNotFinite);
    if (model.lens)
        for (const double number : {model.lens->horizontal_angle, model.lens->aspect, model.lens->near_plane,
                                    model.lens->far_plane})
            if (!IsExportable(number))
                throw ParseError("the lens of " + quoted + kNotFinite);
    CheckNumbers(model.properties, quoted);
}

void Check(const SceneDescription& scene, const ImportOptions& options)
{
    CheckModelCount(scene.models.size(), options);
    CheckNumbers(scene.properties, "the scene");
    for (const ModelDescription& model : scene.models)
        CheckNumbers(model);
    for (const TakeDescription& take : scene.takes)
    {
        CheckTime(take.start, take);
        CheckTime(take.stop, take);
    }
}

// Of a text of an exported file, which has one unit for each byte of the SDK's texts.
constexpr std::size_t kLongestText = 65535;

// Notes a text or a name that an export cuts: that of `owner`, or, with `property`, of a property of it.
void NoteLongText(const std::string& text, const std::string& owner, const std::string& property,
                  ImportNotes& notes)
{
    if (text.size() <= kLongestText)
        return;
    const auto shown = [](const std::string& name)
    {
        constexpr std::size_t kShown = 60;
        return name.size() > kShown ? name.substr(0, kShown) + "..." : name;
    };
    notes.Add({"text of more than 65535 characters is cut by an export",
               "texts of more than 65535 characters are cut by an export"},
              shown(owner) + (owner.empty() || property.empty() ? "" : ".") + shown(property));
}

void NoteLongTexts(const std::vector<PropertyDescription>& properties, const std::string& owner,
                   ImportNotes& notes)
{
    for (const PropertyDescription& property : properties)
    {
        const auto* const text = std::get_if<std::string>(&property.value);
        NoteLongText(property.name, owner, property.name, notes);
        if (text)
            NoteLongText(*text, owner, property.name, notes);
    }
}

void NoteLongTexts(const SceneDescription& scene, ImportNotes& notes)
{
    NoteLongTexts(scene.properties, "", notes);
    for (const ModelDescription& model : scene.models)
    {
        NoteLongText(model.name, model.name, "", notes);
        NoteLongTexts(model.properties, model.name, notes);
    }
    for (const TakeDescription& take : scene.takes)
        NoteLongText(take.name, take.name, "", notes);
}

struct AddPropertyOf
{
    FBModel& model;
    const PropertyDescription& property;

    FBProperty* operator()(bool value) const { return Add(kFBPT_bool, &value); }
    FBProperty* operator()(int value) const { return Add(kFBPT_int, &value); }
    FBProperty* operator()(double value) const { return Add(kFBPT_double, &value); }
    FBProperty* operator()(const std::array<double, 3>& value) const
    {
        return Add(kFBPT_Vector3D, value.data());
    }
    FBProperty* operator()(const std::array<double, 4>& value) const
    {
        return Add(kFBPT_ColorRGBA, value.data());
    }
    FBProperty* operator()(const Colour& value) const { return Add(kFBPT_ColorRGB, value.parts.data()); }
    FBProperty* operator()(const std::string& value) const
    {
        const char* const text = value.c_str();
        return Add(kFBPT_charptr, &text);
    }
    FBProperty* operator()(const Choice& choice) const
    {
        return AddUserEnum(model, property.name, choice.items, choice.item, property.animatable);
    }

private:
    FBProperty* Add(FBPropertyType type, const void* value) const
    {
        FBProperty* const added = AddUserProperty(model, property.name, type, property.animatable);
        added->SetData(const_cast<void*>(value));
        return added;
    }
};

void Assign(FBProperty& property, double number)
{
    if (property.GetPropertyType() == kFBPT_double)
        property.SetData(&number);
    else
        property.SetInt(static_cast<int>(std::clamp(number, -2147483648.0, 2147483647.0)));
}

FBVector3d ToSdk(const Vector& vector)
{
    return FBVector3d(vector.data());
}

FBModel* SystemCamera(const std::string& name)
{
    FBPropertyListCamera& cameras = Scene().Cameras; // the system's come first
    for (int i = 0; i < cameras.GetCount() && cameras[i]->SystemCamera; ++i)
        if (name == static_cast<const char*>(cameras[i]->LongName))
            return cameras[i];
    return nullptr;
}

// The host counts these itself; names in the file do not compete with others.
bool IsHosts(ModelKind kind)
{
    return kind == ModelKind::SystemCamera || kind == ModelKind::Switcher;
}

// Moves a time onto the frame that it is meant to be on; others stay. An exporter truncates seconds x rate toward
// zero, so a tick too few would lose the frame: the result is never closer to zero than its frame.
FBTime OnFrame(double seconds, double rate)
{
    FBTime time;
    time.SetSecondDouble(seconds);
    if (!IsWholeFrame(time.GetSecondDouble(), rate))
        return time;
    const double frame = std::round(time.GetSecondDouble() * rate);
    time.SetSecondDouble(frame / rate);
    while (std::abs(time.GetSecondDouble() * rate) < std::abs(frame))
        time.Set(time.Get() + (frame < 0.0 ? -1 : 1));
    return time;
}

std::string PerSecond(double rate)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.6g frames per second", rate);
    return text;
}

class HostSceneBuilder
{
public:
    HostSceneBuilder(SceneDescription& scene, ImportNotes& notes) : scene_(scene), notes_(notes) {}

    void Build(double scene_rate)
    {
        NewScene();
        SetTransportRate(RateOf(scene_rate));
        AddProperties(*static_cast<FBModel*>(Scene().RootModel), scene_.properties);
        NameModels();
        places_.resize(scene_.models.size());
        for (std::size_t i = 0; i < places_.size(); ++i)
            AddModelAt(i);
        SetInterests();
        ListCameras();
        AddTakes();
        AddConstraints();
        Scene().Evaluate();
    }

private:
    // Around the local transform of a model: `before` undoes what was done to the frame above, `after` is done to its
    // own.
    struct Surroundings
    {
        Affine before;
        Matrix3 after;

        Affine Place(const Affine& local) const { return before * local * Affine{after, {}}; }
    };

    struct Place
    {
        FBModel* model = nullptr; // null for a system camera that the host does not have
        std::shared_ptr<const Surroundings> surroundings; // null where they change nothing
        std::size_t first_property = 0;                   // in `properties_`
    };

    double RateOf(double scene_rate)
    {
        if (scene_rate > 0.0)
            return scene_rate;
        if (scene_.rate)
            return *scene_.rate;
        if (const std::optional<double> rate = LowestRateOf(scene_.takes))
            return *rate;
        const std::string rest = " keyed at no common frame rate; the scene has " + PerSecond(kUsualRate);
        RateFit usual(kUsualRate);
        for (const TakeDescription& take : scene_.takes)
            if (!usual.Fits(take))
                notes_.Add({"take is" + rest, "takes are" + rest}, take.name);
        return kUsualRate;
    }

    void NameModels()
    {
        UniqueNames names;
        FBModel* const root = Scene().RootModel;
        names.Make(static_cast<const char*>(root->LongName), "", notes_);
        for (const bool geometry : {false, true})
            for (ModelDescription& model : scene_.models)
                if (model.has_geometry == geometry && !IsHosts(model.kind))
                    model.name = names.Make(std::move(model.name), "Node", notes_);
    }

    void AddProperties(FBModel& model, const std::vector<PropertyDescription>& properties)
    {
        for (const PropertyDescription& property : properties)
            properties_.push_back(std::visit(AddPropertyOf{model, property}, property.value));
    }

    void AddModelAt(std::size_t index)
    {
        const ModelDescription& source = scene_.models[index];
        Place& place = places_[index];
        FBModel* const parent = source.parent == kNoModel ? nullptr : places_[source.parent].model;
        place.first_property = properties_.size();
        if (source.kind == ModelKind::SystemCamera)
            place.model = SystemCamera(source.name);
        else if (source.kind == ModelKind::Switcher)
            place.model = AddCameraSwitcher();
        else if (source.kind == ModelKind::Camera)
            place.model = AddCamera(source.name, parent);
        else
            place.model = source.lens ? AddCameraOf(source, parent) : AddModel(source.name, parent);
        if (!place.model)
            return;
        if (source.parts)
            SetParts(source, *place.model);
        else
            SetRest(source, place);
        for (const BuiltInValue& value : source.values)
            if (FBProperty* const property = place.model->PropertyList.Find(value.property))
                Assign(*property, value.value);
        AddProperties(*place.model, source.properties);
    }

    static void SetParts(const ModelDescription& source, FBModel& model)
    {
        const EulerTransform& parts = *source.parts;
        model.RotationOrder = static_cast<FBModelRotationOrder>(std::clamp(parts.rotation_order, 0, 6));
        model.RotationActive = parts.rotation_active;
        model.PreRotation = ToSdk(parts.pre_rotation);
        model.PostRotation = ToSdk(parts.post_rotation);
        model.Translation = ToSdk(parts.translation);
        model.Rotation = ToSdk(parts.rotation);
        model.Scaling = ToSdk(parts.scaling);
        if (!source.parts_are_whole)
            SetLocalMatrix(model, ToSdk(source.rest));
    }

    void SetRest(const ModelDescription& source, Place& place)
    {
        Surroundings around;
        if (source.parent == kNoModel)
            around.before = scene_.axes;
        else if (const auto& above = places_[source.parent].surroundings)
            around.before.linear = Transposed(above->after); // rotations and reversals only
        if (source.lens)
            around.after = kCameraTurn;
        Reverse(source, around);
        if (!(around.before == Affine()) || !(around.after == Matrix3()))
            place.surroundings = std::make_shared<const Surroundings>(around);
        const Affine rest = around.Place(source.rest);
        place.model->SetMatrix(ToSdk(rest), kModelTransformation, false);
        if (IsSheared(rest.linear, kVisibleShear))
            notes_.Add({"model is sheared at rest, where its exported rotation is not of length 1",
                        "models are sheared at rest, where their exported rotations are not of length 1"},
                       source.name);
        if (IsSheared(rest.linear, kRightAngle))
            SetLocalMatrix(*place.model, ToSdk(rest));
    }

    // A camera keeps looking where it looks, and its up: the third axis is reversed.
    void Reverse(const ModelDescription& source, Surroundings& around)
    {
        const Affine placed = around.Place(source.rest);
        if (!(Determinant(placed.linear) < 0.0))
            return;
        around.after = around.after * (source.lens ? kReverseRight : ReverseOneAxis(placed.linear));
        if (Determinant(source.rest.linear) < 0.0) // not only what is above it
            notes_.Add({"mirrored model had one of its axes reversed",
                        "mirrored models had one of their axes reversed"},
                       source.name);
    }

    FBModel* AddCameraOf(const ModelDescription& source, FBModel* parent)
    {
        FBCamera& camera = *AddCamera(source.name, parent);
        const LensDescription& lens = *source.lens;
        camera.Type = lens.orthographic ? kFBCameraTypeOrthogonal : kFBCameraTypePerspective;
        camera.ApertureMode = kFBApertureHorizontal;
        if (lens.aspect > 0.0)
            camera.FilmAspectRatio = lens.aspect;
        if (lens.horizontal_angle > 0.0 && !lens.orthographic)
            camera.FieldOfView = lens.horizontal_angle;
        if (lens.near_plane > 0.0)
            camera.NearPlaneDistance = lens.near_plane;
        if (lens.far_plane > 0.0)
            camera.FarPlaneDistance = lens.far_plane;
        if (lens.orthographic)
            notes_.Add({"orthographic camera has no field of view; the host's default stays",
                        "orthographic cameras have no field of view; the host's default stays"},
                       source.name);
        return &camera;
    }

    void SetInterests()
    {
        for (std::size_t i = 0; i < places_.size(); ++i)
            if (const std::uint32_t interest = scene_.models[i].interest;
                interest != kNoModel && places_[interest].model)
                static_cast<FBCamera*>(places_[i].model)->Interest = places_[interest].model;
    }

    void ListCameras() const
    {
        std::vector<FBCamera*> cameras;
        for (const std::uint32_t model : scene_.cameras)
            cameras.push_back(static_cast<FBCamera*>(places_[model].model));
        if (!cameras.empty())
            OrderCameras(cameras);
    }

    void AddTakes()
    {
        if (scene_.takes.empty())
            return; // the new scene's "Take 001" of 0 to 0 s
        ClearTakes();
        UniqueNames names;
        std::vector<FBTake*> takes;
        for (TakeDescription& source : scene_.takes)
        {
            char nameless[32];
            std::snprintf(nameless, sizeof nameless, "Take %03zu", takes.size() + 1);
            const std::string name = names.Make(TakeName(source.name, notes_), nameless, notes_);
            takes.push_back(AddTakeOf(name, source));
            FBTake& take = *takes.back();
            for (ModelMotion& motion : source.models)
                if (const Place& place = places_[motion.model]; place.model)
                    Animate(place, take, std::move(motion.transform));
            for (PartsMotion& motion : source.parts)
                if (FBModel* const model = places_[motion.model].model)
                    AnimateParts(*model, take, std::move(motion.parts));
            for (PropertyMotion& motion : source.properties)
                if (FBProperty* const property = PropertyOf(motion))
                    AnimateProperty(*property, take, std::move(motion.value));
            source = TakeDescription();
        }
        FBSystem().CurrentTake = takes[std::min(scene_.current_take, takes.size() - 1)];
    }

    FBProperty* PropertyOf(const PropertyMotion& motion) const
    {
        const Place& place = places_[motion.model];
        if (!place.model)
            return nullptr;
        return motion.built_in ? place.model->PropertyList.Find(motion.built_in)
                               : properties_[place.first_property + motion.custom];
    }

    FBTake* AddTakeOf(const std::string& name, const TakeDescription& source)
    {
        const double rate = FBPlayerControl().GetTransportFpsValue();
        if (scene_.takes_keep_ends)
            return AddTake(name, OnFrame(source.start, rate), OnFrame(source.stop, rate));
        const bool starts_on_frame = IsWholeFrame(source.start, rate);
        const bool stops_on_frame = IsWholeFrame(source.stop, rate);
        if (!starts_on_frame || !stops_on_frame)
            notes_.Add({"take was widened to whole frames at " + PerSecond(rate),
                        "takes were widened to whole frames at " + PerSecond(rate)},
                       name);
        return AddTake(name,
                       OnFrame(starts_on_frame ? source.start : std::floor(source.start * rate) / rate, rate),
                       OnFrame(stops_on_frame ? source.stop : std::ceil(source.stop * rate) / rate, rate));
    }

    void AddConstraints()
    {
        for (const ConstraintDescription& source : scene_.constraints)
        {
            AddConstraint(source.name, source.active)->Description = source.type.c_str();
            if (source.active)
                notes_.Add({"constraint is not solved; what it holds moves as it is keyed",
                            "constraints are not solved; what they hold moves as it is keyed"},
                           source.name + " (" + source.type + ")");
        }
    }

    static void AnimateParts(FBModel& model, FBTake& take, std::function<TransformParts(double)> parts)
    {
        AnimateTransform(
            model, take,
            [parts = std::move(parts)](double seconds)
            {
                const TransformParts now = parts(seconds);
                return LocalTransform{ToSdk(now.translation), ToSdk(now.rotation), ToSdk(now.scaling)};
            });
    }

    static void Animate(const Place& place, FBTake& take, TransformOverTime transform)
    {
        if (place.surroundings)
            AnimateLocalMatrix(*place.model, take,
                               [transform = std::move(transform), around = place.surroundings](double seconds)
                               { return ToSdk(around->Place(transform(seconds))); });
        else
            AnimateLocalMatrix(*place.model, take,
                               [transform = std::move(transform)](double seconds)
                               { return ToSdk(transform(seconds)); });
    }

    SceneDescription& scene_;
    ImportNotes& notes_;
    std::vector<Place> places_;           // of each model
    std::vector<FBProperty*> properties_; // custom ones: the scene's, then each model's
};

} // namespace

void BuildHostScene(SceneDescription&& scene, const ImportOptions& options, ImportNotes& notes)
{
    Check(scene, options);
    NoteLongTexts(scene, notes);
    HostSceneBuilder(scene, notes).Build(options.scene_rate);
}

} // namespace mobu_host
