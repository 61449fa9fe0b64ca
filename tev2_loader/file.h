#pragma once

// Scenes from files and into files.
//
//     #include "tev2_loader/file.h"
//
//     TEV2_LOADER::TEV2 scene;
//     if (const TEV2_LOADER::Status loaded = TEV2_LOADER::LoadFile("walk.tv2", scene); !loaded)
//     {
//         std::fprintf(stderr, "walk.tv2: %s\n", loaded.Reason().c_str());
//         return 1;
//     }
//     scene.SetTime(0.5f); // scene.matrixHierarchy.nodes[i].worldMatrix
//     TEV2_LOADER::TEV2_SAVE_REPORT report;
//     if (const TEV2_LOADER::Status saved = TEV2_LOADER::SaveFile(scene, "copy.tv2", &report); !saved)
//         std::fprintf(stderr, "copy.tv2: %s\n", saved.Reason().c_str());
//     for (const std::string& object : report.ignored) // `lights[2] "Sun"`
//         std::fprintf(stderr, "%s is saved as it was loaded\n", object.c_str());
//
// Paths are UTF-8 on every system. All functions throw std::bad_alloc when memory runs out; nothing leaks, and every
// object may be used again.

#include "tev2_loader/io/load_report.h"
#include "tev2_loader/status.h"
#include "tev2_loader/tev2.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TEV2_LOADER
{

/// How to load a scene: LoadFile(path, scene, {.limits = {.bytes = 64 << 20}, .report = &report}).
struct LoadOptions
{
    /// Evaluate the scene at the start of its time range, so that world matrices are valid at once.
    bool applyStartTime = true;

    /// What a file may cost; none unless given.
    TEV2_LOAD_LIMITS limits = {};

    /// Largest file that LoadFile reads into memory; 0: any size below 4 GiB.
    std::size_t mostFileBytes = 0;

    /// Receives every error and warning with byte and record; not owned, may be null. One report serves one load.
    TEV2_LOAD_REPORT* report = nullptr;
};

/// Clears the scene and loads a file, or a pipe to its end, into it. On failure the scene keeps what was loaded before
/// the fault, and the reason is the system's or the report's error.
Status LoadFile(const std::string& path, TEV2& scene, const LoadOptions& options = {});

/// The same for a file in memory, which may be freed afterwards.
Status LoadMemory(const void* bytes, std::size_t size, TEV2& scene, const LoadOptions& options = {});

/// What a failed load says: the report's error on one line.
Status FailureOf(const TEV2_LOAD_REPORT& report);

/// The same for users, who know the file as `title`: "walk.tv2: not a sound .tv2 file: bad-magic at byte 0: ...".
std::string WhyNotLoaded(const std::string& title, const TEV2_LOAD_REPORT& report);

/// Saves a scene. On success the file is complete and loads. On failure an existing file is unchanged, except where
/// WriteWholeFile (io/whole_file.h) has to write to it directly; the reason is the system's, or names the object whose
/// Save was false. The report, if given, is replaced; of a path that cannot be written to it says nothing.
Status SaveFile(const TEV2& scene, const std::string& path, TEV2_SAVE_REPORT* report = nullptr);

} // namespace TEV2_LOADER
