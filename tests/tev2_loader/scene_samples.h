#pragma once

#include "tests/tev2_loader/bytes.h"
#include "tev2_loader/tev2.h"

#include <memory>

namespace tev2_tests
{

/// A track with these two values at 0.5 and 2.5 seconds.
template <typename Track>
std::unique_ptr<Track> SampleTrack(const typename Track::Value& first, const typename Track::Value& last)
{
    auto track = std::make_unique<Track>();
    track->Append(0.5f, first);
    track->Append(2.5f, last);
    return track;
}

/// The optional sub-object that such a track is in the file.
inline Bytes SampleTrackBytes(std::uint32_t kind, const Bytes& values)
{
    return Bytes().U32({1, kind, 0}).F32({0.0f}).U32(2).F32({0.5f, 2.5f}).U32(2).Append(values);
}

/// A FLOAT32 track of two values.
inline std::unique_ptr<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32> FloatTrack(float first, float last)
{
    return SampleTrack<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_LINEAR>(first, last);
}

inline Bytes FloatTrackBytes(float first, float last)
{
    return SampleTrackBytes(0, Bytes().F32({first, last}));
}

/// Fills a scene with every kind of record and of track that a file can hold, properties of each kind, null
/// entries, and bodies that are kept as bytes. Instance lists 7 and 9 are filled when asked for: a saved
/// scene loses them.
void FillWithEverything(TEV2_LOADER::TEV2& scene, bool with_unsaved_lists = false);

/// The file of a scene; its Save must succeed.
std::vector<std::uint8_t> SceneImage(const TEV2_LOADER::TEV2& scene);

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

} // namespace tev2_tests
