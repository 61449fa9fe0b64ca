#pragma once

// Names of the files that one export writes. Pure text: no file system, no SDK.

#include <string>
#include <string_view>
#include <vector>

namespace tev2_exporter
{

/// One output file for each entry of `take_names`, in the same order.
///
/// `path` is what the user chose. Its file-name part is what follows the last "/" or "\", or nothing when
/// there is no "." after it. Where that part is no longer than an extension (under 5 units) every file is
/// called after its take: folder + take + file-name part. Otherwise a single take (`all_takes` false, one
/// entry) keeps the path as it is, and with `all_takes` each file is folder + stem + "_" + take + ".tv2", the
/// stem being the file-name part less its last 4 units, whatever they are.
///
/// `spaces_to_underscores` replaces spaces after the last separator of the finished name, never in the
/// folder.
std::vector<std::u16string> OutputFileNames(std::u16string_view path,
                                            const std::vector<std::u16string>& take_names, bool all_takes,
                                            bool spaces_to_underscores);

} // namespace tev2_exporter
