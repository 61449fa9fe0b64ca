#pragma once

#include "exporter/rules/rules.h"
#include "tools/tv2/system.h"

#include <cstdint>
#include <string>

namespace tv2
{

/// What came out of one planned file. Only what can be read back from disk counts.
struct ExportedFile
{
    std::string error;    ///< empty: the file is whole and as planned
    bool kept = false;    ///< the file is the one that was there before
    bool skipped = false; ///< and is so because it is read-only, or was to be kept
    std::string reason{}; ///< why it was to be kept; there is no error then
    std::size_t nodes = 0;
    std::size_t cameras = 0;
    std::size_t samples = 0;
    std::uint64_t keys_sampled = 0;
    std::uint64_t keys_kept = 0;
    std::uint64_t bytes = 0;
};

/// Why --no-clobber keeps a file.
inline constexpr const char* kItExists = "it exists (--no-clobber)";

/// Reads back one file of an export; `before` is what was there when the export began.
ExportedFile CheckExportedFile(const tev2_exporter::FilePlan& planned, const tev2_exporter::ExportPlan& plan,
                               const FileStamp& before);

/// What would come out of it, as far as the plan says.
ExportedFile PlannedFile(const tev2_exporter::FilePlan& planned, const tev2_exporter::ExportPlan& plan,
                         bool overwrite_read_only);

} // namespace tv2
