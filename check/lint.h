#pragma once

#include "check/check_codes.h"
#include "check/loaded_file.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tev2_check
{

/// Something that `tv2 check` has to say about a file.
struct Finding
{
    std::string code; ///< one of CheckCodes()
    Severity severity;
    std::uint64_t offset = 0;              ///< the byte it is about
    std::optional<std::uint32_t> chunk_id; ///< of the chunk around it; none outside every chunk
    std::uint64_t chunk_offset = 0;        ///< of that chunk
    std::string path;                      ///< the record, "matrixHierarchy.nodes[3].rotation"; may be empty
    std::string message;                   ///< what is the matter, with the numbers
    std::string name{}; ///< of the node or object that the record is or belongs to; may be empty
    std::size_t more =
        0; ///< how many numbers, texts or records of the same path it is about, besides the first
};

/// A finding on one line: `warning key-order at byte 120, matrixHierarchy.nodes[3].rotation "Hips": ...`.
std::string FindingText(const Finding& finding);

/// What to look for besides what is in the file.
struct CheckOptions
{
    bool files = false; ///< whether the images that a scene names exist

    /// The rig that the animation has to fit; not owned, null: none.
    const TEV2_LOADER::TEV2* like = nullptr;
};

/// What the loader reported, and for a file that was loaded what looks wrong in it, by offset.
std::vector<Finding> Examine(const LoadedFile& file, const CheckOptions& options);

/// The codes of what loads but looks wrong.
std::vector<CheckCode> LintCodes();

} // namespace tev2_check
