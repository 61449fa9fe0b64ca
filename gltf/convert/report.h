#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tev2_gltf
{

/// What a conversion reports. kConversionCodes has their names and sentences.
enum class Code : std::uint8_t
{
    SceneLost,
    ShearDropped,
    ParentDropped,
    PrimitiveLost,
    AttributeLost,
    AttributeFilled,
    DirectionsChanged,
    WeightsNormalised,
    SkinNameLost,
    SkinMoved,
    NodeAdded,
    CameraLost,
    CameraReduced,
    AspectAssumed,
    ImageRenamed,
    ImageWritten,
    Resampled,
    ExtrasLost,
    NumberRounded,
    ExtensionLost,
    AnimationLost,
    TimeShifted,
    InterpolationChanged,
    KeyDropped,
    ValueDropped,
    ValueClamped,
    RotationNormalised,
    VertexAnimationLost,
    VisibilityLost,
    MaterialApproximated,
    ShaderLost,
    TextureLost,
    TextureReduced,
    LightReduced,
    LightApproximated,
    LensAnimationLost,
    LensChanged,
    PropertyAnimationLost,
    RecordLost,
    BodyLost,
    NameChanged,
    WorldAssumed,
    UnusedLost,
    BindMatrixChanged,
};

enum class Severity : std::uint8_t
{
    Lost,    // it is not in the result
    Assumed, // the source did not say
    Changed, // it is there, but not the same
};

/// A code that `tv2 convert` can report. Codes are stable: scripts may rely on them.
struct ConversionCode
{
    Code code;
    std::string_view
        name; // ends in -lost or -dropped where something is lost, in -assumed where it is assumed
    std::string_view sentence; // what it means, without a full stop
};

/// In the order of Code.
std::span<const ConversionCode> ConversionCodes();

Severity SeverityOf(Code code);
std::string_view NameOf(Code code);

/// "lost", "assumed", "changed"
std::string_view NameOf(Severity severity);

struct ReportEntry
{
    Code code;
    std::string
        where; // a record's path with its name or a JSON pointer with it; empty for more than kMostPlaces
    std::string text;      // what happened there, in words; the code's sentence for more than kMostPlaces
    std::size_t count = 1; // of things, or of places
};

/// An entry on one line: `lost: material-lost: 3 x materials[2]: ...`.
std::string EntryText(const ReportEntry& entry);

/// What a conversion could not bring over as it was. The same code at more than kMostPlaces places is one entry.
class ConversionReport
{
public:
    static constexpr std::size_t kMostPlaces = 10;

    void Add(Code code, std::string where, std::string text, std::size_t count = 1);

    /// In the order of the codes, places in the order in which they were added.
    std::vector<ReportEntry> Entries() const;

    bool IsEmpty() const { return found_.empty(); }
    bool HasLost() const;

private:
    struct Found
    {
        std::vector<ReportEntry> entries; // the first kMostPlaces
        std::size_t places = 0;
        std::size_t count = 0;
    };

    std::map<Code, Found> found_;
};

} // namespace tev2_gltf
