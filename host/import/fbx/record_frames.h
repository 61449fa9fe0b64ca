#pragma once

#include "host/import/fbx/record_tree.h"

#include <string_view>
#include <vector>

namespace mobu_host::fbx
{

inline constexpr std::string_view kBinaryMagic = "Kaydara FBX Binary";
inline constexpr std::size_t kDeepestRecord = 100; // real files stay below 20

/// Takes the frames of a binary file apart, the root first; gives the version that the header states.
unsigned ReadBinaryFrames(std::string_view file, std::vector<RecordFrame>& frames);

/// The same of a text file; 0 where it states no version.
unsigned ReadTextFrames(std::string_view file, std::vector<RecordFrame>& frames);

/// Appends a frame to its siblings, or below its parent where it is the first. `last_child` of the parent is kept
/// by the caller.
inline std::uint32_t AppendFrame(std::vector<RecordFrame>& frames, const RecordFrame& frame,
                                 std::uint32_t parent, std::uint32_t& last_child)
{
    const auto index = static_cast<std::uint32_t>(frames.size());
    frames.push_back(frame);
    (last_child == 0 ? frames[parent].first_child : frames[last_child].next) = index;
    last_child = index;
    return index;
}

/// What both kinds of text share: the next value of a comma list at `at`, which moves after it. False where none
/// begins.
bool ScanTextValue(std::string_view file, std::size_t& at, std::size_t end, Value& value);

/// Over blanks, line ends and comments.
std::size_t SkipSpace(std::string_view file, std::size_t at, std::size_t end);

} // namespace mobu_host::fbx
