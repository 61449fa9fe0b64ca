#include "gltf/key_track.h"

#include <cmath>
#include <string>

namespace gltf
{
namespace
{

std::string InAccessor(std::size_t index)
{
    return "(accessors[" + std::to_string(index) + "]) ";
}

std::string TypeNeeded(Target target)
{
    if (target == Target::Weights)
        return "is not of type SCALAR with floats or normalised numbers";
    return target == Target::Rotation ? "is not of type VEC4 with floats or normalised numbers"
                                      : "is not of type VEC3";
}

} // namespace

std::span<const double> KeyTrack::Element(std::size_t index) const
{
    return {values->data() + index * width, width};
}

std::span<const double> KeyTrack::ValueOf(std::size_t key) const
{
    return Element(interpolation == Interpolation::CubicSpline ? 3 * key + 1 : key);
}

void KeyTrack::SplineBetween(std::size_t key, double fraction, std::span<double> result) const
{
    const std::span<const double> from = Element(3 * key + 1);
    const std::span<const double> out = Element(3 * key + 2);
    const std::span<const double> in = Element(3 * key + 3);
    const std::span<const double> to = Element(3 * key + 4);
    const double span = (*times)[key + 1] - (*times)[key];
    const double t = fraction;
    const double t2 = t * t;
    const double t3 = t2 * t;
    for (std::size_t i = 0; i < width; ++i)
        result[i] = (2.0 * t3 - 3.0 * t2 + 1.0) * from[i] + span * (t3 - 2.0 * t2 + t) * out[i] +
                    (3.0 * t2 - 2.0 * t3) * to[i] + span * (t3 - t2) * in[i];
}

KeyTrack KeyTrackReader::Read(const Animation& animation, const Channel& channel, std::size_t width)
{
    const Place whole = document_.PlaceOf(animation);
    const Place place{"samplers", channel.sampler, {}, &whole};
    const Sampler sampler = document_.SamplerAt(animation, channel.sampler);
    const AccessorShape input = ShapeOf(document_, sampler.input);
    const AccessorShape output = ShapeOf(document_, sampler.output);
    const bool cubic = sampler.interpolation == Interpolation::CubicSpline;
    const bool is_weights = channel.target == Target::Weights;
    if (width == 0)
        place.Fail("moves the weights of a mesh without morph targets");
    if (input.width != 1 || input.components != Components::Floats)
        place.Fail("input", InAccessor(sampler.input) + "is not one float a key");
    const bool may_be_whole = channel.target != Target::Rotation && !is_weights;
    if (output.width != (is_weights ? 1 : width) || (!may_be_whole && output.components == Components::Whole))
        place.Fail("output", InAccessor(sampler.output) + TypeNeeded(channel.target));
    const std::size_t needed = (cubic ? 3 : 1) * (is_weights ? width : 1);
    if (output.count / needed != input.count || output.count % needed != 0)
        place.Fail("output", InAccessor(sampler.output) + "has " + std::to_string(output.count) +
                                 " values where " + std::to_string(input.count) +
                                 (cubic ? " keys of CUBICSPLINE need " : " keys need ") +
                                 std::to_string(needed) + " each");
    KeyTrack track;
    track.times = accessors_.Read(sampler.input);
    CheckTimes(*track.times, sampler.input, place);
    track.values = accessors_.Read(sampler.output);
    track.interpolation = sampler.interpolation;
    track.width = width;
    return track;
}

void KeyTrackReader::CheckTimes(const std::vector<double>& times, std::size_t accessor, const Place& place)
{
    if (!checked_times_.insert(accessor).second)
        return;
    for (std::size_t i = 0; i < times.size(); ++i)
    {
        if (std::abs(times[i]) > kLatestKey)
            place.Fail("input", InAccessor(accessor) + "has a time beyond a million seconds at key " +
                                    std::to_string(i));
        if (i > 0 && times[i] < times[i - 1])
            place.Fail("input",
                       InAccessor(accessor) + "has times that do not ascend at key " + std::to_string(i));
    }
}

} // namespace gltf
