#include "host/import/collada/key_curve_reader.h"

#include "host/import/collada/numbers.h"

#include <algorithm>
#include <cmath>

namespace mobu_host::collada
{
namespace
{

Interpolation InterpolationOf(std::string_view word, bool& is_other)
{
    if (word == "STEP")
        return Interpolation::Step;
    if (word == "BEZIER")
        return Interpolation::Bezier;
    if (word == "HERMITE")
        return Interpolation::Hermite;
    is_other = is_other || word != "LINEAR";
    return Interpolation::Linear;
}

bool IsCurved(Interpolation way)
{
    return way == Interpolation::Bezier || way == Interpolation::Hermite;
}

} // namespace

KeyCurveReader::KeyCurveReader(const XmlDocument& document, const DocumentIndex& index, std::size_t file_size)
    : document_(document), index_(index), times_left_(file_size)
{
}

const SamplerCurve& KeyCurveReader::Read(Element channel)
{
    const Element* const sampler = index_.samplers.Find(IdOf(Attribute(channel, "source")));
    if (!sampler)
        document_.Fail(channel, "has the source " + Quoted(Attribute(channel, "source")) +
                                    ", which is no sampler of this file");
    const auto [found, is_new] = samplers_.try_emplace(sampler->internal_object());
    if (is_new)
        found->second = ReadSampler(*sampler);
    return found->second;
}

SamplerCurve KeyCurveReader::ReadSampler(Element sampler)
{
    const Inputs inputs = FindInputs(sampler);
    SamplerCurve result;
    auto curve = std::make_shared<KeyCurve>();
    curve->times = TimesOf(inputs.input);
    if (curve->times->empty())
        return result;
    curve->values = RowsOf(inputs.output);
    const std::size_t keys = curve->times->size();
    if (const std::size_t values = AccessorOf(inputs.output).count; values != keys)
        document_.Fail(sampler,
                       "has " + std::to_string(keys) + " times and " + std::to_string(values) + " values");
    if (inputs.interpolation)
        ReadWays(inputs.interpolation, *curve, result);
    bool is_curved = false;
    for (std::size_t key = 0; curve->ways.array && key < keys && !is_curved; ++key)
        is_curved = IsCurved(*curve->ways.At(key));
    if (is_curved && inputs.in_tangent && inputs.out_tangent)
    {
        curve->in = ReadTangents(inputs.in_tangent, *curve);
        curve->out = ReadTangents(inputs.out_tangent, *curve);
    }
    result.lacks_tangents = is_curved && curve->in.layout == TangentLayout::None;
    result.curve = std::move(curve);
    return result;
}

KeyCurveReader::Inputs KeyCurveReader::FindInputs(Element sampler) const
{
    Inputs inputs;
    const std::pair<std::string_view, Element*> semantics[] = {{"INPUT", &inputs.input},
                                                               {"OUTPUT", &inputs.output},
                                                               {"INTERPOLATION", &inputs.interpolation},
                                                               {"IN_TANGENT", &inputs.in_tangent},
                                                               {"OUT_TANGENT", &inputs.out_tangent}};
    for (const Element input : sampler.children("input"))
    {
        for (const auto& [semantic, source] : semantics)
        {
            if (Attribute(input, "semantic") != semantic)
                continue;
            const Element* const found = index_.sources.Find(IdOf(Attribute(input, "source")));
            if (!found)
                document_.Fail(sampler, "has the input " + Quoted(Attribute(input, "source")) +
                                            ", which is no source of this file");
            *source = *found;
        }
    }
    if (!inputs.input || !inputs.output)
        document_.Fail(sampler, std::string("has no ") + (inputs.input ? "OUTPUT" : "INPUT"));
    return inputs;
}

const KeyCurveReader::Accessor& KeyCurveReader::AccessorOf(Element source)
{
    const auto [found, is_new] = accessors_.try_emplace(source.internal_object());
    if (is_new)
        found->second = ReadAccessor(source);
    return found->second;
}

KeyCurveReader::Accessor KeyCurveReader::ReadAccessor(Element source) const
{
    Accessor accessor;
    accessor.element = source.child("technique_common").child("accessor");
    if (!accessor.element)
        document_.Fail(source, "has no accessor");
    const Element* const array = index_.arrays.Find(IdOf(Attribute(accessor.element, "source")));
    if (!array)
        document_.Fail(accessor.element, "has the source " + Quoted(Attribute(accessor.element, "source")) +
                                             ", which is no array of this file");
    accessor.array = *array;
    accessor.count = ReadCount(document_, accessor.element, "count", 0);
    accessor.offset = ReadCount(document_, accessor.element, "offset", 0);
    accessor.stride = ReadCount(document_, accessor.element, "stride", 1);
    if (accessor.stride == 0)
        document_.Fail(accessor.element, "has the stride 0");
    return accessor;
}

void KeyCurveReader::CheckFits(const Accessor& accessor, std::size_t size) const
{
    const auto [element, array, count, offset, stride] = accessor;
    if (count > 0 && (offset > size || count > (size - offset) / stride))
        document_.Fail(element, "takes " + std::to_string(count) + " rows of " + std::to_string(stride) +
                                    " from " + std::to_string(offset) + " on out of an array of " +
                                    std::to_string(size));
}

void KeyCurveReader::CheckCount(Element source, std::size_t count, std::size_t keys) const
{
    if (count < keys)
        document_.Fail(source,
                       "has " + std::to_string(count) + " rows for " + std::to_string(keys) + " keys");
}

const std::shared_ptr<const std::vector<double>>& KeyCurveReader::NumbersOf(Element array)
{
    const auto [found, is_new] = numbers_.try_emplace(array.internal_object());
    if (is_new)
    {
        if (std::string_view(array.name()) != "float_array")
            document_.Fail(array, "holds no numbers");
        found->second = std::make_shared<const std::vector<double>>(ReadFloatArray(document_, array));
    }
    return found->second;
}

const KeyCurveReader::Ways& KeyCurveReader::WaysOf(Element array)
{
    const auto [found, is_new] = ways_.try_emplace(array.internal_object());
    Ways& ways = found->second;
    if (!is_new)
        return ways;
    auto read = std::make_shared<std::vector<Interpolation>>();
    Words words(array);
    for (std::string_view word; words.Next(word);)
        read->push_back(InterpolationOf(word, ways.has_other));
    ways.array = std::move(read);
    return ways;
}

const KeyTimes& KeyCurveReader::TimesOf(Element source)
{
    const Accessor& accessor = AccessorOf(source);
    const auto& numbers = NumbersOf(accessor.array);
    const bool is_whole = accessor.offset == 0 && accessor.stride == 1 && accessor.count == numbers->size();
    const auto [found, is_new] = times_.try_emplace((is_whole ? accessor.array : source).internal_object());
    if (is_new)
        found->second = ReadTimes(source);
    return found->second;
}

KeyTimes KeyCurveReader::ReadTimes(Element source)
{
    const Accessor& accessor = AccessorOf(source);
    KeyTimes times = NumbersOf(accessor.array);
    CheckFits(accessor, times->size());
    if (accessor.count != times->size())
    {
        if (accessor.count > times_left_)
            document_.Fail(source, "takes the times of more keys out of its array than the file has bytes");
        times_left_ -= accessor.count;
        std::vector<double> some;
        some.reserve(accessor.count);
        for (std::size_t key = 0; key < accessor.count; ++key)
            some.push_back((*times)[accessor.offset + key * accessor.stride]);
        times = std::make_shared<const std::vector<double>>(std::move(some));
    }
    if (!std::is_sorted(times->begin(), times->end()))
        document_.Fail(source, "has times that go back");
    if (!times->empty() && std::max(std::abs(times->front()), std::abs(times->back())) > kLongestTime)
        document_.Fail(source, "has times that are more than a million seconds from 0");
    return times;
}

Rows<double> KeyCurveReader::RowsOf(Element source)
{
    const Accessor& accessor = AccessorOf(source);
    const auto& numbers = NumbersOf(accessor.array);
    CheckFits(accessor, numbers->size());
    return {numbers, accessor.offset, accessor.stride};
}

void KeyCurveReader::ReadWays(Element source, KeyCurve& curve, SamplerCurve& sampler)
{
    const Accessor& accessor = AccessorOf(source);
    const Ways& ways = WaysOf(accessor.array);
    CheckFits(accessor, ways.array->size());
    CheckCount(source, accessor.count, curve.times->size());
    curve.ways = {ways.array, accessor.offset, accessor.stride};
    sampler.has_other_interpolation = ways.has_other;
}

Tangents KeyCurveReader::ReadTangents(Element source, const KeyCurve& curve)
{
    const std::size_t width = curve.Width();
    Tangents tangents;
    tangents.rows = RowsOf(source);
    CheckCount(source, AccessorOf(source).count, curve.times->size());
    const std::size_t stride = tangents.rows.stride;
    if (stride == width)
        tangents.layout = TangentLayout::ValuePerValue;
    else if (stride == 2 * width)
        tangents.layout = TangentLayout::PairPerValue;
    else if (stride == width + 1)
        tangents.layout = TangentLayout::TimeAndValues;
    else
        document_.Fail(source, "has " + std::to_string(stride) + " numbers a tangent for " +
                                   std::to_string(width) + " values a key");
    return tangents;
}

} // namespace mobu_host::collada
