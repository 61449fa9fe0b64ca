#include "tools/tv2/scene_hash.h"

#include "tools/tv2/evaluated_scene.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <span>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

/// Numbers of 4 bytes, the lowest byte first.
class Words
{
public:
    static constexpr std::uint32_t kAbsent = 0xFFFFFFFF; // no value has these bits

    explicit Words(Sha256& hash) : hash_(hash) {}
    ~Words() { Flush(); }
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;

    void Add(std::uint32_t word)
    {
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes_[used_++] = static_cast<std::uint8_t>(word >> shift);
        if (used_ == bytes_.size())
            Flush();
    }

    void Add(float value)
    {
        constexpr std::uint32_t kCanonicalNaN = 0x7FC00000;
        Add(std::isnan(value) ? kCanonicalNaN : std::bit_cast<std::uint32_t>(value == 0.0f ? 0.0f : value));
    }

    void Add(const TEV2_FLOAT32_RANGE& range)
    {
        Add(range.minimum);
        Add(range.maximum);
    }

    /// The present value of a track; of one that is absent as many words as its value has.
    template <typename Track>
    void AddValue(const std::unique_ptr<Track>& track)
    {
        using Value = typename Track::Value;
        if (track)
            return Add(track->GetValue());
        for (std::size_t i = 0; i < ValueSize<Value>() / sizeof(std::uint32_t); ++i)
            Add(kAbsent);
    }

private:
    void Flush()
    {
        hash_.Add(std::span(bytes_).first(used_));
        used_ = 0;
    }

    Sha256& hash_;
    std::array<std::uint8_t, 4096> bytes_{};
    std::size_t used_ = 0;
};

void AddPoses(const EvaluatedScene& evaluated, Words& words)
{
    const TEV2& scene = evaluated.Scene();
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
        for (const auto& row : node.worldMatrix.m)
            for (const float element : row)
                words.Add(element);
    for (const auto& camera : scene.cameras)
    {
        words.Add(camera->value);
        words.Add(camera->inverseAspect);
        words.AddValue(camera->fieldOfView);
        words.AddValue(camera->distance);
        words.AddValue(camera->clipRange);
    }
    const auto active = evaluated.ActiveCamera();
    words.Add(active ? 1U : 0U);
    words.Add(static_cast<std::uint32_t>(active.value_or(0)));
}

} // namespace

Sha256::Digest HashContents(const LoadedFile& file)
{
    constexpr std::size_t kVersionBytes = 4;
    Sha256 hash;
    std::span<const std::uint8_t> rest = file.image;
    for (const TEV2_CHUNK_SPAN& chunk : file.report.chunks)
    {
        if (chunk.id != kInformationChunk)
            continue;
        const auto begin = static_cast<std::size_t>(chunk.offset);
        hash.Add(rest.first(begin - (file.image.size() - rest.size())));
        const auto whole = std::span(file.image).subspan(begin, chunk.size);
        const auto body = whole.subspan(std::min<std::size_t>(kChunkHeader, whole.size()));
        hash.Add(body.first(std::min(kVersionBytes, body.size())));
        rest = std::span(file.image).subspan(begin + whole.size());
    }
    hash.Add(rest);
    return hash.Finish();
}

Sha256::Digest HashPoses(LoadedFile& file)
{
    TEV2& scene = *file.scene;
    const auto start = static_cast<double>(scene.environment.timeRange.minimum);
    const auto end = static_cast<double>(scene.environment.timeRange.maximum);
    EvaluatedScene evaluated(scene);
    Sha256 hash;
    {
        Words words(hash);
        words.Add(static_cast<std::uint32_t>(scene.matrixHierarchy.nodes.size()));
        words.Add(static_cast<std::uint32_t>(scene.cameras.size()));
        for (std::size_t i = 0; i < kHashedInstants; ++i)
        {
            const double part = static_cast<double>(i) / static_cast<double>(kHashedInstants - 1);
            const auto time = static_cast<float>(start + (end - start) * part);
            evaluated.SetTime(time);
            words.Add(time);
            AddPoses(evaluated, words);
        }
    }
    return hash.Finish();
}

} // namespace tv2
