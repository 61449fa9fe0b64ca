#pragma once

// What the system says about files and their names. Paths are bytes as the system takes them, errors are errno values;
// one source file for each system implements it.

#include <cstdint>
#include <string>

namespace tev2_exporter
{

/// What is at a path at one moment. Two that are equal mean that the file was not written in between: exports replace
/// files, which gives another inode even where the clock of the file system is coarse.
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

/// Why this user may not write to a file that is there, or add to a folder; 0 when nothing prevents it.
int ObstacleToWriting(const std::string& path);

#if defined(_WIN32)
/// The errno value of the last error of the Windows API.
int ErrnoOfLastError();
#endif

/// The path in upper case, for comparing names on file systems that ignore case. Use it for nothing else, since it may
/// be in another encoding. Bytes that are not text in the system's encoding are unchanged, or become what the system
/// opens in their place.
std::string FoldCase(const std::string& path);

/// Files of one folder whose names differ only in case are the same file on this system.
#if defined(_WIN32) || defined(__APPLE__)
inline constexpr bool kSystemFoldsCase = true;
#else
inline constexpr bool kSystemFoldsCase = false;
#endif

} // namespace tev2_exporter
