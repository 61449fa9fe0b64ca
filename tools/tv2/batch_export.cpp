#include "tools/tv2/batch_export.h"

#include "tev2_loader/io/whole_file.h"
#include "tools/tv2/batch_report.h"
#include "tools/tv2/batch_stamps.h"
#include "tools/tv2/exporter_module.h"
#include "tools/tv2/process_pool.h"
#include "tools/tv2/progress_line.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <future>
#include <iterator>
#include <set>

namespace tv2
{

using TEV2_LOADER::Status;

namespace
{

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// The command that exports one scene with the options of this run.
class SceneCommand
{
public:
    SceneCommand(const std::vector<GivenOption>& given, bool by_dialog) : command_{ProgramPath(), "export"}
    {
        const std::set<std::string> of_the_batch = {"--output", "--jobs",  "--recursive", "--shard",
                                                    "--newer",  "--quiet", "--json",      "--config"};
        for (const GivenOption& option : given)
            if (!of_the_batch.contains(option.name))
                command_.insert(command_.end(), option.arguments.begin(), option.arguments.end());
        command_.push_back("--json");
        if (!by_dialog)
            command_.push_back("--make-folders");
    }

    std::vector<std::string> For(const BatchScene& scene, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> command = command_;
        command.insert(command.end(), more.begin(), more.end());
        command.insert(command.end(), {"--", scene.scene, scene.output});
        return command;
    }

private:
    std::vector<std::string> command_;
};

/// Whether the answer says what the files were made from; a dialog's does not.
bool CanBeStamped(const SceneOutcome& outcome)
{
    return outcome.state == SceneState::kExported && outcome.answer.contains("sources");
}

/// One run of a batch.
class BatchRun
{
public:
    BatchRun(const BatchOptions& options, VerbContext& context, BatchScenes scenes)
        : options_(options),
          context_(context),
          scenes_(std::move(scenes)),
          command_(context.given, options.by_dialog),
          stamps_(options.question.folder, CircumstancesOf(context.given, ExporterPath(options.exporter))),
          report_(scenes_.chosen.size(), options.dry_run),
          line_(!options.quiet && ErrorsGoToTerminal() ? &context.err : nullptr,
                TerminalColumns(Stream::kErrors))
    {
        const auto jobs = options.jobs ? static_cast<std::size_t>(*options.jobs) : ProcessorCount();
        jobs_ = std::min(jobs, ProcessPool::Limit());
    }

    void Run()
    {
        for (const std::string& folder : scenes_.unreadable)
            report_.AddFailure(folder);
        report_.AddNotes("", scenes_.notes);
        const std::vector<std::size_t> compared = ScenesToCompare(scenes_);
        if (options_.newer)
            FindWhatIsNewer(compared);
        clashes_ = FindClashes(scenes_, FilesToCompare(compared));
        StartNext();
        while (pool_.Running() > 0 && Interruption() == 0)
        {
            const std::vector<EndedProcess> all_ended = pool_.Wait();
            StartNext(); // before this program looks at what has ended
            for (const EndedProcess& ended : all_ended)
                End(ended);
            DrawProgress(last_, report_.Ended(), scenes_.chosen.size());
        }
        if (Interruption() != 0)
            StopExports();
        RemarkOnStamps(stamps_.Write());
        Finish();
    }

private:
    void Remark(const std::string& note)
    {
        if (!note.empty())
            report_.AddNotes("", {note});
    }

    /// Once.
    void RemarkOnStamps(const Status& written)
    {
        if (!written && !stamp_failed_)
            Remark("the stamps for --newer: " + written.Reason());
        stamp_failed_ = stamp_failed_ || !written;
    }

    /// Why each of the chosen and the compared scenes has to be exported. All their files are read for that, on all
    /// processors that exports may use.
    void FindWhatIsNewer(const std::vector<std::size_t>& compared)
    {
        Remark(stamps_.Read());
        std::vector<std::size_t> asked;
        std::ranges::set_union(scenes_.chosen, compared, std::back_inserter(asked));
        why_.assign(scenes_.all.size(), "it was not looked at");
        std::atomic<std::size_t> next = 0;
        const auto look = [&](const auto& after_each)
        {
            for (std::size_t place = 0; (place = next++) < asked.size() && Interruption() == 0;)
            {
                why_[asked[place]] = stamps_.WhyExport(scenes_.all[asked[place]]);
                after_each(place);
            }
        };
        std::vector<std::future<void>> others; // where the system has no thread left: done by get()
        while (others.size() + 1 < std::min({jobs_, ProcessorCount(), asked.size()}))
            others.push_back(std::async(look, [](std::size_t) {}));
        look([&](std::size_t place) { DrawProgress("looking for changes", place + 1, asked.size()); });
        for (std::future<void>& other : others)
            other.get();
    }

    bool IsUpToDate(std::size_t index) const { return options_.newer && why_[index].empty(); }

    /// Starts exports until `jobs_` run, or as many as the system allows.
    void StartNext()
    {
        while (next_ < scenes_.chosen.size() && pool_.Running() < jobs_ && Interruption() == 0 &&
               Start(next_))
            ++next_;
    }

    /// False when it has to wait for the end of others.
    bool Start(std::size_t place)
    {
        const BatchScene& scene = SceneAt(place);
        if (!clashes_[place].empty())
            Add(scene, {.scene = scene.scene, .reasons = {clashes_[place]}});
        else if (IsUpToDate(scenes_.chosen[place]))
            Add(scene, {.scene = scene.scene, .state = SceneState::kUpToDate});
        else if (!options_.by_dialog || MakeFolderOf(scene))
            return StartExport(place);
        DrawProgress(last_, report_.Ended(), scenes_.chosen.size());
        return true;
    }

    bool StartExport(std::size_t place)
    {
        const BatchScene& scene = SceneAt(place);
        started_.resize(scenes_.chosen.size());
        started_[place] = Clock::now();
        const Status started = pool_.Start(place, command_.For(scene));
        if (!started && pool_.Running() > 0)
        {
            jobs_ = std::max<std::size_t>(pool_.Running() - 1, 1); // leaves open files for the stamps
            return false;
        }
        if (!started)
        {
            const std::string why = "its export could not be started: " + started.Reason();
            Add(scene, {.scene = scene.scene, .reasons = {why}});
        }
        return true;
    }

    /// For exports that make none. False when that failed, which is reported.
    bool MakeFolderOf(const BatchScene& scene)
    {
        const std::filesystem::path folder = std::filesystem::path(scene.output).parent_path();
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error)
            Add(scene, {.scene = scene.scene, .reasons = {folder.string() + ": " + error.message()}});
        return !error;
    }

    void End(const EndedProcess& ended)
    {
        const BatchScene& scene = SceneAt(ended.tag);
        if (!ended.crash.empty())
            RemoveParts(scene, ended);
        SceneOutcome outcome = OutcomeOf(scene, ended, options_.takes_optional);
        outcome.seconds = SecondsSince(started_[ended.tag]);
        if (options_.newer && IsExported(outcome))
            outcome.reasons.push_back(why_[scenes_.chosen[ended.tag]]);
        Add(scene, outcome);
    }

    void Add(const BatchScene& scene, const SceneOutcome& outcome)
    {
        report_.Add(outcome);
        last_ = scene.name;
        if (context_.json)
        {
            line_.Erase(); // both may be on one terminal
            context_.out << JsonLine(OutcomeJson(outcome)) << std::flush;
        }
        if (!CanBeStamped(outcome))
            return;
        RemarkOnStamps(stamps_.Record(scene, outcome.answer));
    }

    /// Ends what still runs. Scenes that were not finished are as before.
    void StopExports()
    {
        for (const EndedProcess& ended : pool_.Stop())
            RemoveParts(SceneAt(ended.tag), ended);
    }

    /// What a process that did not end by itself was writing.
    static void RemoveParts(const BatchScene& scene, const EndedProcess& ended)
    {
        const std::filesystem::path folder = std::filesystem::path(scene.output).parent_path();
        TEV2_LOADER::RemovePartFiles(folder.string(), ended.id);
    }

    /// The files that exports of these scenes would write.
    FilesOfScenes FilesToCompare(const std::vector<std::size_t>& compared)
    {
        FilesOfScenes files;
        std::size_t next = 0;
        while ((next < compared.size() || pool_.Running() > 0) && Interruption() == 0)
        {
            while (next < compared.size() && pool_.Running() < jobs_ && AskForFiles(compared[next], files))
                ++next;
            if (pool_.Running() > 0)
                for (const EndedProcess& ended : pool_.Wait())
                    files[ended.tag] = FilesIn(ended.out);
            DrawProgress("comparing takes", files.size(), compared.size());
        }
        pool_.Stop();
        return files;
    }

    /// False when it has to wait for the end of others.
    bool AskForFiles(std::size_t index, FilesOfScenes& files)
    {
        const BatchScene& scene = scenes_.all[index];
        if (IsUpToDate(index))
            files[index] = stamps_.FilesOf(scene);
        else if (!pool_.Start(index, command_.For(scene, {"--dry-run"})))
            return pool_.Running() == 0; // its export will say why
        return true;
    }

    static std::vector<std::string> FilesIn(const std::string& answer)
    {
        std::vector<std::string> paths;
        if (const Json read = Json::parse(answer, nullptr, false); read.is_object() && read.contains("files"))
            for (const Json& file : read.at("files"))
                paths.push_back(PathIn(file, "output"));
        return paths;
    }

    /// Of what was done last, and how many scenes are done.
    void DrawProgress(const std::string& name, std::size_t done, std::size_t scenes)
    {
        if (!line_.IsDue() || done == 0)
            return;
        ProgressText text;
        text.name = name;
        text.file = done;
        text.files = scenes;
        text.part = static_cast<double>(text.file) / static_cast<double>(text.files);
        text.failed = report_.Failed();
        text.seconds_left = SecondsLeft(SecondsSince(start_), text.part);
        line_.Draw(text);
    }

    void Finish()
    {
        line_.Erase();
        const bool interrupted = Interruption() != 0;
        // Of a part it is no failure: others may have the takes.
        if (options_.question.shard.count == 1 && report_.NoSceneHasTheTake())
            report_.AddFailure("no scene has a take that --take asks for");
        const double seconds = SecondsSince(start_);
        if (context_.json)
            context_.out << JsonLine(report_.SummaryJson(seconds, interrupted));
        else if (!options_.quiet)
            report_.Print(context_.out, OutputColumns(), seconds);
        context_.out << std::flush;
        for (const std::string& failure : report_.Failures())
            context_.Complain(failure, kExitFindings);
        if (interrupted)
        {
            context_.Complain("interrupted: files are whole, old or new", kExitFindings);
            context_.err << std::flush;
            EndInterrupted();
        }
    }

    const BatchScene& SceneAt(std::size_t place) const { return scenes_.all[scenes_.chosen[place]]; }

    const BatchOptions& options_;
    VerbContext& context_;
    BatchScenes scenes_;
    SceneCommand command_;
    BatchStamps stamps_;
    bool stamp_failed_ = false;
    BatchReport report_;
    DrawnProgress line_;
    ProcessPool pool_;
    std::size_t jobs_ = 1;
    std::size_t next_ = 0;             ///< place in the chosen scenes
    std::vector<std::string> why_;     ///< with --newer, of each scene in `all`: why it is not up to date
    std::vector<std::string> clashes_; ///< of each place
    std::vector<Clock::time_point> started_;
    std::string last_; ///< name of the scene that ended last
    Clock::time_point start_ = Clock::now();
};

} // namespace

std::vector<OptionRow> BatchExportOptions(BatchOptions& options)
{
    std::vector<OptionRow> rows = {
        {.name = "-o,--output",
         .value = &options.question.folder,
         .help =
             "Export all SCENEs into this folder: files, folders (the scenes in them) and wildcards; what is "
             "below a folder has the same place below this one",
         .check = NotEmpty,
         .files = "/"},
        {.name = "-j,--jobs",
         .value = &options.jobs,
         .help = "With -o: how many scenes are exported at a time (default: the number of processors)",
         .range = std::pair(1, static_cast<int>(ProcessPool::Limit()))},
        {.name = "--newer",
         .value = &options.newer,
         .help =
             "With -o: skip scenes whose export is up to date: scene, options, this command and the files "
             "are those of the last time"},
    };
    for (OptionRow& row : BatchSceneOptions(options.question))
        rows.push_back(std::move(row));
    return rows;
}

void ExportBatch(const BatchOptions& options, VerbContext& context)
{
    BatchScenes scenes;
    if (const Status found = FindScenes(options.question, scenes); !found)
    {
        context.Complain(found.Reason(), kExitCouldNotRun);
        if (context.json)
            context.out << JsonLine({{"error", found.Reason()}});
        return;
    }
    CatchInterruptions();
    BatchRun(options, context, std::move(scenes)).Run();
}

} // namespace tv2
