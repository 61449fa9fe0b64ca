#include "tools/tv2/check_codes.h"

#include "tev2_loader/io/load_report.h"

#include <algorithm>
#include <vector>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

/// What loads but looks wrong.
constexpr CheckCode kLintCodes[] = {
    {"information-not-first", Severity::Warning,
     "The first chunk is not the information record, so what comes before it is read as version 0."},
    {"chunk-repeated", Severity::Warning,
     "A chunk that a file has once is repeated and replaces the earlier one."},
    {"chunk-missing", Severity::Warning,
     "A chunk that every writer writes is missing: the file may have been cut off between two chunks."},
    {"text-cut", Severity::Warning,
     "A name or text has 65,535 units, the most that a file can hold: what followed was cut off when it was "
     "saved."},
    {"array-lengths-differ", Severity::Note, "The array lengths differ from the numbers of objects."},
    {"time-range-reversed", Severity::Warning, "The time range ends before it starts."},
    {"non-finite-value", Severity::Warning, "A number is infinite or NaN."},
    {"times-not-ascending", Severity::Warning,
     "A key time is not after the one before it (two equal times at the end of a track are end-keys-close)."},
    {"end-keys-close", Severity::Note,
     "The last two keys of a track are at one time, or closer than a tenth of the shortest distance between "
     "other keys."},
    {"key-outside-range", Severity::Note, "A key is outside the time range by more than a millisecond."},
    {"value-count-differs", Severity::Warning, "A track has more or fewer values than times."},
    {"constant-with-times", Severity::Note,
     "A track has one value, which makes it a constant, but not one time."},
    {"track-without-keys", Severity::Warning, "A track has no values."},
    {"cursor-outside", Severity::Warning,
     "The stored playback cursor is not at a key that opens a segment, or its fraction is not from 0 to 1."},
    {"quaternion-not-unit", Severity::Warning,
     "The length of a rotation differs from 1 by more than 0.001, as that of a mirrored model does."},
    {"quaternion-flip", Severity::Warning,
     "Two neighbouring rotations have a negative dot product: interpolation takes the long way round."},
    {"node-track-missing", Severity::Warning, "A node has no translation or no rotation track."},
    {"parent-not-before-child", Severity::Warning,
     "A node's parent is the node itself or comes after it, so evaluation uses a stale parent."},
    {"duplicate-node-name", Severity::Note, "Several nodes have the same name."},
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
        for (const TEV2_LOAD_CODE_ROW& row : LoadCodes())
        {
            const bool error = row.severity == TEV2_LOAD_SEVERITY::Error;
            all.push_back({row.name, error ? Severity::Error : Severity::Warning, row.sentence});
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
