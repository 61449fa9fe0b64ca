#pragma once

// Clips straight from files, without a scene.
//
//     #include "tev2_playback/clip_file.h"
//     #include "tev2_playback/player.h"
//
//     TEV2_PLAYBACK::Clip clip;
//     if (const TEV2_LOADER::Status loaded = TEV2_PLAYBACK::LoadClip("walk.tv2", clip); !loaded)
//     {
//         std::fprintf(stderr, "walk.tv2: %s\n", loaded.Reason().c_str());
//         return 1;
//     }
//     TEV2_PLAYBACK::Player player(clip);

#include "tev2_loader/io/load_report.h"
#include "tev2_loader/status.h"
#include "tev2_playback/clip.h"

#include <cstddef>
#include <string>

namespace TEV2_PLAYBACK
{

/// How to load a clip: LoadClip(path, clip, {.limits = {.nodes = 1000}, .report = &report}).
struct LoadClipOptions
{
    ClipOptions clip = {};

    /// What a file may cost; none unless given. Bytes are those that reading takes: a description of each node, the
    /// cameras, the user properties and the list of chunks. Keys are not copied while reading, and bodies that a clip
    /// does not need are skipped. The clip itself, about the size of its tracks, does not count.
    TEV2_LOADER::TEV2_LOAD_LIMITS limits = {};

    /// Largest file that LoadClip reads into memory; 0: any size below 4 GiB.
    std::size_t mostFileBytes = 0;

    /// Receives every error and warning with byte and record; not owned, may be null. One report serves one load.
    TEV2_LOADER::TEV2_LOAD_REPORT* report = nullptr;
};

/// Makes the clip of a file, or of a pipe read to its end; `path` is UTF-8. Accepts the files that TEV2::Load accepts
/// and gives the clip of the scene that it loads without applying the start time. On failure, or where memory runs out
/// (std::bad_alloc or what the clip's memory resource throws), the clip is unchanged; the reason is the system's or the
/// report's error, the one that TEV2::Load would have.
///
/// Lights, materials, meshes, splines, helpers, instances and references are skipped by the sizes of their chunks, so a
/// report has no warnings of what is in them.
TEV2_LOADER::Status LoadClip(const std::string& path, Clip& clip, const LoadClipOptions& options = {});

/// The same for a file in memory, at any address, which may be freed afterwards.
TEV2_LOADER::Status LoadClipMemory(const void* bytes, std::size_t size, Clip& clip,
                                   const LoadClipOptions& options = {});

} // namespace TEV2_PLAYBACK
