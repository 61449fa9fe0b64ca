#include "tools/tv2/dialog_export.h"
#include "tools/tv2/export_check.h"
#include "tools/tv2/export_plan.h"
#include "tools/tv2/export_report.h"
#include "tools/tv2/exporter_module.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/progress_bar.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include "exporter/rules/sampling_rate.h"
#include "host/export_run/export_run.h"

#include <memory>

namespace tv2
{

namespace
{

struct ExportVerbOptions
{
    ExportRequest request;
    std::string plugin;
    bool dialog = false;
    std::string dialog_script; ///< empty: the window
    std::string settings; ///< of the dialog: "stored", "none" or empty, which is stored for the window alone
    bool quiet = false;
};

mobu_host::ExportCall CallOf(const ExportRequest& request, const ExportPlan& plan)
{
    mobu_host::ExportCall call;
    call.path = OutputForExporter(request);
    call.rate = plan.rate;
    call.whole_take = plan.whole_take;
    call.start_frame = plan.start_frame;
    call.end_frame = plan.end_frame;
    call.spaces_to_underscores = request.spaces_to_underscores;
    call.keep_positive_z = request.keep_positive_z;
    call.remove_namespace = request.remove_namespace;
    call.disable_constraints = request.disable_constraints;
    call.all_takes = request.all_takes;
    return call;
}

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
        report_.error = dialog ? UseDialog() : UseScriptEntry();
        if (!report_.error.empty())
        {
            Complain(report_.error, kExitCouldNotRun);
        }
        for (const ExportReport::File& file : report_.files)
        {
            if (!file.exported.error.empty())
            {
                Complain(file.planned.path + ": " + file.exported.error, kExitFindings);
            }
        }
        Print();
    }

private:
    /// Both export, or give a reason why nothing was started.
    std::string UseScriptEntry()
    {
        std::string reason = OfScene(request_, CheckRequest(request_));
        if (reason.empty())
        {
            reason = OpenScene(request_, report_.notes);
        }
        if (reason.empty())
        {
            reason = OfScene(request_, PlanExport(request_, plan_));
        }
        if (reason.empty())
        {
            reason = LoadPlugin();
        }
        if (reason.empty() && request_.overwrite_read_only)
        {
            reason = MakeTargetsWritable(plan_);
        }
        if (reason.empty())
        {
            Export();
        }
        return reason;
    }

    std::string UseDialog()
    {
        const bool stored =
            options_.settings.empty() ? options_.dialog_script.empty() : options_.settings == "stored";
        DialogExportResult result =
            ExportByDialog(request_, options_.plugin, {options_.dialog_script, stored});
        report_ = std::move(result.report);
        for (const std::string& failure : result.failures)
        {
            Complain(failure, kExitFindings);
        }
        if (report_.cancelled.value_or(false))
        {
            report_.why_cancelled = result.why_cancelled;
            Complain("cancelled" +
                         (result.why_cancelled.empty() ? "" : " by the dialog: " + result.why_cancelled) +
                         ": nothing exported",
                     kExitFindings);
        }
        return report_.error;
    }

    void Complain(const std::string& what, ExitCode code) { context_.Complain(what, code); }

    std::string LoadPlugin()
    {
        std::string error;
        exporter_ = mobu_host::Exporter::Load(ExporterPath(options_.plugin), error);
        return error;
    }

    void Export()
    {
        std::vector<FileStamp> before;
        for (const PlannedFile& file : plan_.files)
        {
            before.push_back(FileStamp::Of(file.path));
        }
        const bool show = !options_.quiet && ErrorsGoToTerminal();
        ExportWatch watch(plan_, show ? &context_.err : nullptr, TerminalColumns(Stream::kErrors));
        std::string error;
        const bool completed = exporter_->Run(CallOf(request_, plan_), error);
        watch.Finish();

        for (std::size_t i = 0; i < plan_.files.size(); ++i)
        {
            report_.files.push_back({plan_.files[i], CheckExportedFile(plan_.files[i], plan_, before[i]),
                                     static_cast<double>(static_cast<float>(plan_.rate)), watch.Seconds(i)});
        }
        report_.notes.insert(report_.notes.end(), plan_.notes.begin(), plan_.notes.end());
        if (!completed)
        {
            Complain(error.empty() ? "the exporter gave up before its last file" : error, kExitFindings);
        }
    }

    void Print() const
    {
        if (context_.json)
        {
            context_.out << JsonAnswer(ReportJson(request_.scene, report_));
        }
        else if (!options_.quiet && report_.error.empty())
        {
            PrintReport(context_.out, report_, OutputColumns());
        }
    }

    const ExportVerbOptions& options_;
    ExportRequest request_;
    VerbContext& context_;
    ExportReport report_;
    ExportPlan plan_;
    std::unique_ptr<mobu_host::Exporter> exporter_;
};

} // namespace

namespace
{

class ExportVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        ExportRequest& request = options_.request;
        return {
            SceneFileOption(request.scene),
            {.name = "OUTPUT",
             .value = &request.output,
             .help = "The file to write, ending in .tv2; with --all-takes the pattern of the names: out.tv2 "
                     "gives "
                     "out_<take>.tv2, a bare .tv2 gives <take>.tv2",
             .required = true},
            {.name = "--fps",
             .value = &request.rate,
             .help = std::string("Samples per second (default: scene, the scene's transport rate): ") +
                     tev2_exporter::kRatesThatAreUnderstood,
             .check = NotEmpty},
            SceneRateOption(request.scene_rate),
            {.name = "--start-frame",
             .value = &request.start_frame,
             .help = "First frame, counted at the transport rate (default: of the take)",
             .check = NotEmpty},
            {.name = "--end-frame",
             .value = &request.end_frame,
             .help = "Last frame, counted at the transport rate (default: of the take)",
             .check = NotEmpty},
            {.name = "--take",
             .value = &request.take,
             .help = "Export this take (default: the one that is current in the scene)",
             .check = NotEmpty},
            {.name = "--all-takes",
             .value = &request.all_takes,
             .help = "Export every take, each to a file of its own",
             .excludes = "--take"},
            {.name = "--select",
             .value = &request.select,
             .help = "Export this model and what is below it, by its long name; may be given more than once "
                     "(default: "
                     "the whole scene)"},
            {.name = "--[no-]spaces-to-underscores",
             .value = &request.spaces_to_underscores,
             .help = "Replace spaces in file names (on)"},
            {.name = "--[no-]keep-positive-z",
             .value = &request.keep_positive_z,
             .help = "Turn the scene so that its Z axis keeps its sign (on)"},
            {.name = "--[no-]remove-namespace",
             .value = &request.remove_namespace,
             .help = "Write node names without their namespaces (on)"},
            {.name = "--[no-]disable-constraints",
             .value = &request.disable_constraints,
             .help = "Export with constraints inactive (off)"},
            {.name = "--yes",
             .value = &request.overwrite_read_only,
             .help = "Overwrite read-only files without asking"},
            ExporterOption(options_.plugin),
            {.name = "--dialog",
             .value = &options_.dialog,
             .help = "Ask for the options as MotionBuilder does: in the exporter's own dialog, which "
                     "remembers them"},
            {.name = "--dialog-script",
             .value = &options_.dialog_script,
             .help = "Play the steps of this file to the dialog instead of showing it: click \"REGION\", set "
                     "\"REGION\" "
                     "on|off, edit \"REGION\" NUMBER, move LEFT TOP, close",
             .check = NotEmpty},
            {.name = "--settings",
             .value = &options_.settings,
             .help = "Where the dialog's settings come from and go to: \"stored\" are those of the last "
                     "time, \"none\" "
                     "are the defaults, and nothing is stored (default: stored for --dialog, none for "
                     "--dialog-script)",
             .one_of = {"stored", "none"}},
            {.name = "--quiet", .value = &options_.quiet, .help = "Print nothing but errors"},
        };
    }

    std::string Refusal(const std::set<std::string>& given) const override
    {
        const bool dialog = options_.dialog || !options_.dialog_script.empty();
        if (!dialog)
        {
            return options_.settings.empty()
                       ? ""
                       : "--settings are the dialog's: give --dialog or --dialog-script as well";
        }
        for (const char* const name :
             {"--fps", "--start-frame", "--end-frame", "--all-takes", "--spaces-to-underscores",
              "--keep-positive-z", "--remove-namespace", "--disable-constraints"})
        {
            if (given.contains(name))
            {
                return std::string(name) + " is decided in the dialog: leave it out, or leave the dialog out";
            }
        }
        return {};
    }

    void Run(VerbContext& context) override
    {
        SurviveClosedPipes();
        ExportRun(options_, context).Run();
    }

private:
    ExportVerbOptions options_;
};

const VerbRegistration kExportVerb({
    .name = "export",
    .place = 1,
    .help = "Exports a scene file (FBX, BVH, glTF, Collada) to .tv2 files",
    .examples = "tv2 export walk.bvh walk.tv2\n"
                "tv2 export --all-takes --fps 60 robot.glb robot.tv2\n"
                "tv2 export --select Hips --start-frame 10 --end-frame 60 walk.bvh hips.tv2\n"
                "tv2 export --dialog --take Dance robot.glb dance.tv2\n"
                "tv2 export --dialog-script steps.txt robot.glb robot.tv2",
    .remarks =
        "A file counts as exported when it has been read back whole. Exit code: 0: every file was; 1: at "
        "least "
        "one was not, or was skipped as read-only, or the dialog was cancelled; 2: nothing was started.",
    .json_help = "Print JSON: an object with one entry of \"files\" for each file",
    .writes_files = true,
    .make = Make<ExportVerb>,
});

} // namespace

} // namespace tv2
