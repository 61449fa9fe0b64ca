#include "gltf/convert/to_gltf_shader.h"

#include "gltf/convert/shader_parameters.h"
#include "gltf/convert/to_gltf_extras.h"
#include "gltf/convert/to_gltf_tracks.h"

#include <algorithm>
#include <array>
#include <limits>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

enum class Shape : std::uint8_t
{
    Number,
    Three,
    Four,
    Texture, // of colours
    LinearTexture,
    NormalTexture,
};

constexpr int kDeepestExtras = 64;
constexpr float kNoEnd = std::numeric_limits<float>::max();

/// A parameter that glTF defines: where it goes, and what it may be.
struct Parameter
{
    std::string_view name;
    Shape shape;
    float least = 0.0f;
    float most = 1.0f;
};

// clang-format off
constexpr auto kParameters = std::to_array<Parameter>({
    {"baseColorFactor", Shape::Four},
    {"emissiveFactor", Shape::Three},
    {"metallicFactor", Shape::Number},
    {"roughnessFactor", Shape::Number},
    {"alphaCutoff", Shape::Number, 0.0f, kNoEnd},
    {"baseColorTexture", Shape::Texture},
    {"emissiveTexture", Shape::Texture},
    {"metallicRoughnessTexture", Shape::LinearTexture},
    {"occlusionTexture", Shape::LinearTexture},
    {"normalTexture", Shape::NormalTexture},
    {"KHR_materials_anisotropy.anisotropyStrength", Shape::Number},
    {"KHR_materials_anisotropy.anisotropyRotation", Shape::Number, -kNoEnd, kNoEnd},
    {"KHR_materials_anisotropy.anisotropyTexture", Shape::LinearTexture},
    {"KHR_materials_clearcoat.clearcoatFactor", Shape::Number},
    {"KHR_materials_clearcoat.clearcoatTexture", Shape::LinearTexture},
    {"KHR_materials_clearcoat.clearcoatRoughnessFactor", Shape::Number},
    {"KHR_materials_clearcoat.clearcoatRoughnessTexture", Shape::LinearTexture},
    {"KHR_materials_clearcoat.clearcoatNormalTexture", Shape::NormalTexture},
    {"KHR_materials_dispersion.dispersion", Shape::Number, 0.0f, kNoEnd},
    {"KHR_materials_emissive_strength.emissiveStrength", Shape::Number, 0.0f, kNoEnd},
    {"KHR_materials_ior.ior", Shape::Number, 1.0f, kNoEnd},
    {"KHR_materials_iridescence.iridescenceFactor", Shape::Number},
    {"KHR_materials_iridescence.iridescenceTexture", Shape::LinearTexture},
    {"KHR_materials_iridescence.iridescenceIor", Shape::Number, 1.0f, kNoEnd},
    {"KHR_materials_iridescence.iridescenceThicknessMinimum", Shape::Number, 0.0f, kNoEnd},
    {"KHR_materials_iridescence.iridescenceThicknessMaximum", Shape::Number, 0.0f, kNoEnd},
    {"KHR_materials_iridescence.iridescenceThicknessTexture", Shape::LinearTexture},
    {"KHR_materials_sheen.sheenColorFactor", Shape::Three},
    {"KHR_materials_sheen.sheenColorTexture", Shape::Texture},
    {"KHR_materials_sheen.sheenRoughnessFactor", Shape::Number},
    {"KHR_materials_sheen.sheenRoughnessTexture", Shape::LinearTexture},
    {"KHR_materials_specular.specularFactor", Shape::Number},
    {"KHR_materials_specular.specularTexture", Shape::LinearTexture},
    {"KHR_materials_specular.specularColorFactor", Shape::Three, 0.0f, kNoEnd},
    {"KHR_materials_specular.specularColorTexture", Shape::Texture},
    {"KHR_materials_transmission.transmissionFactor", Shape::Number},
    {"KHR_materials_transmission.transmissionTexture", Shape::LinearTexture},
    {"KHR_materials_volume.thicknessFactor", Shape::Number, 0.0f, kNoEnd},
    {"KHR_materials_volume.thicknessTexture", Shape::LinearTexture},
    {"KHR_materials_volume.attenuationDistance", Shape::Number, std::numeric_limits<float>::min(), kNoEnd},
    {"KHR_materials_volume.attenuationColor", Shape::Three},
});
// clang-format on

const Parameter* Find(std::string_view name)
{
    const auto* const found = std::find_if(kParameters.begin(), kParameters.end(),
                                           [&](const Parameter& p) { return p.name == name; });
    return found == kParameters.end() ? nullptr : found;
}

/// An extension that is for materials and that the table says nothing about: its values are passed on as they are.
bool MayPassOn(std::string_view extension)
{
    const bool is_in_table = std::any_of(
        kParameters.begin(), kParameters.end(),
        [&](const Parameter& parameter) { return parameter.name.starts_with(std::string(extension) + '.'); });
    const auto is_of = [](char c, bool lower)
    {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               (lower && ((c >= 'a' && c <= 'z') || c == '_'));
    };
    const std::size_t line = extension.find('_');
    const bool is_name =
        line != 0 && line != std::string_view::npos && line + 1 < extension.size() &&
        std::all_of(extension.begin(), extension.begin() + static_cast<std::ptrdiff_t>(line),
                    [&](char c) { return is_of(c, false); }) &&
        std::all_of(extension.begin(), extension.end(), [&](char c) { return is_of(c, true); });
    if (!is_name || is_in_table || extension == "KHR_materials_variants" ||
        extension == "KHR_materials_pbrSpecularGlossiness" || extension == "KHR_materials_unlit")
        return false;
    return extension.starts_with("KHR_materials_") ||
           !(extension.starts_with("KHR_") || extension.starts_with("EXT_") ||
             extension.starts_with("MSFT_"));
}

class ShaderWriter
{
public:
    ShaderWriter(ToGltfContext& context, GltfTextures& textures, const TEV2_SHADER_MATERIAL& material,
                 std::size_t uv_sets, const std::string& where, Json& json)
        : context_(context),
          textures_(textures),
          material_(material),
          uv_sets_(uv_sets),
          where_(where),
          json_(json)
    {
    }

    void WriteMetallicRoughness()
    {
        for (const auto& value : material_.vector4s)
            SetNumbers(value, Shape::Four);
        for (const auto& value : material_.vector3s)
            SetNumbers(value, Shape::Three);
        for (const auto& value : material_.floats)
            SetNumbers(value, Shape::Number);
        for (const auto& value : material_.ints)
            SetWhole(value);
        for (const auto& map : material_.maps)
            if (map)
                SetTexture(*map);
        for (const TEV2_SHADER_STRING_PARAM& text : material_.strings)
            SetText(text);
        for (const TEV2_SHADER_LIGHT_PARAM& light : material_.lights)
            Lose(Code::ExtensionLost, light, "glTF has no lights in materials");
        if (json_.contains("alphaCutoff") && json_.value("alphaMode", "") != "MASK")
        {
            json_.erase("alphaCutoff");
            context_.report.Add(Code::ValueDropped, where_ + ", alphaCutoff",
                                "it says something for mode MASK alone");
        }
        DropUseless();
    }

    /// Of an unknown shader.
    void WriteNearest()
    {
        Json extras = {{"shader", ReadableText(material_.shader.Text())}};
        if (!material_.technique.Text().empty())
            extras["technique"] = ReadableText(material_.technique.Text());
        for (const auto& value : material_.vector4s)
        {
            if (Name(value) != "baseColorFactor" && Name(value) != "diffuse")
                AddExtra(extras, value);
            else
                SetNumbers(value, Shape::Four, "baseColorFactor");
        }
        const auto add_all = [&](const auto& values)
        {
            for (const auto& value : values)
                AddExtra(extras, value);
        };
        add_all(material_.vector3s);
        add_all(material_.floats);
        add_all(material_.ints);
        for (const TEV2_SHADER_STRING_PARAM& text : material_.strings)
            extras[Name(text)] = ReadableText(text.value.Text());
        json_["extras"] = std::move(extras);
        context_.report.Add(
            Code::ShaderLost, where_,
            "its shader \"" + ReadableText(material_.shader.Text()) +
                "\" is unknown to glTF; its numbers and texts are in extras, its maps are not");
    }

private:
    void Lose(Code code, const TEV2_ENTITY& parameter, const std::string& why)
    {
        context_.report.Add(code, where_ + ", " + Name(parameter), why);
    }

    /// Where a parameter of this name goes; "extension.name" into an extension.
    Json& Slot(std::string_view name)
    {
        const std::size_t dot = name.find('.');
        if (dot != std::string_view::npos)
        {
            const std::string extension(name.substr(0, dot));
            return json_["extensions"][extension][std::string(name.substr(dot + 1))];
        }
        const bool is_surface =
            name.starts_with("baseColor") || name.starts_with("metallic") || name.starts_with("roughness");
        return is_surface ? json_["pbrMetallicRoughness"][std::string(name)] : json_[std::string(name)];
    }

    /// Whether a parameter of a name that glTF does not define can be passed on.
    bool IsPassedOn(const TEV2_ENTITY& parameter, std::string_view name)
    {
        const std::size_t dot = name.find('.');
        const bool passed = dot != std::string_view::npos && MayPassOn(name.substr(0, dot));
        if (!passed)
            Lose(Code::ExtensionLost, parameter, "glTF has no such parameter of this kind");
        return passed;
    }

    template <typename Family>
    void SetNumbers(const TEV2_NAMED_ANIMATABLE<Family>& value, Shape shape, std::string_view as = {})
    {
        const std::string own_name = Name(value);
        const std::string_view name = as.empty() ? std::string_view(own_name) : as;
        const Parameter* const known = Find(name);
        if (known != nullptr ? known->shape != shape : !IsPassedOn(value, name))
        {
            if (known != nullptr)
                Lose(Code::ExtensionLost, value, "it is not of the kind that glTF has it");
            return;
        }
        if (Moves(value.track))
            Lose(Code::AnimationLost, value, "it changes in time; its value at the start is kept");
        Json number = ToJson(ValueAt(value.track, context_.RestTime(), {}));
        if (known != nullptr)
            Clamp(number, *known, value);
        Slot(name) = std::move(number);
    }

    void Clamp(Json& number, const Parameter& known, const TEV2_ENTITY& parameter)
    {
        const auto clamp_one = [&](Json& one)
        {
            const auto found = one.get<float>();
            const float within = std::clamp(found, known.least, known.most);
            if (within == found)
                return;
            one = gltf::FloatNumber(within);
            Lose(Code::ValueClamped, parameter, "it is out of range");
        };
        if (!number.is_array())
            return clamp_one(number);
        for (Json& one : number)
            clamp_one(one);
    }

    /// A whole number: of an extension without members it says that the extension is there.
    void SetWhole(const TEV2_NAMED_ANIMATABLE<TEV2_ANIMATABLE_INT32>& value)
    {
        const std::string name = Name(value);
        if (name == "KHR_materials_unlit")
        {
            json_["extensions"][name] = Json::object();
        }
        else if (IsPassedOn(value, name))
            Slot(name) = ValueAt(value.track, context_.RestTime(), 0);
    }

    void SetTexture(const TEV2_MATERIAL_MAP& map)
    {
        const std::string name = Name(map);
        const Parameter* const known = Find(name);
        const bool is_texture = known == nullptr || known->shape >= Shape::Texture;
        if (!is_texture)
            return Lose(Code::TextureLost, map, "glTF has no texture here");
        if (known == nullptr && !IsPassedOn(map, name))
            return;
        const Shape shape = known != nullptr ? known->shape : Shape::LinearTexture;
        const TextureRole role = shape == Shape::Texture         ? TextureRole::Colour
                                 : shape == Shape::NormalTexture ? TextureRole::Normals
                                                                 : TextureRole::Linear;
        auto info = textures_.Use(&map, role, uv_sets_, where_ + ", " + name);
        if (!info)
            return;
        if (map.amount && (role == TextureRole::Normals || name == "occlusionTexture"))
        {
            const float amount = ValueAt(map.amount, context_.RestTime(), 1.0f);
            const bool is_scale = role == TextureRole::Normals;
            (*info)[is_scale ? "scale" : "strength"] =
                gltf::FloatNumber(is_scale ? amount : std::clamp(amount, 0.0f, 1.0f));
        }
        Slot(name) = std::move(*info);
    }

    void SetText(const TEV2_SHADER_STRING_PARAM& text)
    {
        const std::string name = Name(text);
        const std::string value = ReadableText(text.value.Text());
        if (name == "alphaMode" && (value == "OPAQUE" || value == "MASK" || value == "BLEND"))
            json_[name] = value;
        else if (name == kExtrasParameter)
        {
            bool is_deep = false; // writing JSON takes memory for each level
            Json extras = Json::parse(
                value,
                [&](int depth, Json::parse_event_t, Json&) { return !(is_deep |= depth > kDeepestExtras); },
                false);
            if (extras.is_discarded() || is_deep)
                Lose(Code::ExtrasLost, text, "it is not JSON, or nested too deep");
            else
                json_[name] = std::move(extras);
        }
        else if (name.find('.') != std::string::npos && IsPassedOn(text, name))
            Slot(name) = value;
        else if (name.find('.') == std::string::npos)
            Lose(Code::ExtensionLost, text, "glTF has no such parameter");
    }

    /// Extensions that say nothing as they are combined here.
    void DropUseless()
    {
        if (!json_.contains("extensions"))
            return;
        Json& extensions = json_["extensions"];
        const auto drop = [&](const char* name, bool useless, const char* why)
        {
            if (extensions.contains(name) && useless)
            {
                extensions.erase(name);
                context_.report.Add(Code::ExtensionLost, where_ + ", " + name, why);
            }
        };
        const Json dark = Json::array({0.0, 0.0, 0.0});
        drop("KHR_materials_emissive_strength", json_.value("emissiveFactor", dark) == dark,
             "nothing is emitted");
        drop("KHR_materials_volume", material_.twoSided || !extensions.contains("KHR_materials_transmission"),
             "a volume needs transmission and one side");
        drop("KHR_materials_dispersion", !extensions.contains("KHR_materials_volume"),
             "dispersion needs a volume");
        if (extensions.empty())
            json_.erase("extensions");
    }

    template <typename Family>
    void AddExtra(Json& extras, const TEV2_NAMED_ANIMATABLE<Family>& value)
    {
        extras[Name(value)] = ToJson(ValueAt(value.track, context_.RestTime(), {}));
    }

    ToGltfContext& context_;
    GltfTextures& textures_;
    const TEV2_SHADER_MATERIAL& material_;
    std::size_t uv_sets_;
    const std::string& where_;
    Json& json_;
};

} // namespace

void WriteShader(ToGltfContext& context, GltfTextures& textures, const TEV2_SHADER_MATERIAL& material,
                 std::size_t uv_sets, const std::string& where, Json& json)
{
    ShaderWriter writer(context, textures, material, uv_sets, where, json);
    if (ReadableText(material.shader.Text()) == kMetallicRoughness)
        writer.WriteMetallicRoughness();
    else
        writer.WriteNearest();
}

} // namespace tev2_gltf
