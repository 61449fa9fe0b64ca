#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// Everything that a load can find. The names that CodeName gives stay the same from version to version.
enum class TEV2_LOAD_CODE
{
    // Errors: the load fails.
    EmptyImage,                ///< no byte at all
    ImageTooLarge,             ///< 4 GiB or more
    BadMagic,                  ///< not a scene file, or one whose save was interrupted
    TruncatedChunkHeader,      ///< fewer than 8 bytes where a chunk should begin
    BadChunkSize,              ///< a chunk size below 8 or beyond the end of the file
    ChunkTooSmall,             ///< a chunk ends before the number that its kind begins with
    UnsupportedVersion,        ///< the file is newer than this library
    BadInstanceList,           ///< an instance list index above 9
    UnknownTrackKind,          ///< a track kind that its place does not take
    UnknownEffectType,         ///< a camera effect type that there is not
    EnvironmentMapUnsupported, ///< the environment carries a material map
    CountExceedsFile,          ///< an array of more elements than the remaining bytes can hold
    RecordOverrun,             ///< a record goes on where the file has ended
    LimitExceeded,             ///< more than the limits that the caller set

    // Warnings: the load goes on.
    RecordEndsBeforeChunk,  ///< the next chunk is looked for before the end of this one
    RecordEndsAfterChunk,   ///< the next chunk is looked for behind the end of this one
    UnknownChunk,           ///< skipped, and absent when the scene is saved
    StringClamped,          ///< a string goes on where the file has ended; what there is of it was kept
    ParentOutside,          ///< a parent index beyond the nodes; the node stands at top level
    UnparsedOtherVersion,   ///< a body kept as bytes, from a version other than the one it is saved under
    InstanceListNeverSaved, ///< an instance in list 7 or 9: loaded, but absent when the scene is saved
    MoreWarnings,           ///< further warnings were met, but not kept
};

/// A number as findings show it: the shortest text that reads back to it.
std::string NumberText(float number);

/// The stable text of a code: "bad-magic", "record-overrun" and so on.
const char* CodeName(TEV2_LOAD_CODE code);

enum class TEV2_LOAD_SEVERITY
{
    Error,
    Warning
};

struct TEV2_LOAD_FINDING
{
    /// chunkId of a finding that lies outside every chunk.
    static constexpr std::uint32_t kNoChunk = 0xFFFFFFFFu;

    TEV2_LOAD_CODE code;
    TEV2_LOAD_SEVERITY severity;
    std::size_t offset = 0;           ///< the byte of the file where it was met
    std::uint32_t chunkId = kNoChunk; ///< kind of the chunk it lies in
    std::size_t chunkOffset = 0;      ///< where that chunk begins (its size field)
    std::string path;     ///< the record, for example "matrixHierarchy.nodes[3].rotation"; may be empty
    std::string expected; ///< what should have stood there, in words
    std::string found;    ///< what did, in words
};

/// A finding on one line: "bad-magic at byte 0: expected ..., found ...", with the record where there is one.
std::string FindingText(const TEV2_LOAD_FINDING& finding);

/// One chunk as it was walked.
struct TEV2_CHUNK_SPAN
{
    std::uint32_t id = TEV2_LOAD_FINDING::kNoChunk;
    std::uint32_t size = 0; ///< as it declares it, size field included
    std::size_t offset = 0; ///< of its size field
};

/// How much a load may make of a file; 0: no limit. A file that wants more is refused with LimitExceeded.
struct TEV2_LOAD_LIMITS
{
    /// Memory for what is read: records, arrays, texts and the list of chunks, counted also where a later chunk
    /// replaces it, and the room that array lengths announce. While an array grows it can take up to three times its
    /// share for a moment.
    std::size_t bytes = 0;

    /// Nodes of the matrix hierarchy.
    std::size_t nodes = 0;

    /// Nodes on the way from any node up to the top level, both ends counted. Parents that form a circle exceed
    /// every limit.
    std::size_t nesting = 0;
};

/// What a load saw, beside its bool. Filled by the cursor that it is given to; one report serves one load.
struct TEV2_LOAD_REPORT
{
    /// So many warnings are kept; where there are more, MoreWarnings follows them.
    static constexpr std::size_t kMostWarnings = 1000;

    std::vector<TEV2_LOAD_FINDING> findings; ///< in the order met; a failed load has exactly one Error
    std::vector<TEV2_CHUNK_SPAN> chunks;     ///< every chunk whose frame was sound, in file order
    float version = 0.0f;                    ///< the file's version; 0 when no information record was read
};

} // namespace TEV2_LOADER
