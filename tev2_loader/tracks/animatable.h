#pragma once

#include "tev2_loader/archive/fields.h"
#include "tev2_loader/io/interfaces.h"
#include "tev2_loader/math/values.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace TEV2_LOADER
{

/// An animated value: ascending key times in seconds, one value per key, and a playback cursor between two
/// neighbouring keys. Evaluation is safe whatever a file contains and allocates nothing. Out-of-range cursor indices
/// are clamped on use, not modified.
class TEV2_ANIMATABLE : public TEV2_SERIALISABLE_OBJECT, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// First key of the current segment.
    std::uint32_t m_current_key = 0;

    /// Position in the segment: 0 at its first key, 1 at its second.
    float m_fraction = 0.0f;

    /// Key times in seconds, ascending. Playback needs at least two.
    std::vector<float> m_times;

    /// What a load finds where a kind is not of the family that its place takes.
    static constexpr TEV2_LOAD_CODE kUnknownType = TEV2_LOAD_CODE::UnknownTrackKind;

    /// No class of tracks takes more memory, its allocation included.
    static constexpr std::size_t kMostBytes = 96;

    /// The concrete tracks add their values.
    template <typename Self, typename Archive>
    static void Fields(Self& track, Archive& archive)
    {
        archive.Value("m_current_key", track.m_current_key, Counts::kSave);
        archive.Value("m_fraction", track.m_fraction, Counts::kSave);
        archive.Values("m_times", track.m_times, Counts::kSave);
    }

    /// The number before the track in the file, which the family's Create takes (format.h names them).
    /// Only the library's class of a number may return it: VisitKeys and UpAxis cast by it.
    virtual std::uint32_t GetType() const = 0;

    /// Same kind, times and values, compared with == (a NaN equals nothing); the cursor is ignored.
    virtual bool IsEqual(const TEV2_ANIMATABLE& other) const = 0;

    /// A copy of the same class with cursor, times and values. Throws std::bad_alloc.
    virtual std::unique_ptr<TEV2_ANIMATABLE> Clone() const = 0;

    /// Moves this track's cursor by `delta_time` seconds. Past the last key it wraps: less than half a length continues
    /// from the first key; more, up to a whole length, lands on the first key. Tracks of one scene end at different
    /// keys, so play a scene with SetTime.
    void Update(float delta_time) final;

    /// Seeks to `time` (seconds), clamped to the track's key range. Nothing changes with fewer than two keys, for a
    /// NaN, or when no segment contains the time; with unsorted times, which segment is found is unspecified.
    void SetTime(float time) final;
};

/// The interface of all tracks of one value type, however they interpolate.
template <typename Family, typename ValueType>
class TrackOf : public TEV2_ANIMATABLE
{
public:
    using Value = ValueType;

    /// An empty track of a kind; null when no track of this family has that kind.
    static std::unique_ptr<Family> Create(std::uint32_t kind);

    /// Whether a track of this family has that kind.
    static bool Has(std::uint32_t kind);

    /// The value at the cursor. A track with one value is constant; a track without values gives Value{}: zeros,
    /// for rotations the identity.
    virtual Value GetValue() const = 0;
};

/// A family whose values can be moved by an offset, component by component.
template <typename Family, typename ValueType>
class OffsetTrackOf : public TrackOf<Family, ValueType>
{
public:
    virtual Family& Add(const ValueType& offset) = 0;
    virtual Family& Subtract(const ValueType& offset) = 0;
};

/// A family whose values can also be scaled. Divide multiplies by 1 / divisor.
template <typename Family, typename ValueType>
class ScalableTrackOf : public OffsetTrackOf<Family, ValueType>
{
public:
    virtual Family& Scale(float factor) = 0;
    virtual Family& Divide(float divisor) = 0;
};

/// A copy of a track that may be null.
template <typename Family>
std::unique_ptr<Family> CloneTrack(const std::unique_ptr<Family>& track)
{
    return track ? std::unique_ptr<Family>(static_cast<Family*>(track->Clone().release())) : nullptr;
}

class TEV2_ANIMATABLE_FLOAT32 : public ScalableTrackOf<TEV2_ANIMATABLE_FLOAT32, float>
{
};

class TEV2_ANIMATABLE_FLOAT32_RANGE : public OffsetTrackOf<TEV2_ANIMATABLE_FLOAT32_RANGE, TEV2_FLOAT32_RANGE>
{
};

class TEV2_ANIMATABLE_COLOUR : public ScalableTrackOf<TEV2_ANIMATABLE_COLOUR, TEV2_COLOUR>
{
};

class TEV2_ANIMATABLE_VECTOR_2 : public ScalableTrackOf<TEV2_ANIMATABLE_VECTOR_2, TEV2_VECTOR_2>
{
};

class TEV2_ANIMATABLE_VECTOR_3 : public ScalableTrackOf<TEV2_ANIMATABLE_VECTOR_3, TEV2_VECTOR_3>
{
};

class TEV2_ANIMATABLE_VECTOR_4 : public ScalableTrackOf<TEV2_ANIMATABLE_VECTOR_4, TEV2_VECTOR_4>
{
};

class TEV2_ANIMATABLE_QUATERNION : public TrackOf<TEV2_ANIMATABLE_QUATERNION, TEV2_QUATERNION>
{
public:
    /// Replaces every key k by the Hamilton product k * rotation.
    virtual TEV2_ANIMATABLE_QUATERNION& Multiply(const TEV2_QUATERNION& rotation) = 0;

    /// Negates keys so that no two neighbours have a negative dot product; then SLERP takes the short way.
    virtual TEV2_ANIMATABLE_QUATERNION& MakeContinuous() = 0;
};

class TEV2_ANIMATABLE_RECTF : public ScalableTrackOf<TEV2_ANIMATABLE_RECTF, TEV2_RECTF>
{
};

/// Whole numbers, which change in steps; Add, Subtract, Scale and Divide have no effect on them.
class TEV2_ANIMATABLE_INT32 : public ScalableTrackOf<TEV2_ANIMATABLE_INT32, std::int32_t>
{
};

class TEV2_ANIMATABLE_BINORMAL_TANGENT
    : public TrackOf<TEV2_ANIMATABLE_BINORMAL_TANGENT, TEV2_BINORMAL_TANGENT>
{
};

class TEV2_ANIMATABLE_BOUNDING_BOX : public ScalableTrackOf<TEV2_ANIMATABLE_BOUNDING_BOX, TEV2_BOUNDING_BOX>
{
};

} // namespace TEV2_LOADER
