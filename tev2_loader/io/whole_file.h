#pragma once

#include "tev2_loader/io/file_stream.h"
#include "tev2_loader/status.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace TEV2_LOADER
{

/// Writes the content of a file to an open stream; false when it is incomplete. The stream may be moved into a
/// TEV2_FILE_WRITER, but must be back, and open, when the function returns. Called a second time, for an empty file,
/// if the first result could not be moved into place.
using FileContent = std::function<bool(std::unique_ptr<TEV2_FILE_STREAM>& stream)>;

/// Replaces a file atomically: readers see either the old file or the complete new one.
///
///     const Status written = WriteWholeFile("notes.txt", "one line\n");
///
/// The content goes to ".NAME.<process>-<number>.part" in the folder of the target, after links have been resolved.
/// Once it is complete (`content` returned true, the stream has latched no error, closing succeeded and the file
/// begins with `begin`) it gets the permissions of the old file and is renamed to the target. On failure the part
/// file is removed. A process that is killed leaves its part file behind; the next call for the same target removes
/// it.
///
/// The content is written to the target itself if there is no other way: nothing can be created in its folder, the
/// part file's path would exceed kMostPathBytes or a limit of the system, the target is a device, or the system
/// refuses to replace a file that may be written to. Pipes and sockets are refused, since opening them could block,
/// and so are files that may not be written to.
///
/// `path` is UTF-8. Throws what `content` throws, and std::bad_alloc; the old file is then unchanged, unless it was
/// written to directly.
Status WriteWholeFile(const std::string& path, const FileContent& content, std::string_view begin = {});

/// The same for content in memory.
Status WriteWholeFile(const std::string& path, std::string_view bytes);

/// Removes the part files that a process which was killed, and has ended, left in a folder. For the program that
/// started it; `process` is the system's number.
void RemovePartFiles(const std::string& folder, unsigned long process);

} // namespace TEV2_LOADER
