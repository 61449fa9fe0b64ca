#pragma once

#include "tev2_loader/tev2.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// A track of a concrete class from (time, value) pairs.
template <class Track>
std::unique_ptr<Track> MakeTrack(std::initializer_list<std::pair<float, typename Track::Value>> keys)
{
    auto track = std::make_unique<Track>();
    for (const auto& [time, value] : keys)
    {
        track->Append(time, value);
    }
    return track;
}

/// Fills a scene as an export does: three nodes in a chain with three keys each, one camera on the last node, a
/// switcher and one user property of each kind on node 1.
void FillSoundScene(TEV2_LOADER::TEV2& scene);

void SaveScene(const TEV2_LOADER::TEV2& scene, const std::string& path);
Bytes ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const Bytes& bytes);

/// The sound scene as bytes.
Bytes SoundImage();

/// Appends a u32 to bytes.
void AppendWord(Bytes& bytes, std::uint32_t word);
/// The u32 at an offset; 0 and a failed test outside the bytes.
std::uint32_t WordAt(const Bytes& bytes, std::size_t offset);
/// One chunk: size, id and these words as its body.
Bytes Chunk(std::uint32_t id, std::initializer_list<std::uint32_t> words);
/// All parts in a row.
Bytes Join(std::initializer_list<Bytes> parts);
/// The four bytes that every file begins with.
Bytes Magic();

/// The bits of an f32.
std::uint32_t Bits(float value);
