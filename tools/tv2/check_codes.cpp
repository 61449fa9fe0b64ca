#include "tools/tv2/check_codes.h"

#include "tev2_loader/io/load_report.h"

#include <algorithm>
#include <vector>

namespace tv2
{

using TEV2_LOADER::CodeName;
using TEV2_LOADER::TEV2_LOAD_CODE;

namespace
{

struct LoaderCode
{
    TEV2_LOAD_CODE code;
    Severity severity;
    std::string_view sentence;
};

constexpr LoaderCode kLoaderCodes[] = {
    {TEV2_LOAD_CODE::EmptyImage, Severity::Error, "The file has no byte at all."},
    {TEV2_LOAD_CODE::ImageTooLarge, Severity::Error, "The file is larger than the format can be."},
    {TEV2_LOAD_CODE::BadMagic, Severity::Error,
     "The file does not begin with 01 32 56 54: no scene file, or (with zeros there) one whose save was cut "
     "short."},
    {TEV2_LOAD_CODE::TruncatedChunkHeader, Severity::Error,
     "Fewer than 8 bytes are left where the next chunk should begin."},
    {TEV2_LOAD_CODE::BadChunkSize, Severity::Error,
     "A chunk size is below 8 or reaches beyond the end of the file."},
    {TEV2_LOAD_CODE::ChunkTooSmall, Severity::Error,
     "A chunk ends before the type or list index that its kind has."},
    {TEV2_LOAD_CODE::UnsupportedVersion, Severity::Error, "The file is of a version newer than 1.16."},
    {TEV2_LOAD_CODE::BadInstanceList, Severity::Error, "An instance names a list beyond 9."},
    {TEV2_LOAD_CODE::UnknownTrackKind, Severity::Error, "A track is of a kind that its place does not take."},
    {TEV2_LOAD_CODE::UnknownEffectType, Severity::Error, "A camera effect is of a type that there is not."},
    {TEV2_LOAD_CODE::EnvironmentMapUnsupported, Severity::Error,
     "The environment has a material map, which cannot be read yet."},
    {TEV2_LOAD_CODE::CountExceedsFile, Severity::Error,
     "A count is larger than the rest of the file can hold elements."},
    {TEV2_LOAD_CODE::RecordOverrun, Severity::Error, "A record goes on where the file has ended."},
    {TEV2_LOAD_CODE::LimitExceeded, Severity::Error,
     "The file holds more than the limits that the program has set for it."},
    {TEV2_LOAD_CODE::RecordEndsBeforeChunk, Severity::Warning,
     "A record ends before its chunk does; reading went on at the end of the record."},
    {TEV2_LOAD_CODE::RecordEndsAfterChunk, Severity::Warning,
     "A record ends after its chunk; reading went on at the end of the record."},
    {TEV2_LOAD_CODE::UnknownChunk, Severity::Warning,
     "A chunk has an id that the format does not know; it is skipped, and lost when the scene is saved."},
    {TEV2_LOAD_CODE::StringClamped, Severity::Warning,
     "A string is longer than the rest of the file; its end is lost."},
    {TEV2_LOAD_CODE::ParentOutside, Severity::Warning, "A node's parent index is beyond the nodes."},
    {TEV2_LOAD_CODE::UnparsedOtherVersion, Severity::Warning,
     "A body that is kept as bytes comes from another version than the one it would be saved under."},
    {TEV2_LOAD_CODE::InstanceListNeverSaved, Severity::Warning,
     "An instance stands in list 7 or 9, which are lost when the scene is saved."},
    {TEV2_LOAD_CODE::MoreWarnings, Severity::Warning, "The loader met more warnings than it keeps."},
};

/// What loads but looks wrong.
constexpr CheckCode kLintCodes[] = {
    {"information-not-first", Severity::Warning,
     "The first chunk is not the information record, so what comes before it is read as version 0."},
    {"chunk-repeated", Severity::Warning,
     "A chunk that a file has once is there again and replaces the earlier one."},
    {"chunk-missing", Severity::Warning,
     "A chunk that every writer puts down is not there: the file may have been cut off between two chunks."},
    {"text-cut", Severity::Warning,
     "A name or text has 65,535 units, the most that a file can hold: what followed was cut off when it was "
     "saved."},
    {"array-lengths-differ", Severity::Note,
     "The array lengths announce another number of objects than there are."},
    {"time-range-reversed", Severity::Warning, "The time range ends before it starts."},
    {"non-finite-value", Severity::Warning, "A number is infinite or not a number."},
    {"times-not-ascending", Severity::Warning,
     "A key time is not after the one before it (two equal times at the end of a track are end-keys-close)."},
    {"end-keys-close", Severity::Note,
     "The last two keys of a track are at one time, or closer than a tenth of the shortest distance of other "
     "keys."},
    {"key-outside-range", Severity::Note, "A key lies outside the time range by more than a millisecond."},
    {"value-count-differs", Severity::Warning, "A track has not as many values as times."},
    {"constant-with-times", Severity::Note,
     "A track has one value, which makes it a constant, but not one time."},
    {"track-without-keys", Severity::Warning, "A track is there, but has no value."},
    {"cursor-outside", Severity::Warning,
     "The stored playback cursor is not at a key that opens a segment, or its fraction is not from 0 to 1."},
    {"quaternion-not-unit", Severity::Warning,
     "The length of a rotation differs from 1 by more than 0.001, as that of a mirrored model does."},
    {"quaternion-flip", Severity::Warning,
     "Two neighbouring rotations have a negative dot product: interpolation takes the long way round."},
    {"node-track-missing", Severity::Warning, "A node has no translation or no rotation track."},
    {"parent-not-before-child", Severity::Warning,
     "A node's parent is the node itself or stands after it, so evaluation uses a stale parent."},
    {"duplicate-node-name", Severity::Note, "Several nodes have one name."},
    {"camera-node-outside", Severity::Warning, "A camera's node index is beyond the nodes."},
    {"switcher-camera-outside", Severity::Warning,
     "The camera switcher names a camera beyond the cameras, or a negative one other than -1."},
};

} // namespace

const char* SeverityName(Severity severity)
{
    return severity == Severity::Error ? "error" : severity == Severity::Warning ? "warning" : "note";
}

std::span<const CheckCode> CheckCodes()
{
    static const std::vector<CheckCode> codes = []
    {
        std::vector<CheckCode> all;
        for (const LoaderCode& loader : kLoaderCodes)
        {
            all.push_back({CodeName(loader.code), loader.severity, loader.sentence});
        }
        all.insert(all.end(), std::begin(kLintCodes), std::end(kLintCodes));
        return all;
    }();
    return codes;
}

const CheckCode& FindCheckCode(std::string_view code)
{
    static const CheckCode none{{}, Severity::Error, {}};
    const auto codes = CheckCodes();
    const auto found = std::find_if(codes.begin(), codes.end(),
                                    [code](const CheckCode& entry) { return entry.code == code; });
    return found == codes.end() ? none : *found;
}

} // namespace tv2
