#pragma once

#include "text/sha256.h"
#include "tools/tv2/loaded_file.h"

#include <cstddef>

namespace tv2
{

/// SHA-256 of all bytes of a file but those of its information record, of which only the version counts: not its texts
/// with date, user and paths, nor its length. docs/json.md promises what it covers.
Sha256::Digest HashContents(const LoadedFile& file);

/// Number of instants at which poses are hashed: the start of the time range, its end, and evenly between them.
inline constexpr std::size_t kHashedInstants = 129;

/// SHA-256 of what a file shows at these instants: world matrices, lenses, switcher. Moves the scene. Values count as
/// they are evaluated, to the last bit, but that -0 is 0 and one NaN is as good as another. docs/json.md has the bytes.
Sha256::Digest HashPoses(LoadedFile& file);

} // namespace tv2
