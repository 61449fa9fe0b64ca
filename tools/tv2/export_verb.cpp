#include "tools/tv2/batch_export.h"
#include "tools/tv2/dialog_export.h"
#include "tools/tv2/every_key_export.h"
#include "tools/tv2/export_check.h"
#include "tools/tv2/export_report.h"
#include "tools/tv2/export_scene.h"
#include "tools/tv2/export_watch.h"
#include "tools/tv2/exporter_module.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include "exporter/base/option_table.h"
#include "exporter/rules/sampling_rate.h"
#include "host/export_run/export_run.h"
#include "host/import/formats.h"
#include "text/wildcard.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace tv2
{

using tev2_exporter::CallOfPlan;
using tev2_exporter::ExportPlan;
using tev2_exporter::FilePlan;
using tev2_exporter::Option;
using TEV2_LOADER::Status;

namespace
{

struct ExportVerbOptions
{
    ExportRequest request;
    std::string plugin;
    bool dialog = false;
    std::string dialog_script; ///< empty: the window
    std::string
        settings;        ///< of the dialog: "stored", "none" or empty, which means stored for the window only
    bool report = false; ///< of what key reduction cost
    bool quiet = false;
    std::vector<std::string> arguments; ///< SCENE OUTPUT, or the inputs of a batch
    BatchOptions batch;                 ///< with a folder it is one
};

/// One run of the verb, from the scene file to the report.
class ExportRun
{
public:
    ExportRun(const ExportVerbOptions& options, VerbContext& context)
        : options_(options), request_(options.request), context_(context)
    {
    }

    void Run()
    {
        const bool dialog = options_.dialog || !options_.dialog_script.empty();
        report_.error = (dialog ? UseDialog() : UseScriptEntry()).Reason();
        report_.code = request_.refusal;
        report_.sources = request_.sources;
        report_.dry_run = request_.dry_run;
        if (!report_.error.empty())
            Complain(report_.error, request_.dry_run ? kExitFindings : kExitCouldNotRun);
        for (const ExportReport::File& file : report_.files)
        {
            if (!file.exported.error.empty())
                Complain(file.planned.path + ": " + file.exported.error, kExitFindings);
            if (file.reduction && !file.reduction->error.empty())
            {
                Complain(file.planned.path + ": exported, but what key reduction cost was not measured: " +
                             file.reduction->error,
                         kExitFindings);
            }
        }
        Print();
    }

private:
    // Both export, or fail when nothing was started.

    Status UseScriptEntry()
    {
        if (Status checked = CheckRequest(request_); !checked)
            return checked;
        if (Status opened = OpenScene(request_, report_.notes); !opened)
            return opened;
        if (Status prepared = PrepareScene(request_, report_.notes); !prepared)
            return prepared;
        const tev2_exporter::SceneFacts scene = FactsOf(request_);
        plan_ = tev2_exporter::PlanExport(request_.question, &scene);
        if (Status allowed = StatusOf(request_, plan_.objection); !allowed)
            return allowed;
        if (request_.dry_run)
        {
            ListFiles();
            return {};
        }
        std::string error;
        const auto exporter = mobu_host::Exporter::Load(ExporterPath(options_.plugin), error);
        if (!exporter)
            return Status::Failure(error);
        if (Status made = request_.question.make_folders ? MakeFolders(plan_.files) : Status(); !made)
            return made;
        if (Status writable = request_.overwrite_read_only ? MakeTargetsWritable(plan_.files) : Status();
            !writable)
            return writable;
        Export(*exporter);
        return {};
    }

    /// What the plan would write.
    void ListFiles()
    {
        const auto rate = static_cast<double>(static_cast<float>(plan_.call.rate));
        for (const FilePlan& file : plan_.files)
            report_.files.push_back(
                {file, PlannedFile(file, plan_, request_.overwrite_read_only), rate, std::nullopt});
        report_.notes.insert(report_.notes.end(), plan_.notes.begin(), plan_.notes.end());
    }

    Status UseDialog()
    {
        const bool stored =
            options_.settings.empty() ? options_.dialog_script.empty() : options_.settings == "stored";
        DialogExportResult result =
            ExportByDialog(request_, options_.plugin, {options_.dialog_script, stored});
        report_ = std::move(result.report);
        if (options_.report && !report_.files.empty())
        {
            std::string error;
            const auto exporter = mobu_host::Exporter::Load(ExporterPath(options_.plugin), error);
            if (!exporter)
                return Status::Failure(error);
            MeasureReductions(*exporter, result.choices, report_, ProgressTerminal());
        }
        for (const std::string& failure : result.failures)
            Complain(failure, kExitFindings);
        if (report_.cancelled.value_or(false))
        {
            const std::string& why = report_.why_cancelled;
            Complain("cancelled" + (why.empty() ? "" : " by the dialog: " + why) + ": nothing exported",
                     kExitFindings);
        }
        return report_.error.empty() ? Status() : Status::Failure(report_.error);
    }

    /// Runs the calls one after the other; false with the first reason when one of them was not completed.
    static bool RunCalls(const mobu_host::Exporter& exporter, const std::vector<CallOfPlan>& calls,
                         std::string& error)
    {
        bool completed = true;
        for (const CallOfPlan& call : calls)
        {
            std::string reason;
            if (call.take)
                FBSystem().CurrentTake = mobu_host::Scene().Takes[static_cast<int>(*call.take)];
            const bool done = exporter.Run(call.call, reason);
            error = completed && !done ? reason : error;
            completed = completed && done;
        }
        return completed;
    }

    void Complain(const std::string& what, ExitCode code) { context_.Complain(what, code); }

    void Export(const mobu_host::Exporter& exporter)
    {
        std::vector<FileStamp> before;
        for (const FilePlan& file : plan_.files)
            before.push_back(FileStamp::Of(file.path));
        ExportWatch watch(plan_.files, ProgressTerminal(), TerminalColumns(Stream::kErrors));
        std::string error;
        const bool completed = RunCalls(exporter, tev2_exporter::CallsOf(request_.question, plan_), error);
        watch.Finish();

        const auto rate = static_cast<double>(static_cast<float>(plan_.call.rate));
        for (std::size_t i = 0; i < plan_.files.size(); ++i)
        {
            report_.files.push_back({plan_.files[i], CheckExportedFile(plan_.files[i], plan_, before[i]),
                                     rate, watch.Seconds(i)});
        }
        report_.notes.insert(report_.notes.end(), plan_.notes.begin(), plan_.notes.end());
        if (options_.report)
            MeasureReductions(exporter, plan_.call, report_, ProgressTerminal());
        if (!completed)
            Complain(error.empty() ? "the exporter gave up before its last file" : error, kExitFindings);
    }

    /// Where progress is drawn; null for nowhere.
    std::ostream* ProgressTerminal() const
    {
        return !options_.quiet && ErrorsGoToTerminal() ? &context_.err : nullptr;
    }

    void Print() const
    {
        if (context_.json)
            context_.out << JsonAnswer(ReportJson(request_.scene, report_));
        else if (!options_.quiet && report_.error.empty())
            PrintReport(context_.out, report_, OutputColumns());
    }

    const ExportVerbOptions& options_;
    ExportRequest request_;
    VerbContext& context_;
    ExportReport report_;
    ExportPlan plan_;
};

class ExportVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        ExportRequest& request = options_.request;
        tev2_exporter::ExportQuestion& question = request.question;
        std::vector<OptionRow> rows = {
            SceneArguments(),
            {.name = CommandLineName(Option("fps")),
             .value = &question.rate,
             .help = std::string(Option("fps").help) + ": " + tev2_exporter::kRatesThatAreUnderstood,
             .check = IsRate},
            SceneRateOption(request.scene_rate),
            ValueOption(Option("start_frame"), &question.start_frame),
            ValueOption(Option("end_frame"), &question.end_frame),
            {.name = "--take",
             .value = &request.takes,
             .help = "Export this take, or those that a wildcard matches (\"walk*\"); may be given more than "
                     "once. One name keeps OUTPUT as it is, otherwise files are named as with --all-takes "
                     "(default: the take that is current in the scene)",
             .check = NotEmpty},
            {.name = CommandLineName(kAllTakes),
             .value = &question.flags.all_takes,
             .help = kAllTakes.help,
             .excludes = "--take"},
            {.name = "--select",
             .value = &request.select,
             .help = "Export this model and what is below it, by its long name; may be given more than once "
                     "(default: the whole scene)"},
        };
        for (const tev2_exporter::ExportOption& box : tev2_exporter::kCheckBoxes)
            if (box.help)
                rows.push_back(CheckBoxOption(box, question.flags));
        for (OptionRow& row : OptionsOfTheCommand())
            rows.push_back(std::move(row));
        for (OptionRow& row : BatchExportOptions(options_.batch))
            rows.push_back(std::move(row));
        return rows;
    }

    std::string Refusal(const std::set<std::string>& given) const override
    {
        const std::string refusal =
            options_.batch.question.folder.empty() ? RefusalOfOne(given) : RefusalOfBatch();
        return refusal.empty() ? RefusalOfDialog(given) : refusal;
    }

    void Run(VerbContext& context) override
    {
        SurviveClosedPipes();
        BatchOptions& batch = options_.batch;
        if (batch.question.folder.empty())
        {
            options_.request.scene = options_.arguments[0];
            options_.request.question.path = options_.arguments[1];
            options_.request.hash_sources = context.json;
            ExportRun(options_, context).Run();
            return;
        }
        batch.question.inputs = options_.arguments;
        batch.question.spaces_to_underscores = options_.request.question.flags.spaces_to_underscores;
        const std::vector<std::string>& takes = options_.request.takes;
        batch.question.takes_name_files = options_.request.question.flags.all_takes || takes.size() > 1 ||
                                          (takes.size() == 1 && Wildcard(takes.front()).HasWildcards());
        batch.takes_optional = !takes.empty();
        batch.dry_run = options_.request.dry_run;
        batch.by_dialog = !options_.dialog_script.empty();
        batch.quiet = options_.quiet;
        batch.exporter = options_.plugin;
        ExportBatch(batch, context);
    }

private:
    static constexpr const tev2_exporter::ExportOption& kAllTakes = Option("all_takes");

    OptionRow SceneArguments()
    {
        OptionRow row = SceneFileOption(options_.request.scene, mobu_host::SceneExtensions());
        row.value = &options_.arguments;
        row.help = "The scene file and OUTPUT, the file to write, ending in .tv2; with --all-takes the "
                   "pattern of the "
                   "names: out.tv2 gives out_<take>.tv2, a bare .tv2 gives <take>.tv2. With -o scenes alone";
        row.files += ".tv2";
        return row;
    }

    /// Why the arguments are not those of a single export.
    std::string RefusalOfOne(const std::set<std::string>& given) const
    {
        for (const char* const option : {"--jobs", "--newer", "--recursive", "--shard"})
            if (given.contains(option))
                return std::string(option) + " is for batches: give -o FOLDER as well";
        if (options_.arguments.size() < 2)
            return "OUTPUT is required, or -o FOLDER";
        if (options_.arguments.size() > 2)
            return "one argument too many: \"" + options_.arguments.back() +
                   "\" (-o FOLDER exports several scenes)";
        return {};
    }

    std::string RefusalOfBatch() const
    {
        if (options_.dialog && options_.dialog_script.empty())
            return "--dialog is for one scene: leave it out, or give --dialog-script";
        const std::string& folder = options_.batch.question.folder;
        std::error_code error;
        if (folder.ends_with(".tv2") && !std::filesystem::is_directory(folder, error))
            return "-o names a folder: leave it out to name the file";
        tev2_exporter::ExportQuestion question = options_.request.question;
        question.path = "any.tv2";
        return tev2_exporter::PlanExport(question, nullptr).objection.text;
    }

    std::string RefusalOfDialog(const std::set<std::string>& given) const
    {
        const bool dialog = options_.dialog || !options_.dialog_script.empty();
        const auto needs_no_dialog = [&](const char* name)
        {
            return dialog && given.contains(name) ? std::string(name) + " works without the dialog only"
                                                  : std::string();
        };
        for (const char* name : {"--no-clobber", "--make-folders", "--dry-run"})
            if (std::string why = needs_no_dialog(name); !why.empty())
                return why;
        if (!dialog)
        {
            return options_.settings.empty()
                       ? ""
                       : "--settings are the dialog's: give --dialog or --dialog-script as well";
        }
        for (const tev2_exporter::ExportOption& option : tev2_exporter::kExportOptions)
        {
            const std::string name = CommandLineName(option);
            if (given.contains(name))
                return name + " is decided in the dialog: leave it out, or leave the dialog out";
        }
        return {};
    }

    static std::string IsRate(const std::string& text)
    {
        if (text.empty())
            return NotEmpty(text);
        return tev2_exporter::RateOfText(text, 1.0)
                   ? ""
                   : Quoted(text) + " is not a rate: give " + tev2_exporter::kRatesThatAreUnderstood;
    }

    template <typename Value>
    static OptionRow ValueOption(const tev2_exporter::ExportOption& option, Value* value)
    {
        return {.name = CommandLineName(option), .value = value, .help = option.help, .check = NotEmpty};
    }

    static OptionRow CheckBoxOption(const tev2_exporter::ExportOption& box, tev2_exporter::ExportFlags& flags)
    {
        bool& flag = flags.*box.flag;
        return {.name = "--[no-]" + CommandLineName(box).substr(2),
                .value = &flag,
                .help = std::string(box.help) + (flag ? " (on)" : " (off)")};
    }

    std::vector<OptionRow> OptionsOfTheCommand()
    {
        return {
            {.name = "--yes",
             .value = &options_.request.overwrite_read_only,
             .help = "Overwrite read-only files without asking"},
            {.name = "--no-clobber",
             .value = &options_.request.question.keep_existing,
             .help = "Keep files that exist, and export the others"},
            {.name = "--make-folders",
             .value = &options_.request.question.make_folders,
             .help = "Make the folders of OUTPUT that are missing"},
            {.name = "--dry-run",
             .value = &options_.request.dry_run,
             .help =
                 "Open the scene and list the files that would be written, with the reason for those that "
                 "would not; write nothing"},
            ExporterOption(options_.plugin),
            {.name = "--dialog",
             .value = &options_.dialog,
             .help = "Ask for the options as MotionBuilder does: in the exporter's own dialog, which "
                     "remembers them"},
            {.name = "--dialog-script",
             .value = &options_.dialog_script,
             .help = "Play the steps of this file to the dialog instead of showing it: click \"REGION\", set "
                     "\"REGION\" on|off, edit \"REGION\" NUMBER, move LEFT TOP, close",
             .check = NotEmpty,
             .files = "*"},
            {.name = "--settings",
             .value = &options_.settings,
             .help =
                 "Where the dialog's settings come from and go to: \"stored\" are those of the last time, "
                 "\"none\" are the defaults, and nothing is stored (default: stored for --dialog, none for "
                 "--dialog-script)",
             .one_of = {"stored", "none"}},
            {.name = "--report",
             .value = &options_.report,
             .help =
                 "Also say what key reduction cost: the error of each node's world pose, by exporting once "
                 "more with every key into a temporary file"},
            {.name = "--quiet", .value = &options_.quiet, .help = "Print nothing but errors"},
        };
    }

    ExportVerbOptions options_;
};

const std::string kExportHelp =
    "Exports a scene file (" + mobu_host::ReadableFormats(", ") + ") to .tv2 files";

const VerbRegistration kExportVerb({
    .name = "export",
    .place = 10,
    .help = kExportHelp,
    .examples = "tv2 export walk.bvh walk.tv2\n"
                "tv2 export --all-takes --fps 60 robot.glb robot.tv2\n"
                "tv2 export --select Hips --start-frame 10 --end-frame 60 walk.bvh hips.tv2\n"
                "tv2 export --report walk.bvh walk.tv2\n"
                "tv2 export -j 4 --recursive scenes -o out\n"
                "tv2 export --newer --all-takes 'scenes/*.fbx' -o out\n"
                "tv2 export --dialog --take Dance robot.glb dance.tv2\n"
                "tv2 export --dialog-script steps.txt robot.glb robot.tv2",
    .remarks =
        "A file counts as exported when it has been read back whole. Exit code: 0: every file was; 1: at "
        "least "
        "one was not, or was skipped as read-only, or the dialog was cancelled; 2: nothing was started.",
    .json_help =
        "Print JSON: an object with one entry of \"files\" for each file; with -o one on a line for each "
        "scene, and one with the sums",
    .writes_files = true,
    .has_config = true,
    .make = Make<ExportVerb>,
});

} // namespace

} // namespace tv2
