#include "exporter/rules/rule.h"
#include "exporter/rules/sampling_rate.h"
#include "text/message_text.h"

#include <algorithm>
#include <cmath>

namespace tev2_exporter
{
namespace
{

/// Instants are stepped in single precision. A default rate with more digits is worth a note only where the instants
/// move: nobody asked for these digits.
void NoteRate(const Case& c)
{
    constexpr double kMovedVisibly = 0.001; // sample intervals
    const auto sampled = static_cast<float>(c.plan.call.rate);
    const std::string& asked = c.question.rate;
    const bool explicit_rate = !asked.empty() && asked != "scene";
    const bool has_more_digits = RateOfText(NumberText(sampled), 0.0) != c.plan.call.rate;
    double longest = 0.0; // seconds
    for (const FilePlan& file : c.plan.files)
        longest = std::max(longest, static_cast<double>(file.range.end - file.range.start));
    const double moved = longest * std::abs(static_cast<double>(sampled) - c.plan.call.rate);
    if ((explicit_rate && has_more_digits) || moved > kMovedVisibly)
    {
        c.plan.notes.push_back("the rate " + (explicit_rate ? asked : NumberText(c.plan.call.rate)) +
                               " is rounded to single precision: " +
                               NumberText(static_cast<double>(sampled)) + " samples a second");
    }
}

void NoteRange(const Case& c)
{
    if (c.plan.call.whole_take)
        return;
    std::vector<std::string> cut;
    for (const FilePlan& file : c.plan.files)
    {
        const TakeTimes take = TimesOf(c, file);
        const std::int32_t first = FrameAt(take.start, take.transport_rate);
        const std::int32_t last = FrameAt(take.stop, take.transport_rate);
        if ((c.question.start_frame && *c.question.start_frame < first) ||
            (c.question.end_frame && *c.question.end_frame > last))
            cut.push_back(Quoted(file.take_name) + " has " + FramesText(take, WholeTake(take, 1.0f)));
    }
    for (const std::string& take : cut)
        c.plan.notes.push_back("the range is cut to the take: " + take);
}

/// Takes are exported in whole frames of the transport rate.
void NoteTakeEnds(const Case& c)
{
    constexpr double kOnAFrame = 0.001; // frames
    for (const FilePlan& file : c.plan.files)
    {
        const TakeTimes take = TimesOf(c, file);
        for (const auto& [seconds, what] : {std::pair(take.start, "start"), std::pair(take.stop, "end")})
        {
            const double frame = seconds * take.transport_rate;
            const std::int32_t used = FrameAt(seconds, take.transport_rate);
            if (std::abs(frame - used) > kOnAFrame)
            {
                c.plan.notes.push_back(std::string("the ") + what + " of take " + Quoted(file.take_name) +
                                       " is between two frames, at " + NumberText(static_cast<float>(frame)) +
                                       ": frame " + std::to_string(used) + " is used");
            }
        }
    }
}

void NoteOtherTakes(const Case& c)
{
    std::vector<std::string> others;
    std::vector<bool> exported(c.scene->takes.size());
    for (const FilePlan& file : c.plan.files)
        exported[file.take] = true;
    for (std::size_t i = 0; i < c.scene->takes.size(); ++i)
        if (!exported[i])
            others.push_back(c.scene->takes[i].name);
    if (!others.empty())
    {
        c.plan.notes.push_back(CountOf(others.size(), "other take is", "other takes are") +
                               " not exported: " + Listed(others) + " (" +
                               OptionName(c.question, Option("all_takes")) + ")");
    }
}

} // namespace

void AddNotes(const Case& c)
{
    NoteRate(c);
    NoteRange(c);
    NoteTakeEnds(c);
    NoteOtherTakes(c);
}

} // namespace tev2_exporter
