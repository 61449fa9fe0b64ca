#include "gltf/convert/from_tracks.h"

#include "tev2_loader/tracks/linear_tracks.h"
#include "tev2_loader/tracks/quaternion_tracks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace tev2_gltf
{

using gltf::Interpolation;
using gltf::KeyTrack;
using gltf::Place;
using namespace TEV2_LOADER;

namespace
{

constexpr double kWithin = 0.0001;
constexpr int kDeepestSplit = 12; // 4096 keys between two of the document

using Element = std::vector<double>;

double LengthOf(std::span<const double> numbers)
{
    double largest = 0.0;
    for (const double number : numbers)
        largest = std::max(largest, std::abs(number));
    if (!(largest > 0.0) || !std::isfinite(largest))
        return 0.0;
    double square = 0.0;
    for (const double number : numbers)
        square += number / largest * (number / largest);
    return largest * std::sqrt(square);
}

void Normalise(std::span<double> rotation)
{
    const double length = LengthOf(rotation);
    if (!(length > 0.0))
    {
        std::ranges::fill(rotation, 0.0);
        rotation.back() = 1.0;
        return;
    }
    for (double& number : rotation)
        number /= length;
}

/// Replaces the cubic spline between two keys by straight lines.
class SplineSplitter
{
public:
    SplineSplitter(FromContext& context, const KeyTrack& keys, bool is_rotation, StraightKeys& result,
                   const Place& place)
        : context_(context), keys_(keys), is_rotation_(is_rotation), result_(result), place_(place)
    {
        // Single precision cannot be closer to large values.
        for (const double value : *keys.values)
            largest_ = std::max(largest_, std::abs(value));
        within_ = std::max(0.9 * kWithin,
                           4.0 * static_cast<double>(std::numeric_limits<float>::epsilon()) * largest_);
    }

    /// Appends the keys between `key` and the next one, both left out.
    void Split(std::size_t key)
    {
        key_ = key;
        Between(0.0, At(0.0), 1.0, At(1.0), 0);
    }

    Element At(double fraction) const
    {
        Element value(keys_.width);
        keys_.SplineBetween(key_, fraction, value);
        if (is_rotation_)
            Normalise(value);
        return value;
    }

    bool IsWithin() const { return is_within_; }

private:
    void Between(double begin, const Element& first, double end, const Element& last, int depth)
    {
        const double middle = 0.5 * (begin + end);
        if (IsStraight(begin, first, end, last))
            return;
        const float time = TimeAt(middle);
        if (depth == kDeepestSplit || !(time > TimeAt(begin)) || !(time < TimeAt(end)))
        {
            is_within_ = false;
            return;
        }
        const Element value = At(middle);
        Between(begin, first, middle, value, depth + 1);
        context_.budget.Take(sizeof time + value.size() * sizeof value[0], place_);
        result_.times.push_back(time);
        result_.values.insert(result_.values.end(), value.begin(), value.end());
        Between(middle, value, end, last, depth + 1);
    }

    float TimeAt(double fraction) const
    {
        const std::vector<double>& times = *keys_.times;
        return static_cast<float>(times[key_] + (times[key_ + 1] - times[key_]) * fraction);
    }

    // A cubic that leaves the line between its ends does so at one of three points in between, by at least nine tenths
    // of what it does anywhere.
    bool IsStraight(double begin, const Element& first, double end, const Element& last) const
    {
        const Element half = Middle(first, last);
        const std::array<std::pair<double, Element>, 3> points = {
            {{0.25, Middle(first, half)}, {0.5, half}, {0.75, Middle(half, last)}}};
        return std::ranges::all_of(points,
                                   [&](const auto& point)
                                   {
                                       const auto& [part, line] = point;
                                       return IsNear(line, At(begin + (end - begin) * part));
                                   });
    }

    /// Of two values; of two rotations on the shorter arc.
    Element Middle(const Element& first, const Element& last) const
    {
        const double sign = is_rotation_ && Dot(first, last) < 0.0 ? -1.0 : 1.0;
        Element middle(first.size());
        for (std::size_t i = 0; i < middle.size(); ++i)
            middle[i] = 0.5 * (first[i] + sign * last[i]);
        if (is_rotation_)
            Normalise(middle);
        return middle;
    }

    bool IsNear(const Element& line, const Element& value) const
    {
        const double sign = is_rotation_ && Dot(line, value) < 0.0 ? -1.0 : 1.0;
        for (std::size_t i = 0; i < line.size(); ++i)
        {
            if (!(std::abs(sign * line[i] - value[i]) <= within_))
                return false;
        }
        return true;
    }

    static double Dot(const Element& first, const Element& second)
    {
        return std::inner_product(first.begin(), first.end(), second.begin(), 0.0);
    }

    FromContext& context_;
    const KeyTrack& keys_;
    bool is_rotation_;
    StraightKeys& result_;
    const Place& place_;
    std::size_t key_ = 0;
    double largest_ = 0.0;
    double within_ = kWithin;
    bool is_within_ = true;
};

void Append(StraightKeys& keys, float time, std::span<const double> value)
{
    keys.times.push_back(time);
    keys.values.insert(keys.values.end(), value.begin(), value.end());
}

/// The value of a step until the next one: again, just before it.
void HoldUntil(StraightKeys& keys, float time, std::span<const double> next)
{
    const float before = std::nextafter(time, -std::numeric_limits<float>::infinity());
    const Element held(keys.values.end() - static_cast<std::ptrdiff_t>(keys.width), keys.values.end());
    if (before > keys.times.back() && !std::ranges::equal(held, next))
        Append(keys, before, held);
}

void ReportResampled(const FromContext& context, const KeyTrack& keys, const StraightKeys& result,
                     bool is_within, const KeySource& source)
{
    if (result.times.size() == keys.KeyCount() && is_within)
        return;
    context.ReportMotion(Code::Resampled, source.place,
                         source.what + ": " + std::to_string(keys.KeyCount()) +
                             " keys of a cubic spline became " + std::to_string(result.times.size()) + ", " +
                             (is_within ? "within 0.0001" : "not everywhere within 0.0001"));
}

template <typename Track, typename Value>
std::unique_ptr<Track> TrackOf(const StraightKeys& keys, const Value& value_of)
{
    auto track = std::make_unique<Track>();
    track->Reserve(keys.times.size());
    for (std::size_t key = 0; key < keys.times.size(); ++key)
        track->Append(keys.times[key],
                      value_of(std::span<const double>(keys.values).subspan(key * keys.width, keys.width)));
    return track;
}

TEV2_VECTOR_3 VectorOf(std::span<const double> numbers, const Place& place)
{
    return {Single(numbers[0], place), Single(numbers[1], place), Single(numbers[2], place)};
}

} // namespace

StraightKeys MakeStraight(FromContext& context, const KeyTrack& keys, bool is_rotation,
                          const KeySource& source)
{
    StraightKeys result;
    result.width = keys.width;
    const std::size_t most = keys.KeyCount() * (keys.interpolation == Interpolation::Step ? 2 : 1);
    context.budget.Take(most, sizeof(float) + keys.width * sizeof(double), source.place);
    result.times.reserve(most);
    result.values.reserve(most * keys.width);
    SplineSplitter splitter(context, keys, is_rotation, result, source.place);
    std::size_t dropped = 0;
    for (std::size_t key = 0; key < keys.KeyCount(); ++key)
    {
        const auto time = static_cast<float>((*keys.times)[key]);
        if (key > 0 && !(time > result.times.back()))
        {
            ++dropped;
            continue;
        }
        const std::span<const double> value = keys.ValueOf(key);
        if (key > 0 && keys.interpolation == Interpolation::Step)
            HoldUntil(result, time, value);
        Append(result, time, value);
        if (keys.interpolation == Interpolation::CubicSpline && key + 1 < keys.KeyCount() &&
            (*keys.times)[key + 1] > (*keys.times)[key])
            splitter.Split(key);
    }
    if (dropped > 0)
        context.ReportMotion(Code::KeyDropped, source.place, source.what, dropped);
    if (keys.interpolation == Interpolation::CubicSpline)
        ReportResampled(context, keys, result, splitter.IsWithin(), source);
    return result;
}

std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> TranslationTrack(const StraightKeys& keys, Exchange parent,
                                                           const Place& place)
{
    return TrackOf<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(keys, [&](std::span<const double> value)
                                                    { return Exchanged(VectorOf(value, place), parent); });
}

std::unique_ptr<TEV2_ANIMATABLE_VECTOR_3> ScaleTrack(const StraightKeys& keys, Exchange own,
                                                     const Place& place)
{
    return TrackOf<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(keys, [&](std::span<const double> value)
                                                    { return ExchangedScale(VectorOf(value, place), own); });
}

std::unique_ptr<TEV2_ANIMATABLE_QUATERNION> RotationTrack(const FromContext& context,
                                                          const StraightKeys& keys, Exchange parent,
                                                          Exchange own, const KeySource& source)
{
    std::size_t changed = 0;
    auto track = TrackOf<TEV2_ANIMATABLE_QUATERNION_SLERP>(
        keys, [&](std::span<const double> value)
        { return ExchangedRotation(UnitRotation(value, changed), parent, own); });
    if (changed > 0)
        context.ReportMotion(Code::RotationNormalised, source.place, source.what, changed);
    track->MakeContinuous();
    return track;
}

std::unique_ptr<TEV2_ANIMATABLE_FLOAT32> WeightTrack(const StraightKeys& keys, std::size_t target,
                                                     const Place& place)
{
    return TrackOf<TEV2_ANIMATABLE_FLOAT32_LINEAR>(keys, [&](std::span<const double> value)
                                                   { return Single(value[target], place); });
}

TEV2_QUATERNION UnitRotation(std::span<const double> rotation, std::size_t& changed)
{
    constexpr double kRounding = 1e-5;
    std::array<double, 4> unit{};
    std::ranges::copy(rotation, unit.begin());
    if (!(std::abs(LengthOf(unit) - 1.0) <= kRounding))
    {
        Normalise(unit);
        ++changed;
    }
    return {static_cast<float>(unit[0]), static_cast<float>(unit[1]), static_cast<float>(unit[2]),
            static_cast<float>(unit[3])};
}

} // namespace tev2_gltf
