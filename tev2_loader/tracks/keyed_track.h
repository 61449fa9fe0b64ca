#pragma once

#include "tev2_loader/archive/load.h"
#include "tev2_loader/archive/save.h"
#include "tev2_loader/tracks/animatable.h"

#include <algorithm>
#include <memory>

namespace TEV2_LOADER
{

// Tracks with their keys.
//
//     #include "tev2_loader/tracks/linear_tracks.h"
//
//     auto track = std::make_unique<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_LINEAR>();
//     track->Append(0.0f, 2.0f); // at 0 s the value is 2
//     track->Append(1.0f, 4.0f);
//     track->SetTime(0.5f);
//     if (track->GetValue() != 3.0f)
//         return 1;
//     track = TEV2_LOADER::ConstantTrack<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32_LINEAR>(2.0f);

/// What all tracks with keys have in the file.
struct TEV2_KEYED_FIELDS
{
    template <typename Self, typename Archive>
    static void Fields(Self& track, Archive& archive)
    {
        TEV2_ANIMATABLE::Fields(track, archive);
        archive.Values("m_values", track.m_values, Counts::kSave);
    }
};

/// The values of a track, with their record, comparison and copy. Concrete is the final class, Family its interface,
/// kKind its number in the file.
template <typename Concrete, typename Family, std::uint32_t kKind>
class KeyedTrack : public Family
{
public:
    using Value = typename Family::Value;

    static constexpr std::uint32_t kType = kKind;

    /// Value i belongs to time i; a single value is a constant.
    std::vector<Value> m_values;

    /// Reserves memory for this many keys.
    void Reserve(std::size_t keys)
    {
        this->m_times.reserve(keys);
        m_values.reserve(keys);
    }

    /// Appends one key.
    void Append(float time, const Value& value)
    {
        this->m_times.push_back(time);
        m_values.push_back(value);
    }

    template <typename Self, typename Archive>
    static void Fields(Self& track, Archive& archive)
    {
        TEV2_KEYED_FIELDS::Fields(track, archive);
    }

    /// Always true; what is missing fails the cursor.
    bool Load(TEV2_MEMORY_CURSOR& cursor, float version) override
    {
        return LoadFields(static_cast<Concrete&>(*this), cursor, version);
    }

    bool Save(TEV2_FILE_WRITER& writer) const override
    {
        return SaveFields(static_cast<const Concrete&>(*this), writer);
    }

    std::uint32_t GetType() const override { return kKind; }

    bool IsEqual(const TEV2_ANIMATABLE& other) const override
    {
        return other.GetType() == kKind && this->m_times == other.m_times &&
               m_values == static_cast<const KeyedTrack&>(other).m_values;
    }

    std::unique_ptr<TEV2_ANIMATABLE> Clone() const override
    {
        return std::make_unique<Concrete>(static_cast<const Concrete&>(*this));
    }

    /// Interpolates between the two keys around the cursor. A cursor beyond the values is at the last one, where
    /// SetTime puts it too.
    Value GetValue() const final { return ValueBy(Concrete::Interpolate); }

    /// The same with another way of interpolating: interpolation(opening, closing, fraction).
    template <typename Interpolation>
    Value ValueBy(Interpolation interpolation) const
    {
        const std::size_t count = m_values.size();
        if (count < 2)
            return count == 0 ? Value{} : m_values[0];
        const std::size_t key = this->m_current_key;
        if (key + 1 >= count)
            return interpolation(m_values[count - 2], m_values[count - 1], 1.0f);
        return interpolation(m_values[key], m_values[key + 1], this->m_fraction);
    }
};

/// A track of a concrete class with one key at 0 seconds: a constant.
template <typename Track>
std::unique_ptr<Track> ConstantTrack(const typename Track::Value& value)
{
    auto track = std::make_unique<Track>();
    track->Append(0.0f, value);
    return track;
}

} // namespace TEV2_LOADER
