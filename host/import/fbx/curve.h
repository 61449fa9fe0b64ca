#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace mobu_host::fbx
{

/// How the value goes from one key to the next.
enum class Interpolation : std::uint8_t
{
    Hold,     // this key's value
    HoldNext, // the next key's value
    Straight,
    Cubic
};

/// The derivative at a key, where the file leaves it to the reader.
enum class TangentRule : std::uint8_t
{
    Given,     // `right_slope` and `left_slope`
    Automatic, // from the slopes to both neighbours, shifted by the bias of each side
    Tcb        // from tension, continuity and bias
};

struct Tangent
{
    TangentRule rule = TangentRule::Given;
    bool flat_at_equals = false; // no slope where a neighbour has the same value
    bool no_overshoot = false;   // not beyond the value of a neighbour
    bool through_neighbours =
        false;                 // automatic: the slope from neighbour to neighbour, not the mean of both sides
    float right_slope = 0.0F;  // a second; when automatic: bias, 1 is a neighbour's slope; of Tcb: tension
    float left_slope = 0.0F;   // likewise; of Tcb: continuity
    float right_weight = 0.0F; // length of the tangent as a part of the time to the next key; 0: a third
    float left_weight = 0.0F;  // and to the one before
    float tcb_bias = 0.0F;
};

struct Key
{
    double seconds = 0.0;
    double value = 0.0;
    Interpolation interpolation = Interpolation::Straight; // up to the next key
    Tangent tangent;
};

/// How a curve goes on before its first or after its last key.
struct Extrapolation
{
    enum class Kind : std::uint8_t
    {
        Hold,         // the value of that key
        Repeat,       // the curve again and again
        Mirror,       // forward and backward in turn
        RepeatOnward, // again and again, each time from where the one before ended
        Slope         // straight on
    };
    Kind kind = Kind::Hold;
    double repetitions = std::numeric_limits<double>::infinity(); // after which the value holds
};

/// A value over time. The first and last key hold outside, unless it says otherwise. Asking for times in order takes
/// constant time: the curve remembers where it was.
class Curve
{
public:
    void Reserve(std::size_t keys);
    /// A key at or before the time of the last one replaces it.
    void Append(const Key& key);
    /// After the last key: settles the slopes that depend on neighbours.
    void Close();

    bool Empty() const { return seconds_.empty(); }
    std::size_t Count() const { return seconds_.size(); }
    double FirstTime() const { return seconds_.front(); }
    double LastTime() const { return seconds_.back(); }

    void Extrapolate(const Extrapolation& before, const Extrapolation& after)
    {
        before_ = before;
        after_ = after;
    }

    bool IsConstant() const;
    double At(double seconds) const; // of a curve that is not empty

private:
    std::size_t SegmentAt(double seconds) const;
    double Inside(double seconds) const;
    double Outside(double seconds, bool after) const;
    double EndSlope(bool last) const;
    double SlopeAt(std::size_t key, double side) const;
    double StraightSlope(std::size_t from, std::size_t to) const;
    double AutomaticSlope(std::size_t key, double bias) const;

    struct Segment // of a cubic one
    {
        double right_slope, left_slope;  // at its begin, at its end
        float right_weight, left_weight; // likewise
    };

    std::vector<double> seconds_;
    std::vector<double> values_;
    std::vector<Interpolation> interpolations_;
    std::vector<Tangent> tangents_; // of each key while cubic ones are among them; empty after Close
    std::vector<Segment> segments_; // between the keys, when one of them is cubic
    Extrapolation before_, after_;
    mutable std::size_t cursor_ = 0;
};

} // namespace mobu_host::fbx
