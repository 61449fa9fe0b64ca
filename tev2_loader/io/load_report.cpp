#include "tev2_loader/io/load_report.h"

#include <charconv>

namespace TEV2_LOADER
{

std::string NumberText(float number)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

std::string FindingText(const TEV2_LOAD_FINDING& finding)
{
    std::string text = CodeName(finding.code) + (" at byte " + std::to_string(finding.offset));
    if (!finding.path.empty())
        text += " in " + finding.path;
    return text + ": expected " + finding.expected + ", found " + finding.found;
}

const char* CodeName(TEV2_LOAD_CODE code)
{
    switch (code)
    {
    case TEV2_LOAD_CODE::EmptyImage:
        return "empty-image";
    case TEV2_LOAD_CODE::ImageTooLarge:
        return "image-too-large";
    case TEV2_LOAD_CODE::BadMagic:
        return "bad-magic";
    case TEV2_LOAD_CODE::TruncatedChunkHeader:
        return "truncated-chunk-header";
    case TEV2_LOAD_CODE::BadChunkSize:
        return "bad-chunk-size";
    case TEV2_LOAD_CODE::ChunkTooSmall:
        return "chunk-too-small";
    case TEV2_LOAD_CODE::UnsupportedVersion:
        return "unsupported-version";
    case TEV2_LOAD_CODE::BadInstanceList:
        return "bad-instance-list";
    case TEV2_LOAD_CODE::UnknownTrackKind:
        return "unknown-track-kind";
    case TEV2_LOAD_CODE::UnknownEffectType:
        return "unknown-effect-type";
    case TEV2_LOAD_CODE::EnvironmentMapUnsupported:
        return "environment-map-unsupported";
    case TEV2_LOAD_CODE::CountExceedsFile:
        return "count-exceeds-file";
    case TEV2_LOAD_CODE::RecordOverrun:
        return "record-overrun";
    case TEV2_LOAD_CODE::LimitExceeded:
        return "limit-exceeded";
    case TEV2_LOAD_CODE::RecordEndsBeforeChunk:
        return "record-ends-before-chunk";
    case TEV2_LOAD_CODE::RecordEndsAfterChunk:
        return "record-ends-after-chunk";
    case TEV2_LOAD_CODE::UnknownChunk:
        return "unknown-chunk";
    case TEV2_LOAD_CODE::StringClamped:
        return "string-clamped";
    case TEV2_LOAD_CODE::ParentOutside:
        return "parent-outside";
    case TEV2_LOAD_CODE::UnparsedOtherVersion:
        return "unparsed-other-version";
    case TEV2_LOAD_CODE::InstanceListNeverSaved:
        return "instance-list-never-saved";
    case TEV2_LOAD_CODE::MoreWarnings:
        return "more-warnings";
    }
    return "unknown";
}

} // namespace TEV2_LOADER
