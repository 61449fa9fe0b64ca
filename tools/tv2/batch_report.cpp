#include "tools/tv2/batch_report.h"

#include "tools/tv2/notes.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <iomanip>
#include <map>
#include <sstream>

namespace tv2
{

namespace
{

std::string TextIn(const Json& object, const char* member)
{
    const auto found = object.find(member);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

bool FlagIn(const Json& object, const char* member)
{
    const auto found = object.find(member);
    return found != object.end() && found->is_boolean() && found->get<bool>();
}

std::uint64_t NumberIn(const Json& object, const char* member)
{
    const auto found = object.find(member);
    return found != object.end() && found->is_number_unsigned() ? found->get<std::uint64_t>() : 0;
}

/// A file that was written, or would be.
bool IsWritten(const Json& file)
{
    return (FlagIn(file, "ok") || FlagIn(file, "wouldWrite")) && !FlagIn(file, "kept");
}

/// A file that is the old one, or would be.
bool IsKept(const Json& file)
{
    return FlagIn(file, "kept") || (file.contains("wouldWrite") && !FlagIn(file, "wouldWrite"));
}

constexpr std::size_t kMostComplaints = 10; ///< of a process, in a reason

std::string Joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : "; ") + text;
    return all;
}

/// What a program complained about, without its own name, on one line.
std::string Complaint(const std::string& errors)
{
    std::vector<std::string> said;
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line) && said.size() < kMostComplaints;)
    {
        for (const std::string_view name : {"tv2 export: ", "tv2: "})
            if (line.starts_with(name))
                line.erase(0, name.size());
        if (!line.empty())
            said.push_back(line);
    }
    return Joined(said);
}

/// A reason, without the name of the scene in front.
std::string OfScene(const std::string& scene, std::string reason)
{
    const std::string front = scene + ": ";
    if (reason.starts_with(front))
        reason.erase(0, front.size());
    return reason;
}

/// Why files of an answer are missing; none for those that were to be kept.
std::vector<std::string> MissedFiles(const Json& answer)
{
    std::vector<std::string> reasons;
    for (const Json& file : answer.at("files"))
        if (const std::string error = TextIn(file, "error"); !error.empty())
            reasons.push_back(TextIn(file, "output") + ": " + error);
    return reasons;
}

/// Of an export that was refused since the scene has none of the takes.
bool WithoutTake(const Json& answer)
{
    return answer.is_object() && TextIn(answer, "code") == "no-such-take";
}

/// Of an export that did what it should.
SceneState StateOf(const Json& answer)
{
    const Json& files = answer.at("files");
    const bool all_kept = !files.empty() && std::all_of(files.begin(), files.end(),
                                                        [](const Json& file) { return !IsWritten(file); });
    if (all_kept)
        return SceneState::kSkipped;
    return FlagIn(answer, "dryRun") ? SceneState::kWouldExport : SceneState::kExported;
}

std::string StateName(SceneState state)
{
    switch (state)
    {
    case SceneState::kExported:
        return "exported";
    case SceneState::kWouldExport:
        return "wouldExport";
    case SceneState::kUpToDate:
        return "upToDate";
    case SceneState::kSkipped:
        return "skipped";
    case SceneState::kFailed:
        break;
    }
    return "failed";
}

using OfScenes = std::vector<std::pair<std::string, std::string>>; // scene and text

/// The same order whichever scene ended first.
OfScenes SortedByScene(OfScenes texts)
{
    std::stable_sort(texts.begin(), texts.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    return texts;
}

/// Notes that differ in numbers and names alone.
struct NoteGroup
{
    std::string scene, text; ///< of the first
    std::size_t notes = 0;
    bool same = true; ///< one text in all of them

    std::string Text() const
    {
        std::string line = (scene.empty() ? "" : scene + ": ") + text;
        if (notes > 1)
        {
            line += (same ? " (the same for " : " (the like for ") +
                    CountOf(notes - 1, "more scene", "more scenes") + ")";
        }
        return line;
    }
};

/// What a note is about: its text up to the first name, without numbers.
std::string KindOf(const std::string& note)
{
    std::string kind = note.substr(0, std::min(note.find(": "), note.find('"')));
    std::erase_if(kind, [](char c) { return (c >= '0' && c <= '9') || c == ',' || c == '.'; });
    return kind;
}

/// The most frequent first.
std::vector<NoteGroup> Grouped(const OfScenes& notes)
{
    std::map<std::string, std::size_t> group_of; // kind
    std::vector<NoteGroup> groups;
    for (const auto& [scene, text] : notes)
    {
        const auto [found, is_new] = group_of.emplace(KindOf(text), groups.size());
        if (is_new)
            groups.push_back({scene, text});
        NoteGroup& group = groups[found->second];
        ++group.notes;
        group.same = group.same && group.text == text;
    }
    std::stable_sort(groups.begin(), groups.end(),
                     [](const NoteGroup& a, const NoteGroup& b) { return a.notes > b.notes; });
    return groups;
}

} // namespace

SceneOutcome OutcomeOf(const BatchScene& scene, const EndedProcess& ended, bool take_optional)
{
    SceneOutcome outcome{.scene = scene.scene};
    Json answer = Json::parse(ended.out, nullptr, false);
    const bool answered = ended.crash.empty() && answer.is_object() && answer.contains("files");
    if (!answered)
    {
        const std::string why = answer.is_object() ? TextIn(answer, "error") : Complaint(ended.err);
        if (!ended.crash.empty())
            outcome.reasons = {"its export ended early: " + ended.crash};
        else
            outcome.reasons = {
                why.empty() ? "its export ended with exit code " + std::to_string(ended.exit_code) : why};
        return outcome;
    }
    const std::string error = TextIn(answer, "error");
    outcome.reasons =
        error.empty() ? MissedFiles(answer) : std::vector<std::string>{OfScene(scene.scene, error)};
    if (outcome.reasons.empty() && ended.exit_code != 0)
        outcome.reasons = {Complaint(ended.err)};
    if (ended.exit_code == 0)
        outcome.state = StateOf(answer);
    else if (take_optional && WithoutTake(answer))
        outcome.state = SceneState::kSkipped;
    outcome.answer = std::move(answer);
    return outcome;
}

bool IsExported(const SceneOutcome& outcome)
{
    return outcome.state == SceneState::kExported || outcome.state == SceneState::kWouldExport;
}

Json OutcomeJson(const SceneOutcome& outcome)
{
    Json json = outcome.answer;
    if (!json.is_object())
    {
        json = {{"file", outcome.scene}, {"notes", Json::array()}, {"files", Json::array()}};
    }
    if (outcome.state == SceneState::kFailed && !json.contains("error"))
        json["error"] = Joined(outcome.reasons);
    if (outcome.state == SceneState::kSkipped && json.contains("error"))
    {
        json["reason"] = json["error"];
        json.erase("error");
    }
    if (IsExported(outcome) && !outcome.reasons.empty())
        json["reason"] = Joined(outcome.reasons);
    json["state"] = StateName(outcome.state);
    json["seconds"] = outcome.seconds;
    return json;
}

void BatchReport::Add(const SceneOutcome& outcome)
{
    switch (outcome.state)
    {
    case SceneState::kExported:
        ++exported_;
        break;
    case SceneState::kWouldExport:
        ++would_export_;
        break;
    case SceneState::kUpToDate:
        ++up_to_date_;
        break;
    case SceneState::kSkipped:
        ++skipped_;
        without_take_ += WithoutTake(outcome.answer) ? 1 : 0;
        break;
    case SceneState::kFailed:
        ++failed_;
        for (const std::string& reason : outcome.reasons)
            failures_.emplace_back(outcome.scene, reason);
        break;
    }
    if (outcome.state == SceneState::kUpToDate && dry_run_)
        planned_.push_back(outcome.scene + ": is up to date");
    if (outcome.state == SceneState::kSkipped && !outcome.reasons.empty())
        AddNotes(outcome.scene, {"skipped: " + Joined(outcome.reasons)});
    if (!outcome.answer.is_object())
        return;
    AddFiles(outcome.answer.at("files"), IsExported(outcome) ? Joined(outcome.reasons) : "");
    AddNotes(outcome.scene, outcome.answer.value("notes", std::vector<std::string>()));
}

void BatchReport::AddFiles(const Json& files, const std::string& why)
{
    for (const Json& file : files)
    {
        const std::string output = TextIn(file, "output");
        if (file.contains("wouldWrite"))
        {
            const std::string reason = TextIn(file, "reason");
            const std::string end = FlagIn(file, "kept") ? "would be kept, " + reason : reason;
            const std::string would = "would be written" + (why.empty() ? "" : ", since " + why);
            planned_.push_back(output + ": " + (reason.empty() ? would : end));
        }
        files_ += IsWritten(file) ? 1 : 0;
        kept_files_ += IsKept(file) ? 1 : 0;
        bytes_ += NumberIn(file, "bytes");
        keys_sampled_ += NumberIn(file, "keysSampled");
        keys_kept_ += NumberIn(file, "keysKept");
    }
}

void BatchReport::AddNotes(const std::string& scene, const std::vector<std::string>& notes)
{
    for (const std::string& note : notes)
        notes_.emplace_back(scene, note);
}

std::vector<std::string> BatchReport::Failures() const
{
    std::vector<std::string> lines = others_;
    for (const auto& [scene, reason] : SortedByScene(failures_))
        lines.push_back((reason.find(scene) != std::string::npos ? "" : scene + ": ").append(reason));
    return lines;
}

std::string BatchReport::Sums(double seconds) const
{
    std::ostringstream text;
    const std::pair<std::size_t, const char*> parts[] = {
        {exported_, "exported"},     {would_export_, "would be exported"},
        {up_to_date_, "up to date"}, {skipped_, "skipped"},
        {failed_, "failed"},         {scenes_ - Ended(), "not exported"},
    };
    text << CountOf(scenes_, "scene", "scenes");
    const char* between = ": ";
    for (const auto& [count, what] : parts)
    {
        if (count == 0)
            continue;
        text << between << CountText(count) << ' ' << what;
        between = ", ";
    }
    text << "; " << CountOf(files_, "file", "files");
    if (would_export_ == 0)
    {
        text << ", " << CountText(bytes_) << " bytes, " << CountText(keys_sampled_) << " keys sampled, "
             << CountText(keys_kept_) << " kept";
    }
    if (kept_files_ > 0)
        text << "; " << CountOf(kept_files_, "file", "files") << " kept as before";
    text << ", " << std::fixed << std::setprecision(2) << seconds << " s\n";
    return text.str();
}

void BatchReport::Print(std::ostream& out, std::size_t columns, double seconds) const
{
    std::vector<std::string> planned = planned_;
    std::sort(planned.begin(), planned.end());
    for (const std::string& line : planned)
        out << Printable(line) << '\n';
    std::vector<std::string> notes;
    for (const NoteGroup& group : Grouped(SortedByScene(notes_)))
        notes.push_back(group.Text());
    PrintNotes(out, notes, columns);
    out << Sums(seconds);
}

Json BatchReport::SummaryJson(double seconds, bool interrupted) const
{
    Json failures = Json::array();
    for (const auto& [scene, reason] : failures_)
        failures.push_back(JsonFailure(scene, reason));
    Json notes = Json::array();
    for (const auto& [scene, text] : notes_)
        if (scene.empty())
            notes.push_back(text);
    const Json json = {{"scenes", scenes_},
                       {"exported", exported_},
                       {"wouldExport", would_export_},
                       {"upToDate", up_to_date_},
                       {"skipped", skipped_},
                       {"failed", failed_},
                       {"files", files_},
                       {"filesKept", kept_files_},
                       {"bytes", bytes_},
                       {"keysSampled", keys_sampled_},
                       {"keysKept", keys_kept_},
                       {"seconds", seconds},
                       {"interrupted", interrupted},
                       {"failures", failures},
                       {"errors", others_},
                       {"notes", notes}};
    return {{"summary", json}};
}

} // namespace tv2
