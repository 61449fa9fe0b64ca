#pragma once

#include "tev2_loader/status.h"
#include "tev2_loader/tev2.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tev2_viewer
{

struct PageScene
{
    const TEV2_LOADER::TEV2* scene = nullptr; ///< not null
    std::string title;                        ///< UTF-8, for people: the name of its file
};

struct Page
{
    std::string html;               ///< the whole file: UTF-8, lines end in LF
    std::vector<std::string> notes; ///< what was left out, in words
};

/// A page as large as browsers open well, bytes.
inline constexpr std::uint64_t kMostPageBytes = 200'000'000;

/// Makes one HTML page that shows scenes, over each other where there are several. It has everything in it, loads
/// nothing, and runs no script but its own, whatever texts the scenes have. The same scenes give the same bytes. The
/// scenes are not changed, and are not evaluated here: any number in them may be wrong.
///
/// A page that would be larger than `most_bytes` is made without meshes, with a note; if that is too large, too, the
/// result is a failure that says how large. The size is known before memory is taken for the page.
TEV2_LOADER::Status MakePage(std::span<const PageScene> scenes, Page& page,
                             std::uint64_t most_bytes = kMostPageBytes);

} // namespace tev2_viewer
