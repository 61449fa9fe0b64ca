#include "gltf/convert/from_gltf.h"

#include "gltf/convert/from_context.h"
#include "gltf/convert/from_materials.h"
#include "gltf/convert/from_meshes.h"
#include "gltf/convert/from_nodes.h"
#include "gltf/convert/from_objects.h"
#include "gltf/convert/from_switcher.h"
#include "gltf/convert/to_gltf.h"
#include "gltf/light.h"
#include "tev2_loader/format.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace tev2_gltf
{

using gltf::JsonValue;
using gltf::Place;
using namespace TEV2_LOADER;

namespace
{

/// What is read, or kept as parameters of materials. A name that ends in '_' stands for all that begin so.
constexpr std::string_view kKnownExtensions[] = {"KHR_lights_punctual", "KHR_texture_transform",
                                                 "KHR_mesh_quantization", "KHR_materials_"};

bool IsKnown(std::string_view extension)
{
    return std::ranges::any_of(
        kKnownExtensions, [extension](std::string_view known)
        { return known.ends_with('_') ? extension.starts_with(known) : extension == known; });
}

void CheckRequired(const gltf::Document& document)
{
    for (const std::string_view extension : document.RequiredExtensions())
    {
        if (!IsKnown(extension))
            throw gltf::Error("it requires the extension \"" + std::string(extension.substr(0, 80)) +
                              "\", which is not read");
    }
}

/// Nodes whose weights any animation moves.
std::set<std::size_t> MovedWeights(const gltf::Document& document)
{
    std::set<std::size_t> nodes;
    for (std::size_t i = 0; i < document.Count("animations"); ++i)
    {
        const gltf::Animation animation = document.AnimationAt(i);
        for (std::size_t k = 0; k < animation.channels.Size(); ++k)
        {
            const gltf::Channel channel = document.ChannelAt(animation, k);
            if (channel.node && channel.target == gltf::Target::Weights)
                nodes.insert(*channel.node);
        }
    }
    return nodes;
}

/// What no node of the scene uses.
void ReportUnused(const FromContext& context, const NodePlan& plan)
{
    std::map<const char*, std::set<std::size_t>> used;
    for (const NodePlan::Entry& entry : plan.entries)
    {
        const gltf::Node node = context.document.NodeAt(entry.node);
        if (node.mesh)
            used["meshes"].insert(*node.mesh);
        if (node.mesh && node.skin)
            used["skins"].insert(*node.skin);
        if (node.camera)
            used["cameras"].insert(*node.camera);
        if (const auto light = gltf::LightOfNode(context.document, entry.node))
            used["lights"].insert(*light);
    }
    for (const auto& [index, record] : plan.skin_nodes)
    {
        const gltf::Node node = context.document.NodeAt(index);
        used["meshes"].insert(*node.mesh);
        used["skins"].insert(*node.skin);
    }
    if (plan.switcher_node)
    {
        if (const auto camera = context.document.NodeAt(*plan.switcher_node).camera)
            used["cameras"].insert(*camera);
    }
    const std::pair<const char*, std::size_t> lists[] = {{"meshes", context.document.Count("meshes")},
                                                         {"skins", context.document.Count("skins")},
                                                         {"cameras", context.document.Count("cameras")},
                                                         {"lights", gltf::LightCount(context.document)}};
    for (const auto& [list, count] : lists)
    {
        if (used[list].size() < count)
            context.report->Add(Code::UnusedLost, list, "used by no node of the scene",
                                count - used[list].size());
    }
}

/// What belongs to no object that is converted.
void ReportDocument(const FromContext& context)
{
    if (!context.reports_shared)
        return;
    const gltf::Document& document = context.document;
    if (const std::size_t scenes = document.Count("scenes"); scenes > 1)
        context.report->Add(Code::SceneLost, "scenes", "scenes that the file does not show", scenes - 1);
    const Place scene{"scenes", 0, document.Scene()["name"].Text()};
    context.ReportRest(document.Scene(), scene, {}, false);
    const JsonValue extras = document.Scene()["extras"];
    for (std::size_t i = 0; i < extras.Size(); ++i)
    {
        if (extras.Name(i) != kSwitcherExtra)
            context.Report(Code::ExtrasLost, scene, std::string(extras.Name(i)));
    }
    if (document.Root()["extras"] || document.Root()["asset"]["extras"])
        context.report->Add(Code::ExtrasLost, "asset", "extras of the whole file");
    const JsonValue extensions = document.Root()["extensions"];
    for (std::size_t i = 0; i < extensions.Size(); ++i)
    {
        if (!IsKnown(extensions.Name(i)))
            context.report->Add(Code::ExtensionLost, "extensions", std::string(extensions.Name(i)));
    }
}

} // namespace

class FromGltf::Impl
{
public:
    Impl(gltf::Document& document, FromGltfOptions options, ConversionReport& report)
        : report_(report), context_(document, std::move(options), report), images_(context_)
    {
        CheckRequired(document);
        plan_ = MakeNodePlan(context_);
        meshes_.emplace(context_, plan_, MovedWeights(document));
        ReportDocument(context_);
        ReportUnused(context_, plan_);
    }

    std::size_t AnimationCount() const { return context_.document.Count("animations"); }
    std::string_view AnimationName(std::size_t index) const
    {
        return index < AnimationCount() ? context_.document.AnimationAt(index).name : std::string_view();
    }

    std::unique_ptr<TEV2> Make(std::size_t index)
    {
        const bool is_new = made_.insert(index).second;
        context_.budget.BeginScene(is_new);
        context_.reports_shared = !has_reported_;
        context_.report = has_reported_ ? &unwanted_ : &report_;
        context_.motion_report = is_new ? &report_ : &unwanted_;
        has_reported_ = true;
        auto scene = std::make_unique<TEV2>();
        Fill(index, *scene);
        unwanted_ = {};
        scene->SetTime(scene->environment.timeRange.minimum);
        return scene;
    }

    std::vector<InsideImage> Images() { return images_.Inside(); }

private:
    void Fill(std::size_t index, TEV2& scene)
    {
        std::optional<gltf::Animation> animation;
        std::map<std::size_t, NodeMotion> motions;
        if (index < AnimationCount())
        {
            animation = context_.document.AnimationAt(index);
            motions = ReadMotions(context_, plan_, *animation);
            ReportAnimation(*animation);
        }
        scene.information.creatorText = TEV2_WIDE_STRING::FromBytes(kConverterCreator);
        AddNodes(context_, plan_, animation ? &*animation : nullptr, motions, scene);
        AddCameras(context_, plan_, scene);
        AddLights(context_, plan_, scene);
        scene.materials = MakeMaterials(context_, images_);
        meshes_->AddTo(scene, animation ? &*animation : nullptr, motions);
        AddSwitcher(context_, index, AnimationName(index), scene);
    }

    void ReportAnimation(const gltf::Animation& animation) const
    {
        const JsonValue json = context_.document.Root()["animations"][animation.index];
        const Place place = context_.document.PlaceOf(animation);
        for (std::size_t i = 0; i < json["extensions"].Size(); ++i)
            context_.ReportMotion(Code::ExtensionLost, place, std::string(json["extensions"].Name(i)));
        if (json["extras"])
            context_.ReportMotion(Code::ExtrasLost, place, "extras of this kind of object");
    }

    ConversionReport& report_;
    ConversionReport unwanted_; // of what was reported before
    FromContext context_;
    FromImages images_;
    NodePlan plan_;
    std::optional<FromMeshes> meshes_;
    std::set<std::size_t> made_;
    bool has_reported_ = false;
};

FromGltf::FromGltf(gltf::Document& document, FromGltfOptions options, ConversionReport& report)
    : impl_(std::make_unique<Impl>(document, std::move(options), report))
{
}

FromGltf::~FromGltf() = default;

std::size_t FromGltf::SceneCount() const
{
    return std::max<std::size_t>(impl_->AnimationCount(), 1);
}

std::string_view FromGltf::SceneName(std::size_t scene) const
{
    return impl_->AnimationName(scene);
}

std::unique_ptr<TEV2> FromGltf::MakeScene(std::size_t scene)
{
    return impl_->Make(scene);
}

std::vector<InsideImage> FromGltf::InsideImages()
{
    return impl_->Images();
}

} // namespace tev2_gltf
