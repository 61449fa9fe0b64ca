#pragma once

#include "tev2_loader/io/file_stream.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace TEV2_LOADER
{

/// Writes the content of a file to an open stream; false when it is incomplete. The stream may be moved into a
/// TEV2_FILE_WRITER, but has to be back, and open, when the function returns. Called once more, for an empty file, when
/// the first result could not be put into place.
using FileContent = std::function<bool(std::unique_ptr<TEV2_FILE_STREAM>& stream)>;

/// Writes a file so that whatever was there before is replaced as a whole or kept as it was. 0 on success, otherwise an
/// errno value that says why.
///
/// The content goes to ".NAME.<process>-<number>.part" in the folder of the target, after links have been resolved. Once
/// it is complete (`content` returned true, the stream has latched no error, closing succeeded and the file begins with
/// `begin`) it gets the permissions of the old file and is renamed to the target. On failure the part file is removed. A
/// process that is killed leaves its part file behind; the next call for the same target removes it.
///
/// The content goes straight to the target where there is no other way: nothing can be created in its folder, the longer
/// path would pass kMostPathBytes or a limit of the system, the target is a device, or the system refuses to replace a
/// file that may be written to. Pipes and sockets, for which a writer would wait, are refused, and so are files that may
/// not be written to.
///
/// `path` holds bytes as the system's 8-bit calls take them. Throws what `content` throws, and std::bad_alloc; the old
/// file is then as it was, unless the content went straight to it.
int WriteWholeFile(const std::string& path, const FileContent& content, std::string_view begin = {});

/// The same for content that is in memory.
int WriteWholeFile(const std::string& path, std::string_view bytes);

} // namespace TEV2_LOADER
