#include "gltf/convert/to_gltf.h"

#include "gltf/convert/to_gltf_animation.h"
#include "gltf/convert/to_gltf_cameras.h"
#include "gltf/convert/to_gltf_context.h"
#include "gltf/convert/to_gltf_extras.h"
#include "gltf/convert/to_gltf_lights.h"
#include "gltf/convert/to_gltf_losses.h"
#include "gltf/convert/to_gltf_meshes.h"
#include "gltf/convert/to_gltf_nodes.h"
#include "gltf/convert/to_gltf_switcher.h"
#include "gltf/error.h"
#include "tev2_loader/tracks/quaternion_tracks.h"
#include "tev2_loader/up_axis.h"

#include <algorithm>
#include <array>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

constexpr std::array<std::string_view, 4> kWorldNames = {"y-up", "y-up-turned", "z-up", "z-up-turned"};

/// Of an exported scene: "Keep positive Z?" gives node 0 half a turn about Y.
bool IsRootTurned(const TEV2& scene)
{
    const auto& nodes = scene.matrixHierarchy.nodes;
    if (nodes.empty() || !nodes[0].rotation)
        return false;
    const TEV2_QUATERNION turn = nodes[0].rotation->GetValue();
    return std::abs(turn.y) == 1.0f;
}

bool IsByConverter(const TEV2& scene)
{
    return ReadableText(scene.information.creatorText.Text()).starts_with(kConverterCreator);
}

/// The first difference between hierarchies; empty for equal ones.
std::string DifferenceOf(const GltfSource& first, const GltfSource& other)
{
    const auto& a = first.scene.matrixHierarchy.nodes;
    const auto& b = other.scene.matrixHierarchy.nodes;
    const auto quoted = [](const TEV2_MATRIX_NODE& node) { return '"' + Name(node) + '"'; };
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    {
        if (a[i].name != b[i].name)
            return quoted(a[i]) + " in " + first.animation_name + " is " + quoted(b[i]) + " in " +
                   other.animation_name;
        if (std::max(a[i].parentIndex, -1) != std::max(b[i].parentIndex, -1))
            return quoted(a[i]) + " has another parent in " + other.animation_name;
    }
    if (a.size() == b.size())
        return {};
    return a.size() > b.size() ? quoted(a[b.size()]) + " is not in " + other.animation_name
                               : quoted(b[a.size()]) + " is not in " + first.animation_name;
}

std::vector<World> WorldsOf(ToGltfContext& context)
{
    std::vector<World> worlds;
    for (const GltfSource& source : context.sources)
    {
        const std::optional<World> known =
            context.options.world ? context.options.world : WorldOf(source.scene);
        worlds.push_back(known.value_or(World::YUp));
        if (!known)
            context.report.Add(Code::WorldAssumed, source.animation_name,
                               "nothing says which way is up; +Y is assumed");
    }
    return worlds;
}

double ReportedShift(ToGltfContext& context, const GltfSource& source)
{
    const double shift = TimeShiftOf(source.scene);
    if (shift > 0.0)
    {
        context.report.Add(Code::TimeShifted, source.animation_name,
                           "the first key is at " + std::to_string(-shift) + " s; all are as much later");
    }
    return shift;
}

void SetNodeExtras(ToGltfContext& context, GltfNodes& nodes)
{
    const auto& from = context.Scene().matrixHierarchy.nodes;
    for (std::size_t i = 0; i < from.size(); ++i)
        SetExtras(context, nodes.Members(i), from[i].properties,
                  WhereOf("matrixHierarchy.nodes", i, from[i]));
}

void Convert(ToGltfContext& context)
{
    context.out.Root()["asset"]["generator"] = "tv2 convert";
    GltfNodes nodes(context, WorldsOf(context));
    ClaimCameraNodes(context, nodes);
    ClaimLightNodes(context, nodes);
    const CameraIndices cameras = WriteCameras(context, nodes);
    WriteLights(context, nodes);
    GltfMeshes meshes(context, nodes);
    meshes.Write();
    SetNodeExtras(context, nodes);
    std::vector<double> shifts;
    for (const GltfSource& source : context.sources)
        shifts.push_back(context.options.at ? 0.0 : ReportedShift(context, source));
    GltfSwitcher switcher(context, nodes, cameras);
    switcher.Write(shifts);
    for (std::size_t i = 0; !context.options.at && i < context.sources.size(); ++i)
    {
        GltfAnimation animation(context, i, shifts[i]);
        animation.AddNodes(nodes);
        meshes.Animate(animation);
        switcher.Animate(animation);
        animation.Write(nodes);
    }
    ReportLosses(context);
    nodes.Write(switcher.Extras());
}

} // namespace

std::string_view NameOf(World world)
{
    return kWorldNames[static_cast<std::size_t>(world)];
}

std::optional<World> FindWorld(std::string_view name)
{
    const auto found = std::find(kWorldNames.begin(), kWorldNames.end(), name);
    if (found == kWorldNames.end())
        return std::nullopt;
    return static_cast<World>(found - kWorldNames.begin());
}

std::optional<World> WorldOf(const TEV2& scene)
{
    switch (UpAxis(scene))
    {
    case TEV2_UP_AXIS::PlusY:
        return !IsByConverter(scene) && IsRootTurned(scene) ? World::YUpTurned : World::YUp;
    case TEV2_UP_AXIS::PlusZ:
        return World::ZUp;
    case TEV2_UP_AXIS::MinusZ:
        return World::ZUpTurned;
    case TEV2_UP_AXIS::Unknown:
        break;
    }
    return std::nullopt;
}

float ToGltfContext::RestTime() const
{
    const float start = Scene().environment.timeRange.minimum;
    return options.at.value_or(std::isfinite(start) ? start : 0.0f);
}

std::string WhereOf(const char* list, std::size_t index, const TEV2_ENTITY& record)
{
    constexpr std::size_t kMostUnits = 80;
    const std::string name = ReadableText(std::u16string_view(record.name.Text()).substr(0, kMostUnits));
    return std::string(list) + '[' + std::to_string(index) + "] \"" + name + '"';
}

std::string NameFor(ToGltfContext& context, const TEV2_ENTITY& record, const std::string& where)
{
    const std::u16string& units = record.name.Text();
    std::string name = ReadableText(units);
    const auto is_surrogate = [](char16_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; };
    if (std::any_of(units.begin(), units.end(), is_surrogate) &&
        name.find("\xEF\xBF\xBD") != std::string::npos)
        context.report.Add(Code::NameChanged, where, "its name has half a character, which became U+FFFD");
    return name;
}

Json Named(const std::string& name)
{
    Json json = Json::object();
    if (!name.empty())
        json["name"] = name;
    return json;
}

Status ToGltf(std::span<const GltfSource> sources, const ToGltfOptions& options,
              gltf::DocumentBuilder& builder, ConversionReport& report)
{
    for (const GltfSource& source : sources.subspan(1))
    {
        if (const std::string difference = DifferenceOf(sources.front(), source); !difference.empty())
            return Status::Failure("the hierarchies differ: node " + difference);
    }
    ToGltfContext context{sources, options, builder, report};
    try
    {
        Convert(context);
    }
    catch (const gltf::Error& error)
    {
        return Status::Failure(error.what());
    }
    return {};
}

} // namespace tev2_gltf
