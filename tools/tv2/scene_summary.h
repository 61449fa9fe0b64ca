#pragma once

#include "tools/tv2/extents.h"
#include "tools/tv2/loaded_file.h"

#include <map>
#include <set>

namespace tv2
{

struct TrackTotal
{
    std::size_t tracks = 0;
    std::size_t keys = 0;
};

struct ChunkTotal
{
    std::size_t chunks = 0;
    std::uint64_t bytes = 0;
};

/// What tv2 info prints of a file besides the scene's own fields.
struct Summary
{
    bool has_information = false; ///< without the chunk the scene has defaults
    bool has_environment = false;
    std::vector<std::string> information_lines;
    std::map<std::uint32_t, TrackTotal> tracks; ///< by kind
    std::map<std::uint32_t, ChunkTotal> chunks; ///< by id
    std::set<std::int32_t> active_cameras;
    std::size_t switcher_keys = 0;
    std::size_t top_nodes = 0;
    Extents extents;
};

Summary Summarise(LoadedFile& file);

} // namespace tv2
