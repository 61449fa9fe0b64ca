#pragma once

// The local transform of one model over one take, or at rest.

#include <assimp/matrix4x4.h>
#include <assimp/quaternion.h>
#include <assimp/vector3.h>

#include <cstddef>
#include <vector>

namespace mobu_host
{

using Vector3 = aiVector3t<double>;
using Quaternion = aiQuaterniont<double>;
using Matrix = aiMatrix4x4t<double>; // column form: the last column is the translation

inline Vector3 Between(const Vector3& from, const Vector3& to, double fraction)
{
    return from + (to - from) * fraction;
}

inline Quaternion Between(const Quaternion& from, const Quaternion& to, double fraction)
{
    Quaternion between;
    Quaternion::Interpolate(between, from, to, fraction); // along the shorter arc
    return between.Normalize();
}

// Keys of one component. The first and last key hold outside. Asking for times in order takes constant time:
// the track remembers where it was.
template <typename Value>
class KeyTrack
{
public:
    bool Empty() const { return times_.empty(); }

    void Hold(bool steps) { steps_ = steps; }

    // Times ascend; a key that does not come after the one before replaces it.
    void Append(double seconds, const Value& value)
    {
        if (!times_.empty() && seconds <= times_.back())
        {
            values_.back() = value;
            return;
        }
        times_.push_back(seconds);
        values_.push_back(value);
    }

    Value At(double seconds) const
    {
        const std::size_t count = times_.size();
        if (count == 1 || seconds <= times_.front())
            return values_.front();
        if (seconds >= times_.back())
            return values_.back();

        if (cursor_ + 1 >= count || seconds < times_[cursor_] || seconds >= times_[cursor_ + 1])
            cursor_ = Find(seconds);
        if (steps_)
            return values_[cursor_];
        const double span = times_[cursor_ + 1] - times_[cursor_];
        return Between(values_[cursor_], values_[cursor_ + 1], (seconds - times_[cursor_]) / span);
    }

private:
    // The last key at or before `seconds`, which lies inside the keys.
    std::size_t Find(double seconds) const
    {
        if (cursor_ + 2 < times_.size() && seconds >= times_[cursor_ + 1] && seconds < times_[cursor_ + 2])
            return cursor_ + 1;
        std::size_t low = 0, high = times_.size() - 1;
        while (high - low > 1)
        {
            const std::size_t middle = low + (high - low) / 2;
            (seconds < times_[middle] ? high : low) = middle;
        }
        return low;
    }

    std::vector<double> times_; // seconds
    std::vector<Value> values_;
    bool steps_ = false;
    mutable std::size_t cursor_ = 0;
};

// before x (translation x rotation x scale) x after. `before` and `after` carry what is done once for the
// whole scene: the up axis, a camera's turn onto its look axis, and its undoing for what hangs on the camera.
struct KeyedTransform
{
    KeyTrack<Vector3> translation; // centimetres; the three tracks have one key at least
    KeyTrack<Quaternion> rotation;
    KeyTrack<Vector3> scale;
    Matrix before;
    Matrix after;

    Matrix At(double seconds) const
    {
        return before * Matrix(scale.At(seconds), rotation.At(seconds), translation.At(seconds)) * after;
    }
};

} // namespace mobu_host
