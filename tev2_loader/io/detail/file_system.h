#pragma once

// What reading and replacing whole files needs of the operating system; one source file per system. Paths are UTF-8,
// errors are errno values.

#include <cstdio>
#include <filesystem>
#include <string>

namespace TEV2_LOADER::file_system
{

/// The path as the standard library takes it.
std::filesystem::path NativePath(const std::string& path);

/// Opens a file for reading; null and errno on failure.
std::FILE* OpenForReading(const std::string& path);

/// The same for a reader that asks AwaitBytes before each read: neither opening nor reading waits for the other end of
/// a pipe, and a read of a pipe that has no more yet fails with EAGAIN. On Windows both wait.
std::FILE* OpenWithoutWaiting(const std::string& path);

/// Waits some milliseconds for something to read, or the end.
bool AwaitBytes(std::FILE* file);

/// What is at a path before it is written to.
struct Target
{
    std::string path; ///< where the file is or will be, links resolved
    int error = 0;    ///< why it may not be written to, 0 when no reason is known
    bool exists = false;
    bool replaceable = false; ///< it exists and is a file with a name, not a folder or a device
    unsigned mode = 0; ///< permissions, owner and group of a file that exists, where the system has them
    unsigned owner = 0;
    unsigned group = 0;
};

Target Examine(const std::string& path);

/// Length of the part of a path up to and including its last separator.
std::size_t FolderLength(const std::string& path);

/// Creates a file for writing, with at most the permissions of the file that it will replace. Null and errno on
/// failure, EEXIST when the name is taken.
std::FILE* CreateNew(const std::string& path, const Target& replaced);

/// Opens a file for writing and truncates it, or creates it. Never blocks: null and errno for pipes and sockets.
std::FILE* OpenForWriting(const std::string& path);

/// Renames a finished part file to the target, with the permissions of the file that it replaces. On failure: false,
/// errno set, target unchanged.
bool PutInPlace(const std::string& part, const Target& target);

void Remove(const std::string& path);

unsigned long ProcessId();

/// Removes the files in `folder` named `prefix`<process>-<number>`suffix` that no process is writing any more.
void RemoveAbandoned(const std::string& folder, const std::string& prefix, const std::string& suffix);

} // namespace TEV2_LOADER::file_system
