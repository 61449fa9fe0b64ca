#include "exporter/rules/rule.h"
#include "exporter/rules/sampling_rate.h"
#include "text/message_text.h"

#include <cmath>
#include <limits>

namespace tev2_exporter
{
namespace
{

/// Samples a second; far beyond any motion, and too few to fill the memory with a scene of a few seconds.
constexpr float kHighestRate = 1.0e6f;

/// The samples of a whole export as the exporter forms them.
SamplingRange RangeOf(const Case& c, const FilePlan& file)
{
    const double transport_rate = c.scene->transport_rate;
    const SamplingRange whole = WholeTake(TimesOf(c, file), static_cast<float>(c.plan.call.rate));
    return c.plan.call.whole_take ? whole
                                  : CustomRange(whole, SecondsOfKey(c.plan.call.start_frame, transport_rate),
                                                SecondsOfKey(c.plan.call.end_frame, transport_rate));
}

} // namespace

Objection RateCanBeRead(const Case& c)
{
    const std::string& text = c.question.rate;
    const double scene_rate = c.scene != nullptr ? c.scene->transport_rate : 1.0;
    const std::optional<double> rate = RateOfText(text, scene_rate);
    const std::string fps = OptionName(c.question, Option("fps"));
    if (!rate)
    {
        return {"rate-unreadable",
                fps + " " + Quoted(text) + " is not a rate: give " + kRatesThatAreUnderstood};
    }
    c.plan.call.rate = *rate;
    const auto sampled = static_cast<float>(*rate);
    if (sampled > 0.0f && std::isfinite(1.0f / sampled) && sampled <= kHighestRate)
        return {};
    return {"rate-out-of-range", "a rate of " + NumberText(*rate) + " samples a second is out of range; " +
                                     fps + " takes numbers above 0 and up to " +
                                     CountText(static_cast<std::uint64_t>(kHighestRate))};
}

Objection RateCanBePassedOn(const Case& c)
{
    if (!c.question.whole_rates_only || IsWholeRate(c.plan.call.rate) || c.scene == nullptr)
        return {};
    return {"rate-fractional",
            "scripts can only export at whole rates, and " + NumberText(c.plan.call.rate) +
                " is not whole: use \"Custom FPS\" in the dialog of the export menu, or give " +
                OptionName(c.question, Option("fps")) + " a whole number"};
}

Objection RangeGoesForward(const Case& c)
{
    const std::optional<std::int32_t>& start = c.question.start_frame;
    const std::optional<std::int32_t>& end = c.question.end_frame;
    if (!start || !end || *start <= *end)
        return {};
    return {"range-reversed",
            "the start frame " + std::to_string(*start) + " is after the end frame " + std::to_string(*end)};
}

void SetRanges(const Case& c)
{
    c.plan.call.whole_take = !c.question.start_frame && !c.question.end_frame;
    // An end that is left open is the take's own: the exporter clamps a range to the take.
    c.plan.call.start_frame = c.question.start_frame.value_or(std::numeric_limits<std::int32_t>::min());
    c.plan.call.end_frame = c.question.end_frame.value_or(std::numeric_limits<std::int32_t>::max());
    for (FilePlan& file : c.plan.files)
        file.range = RangeOf(c, file);
}

Objection RangeIsInside(const Case& c)
{
    SetRanges(c);
    for (const FilePlan& file : c.plan.files)
    {
        const TakeTimes take = TimesOf(c, file);
        const SamplingRange whole = WholeTake(take, static_cast<float>(c.plan.call.rate));
        if (whole.start > whole.end)
            return {"take-reversed", "take " + Quoted(file.take_name) + " ends before it starts"};
        if (file.range.start <= file.range.end)
            continue;
        const bool late = file.range.start > whole.end;
        return {"range-outside", std::string("the ") + (late ? "start" : "end") + " frame " +
                                     std::to_string(late ? c.plan.call.start_frame : c.plan.call.end_frame) +
                                     " is " + (late ? "after the end" : "before the start") + " of take " +
                                     Quoted(file.take_name) + ", which has " + FramesText(take, whole)};
    }
    return {};
}

Objection TimeMovesOn(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
    {
        const SamplingRange& range = file.range;
        if (!TimeAdvances(range))
        {
            return {"time-stands-still", "at " + NumberText(range.rate) +
                                             " samples a second the time does not advance: a step of " +
                                             NumberText(1.0f / range.rate) +
                                             " s is lost in the single precision of " +
                                             NumberText(range.end) + " s; take " + Quoted(file.take_name)};
        }
    }
    return {};
}

/// Keys that do nothing are left out of a file, but what is sampled must fit first.
Objection SamplesFit(const Case& c)
{
    for (const FilePlan& file : c.plan.files)
    {
        const SamplingRange& range = file.range;
        const double bytes = SampledBytes(range, c.plan.nodes, c.plan.cameras);
        if (!(bytes < kFileSizeLimit))
        {
            return {"too-many-samples", NumberText(range.rate) + " samples a second are too many: " +
                                            CountText(static_cast<std::uint64_t>(SampleCount(range))) +
                                            " samples of " + CountOf(c.plan.nodes, "node", "nodes") +
                                            " and " + CountOf(c.plan.cameras, "camera", "cameras") +
                                            " are about " + CountText(static_cast<std::uint64_t>(bytes)) +
                                            " bytes, a file holds less than " +
                                            CountText(static_cast<std::uint64_t>(kFileSizeLimit)) +
                                            "; take " + Quoted(file.take_name)};
        }
    }
    return {};
}

} // namespace tev2_exporter
