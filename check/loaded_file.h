#pragma once

#include "tev2_loader/array_length_helper.h"
#include "tev2_loader/status.h"
#include "tev2_loader/tev2.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tev2_check
{

/// A file in memory and the scene that was loaded from it.
struct LoadedFile
{
    std::string argument;            ///< as the user named it: a path, or "-" for standard input
    std::string title;               ///< for people: the path or "standard input"
    std::vector<std::uint8_t> image; ///< all its bytes
    TEV2_LOADER::TEV2_LOAD_REPORT report;
    std::unique_ptr<TEV2_LOADER::TEV2>
        scene;           ///< never null after LoadSceneOf; what was loaded before a failure
    bool loaded = false; ///< whether the whole file was loaded
};

/// Loads the scene of a file whose image and names are there.
void LoadSceneOf(LoadedFile& file);

/// The last chunk of an id, which replaces earlier ones of its kind; null when there is none.
const TEV2_LOADER::TEV2_CHUNK_SPAN* LastChunk(const LoadedFile& file, std::uint32_t id);

/// The array lengths of a loaded file, which the scene does not keep.
std::optional<TEV2_LOADER::TEV2_ARRAY_LENGTH_HELPER> AnnouncedLengths(const LoadedFile& file);

/// Why `file` was not loaded, on one line, with its path.
std::string WhyNotLoaded(const LoadedFile& file);

} // namespace tev2_check
