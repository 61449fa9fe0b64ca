#pragma once

// Scenes to test with. The library of test builders, `tv2_test_support`, is:
//     bytes.h           files byte by byte
//     dialog_regions.h  the names of the regions of the exporter's dialog
//     hostile_names.h   names that no program expects
//     records.h         what a record writes, and how many bytes it reads
//     run_command.h     runs a program and collects its output
//     sample_records.h  records with every field
//     sample_scenes.h   whole scenes
//     scene_texts.h     small scene files of other formats, as text
//     scratch_folder.h  a folder that goes with the test; files read and written as a whole
//     tracks.h          tracks from lists of keys
//     typed_seeds.h     small files of one typed record each
// To be linked one by one: allocation_watch.h (counts and fails operator new), memory_file.h (a disk that fails),
// test_platform.h (the exporter's clock, user and messages).

#include "tests/support/records.h"
#include "tests/support/tracks.h"
#include "tev2_loader/tev2.h"

#include <memory>

namespace tv2_tests
{

/// Fills a scene with every kind of record and of track that a file can hold, every field set, properties of each kind,
/// null entries, and bodies that are kept as bytes: all of them, and behind a placed object. Instance lists 7 and 9 are
/// filled when asked for: a saved scene loses them.
void FillWithEverything(TEV2_LOADER::TEV2& scene, bool with_unsaved_lists = false);

/// Fills a scene as an export does, so that no check has anything to say: three nodes in a chain with three keys each,
/// one camera on the last node, a switcher and one user property of each kind on node 1.
void FillSoundScene(TEV2_LOADER::TEV2& scene);

/// The file of a scene; its Save must succeed.
std::vector<std::uint8_t> SceneImage(const TEV2_LOADER::TEV2& scene);

/// The file of the sound scene.
std::vector<std::uint8_t> SoundImage();

/// A load of a file in memory and everything that came of it.
struct LoadOutcome
{
    TEV2_LOADER::TEV2 scene;
    TEV2_LOADER::TEV2_LOAD_REPORT report;
    bool loaded = false;
};
std::unique_ptr<LoadOutcome> LoadImageOf(const std::vector<std::uint8_t>& image,
                                         bool apply_start_time = false,
                                         const TEV2_LOADER::TEV2_LOAD_LIMITS& limits = {});

/// The versions at which the layout of some record changes, and the newest of each layout before.
inline constexpr float kGateVersions[] = {1.0f,  1.03f, 1.04f, 1.05f, 1.06f, 1.09f, 1.1f,
                                          1.11f, 1.12f, 1.13f, 1.14f, 1.15f, 1.16f};

/// The file of a version with every record whose layout ever changed.
Bytes SceneOfVersion(float version);

/// The file of a version: magic and information record, then what is appended.
inline Bytes FileOfVersion(float version)
{
    return Bytes().U32(TEV2_LOADER::kMagic).Chunk(0, Bytes().F32({version}).Text(u"").Text(u""));
}

} // namespace tv2_tests
