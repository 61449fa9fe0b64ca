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

/// An animated value: ascending key times in seconds, one value a key, and a playback cursor that lies
/// between two neighbouring keys. Whatever a track was loaded with, evaluating it touches no memory but its
/// own: cursor indices beyond the keys are at the last key when used, and not modified otherwise. Evaluating allocates
/// nothing.
class TEV2_ANIMATABLE : public TEV2_SERIALISABLE_OBJECT, public TEV2_INTERNAL_ANIM_OBJECT
{
public:
    /// The key that opens the present segment.
    std::uint32_t m_current_key = 0;

    /// Position inside the segment: 0 at its opening key, 1 at its closing key.
    float m_fraction = 0.0f;

    /// Key times, ascending. Playback takes at least two.
    std::vector<float> m_times;

    /// What a load finds where a kind is not of the family that its place takes.
    static constexpr TEV2_LOAD_CODE kUnknownType = TEV2_LOAD_CODE::UnknownTrackKind;

    /// The concrete tracks add their values.
    template <typename Self, typename Archive>
    static void Fields(Self& track, Archive& archive)
    {
        archive.Value("m_current_key", track.m_current_key, Counts::kSave);
        archive.Value("m_fraction", track.m_fraction, Counts::kSave);
        archive.Values("m_times", track.m_times, Counts::kSave);
    }

    /// The kind code that stands before the track in the file and that the family's Create takes.
    virtual std::uint32_t GetType() const = 0;

    /// Same kind, times and values (floats as == compares them, so a NaN never equals); the cursor does not
    /// count.
    virtual bool IsEqual(const TEV2_ANIMATABLE& other) const = 0;

    /// A copy of the same class with the cursor, the times and the values.
    virtual std::unique_ptr<TEV2_ANIMATABLE> Clone() const = 0;

    /// Moves the cursor by delta_time, this track alone: tracks of one scene end at different keys, so that a scene is
    /// played with SetTime. Past the last key it wraps: less than half a length too far goes on
    /// from the first key; more, up to a whole length, lands on the first key.
    void Update(float delta_time) final;

    /// Puts the cursor at a time, held between the first and the last key. Nothing changes with fewer than
    /// two keys, for a NaN, or when no segment is found to hold the time; which one is found where times do not
    /// ascend is not promised.
    void SetTime(float time) final;
};

/// The interface of all tracks of one type of value, whatever lies between their keys.
template <typename Family, typename ValueType>
class TrackOf : public TEV2_ANIMATABLE
{
public:
    using Value = ValueType;

    /// An empty track of a kind; null when no track of this family has that kind.
    static std::unique_ptr<Family> Create(std::uint32_t kind);

    /// The value at the cursor. A track of one value is a constant; a track without values gives Value{}:
    /// zeros, for rotations the identity.
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

    /// Negates keys so that no two neighbours have a negative dot product.
    virtual TEV2_ANIMATABLE_QUATERNION& MakeContinuous() = 0;
};

class TEV2_ANIMATABLE_RECTF : public ScalableTrackOf<TEV2_ANIMATABLE_RECTF, TEV2_RECTF>
{
};

/// Whole numbers change in steps; Add, Subtract, Scale and Divide leave them as they are.
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
