#pragma once

#include <cstdint>
#include <string>

// What the command asks of the operating system itself; one source file for each system implements it. Paths are
// bytes as the system takes them, errors are errno values.

/// "tool" as a module that programs load is called here: "tool.so" or "tool.dll".
std::string ModuleFileName(const std::string& name);

/// Where this program stands; empty when that is unknown.
std::string ProgramPath();

/// True when what goes to standard error is shown to a person.
bool ErrorsGoToTerminal();

/// What stands at a path at one moment; two that are equal mean that nobody wrote in between.
struct FileStamp
{
    int error = 0; ///< why there is nothing to see, 0 when something is there
    bool exists = false;
    bool regular = false;
    bool folder = false;
    bool read_only = false; ///< a file marked so for everybody, whatever this user may do
    std::uint64_t device = 0, inode = 0;
    std::int64_t size = 0;
    std::int64_t seconds = 0, nanoseconds = 0; ///< of the last change

    static FileStamp Of(const std::string& path);
    bool operator==(const FileStamp&) const = default;
    bool IsSameFile(const FileStamp& other) const
    {
        return exists && other.exists && device == other.device && inode == other.inode;
    }
};

/// Why this user may not write to a file that is there, or add to a folder; 0 when nothing speaks against it.
int ObstacleToWriting(const std::string& path);

/// Takes the mark off a file that is read-only for everybody; 0, or why that failed.
int MakeWritable(const std::string& path);

/// Why nothing can be written to `path` now, its disk or device included, in the system's words; empty when that
/// works.
std::string WhyNotWritable(const std::string& path);
