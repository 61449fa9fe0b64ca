#pragma once

// What the rules have in common. Only the files of the rules include this.

#include "exporter/base/option_table.h"
#include "exporter/rules/file_facts.h"
#include "exporter/rules/rules.h"

namespace tev2_exporter
{

/// Everything that a rule looks at. Rules fill in the plan on the way.
struct Case
{
    const ExportQuestion& question;
    const SceneFacts* scene; ///< null only for rules that need no scene
    ExportPlan& plan;
};

using Rule = Objection(const Case&);

/// The rate and the range: rate_and_range_rules.cpp.
Rule RateCanBeRead, RateCanBePassedOn, RangeGoesForward, RangeIsInside, TimeMovesOn, SamplesFit;
void SetRanges(const Case& c);

/// Names of files: name_rules.cpp.
Rule EndsInTv2, PathFits, TakesCanNameFiles, NamesFit, NamesAreFiles, FilesDiffer;

/// What is rounded, cut or left out: plan_notes.cpp.
void AddNotes(const Case& c);

/// The name of an option in messages: "--all-takes" or "all_takes".
std::string OptionName(const ExportQuestion& question, const ExportOption& option);

TakeTimes TimesOf(const Case& c, const FilePlan& file);

/// "frames 0 to 25 (0 to 1 s)"
std::string FramesText(const TakeTimes& take, const SamplingRange& range);

/// Device and inode: what two names of one file have in common.
using Place = std::pair<std::uint64_t, std::uint64_t>;

inline Place PlaceOf(const FileStamp& stamp)
{
    return {stamp.device, stamp.inode};
}

/// The folder of a path, "." when it names none.
std::string FolderOf(const std::string& path);

} // namespace tev2_exporter
