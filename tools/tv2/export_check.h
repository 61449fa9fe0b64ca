#pragma once

#include "tools/tv2/export_plan.h"

#include <cstdint>
#include <string>

/// What stands at a path at one moment; two that are equal mean that nobody wrote in between.
struct FileStamp
{
    bool exists = false;
    bool regular = false;
    bool read_only = false; ///< by its permission bits
    std::uint64_t device = 0, inode = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0, nanoseconds = 0; ///< of the last change

    static FileStamp Of(const std::string& path);
    bool operator==(const FileStamp&) const = default;
};

/// What came out of one planned file. Only what can be read back from disk counts.
struct ExportedFile
{
    std::string error;    ///< empty: the file is whole and as planned
    bool skipped = false; ///< left alone: it is read-only
    std::size_t nodes = 0;
    std::size_t cameras = 0;
    std::size_t samples = 0;
    std::uint64_t keys_sampled = 0;
    std::uint64_t keys_kept = 0;
    std::uint64_t bytes = 0;
};

/// Reads back one file that an export was to write; `before` is what stood there then.
ExportedFile CheckExportedFile(const PlannedFile& planned, const ExportPlan& plan, const FileStamp& before);
