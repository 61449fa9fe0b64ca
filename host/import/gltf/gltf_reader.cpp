#include "host/import/gltf/gltf_reader.h"

#include "gltf/accessor.h"
#include "gltf/document.h"
#include "gltf/key_track.h"
#include "gltf/trs.h"
#include "host/import/base/exportable_number.h"
#include "host/import/base/parse_error.h"
#include "host/import/gltf/node_motion.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <map>
#include <numbers>
#include <set>
#include <string_view>
#include <utility>

namespace mobu_host
{
namespace
{

using gltf_import::KeyTrack;
using gltf_import::NodeMotion;
using gltf_import::ToAffine;

constexpr double kCentimetresPerMetre = 100.0;
constexpr double kDegreesPerRadian = 180.0 / std::numbers::pi;

// What is required to show a document's meshes, materials and lights, or describes it and its figures, and says nothing
// about the motion of nodes. A name that ends
// in '_' stands for all that begin so.
constexpr std::string_view kMotionNeedsNot[] = {"KHR_draco_mesh_compression",
                                                "KHR_mesh_quantization",
                                                "EXT_meshopt_compression",
                                                "KHR_meshopt_compression",
                                                "KHR_materials_",
                                                "EXT_materials_",
                                                "ADOBE_materials_",
                                                "KHR_texture_",
                                                "EXT_texture_",
                                                "MSFT_texture_",
                                                "KHR_lights_",
                                                "EXT_lights_",
                                                "EXT_mesh_",
                                                "KHR_techniques_",
                                                "KHR_node_visibility",
                                                "KHR_xmp",
                                                "KHR_xmp_json_ld",
                                                "MSFT_lod",
                                                "VRM",
                                                "VRMC_vrm",
                                                "VRMC_springBone",
                                                "KHR_gaussian_splatting",
                                                "VRMC_materials_",
                                                "EXT_structural_metadata",
                                                "MSFT_packing_"};

// What a property counts for beside its texts, in bytes of memory.
constexpr std::size_t kPropertySize = 72;
constexpr std::size_t kMostPropertyBytesPerByte = 16;
constexpr std::size_t kPropertyBytesAtLeast = std::size_t{1} << 20;

bool MotionNeeds(std::string_view extension)
{
    return std::none_of(std::begin(kMotionNeedsNot), std::end(kMotionNeedsNot),
                        [extension](std::string_view known)
                        { return known.ends_with('_') ? extension.starts_with(known) : extension == known; });
}

/// Of a path in UTF-8, as documents have it.
std::string PathBeside(const std::filesystem::path& folder, const std::string& path)
{
    return (folder / std::u8string(path.begin(), path.end())).string();
}

std::optional<PropertyDescription::Value> PropertyValue(gltf::JsonValue value)
{
    if (value.Kind() == gltf::JsonKind::Text)
        return std::string(value.Text());
    if (const std::optional<bool> truth = value.Truth())
        return *truth;
    if (const std::optional<std::int64_t> whole = value.Whole())
    {
        if (*whole >= std::numeric_limits<int>::min() && *whole <= std::numeric_limits<int>::max())
            return static_cast<int>(*whole);
        return static_cast<double>(*whole);
    }
    if (const std::optional<double> number = value.Number())
        return *number;
    if (value.Kind() != gltf::JsonKind::Array || (value.Size() != 3 && value.Size() != 4))
        return std::nullopt;
    std::array<double, 4> numbers{};
    for (std::size_t i = 0; i < value.Size(); ++i)
    {
        const std::optional<double> number = value[i].Number();
        if (!number)
            return std::nullopt;
        numbers[i] = *number;
    }
    if (value.Size() == 4)
        return numbers;
    return std::array<double, 3>{numbers[0], numbers[1], numbers[2]};
}

/// The files beside the scene; what is read of them goes into the options' list.
class RecordedFiles : public gltf::FolderFiles
{
public:
    RecordedFiles(const std::filesystem::path& folder, const ImportOptions& options)
        : FolderFiles(folder), folder_(folder), options_(options)
    {
    }

    std::string Read(const std::string& path, std::size_t most_bytes) override
    {
        std::string bytes = FolderFiles::Read(path, most_bytes);
        if (options_.sources != nullptr)
            options_.sources->push_back(SourceOf(PathBeside(folder_, path), bytes));
        return bytes;
    }

private:
    std::filesystem::path folder_;
    const ImportOptions& options_;
};

class GltfReader
{
public:
    GltfReader(const SceneFile& file, const ImportOptions& options, ImportNotes& notes)
        : folder_(std::filesystem::path(file.path).parent_path()),
          files_(folder_, options),
          document_(file.bytes, files_),
          accessors_(document_),
          key_tracks_(document_, accessors_),
          options_(options),
          notes_(notes)
    {
    }

    SceneDescription Read()
    {
        CheckExtensions();
        if (document_.Count("scenes") > 1)
            notes_.Tell("the file has several scenes; only the one that it shows is read");
        ReadExtras(document_.Scene(), "the scene", scene_.properties);
        ReadModels();
        ReadTakes();
        for (const std::string& path : document_.SideFilePaths())
            scene_.source_files.push_back(PathBeside(folder_, path));
        return std::move(scene_);
    }

private:
    void CheckExtensions() const
    {
        for (const std::string_view extension : document_.RequiredExtensions())
            if (MotionNeeds(extension))
                throw ParseError("it requires the extension \"" + std::string(extension.substr(0, 80)) +
                                 "\", which is not read and may concern its motion");
    }

    void ReadModels()
    {
        const std::vector<gltf::ShownNode> shown = document_.ShownNodes(kDeepestModel);
        CheckModelCount(shown.size(), options_);
        models_of_nodes_.assign(document_.Count("nodes"), kNoModel);
        scene_.models.reserve(shown.size());
        for (const gltf::ShownNode& node : shown)
        {
            models_of_nodes_[node.index] = static_cast<std::uint32_t>(scene_.models.size());
            scene_.models.push_back(ModelOf(document_.NodeAt(node.index)));
            scene_.models.back().parent = node.parent.value_or(kNoModel);
        }
    }

    ModelDescription ModelOf(const gltf::Node& node)
    {
        ModelDescription model;
        model.name = node.name;
        model.has_geometry = node.mesh.has_value();
        model.rest = std::visit([](const auto& local) { return ToAffine(local); }, node.local);
        ReadExtras(node.json, model.name, model.properties);
        if (node.camera)
        {
            const gltf::Camera camera = document_.CameraAt(*node.camera);
            model.lens = LensOf(camera, model.name);
            ReadExtras(camera.json, model.name, model.properties);
        }
        return model;
    }

    LensDescription LensOf(const gltf::Camera& camera, const std::string& name)
    {
        LensDescription lens;
        lens.orthographic = camera.orthographic;
        lens.aspect = camera.aspect;
        lens.near_plane = camera.near_plane * kCentimetresPerMetre;
        lens.far_plane = camera.far_plane * kCentimetresPerMetre;
        if (camera.orthographic)
            return lens;
        if (!(camera.yfov > 0.0 && camera.yfov < std::numbers::pi))
        {
            notes_.Add({"camera has no angle of view between 0 and 180 degrees; the host's default stays",
                        "cameras have no angle of view between 0 and 180 degrees; the host's default stays"},
                       name);
            return lens;
        }
        // The file has the vertical angle. Where it leaves the aspect to the window, a square picture keeps the angle.
        const double aspect = camera.aspect > 0.0 ? camera.aspect : 1.0;
        lens.horizontal_angle = 2.0 * std::atan(std::tan(camera.yfov / 2.0) * aspect) * kDegreesPerRadian;
        return lens;
    }

    void ReadExtras(gltf::JsonValue owner, const std::string& name,
                    std::vector<PropertyDescription>& properties)
    {
        const gltf::JsonValue extras = owner["extras"];
        if (extras && extras.Kind() != gltf::JsonKind::Object)
            notes_.Add({"extras value without a name is ignored", "extras values without names are ignored"},
                       name);
        std::size_t count = properties.size();
        for (std::size_t i = 0; i < extras.Size(); ++i)
            count += PropertyValue(extras[i]) ? 1 : 0;
        properties.reserve(count);
        if (extras.Kind() != gltf::JsonKind::Object)
            return;
        for (std::size_t i = 0; i < extras.Size(); ++i)
        {
            const std::string_view key = extras.Name(i);
            if (std::optional<PropertyDescription::Value> value = PropertyValue(extras[i]))
            {
                TakePropertyMemory(key.size() + extras[i].Text().size());
                properties.push_back({std::string(key), *std::move(value)});
            }
            else
            {
                notes_.Add(
                    {"extra is ignored: it is neither a boolean, a text, a number nor 3 or 4 numbers",
                     "extras are ignored: they are neither booleans, texts, numbers nor 3 or 4 numbers"},
                    std::string(key));
            }
        }
    }

    // The extras of a camera come again with each node that shows it.
    void TakePropertyMemory(std::size_t text_bytes)
    {
        property_bytes_ += kPropertySize + text_bytes;
        if (property_bytes_ > kPropertyBytesAtLeast + kMostPropertyBytesPerByte * document_.BytesRead())
            throw ParseError("too many nodes share cameras with extras: the copies would take far more "
                             "memory than the file");
    }

    void ReadTakes()
    {
        const std::size_t count = document_.Count("animations");
        scene_.takes.reserve(count);
        for (std::size_t i = 0; i < count; ++i)
            scene_.takes.push_back(TakeOf(document_.AnimationAt(i)));
    }

    TakeDescription TakeOf(const gltf::Animation& animation)
    {
        TakeDescription take;
        take.name = animation.name;
        std::map<std::uint32_t, NodeMotion> motions; // by model
        std::set<const std::vector<double>*> known_keys;
        bool has_early_keys = false;
        for (std::size_t i = 0; i < animation.channels.Size(); ++i)
        {
            const gltf::Channel channel = document_.ChannelAt(animation, i);
            if (!IsRead(channel, take.name))
                continue;
            const KeyTrack track = TrackOf(animation, channel);
            if (track.keys.times->empty())
            {
                notes_.Add({"channel without keys is ignored", "channels without keys are ignored"},
                           NodeName(channel));
                continue;
            }
            take.stop = std::max(take.stop, track.keys.times->back());
            has_early_keys = has_early_keys || track.keys.times->front() < 0.0;
            if (known_keys.insert(track.keys.times.get()).second)
                take.keys.push_back(track.keys.times);
            AddTrack(channel, track, motions);
        }
        if (has_early_keys)
            notes_.Add({"take has keys before 0, which are left out",
                        "takes have keys before 0, which are left out"},
                       take.name.empty() ? "animation " + std::to_string(animation.index + 1) : take.name);
        take.models.reserve(motions.size());
        for (auto& [model, motion] : motions)
        {
            const auto shared = std::make_shared<const NodeMotion>(std::move(motion));
            take.models.push_back({model, [shared](double seconds) { return shared->At(seconds); }});
        }
        return take;
    }

    std::string NodeName(const gltf::Channel& channel) const
    {
        return std::string(document_.PlaceOf("nodes", *channel.node).name);
    }

    bool IsRead(const gltf::Channel& channel, const std::string& take)
    {
        if (channel.target == gltf::Target::Weights && channel.node)
            NoteBlendShapes(channel);
        else if (channel.target == gltf::Target::Other)
            notes_.Add({"channel of something else than a node's transform is ignored",
                        "channels of something else than a node's transform are ignored"},
                       channel.node ? NodeName(channel) : take);
        else if (!channel.node)
            notes_.Add({"channel without a node is ignored", "channels without a node are ignored"}, take);
        else
            return true;
        return false;
    }

    // Programs write a channel for each shape or for all of a mesh: nodes are counted.
    void NoteBlendShapes(const gltf::Channel& channel)
    {
        if (noted_blend_shapes_.insert(*channel.node).second)
            notes_.Add({"model has animated blend shapes, which are ignored",
                        "models have animated blend shapes, which are ignored"},
                       NodeName(channel));
    }

    void AddTrack(const gltf::Channel& channel, const KeyTrack& track,
                  std::map<std::uint32_t, NodeMotion>& motions)
    {
        const std::uint32_t model = models_of_nodes_[*channel.node];
        if (model == kNoModel)
        {
            notes_.Add({"channel of a node that is not in the scene is ignored",
                        "channels of nodes that are not in the scene are ignored"},
                       NodeName(channel));
            return;
        }
        const auto [found, is_new] = motions.try_emplace(model);
        NodeMotion& motion = found->second;
        if (is_new)
        {
            const gltf::Node node = document_.NodeAt(*channel.node);
            const auto* const trs = std::get_if<gltf::Trs>(&node.local);
            motion.rest = trs ? *trs : gltf::Decomposed(std::get<gltf::ColumnMatrix>(node.local));
        }
        std::optional<KeyTrack>& place = channel.target == gltf::Target::Translation ? motion.translation
                                         : channel.target == gltf::Target::Rotation  ? motion.rotation
                                                                                     : motion.scale;
        if (place)
            notes_.Add({"channel is replaced by a later one of the same animation",
                        "channels are replaced by later ones of the same animation"},
                       NodeName(channel));
        place = track;
    }

    // A place is finite in centimetres, too.
    KeyTrack TrackOf(const gltf::Animation& animation, const gltf::Channel& channel)
    {
        const std::size_t width = channel.target == gltf::Target::Rotation ? 4 : 3;
        KeyTrack track{key_tracks_.Read(animation, channel, width)};
        if (channel.target == gltf::Target::Translation)
            CheckPlaces(animation, channel, *track.keys.values);
        return track;
    }

    void CheckPlaces(const gltf::Animation& animation, const gltf::Channel& channel,
                     const std::vector<double>& metres)
    {
        const std::size_t accessor = document_.SamplerAt(animation, channel.sampler).output;
        if (checked_places_.insert(accessor).second &&
            !std::all_of(metres.begin(), metres.end(),
                         [](double number) { return IsExportable(number * kCentimetresPerMetre); }))
        {
            const gltf::Place whole = document_.PlaceOf(animation);
            gltf::Place{"samplers", channel.sampler, {}, &whole}.Fail(
                "output", "(accessors[" + std::to_string(accessor) +
                              "]) has a place that is not finite in centimetres in single precision");
        }
    }

    std::filesystem::path folder_;
    RecordedFiles files_;
    gltf::Document document_;
    gltf::AccessorReader accessors_;
    gltf::KeyTrackReader key_tracks_;
    const ImportOptions& options_;
    ImportNotes& notes_;
    SceneDescription scene_;
    std::vector<std::uint32_t> models_of_nodes_; // kNoModel where the scene does not show the node
    std::set<std::size_t> checked_places_;       // accessors
    std::set<std::size_t> noted_blend_shapes_;   // nodes
    std::size_t property_bytes_ = 0;
};

} // namespace

SceneDescription ReadGltf(const SceneFile& file, const ImportOptions& options, ImportNotes& notes)
{
    try
    {
        return GltfReader(file, options, notes).Read();
    }
    catch (const gltf::Error& error)
    {
        throw ParseError(error.what());
    }
}

} // namespace mobu_host
