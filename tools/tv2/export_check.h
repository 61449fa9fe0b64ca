#pragma once

#include "tools/tv2/export_plan.h"
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
    bool skipped = false; ///< and is so because it is read-only
    std::size_t nodes = 0;
    std::size_t cameras = 0;
    std::size_t samples = 0;
    std::uint64_t keys_sampled = 0;
    std::uint64_t keys_kept = 0;
    std::uint64_t bytes = 0;
};

/// Reads back one file that an export was to write; `before` is what stood there then.
ExportedFile CheckExportedFile(const PlannedFile& planned, const ExportPlan& plan, const FileStamp& before);

} // namespace tv2
