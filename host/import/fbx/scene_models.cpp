#include "host/import/fbx/scene_models.h"

#include "host/import/base/parse_error.h"
#include "host/import/base/unique_names.h"

#include <algorithm>
#include <map>

namespace mobu_host::fbx
{
namespace
{

constexpr std::string_view kSystemCameraPrefix = "Producer ";

constexpr BuiltIn kBuiltIns[] = {
    {"Visibility", false},       {"FieldOfView", false},     {"FieldOfViewX", false},
    {"FieldOfViewY", false},     {"FocalLength", false},     {"FilmWidth", false},
    {"FilmHeight", false},       {"FilmAspectRatio", false}, {"FilmSqueezeRatio", false},
    {"PixelAspectRatio", false}, {"FocusAngle", false},      {"Roll", false},
    {"TurnTable", false},        {"NearPlane", true},        {"FarPlane", true},
    {"FocusDistance", true},     {kSwitcherIndex, false},
};

bool IsCamera(const Object& object)
{
    return object.kind == "Model" && object.type == "Camera";
}

class ModelReader
{
public:
    ModelReader(const Document& document, SceneData& data, ImportNotes& notes)
        : document_(document),
          scene_(data.scene),
          transforms_(*data.transforms),
          centimetres_(data.centimetres),
          notes_(notes)
    {
        const PropertyRows* const node = document.Template("FbxNode");
        model_defaults_ = node ? node : document.Template("KFbxNode");
        const PropertyRows* const camera = document.Template("FbxCamera");
        camera_defaults_ = camera ? camera : document.Template("KFbxCamera");
    }

    ModelList Read()
    {
        FindParents();
        BreakCircles();
        Reserve();
        names_.Make("Scene", "", notes_);
        for (const ObjectIndex top : tops_)
            AddTree(top);
        for (std::size_t i = 0; i < list_.sources.size(); ++i)
        {
            Link(i);
            scene_.models[i].interest = transforms_.nodes[i].interest;
        }
        return std::move(list_);
    }

private:
    void Reserve()
    {
        std::size_t models = 0;
        for (ObjectIndex i = 1; i < document_.Count(); ++i)
            models += document_.At(i).kind == "Model" ? 1 : 0;
        list_.sources.reserve(models);
        scene_.models.reserve(models);
        transforms_.nodes.reserve(models);
    }

    // By the first connection from a model to a model, or to the root.
    void FindParents()
    {
        parents_.assign(document_.Count(), 0);
        children_.assign(document_.Count(), {});
        hangs_.assign(document_.Count(), false);
        for (ObjectIndex target = 0; target < document_.Count(); ++target)
        {
            if (target != 0 && document_.At(target).kind != "Model")
                continue;
            for (const Connection& connection : document_.Into(target))
            {
                const ObjectIndex child = connection.source;
                if (!connection.property.empty() || document_.At(child).kind != "Model")
                    continue;
                if (hangs_[child])
                {
                    notes_.Add({"model with several parents stays below the first",
                                "models with several parents stay below the first"},
                               NameAt(child));
                    continue;
                }
                hangs_[child] = true;
                parents_[child] = target;
                if (target != 0)
                    children_[target].push_back(child);
                else
                    tops_.push_back(child);
            }
        }
        for (ObjectIndex i = 1; i < document_.Count(); ++i)
            if (document_.At(i).kind == "Model" && !hangs_[i])
                tops_.push_back(i);
    }

    // Models in a circle of parents are not below any top: the first of them in the file becomes one.
    void BreakCircles()
    {
        std::vector<std::uint8_t> seen(document_.Count()); // 1 on the way up, 2 known to end at a top
        for (ObjectIndex i = 1; i < document_.Count(); ++i)
        {
            std::vector<ObjectIndex> path;
            ObjectIndex at = i;
            while (at != 0 && seen[at] == 0 && document_.At(at).kind == "Model")
            {
                seen[at] = 1;
                path.push_back(at);
                at = hangs_[at] ? parents_[at] : 0;
            }
            if (at != 0 && seen[at] == 1)
            {
                notes_.Add({"model is its own ancestor and was taken off its parent",
                            "models are their own ancestors and were taken off their parents"},
                           NameAt(at));
                std::erase(children_[parents_[at]], at);
                parents_[at] = 0;
                tops_.push_back(at);
            }
            for (const ObjectIndex model : path)
                seen[model] = 2;
        }
    }

    void AddTree(ObjectIndex top)
    {
        struct Open
        {
            ObjectIndex object;
            std::uint32_t parent;
            std::size_t depth;
        };
        std::vector<Open> open{{top, kNoModel, 1}};
        while (!open.empty())
        {
            const Open next = open.back();
            open.pop_back();
            if (next.depth > kDeepestModel)
                throw ParseError(document_.At(next.object).record.Offset(),
                                 "its models are nested more than " + std::to_string(kDeepestModel) +
                                     " deep");
            const std::uint32_t index = AddModel(next.object, next.parent);
            const auto& children = children_[next.object];
            for (auto child = children.rbegin(); child != children.rend(); ++child)
                open.push_back({*child, index, next.depth + 1});
        }
    }

    std::string NameAt(ObjectIndex model) const
    {
        return PlainText(document_.At(model).name, document_.Tree());
    }

    ModelKind KindOf(ObjectIndex index) const
    {
        const Object& object = document_.At(index);
        if (!hangs_[index] && children_[index].empty())
        {
            if (object.type == "CameraSwitcher")
                return ModelKind::Switcher;
            if (IsCamera(object) && object.name.starts_with(kSystemCameraPrefix))
                return ModelKind::SystemCamera;
        }
        return IsCamera(object) ? ModelKind::Camera : ModelKind::Plain;
    }

    std::uint32_t AddModel(ObjectIndex index, std::uint32_t parent)
    {
        const Object& object = document_.At(index);
        const auto model_index = static_cast<std::uint32_t>(scene_.models.size());
        ModelSource source;
        source.object = index;
        source.own = PropertyRows(object.record);
        source.model_defaults = model_defaults_;
        for (const Connection& connection : document_.Into(index))
        {
            if (connection.property.empty() && document_.At(connection.source).kind == "NodeAttribute" &&
                source.attribute == 0)
            {
                source.attribute = connection.source;
                source.attribute_rows =
                    std::make_unique<PropertyRows>(document_.At(connection.source).record);
                list_.by_object.emplace(connection.source, model_index);
            }
        }
        if (IsCamera(object))
            source.attribute_defaults = camera_defaults_;

        ModelDescription model;
        model.parent = parent;
        model.kind = KindOf(index);
        model.name = NameAt(index);
        if (model.kind == ModelKind::Plain || model.kind == ModelKind::Camera)
            model.name = names_.Make(model.name, "Model", notes_);
        try
        {
            ReadUserProperties(source, model);
            ReadBuiltIns(source, model);
            AddNode(source.View(), parent);
        }
        catch (const ParseError& error)
        {
            throw ParseError("model \"" + model.name + "\": " + error.what());
        }

        list_.by_object.emplace(index, model_index);
        list_.sources.push_back(std::move(source));
        scene_.models.push_back(std::move(model));
        return model_index;
    }

    void ReadUserProperties(const ModelSource& source, ModelDescription& model)
    {
        for (const PropertyRows* rows :
             {&source.own, static_cast<const PropertyRows*>(source.attribute_rows.get())})
        {
            if (!rows)
                continue;
            for (const PropertyRow& row : rows->All())
            {
                if (!row.Has('U') || (rows != &source.own && source.own.Find(row.name)))
                    continue;
                if (auto property = ReadUserProperty(row, document_.Tree(), model.name, notes_))
                    model.properties.push_back(*std::move(property));
            }
        }
    }

    void ReadBuiltIns(const ModelSource& source, ModelDescription& model)
    {
        const PropertyView view = source.View();
        for (const BuiltIn& built_in : kBuiltIns)
        {
            const PropertyRow* const row = view.Find(built_in.name);
            const bool is_lens = std::string_view(built_in.name) != "Visibility";
            if (!row || row->Has('U') || (model.kind == ModelKind::Plain && is_lens))
                continue;
            const double value = FiniteNumber(*row, 0, 0.0) * (built_in.is_length ? centimetres_ : 1.0);
            if (built_in.name != std::string_view(kSwitcherIndex)) // not for assigning: takes animate it
                model.values.push_back({built_in.name, value});
        }
        if (model.kind != ModelKind::Camera && model.kind != ModelKind::SystemCamera)
            return;
        // Files count both, horizontal, vertical, focal length; the SDK vertical, horizontal, both, focal length.
        constexpr double kApertureModes[] = {2.0, 1.0, 0.0, 3.0};
        const int aperture = view.Choice("ApertureMode", 2);
        if (aperture >= 0 && aperture < 4)
            model.values.push_back({"ApertureMode", kApertureModes[aperture]});
        const int projection = view.Choice("CameraProjectionType", 0);
        model.values.push_back({"CameraType", projection == 1 ? 1.0 : 0.0});
        const char* const width = view.Find("AspectWidth") ? "AspectWidth" : "AspectW";
        const char* const height = view.Find("AspectHeight") ? "AspectHeight" : "AspectH";
        model.values.push_back({"ResolutionWidth", view.Number(width, 320.0)});
        model.values.push_back({"ResolutionHeight", view.Number(height, 200.0)});
    }

    void AddNode(const PropertyView& view, std::uint32_t parent)
    {
        TransformNode node;
        node.parent = parent;
        const int inherit = view.Choice("InheritType", 0);
        node.inheritance = inherit == 1   ? ScaleInheritance::Plain
                           : inherit == 2 ? ScaleInheritance::NotParents
                                          : ScaleInheritance::AfterTurn;
        node.rotation_order = view.Choice("RotationOrder", 0);
        node.rotation_active =
            view.Truth("RotationActive", false) && !view.Truth("RotationSpaceForLimitOnly", false);
        node.translation = view.Vector("Lcl Translation", {});
        node.rotation = view.Vector("Lcl Rotation", {});
        node.scaling = view.Vector("Lcl Scaling", kOnes);
        node.pre_rotation = view.Vector("PreRotation", {});
        node.post_rotation = view.Vector("PostRotation", {});
        const Pivots pivots{view.Vector("RotationOffset", {}), view.Vector("RotationPivot", {}),
                            view.Vector("ScalingOffset", {}), view.Vector("ScalingPivot", {})};
        if (!(pivots == Pivots()))
            node.pivots = std::make_unique<const Pivots>(pivots);
        transforms_.nodes.push_back(std::move(node));
    }

    // What a camera looks at.
    void Link(std::size_t model)
    {
        for (const Connection& connection : document_.Into(list_.sources[model].object))
        {
            const bool interest = connection.property == "LookAtProperty";
            if (!interest && connection.property != "UpVectorProperty")
                continue;
            const auto other = list_.by_object.find(connection.source);
            if (other == list_.by_object.end() || other->second == model)
                continue;
            if (scene_.models[model].kind != ModelKind::Camera)
                notes_.Add({"model that looks at another and is not a camera keeps its own rotation",
                            "models that look at others and are not cameras keep their own rotation"},
                           scene_.models[model].name);
            else
                (interest ? transforms_.nodes[model].interest : transforms_.nodes[model].up) = other->second;
        }
    }

    const Document& document_;
    SceneDescription& scene_;
    TransformEvaluator& transforms_;
    const double centimetres_;
    ImportNotes& notes_;
    const PropertyRows* model_defaults_;
    const PropertyRows* camera_defaults_;
    std::vector<ObjectIndex> parents_; // 0: none or the root
    std::vector<std::vector<ObjectIndex>> children_;
    std::vector<bool> hangs_;
    std::vector<ObjectIndex> tops_;
    UniqueNames names_; // made here, since notes and errors name models by them
    ModelList list_;
};

} // namespace

const BuiltIn* FindBuiltIn(std::string_view name)
{
    const auto* const found = std::find_if(std::begin(kBuiltIns), std::end(kBuiltIns),
                                           [&](const BuiltIn& b) { return b.name == name; });
    return found == std::end(kBuiltIns) ? nullptr : found;
}

ModelList ReadModels(const Document& document, SceneData& data, ImportNotes& notes)
{
    return ModelReader(document, data, notes).Read();
}

} // namespace mobu_host::fbx
