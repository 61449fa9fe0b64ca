#include "tev2_loader/io/load_report.h"

#include <charconv>
#include <cstdio>

namespace TEV2_LOADER
{

namespace
{

constexpr TEV2_LOAD_CODE_ROW kLoadCodes[] = {
    {TEV2_LOAD_CODE::EmptyImage, "empty-image", TEV2_LOAD_SEVERITY::Error, "The file is empty."},
    {TEV2_LOAD_CODE::ImageTooLarge, "image-too-large", TEV2_LOAD_SEVERITY::Error,
     "The file is larger than the format can be."},
    {TEV2_LOAD_CODE::BadMagic, "bad-magic", TEV2_LOAD_SEVERITY::Error,
     "The file does not begin with 01 32 56 54: not a scene file or, with zeros there, one whose save "
     "was interrupted."},
    {TEV2_LOAD_CODE::TruncatedChunkHeader, "truncated-chunk-header", TEV2_LOAD_SEVERITY::Error,
     "Fewer than 8 bytes are left where the next chunk should begin."},
    {TEV2_LOAD_CODE::BadChunkSize, "bad-chunk-size", TEV2_LOAD_SEVERITY::Error,
     "A chunk size is below 8 or reaches beyond the end of the file."},
    {TEV2_LOAD_CODE::ChunkTooSmall, "chunk-too-small", TEV2_LOAD_SEVERITY::Error,
     "A chunk ends before the type or list index that its kind has."},
    {TEV2_LOAD_CODE::UnsupportedVersion, "unsupported-version", TEV2_LOAD_SEVERITY::Error,
     "The file is of a version newer than 1.16."},
    {TEV2_LOAD_CODE::BadInstanceList, "bad-instance-list", TEV2_LOAD_SEVERITY::Error,
     "An instance names a list beyond 9."},
    {TEV2_LOAD_CODE::UnknownTrackKind, "unknown-track-kind", TEV2_LOAD_SEVERITY::Error,
     "A track is of a kind that is not allowed there."},
    {TEV2_LOAD_CODE::UnknownEffectType, "unknown-effect-type", TEV2_LOAD_SEVERITY::Error,
     "A camera effect is of an unknown type."},
    {TEV2_LOAD_CODE::CountExceedsFile, "count-exceeds-file", TEV2_LOAD_SEVERITY::Error,
     "A count announces more elements than the rest of the file can hold."},
    {TEV2_LOAD_CODE::RecordOverrun, "record-overrun", TEV2_LOAD_SEVERITY::Error,
     "A record continues past the end of the file."},
    {TEV2_LOAD_CODE::LimitExceeded, "limit-exceeded", TEV2_LOAD_SEVERITY::Error,
     "The file exceeds a limit that the program has set."},
    {TEV2_LOAD_CODE::RecordEndsBeforeChunk, "record-ends-before-chunk", TEV2_LOAD_SEVERITY::Warning,
     "A record ends before its chunk does; reading continued at the end of the record."},
    {TEV2_LOAD_CODE::RecordEndsAfterChunk, "record-ends-after-chunk", TEV2_LOAD_SEVERITY::Warning,
     "A record ends after its chunk; reading continued at the end of the record."},
    {TEV2_LOAD_CODE::UnknownChunk, "unknown-chunk", TEV2_LOAD_SEVERITY::Warning,
     "A chunk has an id that the format does not know; it is skipped, and lost when the scene is saved."},
    {TEV2_LOAD_CODE::StringClamped, "string-clamped", TEV2_LOAD_SEVERITY::Warning,
     "A string is longer than the rest of the file; its end is lost."},
    {TEV2_LOAD_CODE::ParentOutside, "parent-outside", TEV2_LOAD_SEVERITY::Warning,
     "A node's parent index is beyond the nodes."},
    {TEV2_LOAD_CODE::BodyKept, "body-kept", TEV2_LOAD_SEVERITY::Warning,
     "A body is of a layout that this version does not read; its bytes are kept and written back."},
    {TEV2_LOAD_CODE::UnparsedOtherVersion, "unparsed-other-version", TEV2_LOAD_SEVERITY::Warning,
     "A body that is kept as bytes comes from another version than the one it would be saved under."},
    {TEV2_LOAD_CODE::InstanceListNeverSaved, "instance-list-never-saved", TEV2_LOAD_SEVERITY::Warning,
     "An instance is in list 7 or 9, which are lost when the scene is saved."},
    {TEV2_LOAD_CODE::MoreWarnings, "more-warnings", TEV2_LOAD_SEVERITY::Warning,
     "There were more warnings than the loader keeps."},
};

} // namespace

std::string NumberText(float number)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string HexText(std::uint32_t number)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", number);
    return text;
}

std::string FindingText(const TEV2_LOAD_FINDING& finding)
{
    std::string text = CodeName(finding.code) + (" at byte " + std::to_string(finding.offset));
    if (!finding.path.empty())
        text += " in " + finding.path;
    return text + ": expected " + finding.expected + ", found " + finding.found;
}

std::span<const TEV2_LOAD_CODE_ROW> LoadCodes()
{
    return kLoadCodes;
}

const char* CodeName(TEV2_LOAD_CODE code)
{
    for (const TEV2_LOAD_CODE_ROW& row : kLoadCodes)
        if (row.code == code)
            return row.name;
    return "unknown";
}

} // namespace TEV2_LOADER
