#include "check/lint_group.h"
#include "check/track_view.h"
#include "text/image_path.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>

namespace tev2_check
{

using namespace TEV2_LOADER;

namespace
{

constexpr CheckCode kUvSetMissing = {
    "uv-set-missing", Severity::Warning,
    "A map asks for a set of texture coordinates that a mesh with its material lacks."};
constexpr CheckCode kRangeReversed = {
    "range-reversed", Severity::Warning,
    "A cone, beam or attenuation of a light has its first number above its second."};
constexpr CheckCode kAmountOutside = {"amount-outside", Severity::Note,
                                      "An amount such as opacity, which is from 0 to 1, is outside."};
constexpr CheckCode kChannelRepeated = {"channel-repeated", Severity::Warning,
                                        "A material has two maps for one channel."};
constexpr CheckCode kParameterRepeated = {"parameter-repeated", Severity::Note,
                                          "A shader material has two parameters of one kind and name."};
constexpr CheckCode kImagePathLeaves = {"image-path-leaves", Severity::Warning,
                                        "The name of an image can lead out of the scene's folder: it is "
                                        "absolute, has .. or another part that some "
                                        "system takes for more than a name."};
constexpr CheckCode kImageMissing = {"image-missing", Severity::Note,
                                     "There is no file of an image's name beside the scene (with --files)."};
constexpr CheckCode kMaterialCodes[] = {kUvSetMissing,    kRangeReversed,     kAmountOutside,
                                        kChannelRepeated, kParameterRepeated, kImagePathLeaves,
                                        kImageMissing};

/// Tracks of numbers from 0 to 1, and of ranges whose first number is the lower one.
constexpr std::array<std::string_view, 7> kAmounts = {
    "amount", "opacity", "shininess", "colourAmount", "contrast", "diffuseSoftness", "visibility"};
constexpr std::array<std::string_view, 4> kRanges = {"cone", "beam", "nearRange", "farRange"};

template <std::size_t kCount>
bool IsIn(const std::array<std::string_view, kCount>& labels, std::string_view label)
{
    return std::ranges::find(labels, label) != labels.end();
}

/// The meshes that use one material: for each number of sets of texture coordinates how many, and the first one's name.
class MaterialUsers
{
public:
    /// Once for each part of a mesh, one mesh after another.
    void Add(std::size_t uv_sets, const TEV2_WIDE_STRING& mesh)
    {
        if (&mesh == last_)
            return;
        last_ = &mesh;
        ++users_.try_emplace(uv_sets, 0, &mesh).first->second.first;
    }

    /// `"Body" has 1 set, and 3 more`, about those that lack a set; empty when none does.
    std::string Lacking(std::uint32_t uv_set) const
    {
        std::size_t meshes = 0;
        for (auto users = users_.begin(); users != users_.end() && users->first <= uv_set; ++users)
            meshes += users->second.first;
        if (meshes == 0)
            return {};
        const auto& [uv_sets, users] = *users_.begin();
        return QuotedName(*users.second) + " has " + CountOf(uv_sets, "set", "sets") +
               (meshes > 1 ? ", and " + CountText(meshes - 1) + " more" : "");
    }

private:
    std::map<std::size_t, std::pair<std::size_t, const TEV2_WIDE_STRING*>> users_;
    const TEV2_WIDE_STRING* last_ = nullptr; ///< the name of the mesh that was added last
};

class MaterialGroup : public LintGroup
{
public:
    MaterialGroup(const LoadedFile& file, const CheckOptions& options, Findings& findings)
        : file_(file),
          scene_(*file.scene),
          options_(options),
          findings_(findings),
          users_(scene_.materials.size())
    {
        AddMeshes(scene_.rigids, 5);
        AddMeshes(scene_.animMeshes, 0);
        AddMeshes(scene_.morphMeshes, 4);
        AddMeshes(scene_.weightedMeshes, 6);
    }

    void Number(const TEV2_FIELD& field, double number) override
    {
        if (field.chunkId != kMaterialChunk)
            return;
        const std::string_view label = field.label;
        if (label == "projection")
            projection_ = static_cast<TEV2_MAP_PROJECTION>(number);
        else if (label == "uvSet" && projection_ == TEV2_MAP_PROJECTION::TextureCoordinates)
            CheckUvSet(field, static_cast<std::uint32_t>(number));
        else if (label == "channel" && field.record.ends_with(']'))
            CheckChannel(field, static_cast<TEV2_MATERIAL_CHANNEL>(number));
    }

    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING& text) override
    {
        const std::string_view label = field.label;
        if (label == "fileName" && field.record.ends_with(".params"))
            CheckImage(field, ReadableText(text.Text()));
        else if (label == "name" && field.chunkId == kMaterialChunk && field.record.ends_with(']') &&
                 field.record.find('.') != std::string::npos)
            CheckParameter(field, text);
    }

    void Track(const TEV2_FIELD& field, const TEV2_ANIMATABLE* track) override
    {
        if (track == nullptr)
            return;
        const std::uint32_t kind = track->GetType();
        if (kind == kFloatTrack && IsIn(kAmounts, field.label))
            CheckAmounts(field, TrackView(*track));
        else if (kind == kRangeTrack && IsIn(kRanges, field.label))
            CheckRanges(field, TrackView(*track));
    }

private:
    template <typename Mesh>
    void AddMeshes(const TEV2::Array<Mesh>& meshes, std::size_t instance_list)
    {
        const auto uv_sets_of = [](const Mesh& mesh) { return mesh.vertices->uvs.size(); };
        for (const auto& mesh : meshes)
            if (mesh)
                for (const TEV2_TRI_SUB_OBJECT& part : mesh->subObjects)
                    AddUser(part.material, uv_sets_of(*mesh), mesh->name);
        for (const auto& instance : scene_.instanceLists[instance_list])
        {
            if (!instance || instance->source >= meshes.size() || !meshes[instance->source] ||
                !meshes[instance->source]->IsTyped())
                continue;
            const std::size_t uv_sets = uv_sets_of(*meshes[instance->source]);
            if (instance->GetChunkId() == kInstanceMaterialsChunk)
                for (const std::uint32_t material :
                     static_cast<const TEV2_GEOM_INSTANCE_DIFFERING_MATERIALS&>(*instance).materials)
                    AddUser(material, uv_sets, instance->name);
            if (instance->GetChunkId() == kInstanceSubObjectsChunk)
                for (const TEV2_TRI_SUB_OBJECT& part :
                     static_cast<const TEV2_GEOM_INSTANCE_DIFFERING_SUB_OBJECTS&>(*instance).subObjects)
                    AddUser(part.material, uv_sets, instance->name);
        }
    }

    void AddUser(std::uint32_t material, std::size_t uv_sets, const TEV2_WIDE_STRING& mesh)
    {
        if (material < users_.size())
            users_[material].Add(uv_sets, mesh);
    }

    void CheckUvSet(const TEV2_FIELD& field, std::uint32_t uv_set)
    {
        const std::size_t material = IndexBehind("materials[", field.record).value_or(0);
        const std::string lacking = users_[material].Lacking(uv_set);
        if (!lacking.empty())
            findings_.AddForRecord(kUvSetMissing, field,
                                   "set " + std::to_string(uv_set) + ", but " + lacking);
    }

    void CheckChannel(const TEV2_FIELD& field, TEV2_MATERIAL_CHANNEL channel)
    {
        if (field.index == 0)
            channels_.clear();
        if (!channels_.insert(channel).second)
        {
            findings_.AddOnce(kChannelRepeated, field, field.record.substr(0, field.record.rfind('[')),
                              [&] {
                                  return std::string("another map for ") +
                                         ChoiceNames(channel)[static_cast<std::size_t>(channel)];
                              });
        }
    }

    /// `field` is the name of an entry of an array, "materials[2].floats[1]".
    void CheckParameter(const TEV2_FIELD& field, const TEV2_WIDE_STRING& name)
    {
        if (field.index == 0)
            parameters_.clear();
        if (!parameters_.insert(name.Text()).second)
            findings_.AddOnce(kParameterRepeated, field, field.record.substr(0, field.record.rfind('[')),
                              [&] { return "another parameter called " + QuotedName(name); });
    }

    void CheckImage(const TEV2_FIELD& field, const std::string& name)
    {
        if (const std::string why = WhyItLeaves(name); !why.empty())
            findings_.Add(kImagePathLeaves, field, field.offset, Quoted(name) + ' ' + why);
        else if (options_.files && !IsFile(name))
            findings_.Add(kImageMissing, field, field.offset,
                          name.empty() ? "no file name" : Quoted(name) + " is not there");
    }

    /// Whether a file of this name is beside the scene. It is not opened.
    bool IsFile(const std::string& name) const
    {
        std::error_code error;
        const auto status =
            std::filesystem::status(std::filesystem::path(file_.argument).parent_path() / name, error);
        return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
    }

    void CheckAmounts(const TEV2_FIELD& field, const TrackView& view)
    {
        for (std::size_t i = 0; i < view.ValueCount(); ++i)
        {
            const float amount = view.Value(i)[0];
            if (amount < 0.0F || amount > 1.0F)
                return findings_.Add(kAmountOutside, field, field.offset + view.ValueOffset(i),
                                     "key " + std::to_string(i) + " is " + FloatText(amount));
        }
    }

    void CheckRanges(const TEV2_FIELD& field, const TrackView& view)
    {
        for (std::size_t i = 0; i < view.ValueCount(); ++i)
        {
            const auto range = view.Value(i);
            if (range[0] > range[1])
                return findings_.Add(kRangeReversed, field, field.offset + view.ValueOffset(i),
                                     "key " + std::to_string(i) + " is from " + FloatText(range[0]) + " to " +
                                         FloatText(range[1]));
        }
    }

    const LoadedFile& file_;
    const TEV2& scene_;
    const CheckOptions& options_;
    Findings& findings_;
    std::vector<MaterialUsers> users_;         ///< of each material
    TEV2_MAP_PROJECTION projection_{};         ///< of the map whose fields come at present
    std::set<TEV2_MATERIAL_CHANNEL> channels_; ///< of the material whose maps come at present
    std::set<std::u16string> parameters_;      ///< of the array whose entries come at present
};

} // namespace

LintGroupRow MaterialLint()
{
    return {kMaterialCodes,
            [](const LoadedFile& file, const CheckOptions& options,
               Findings& findings) -> std::unique_ptr<LintGroup>
            { return std::make_unique<MaterialGroup>(file, options, findings); }};
}

} // namespace tev2_check
