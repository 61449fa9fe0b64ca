#include "gltf/convert/report.h"

#include "text/message_text.h"
#include "text/printable.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tev2_gltf
{
namespace
{

constexpr auto kConversionCodes = std::to_array<ConversionCode>({
    {Code::SceneLost, "scene-lost", "only the scene that the file shows is converted"},
    {Code::ShearDropped, "shear-dropped",
     "a node's matrix is sheared, which translation, rotation and scale cannot say"},
    {Code::ParentDropped, "parent-dropped", "a node below itself is at top level in the result"},
    {Code::PrimitiveLost, "primitive-lost", "points and lines have no record"},
    {Code::AttributeLost, "attribute-lost", "this vertex attribute has no place in the result"},
    {Code::AttributeFilled, "attribute-filled",
     "vertices that lack this attribute got a default, or tangents that follow their texture coordinates"},
    {Code::DirectionsChanged, "directions-changed",
     "normals, tangents or binormals that were not of length 1 or not at right angles were changed"},
    {Code::WeightsNormalised, "weights-normalised",
     "weights of a vertex that do not sum to 1 were divided by their sum"},
    {Code::SkinNameLost, "skin-name-lost", "a skin's name and skeleton root have no place in the result"},
    {Code::SkinMoved, "skin-moved",
     "a skinned mesh is on a node of its own at top level, which does not place it"},
    {Code::NodeAdded, "node-added", "a node was added"},
    {Code::CameraLost, "camera-lost", "an orthographic camera has no record; its node stays"},
    {Code::CameraReduced, "camera-reduced",
     "a camera's distance, second range or effects have no place in the result"},
    {Code::AspectAssumed, "aspect-assumed", "the camera states no aspect ratio; 16:9 is assumed"},
    {Code::ImageRenamed, "image-renamed",
     "the path of an image led out of the folder; its file name is kept"},
    {Code::ImageWritten, "image-written", "an image inside the file was written beside the result"},
    {Code::Resampled, "resampled", "a smooth curve became straight lines"},
    {Code::ExtrasLost, "extras-lost", "a value of extras has no place in the result"},
    {Code::NumberRounded, "number-rounded", "a number of extras has more digits than single precision keeps"},
    {Code::ExtensionLost, "extension-lost", "an extension has no place in the result"},
    {Code::AnimationLost, "animation-lost",
     "what moves here cannot move in the result; its value at the start is kept"},
    {Code::TimeShifted, "time-shifted", "times were shifted so that they start at 0"},
    {Code::InterpolationChanged, "interpolation-changed", "rotations between two keys take another way"},
    {Code::KeyDropped, "key-dropped", "a key whose time does not ascend was dropped"},
    {Code::ValueDropped, "value-dropped", "a value that is not a finite number was dropped"},
    {Code::ValueClamped, "value-clamped",
     "a value outside the range that the result allows was moved to its end"},
    {Code::RotationNormalised, "rotation-normalised",
     "a rotation was not of length 1 and was divided by its length"},
    {Code::VertexAnimationLost, "vertex-animation-lost",
     "vertices that move one by one have too many key times; their first places are kept"},
    {Code::VisibilityLost, "visibility-lost",
     "an object's visibility and shadow switches have no place in the result"},
    {Code::MaterialApproximated, "material-approximated",
     "a material became the nearest one of another kind"},
    {Code::ShaderLost, "shader-lost", "a shader other than metallic-roughness has no place in the result"},
    {Code::TextureLost, "texture-lost", "a texture that the result cannot have was left out"},
    {Code::TextureReduced, "texture-reduced",
     "a texture's crop, film, channel, alpha or encoding has no place in the result"},
    {Code::LightReduced, "light-reduced",
     "a light's beam, shadow, light lists or switch have no place in the result"},
    {Code::LightApproximated, "light-approximated",
     "a light that is not physical keeps its factor as its intensity"},
    {Code::LensAnimationLost, "lens-animation-lost", "a lens that moves keeps its value at the start"},
    {Code::LensChanged, "lens-changed", "a lens that the result cannot have was changed"},
    {Code::PropertyAnimationLost, "property-animation-lost", "a property that moves keeps its first value"},
    {Code::RecordLost, "record-lost", "records of this kind have no place in the result"},
    {Code::BodyLost, "body-lost", "an object is kept as bytes that nobody can read"},
    {Code::NameChanged, "name-changed", "a name comes out otherwise"},
    {Code::WorldAssumed, "world-assumed", "the file does not say which way is up"},
    {Code::UnusedLost, "unused-lost", "what no node shows has no place in the result"},
    {Code::BindMatrixChanged, "bind-matrix-changed",
     "the last row of an inverse bind matrix is not 0, 0, 0, 1 and was replaced"},
});

constexpr bool IsInOrder()
{
    for (std::size_t i = 0; i < kConversionCodes.size(); ++i)
    {
        if (kConversionCodes[i].code != static_cast<Code>(i))
            return false;
    }
    return true;
}
static_assert(IsInOrder());

} // namespace

std::span<const ConversionCode> ConversionCodes()
{
    return kConversionCodes;
}

Severity SeverityOf(Code code)
{
    const std::string_view name = NameOf(code);
    if (name.ends_with("-lost") || name.ends_with("-dropped"))
        return Severity::Lost;
    return name.ends_with("-assumed") ? Severity::Assumed : Severity::Changed;
}

std::string_view NameOf(Code code)
{
    return kConversionCodes[static_cast<std::size_t>(code)].name;
}

std::string_view NameOf(Severity severity)
{
    switch (severity)
    {
    case Severity::Lost:
        return "lost";
    case Severity::Assumed:
        return "assumed";
    case Severity::Changed:
        break;
    }
    return "changed";
}

std::string EntryText(const ReportEntry& entry)
{
    return std::string(NameOf(SeverityOf(entry.code))) + ": " + std::string(NameOf(entry.code)) + ": " +
           (entry.count > 1 ? CountText(entry.count) + " x " : "") +
           (entry.where.empty() ? "" : Printable(entry.where) + ": ") + Printable(entry.text);
}

void ConversionReport::Add(Code code, std::string where, std::string text, std::size_t count)
{
    Found& found = found_[code];
    ++found.places;
    found.count += count;
    if (found.entries.size() < kMostPlaces)
        found.entries.push_back({code, std::move(where), std::move(text), count});
}

std::vector<ReportEntry> ConversionReport::Entries() const
{
    std::vector<ReportEntry> entries;
    for (const auto& [code, found] : found_)
    {
        if (found.places > kMostPlaces)
        {
            const std::string sentence(kConversionCodes[static_cast<std::size_t>(code)].sentence);
            entries.push_back({code, {}, sentence, found.count});
        }
        else
            entries.insert(entries.end(), found.entries.begin(), found.entries.end());
    }
    return entries;
}

bool ConversionReport::HasLost() const
{
    return std::any_of(found_.begin(), found_.end(),
                       [](const auto& entry) { return SeverityOf(entry.first) == Severity::Lost; });
}

} // namespace tev2_gltf
