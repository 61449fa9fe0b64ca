#pragma once

#include "tev2_loader/requirements.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// Everything that a load can report. CodeName gives names that never change.
enum class TEV2_LOAD_CODE
{
    // Errors: the load fails.
    EmptyImage,           ///< no bytes
    ImageTooLarge,        ///< 4 GiB or more
    BadMagic,             ///< not a scene file, or one whose save was interrupted
    TruncatedChunkHeader, ///< fewer than 8 bytes where a chunk should begin
    BadChunkSize,         ///< a chunk size below 8 or beyond the end of the file
    ChunkTooSmall,        ///< a chunk ends before the number that it must begin with
    UnsupportedVersion,   ///< the file is newer than this library
    BadInstanceList,      ///< an instance list index above 9
    UnknownTrackKind,     ///< a track kind that is not allowed here
    UnknownEffectType,    ///< a camera effect type that does not exist
    CountExceedsFile,     ///< an array of more elements than the remaining bytes can hold
    RecordOverrun,        ///< a record continues past the end of the file
    LimitExceeded,        ///< a limit set by the caller is exceeded

    // Warnings: the load continues.
    RecordEndsBeforeChunk,  ///< reading continues before the end of this chunk
    RecordEndsAfterChunk,   ///< reading continues after the end of this chunk
    UnknownChunk,           ///< skipped, and absent when the scene is saved
    StringClamped,          ///< a string continues past the end of the file; its beginning was kept
    ParentOutside,          ///< a parent index beyond the nodes; the node is treated as top level
    BodyKept,               ///< a body of another layout, kept as bytes
    UnparsedOtherVersion,   ///< a body kept as bytes, from another version than the one it is saved as
    InstanceListNeverSaved, ///< an instance in list 7 or 9: loaded, but absent when the scene is saved
    MoreWarnings,           ///< there were further warnings
};

/// The shortest text that reads back as this number.
std::string NumberText(float number);

/// "0x4c590001"
std::string HexText(std::uint32_t number);

enum class TEV2_LOAD_SEVERITY
{
    Error,
    Warning
};

struct TEV2_LOAD_CODE_ROW
{
    TEV2_LOAD_CODE code;
    const char* name; ///< stable: "bad-magic"
    TEV2_LOAD_SEVERITY severity;
    const char* sentence; ///< what it means
};

/// All codes, in the order of the enum.
std::span<const TEV2_LOAD_CODE_ROW> LoadCodes();

/// The stable text of a code: "bad-magic", "record-overrun" and so on.
const char* CodeName(TEV2_LOAD_CODE code);

struct TEV2_LOAD_FINDING
{
    /// chunkId of a finding outside every chunk.
    static constexpr std::uint32_t kNoChunk = 0xFFFFFFFFu;

    TEV2_LOAD_CODE code;
    TEV2_LOAD_SEVERITY severity;
    std::size_t offset = 0;           ///< byte of the file
    std::uint32_t chunkId = kNoChunk; ///< kind of the chunk that contains it
    std::size_t chunkOffset = 0;      ///< start of that chunk (its size field)
    std::string path;     ///< the record, for example "matrixHierarchy.nodes[3].rotation"; may be empty
    std::string expected; ///< in words
    std::string found;    ///< in words
};

/// A finding on one line: "bad-magic at byte 0: expected ..., found ...", with the record where there is one.
std::string FindingText(const TEV2_LOAD_FINDING& finding);

/// A chunk of the file.
struct TEV2_CHUNK_SPAN
{
    std::uint32_t id = TEV2_LOAD_FINDING::kNoChunk;
    std::uint32_t size = 0; ///< as declared, size field included
    std::size_t offset = 0; ///< of its size field
};

/// Limits of a load; 0: none. A file that exceeds one fails with LimitExceeded.
struct TEV2_LOAD_LIMITS
{
    /// Bytes of memory for the scene: records, arrays, texts, the list of chunks and the space reserved for announced
    /// array lengths, including records that later chunks replace. A growing array can briefly use three times its
    /// share.
    std::size_t bytes = 0;

    /// Nodes of the matrix hierarchy.
    std::size_t nodes = 0;

    /// Depth of the hierarchy: nodes from any node up to the top level, both included. A cycle of parents exceeds every
    /// limit.
    std::size_t nesting = 0;
};

/// What a load found. One report serves one load.
struct TEV2_LOAD_REPORT
{
    /// Warnings kept; MoreWarnings follows when there are more.
    static constexpr std::size_t kMostWarnings = 1000;

    std::vector<TEV2_LOAD_FINDING> findings; ///< in order; a failed load has exactly one Error
    std::vector<TEV2_CHUNK_SPAN> chunks;     ///< every chunk inside the file, in file order
    float version = 0.0f;                    ///< the file's version; 0 when no information record was read
};

} // namespace TEV2_LOADER
