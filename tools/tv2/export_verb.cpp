#include "tools/tv2/dialog_export.h"
#include "tools/tv2/export_check.h"
#include "tools/tv2/export_plan.h"
#include "tools/tv2/export_report.h"
#include "tools/tv2/exporter_module.h"
#include "tools/tv2/progress_bar.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include "host/scene_import/scene_import.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace
{

using ScriptEntry = unsigned(const char* path, int start_frame, int end_frame, int fps,
                             bool spaces_to_underscores, bool keep_positive_z, bool remove_namespace,
                             bool disable_constraints, bool export_all_keys, bool all_takes);

constexpr const char* kEntryName = "python_export_tv2";

struct ExportVerbOptions
{
    ExportRequest request;
    std::string plugin;
    bool dialog = false;
    std::string dialog_script; ///< empty: the window
    bool quiet = false;
    bool json = false;
};

/// Why the options of the command line do not go with the dialog; empty when they do.
std::string OptionsOfTheDialog(const CLI::App& verb)
{
    for (const char* const name :
         {"--fps", "--start-frame", "--end-frame", "--all-takes", "--spaces-to-underscores",
          "--keep-positive-z", "--remove-namespace", "--disable-constraints"})
    {
        if (verb.get_option(name)->count() > 0)
        {
            return std::string(name) + " is decided in the dialog: leave it out, or leave the dialog out";
        }
    }
    return {};
}

/// One run of the verb, from the scene file to the report.
class ExportRun
{
public:
    ExportRun(const ExportVerbOptions& options, VerbContext& context)
        : options_(options), request_(options.request), context_(context)
    {
    }

    /// With a reason why the options do not go together, or none.
    void Run(const std::string& bad_usage)
    {
        report_.error = !bad_usage.empty() ? bad_usage : options_.dialog ? UseDialog() : UseScriptEntry();
        if (!report_.error.empty())
        {
            Complain(report_.error, kExitCouldNotRun);
        }
        for (const ExportReport::File& file : report_.files)
        {
            if (!file.exported.error.empty())
            {
                Complain(OneLine(file.planned.path) + ": " + file.exported.error, kExitFindings);
            }
        }
        Print();
    }

private:
    /// Both export, or give a reason why nothing was started.
    std::string UseScriptEntry()
    {
        std::string reason = OfScene(CheckRequest(request_));
        if (reason.empty())
        {
            reason = OpenScene();
        }
        if (reason.empty())
        {
            reason = OfScene(PlanExport(request_, plan_));
        }
        if (reason.empty())
        {
            reason = OfScene(CheckTargets(request_, plan_));
        }
        if (reason.empty())
        {
            reason = LoadEntry();
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
        DialogExportResult result = ExportByDialog(request_, options_.plugin, options_.dialog_script);
        report_ = std::move(result.report);
        for (const std::string& failure : result.failures)
        {
            Complain(failure, kExitFindings);
        }
        if (report_.cancelled.value_or(false))
        {
            Complain("cancelled: nothing exported", kExitFindings);
        }
        return report_.error;
    }

    /// A reason not to export, with the scene's path; empty when there is none.
    std::string OfScene(const std::string& reason) const
    {
        return reason.empty() ? std::string() : OneLine(request_.scene) + ": " + reason;
    }

    void Complain(const std::string& what, ExitCode code)
    {
        context_.err << "tv2 export: " << what << '\n';
        context_.Report(code);
    }

    std::string OpenScene()
    {
        const mobu_host::SceneImportResult scene = mobu_host::ImportScene(request_.scene);
        report_.notes = scene.notes;
        return scene.ok ? std::string() : scene.error;
    }

    std::string LoadEntry()
    {
        std::string error;
        plugin_ = LoadExporter(options_.plugin, error);
        if (!plugin_)
        {
            return error;
        }
        entry_ = plugin_->Symbol<ScriptEntry>(kEntryName);
        return entry_ ? std::string() : plugin_->Path() + " is no exporter: it has no " + kEntryName;
    }

    void Export()
    {
        std::vector<FileStamp> before;
        for (const PlannedFile& file : plan_.files)
        {
            before.push_back(FileStamp::Of(file.path));
        }
        const bool show = !options_.quiet && ErrorsGoToTerminal();
        ExportWatch watch(plan_, show ? &context_.err : nullptr);
        const unsigned result =
            entry_(request_.output.c_str(), plan_.start_frame, plan_.end_frame, plan_.fps,
                   request_.spaces_to_underscores, request_.keep_positive_z, request_.remove_namespace,
                   request_.disable_constraints, plan_.whole_take, request_.all_takes);
        watch.Finish();

        for (std::size_t i = 0; i < plan_.files.size(); ++i)
        {
            report_.files.push_back({plan_.files[i], CheckExportedFile(plan_.files[i], plan_, before[i]),
                                     plan_.fps, watch.Seconds(i)});
        }
        if (result != 1)
        {
            Complain("the exporter gave up before its last file", kExitFindings);
        }
    }

    void Print() const
    {
        if (options_.json)
        {
            context_.out << ReportJson(request_.scene, report_)
                                .dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                         << '\n';
        }
        else if (!options_.quiet && report_.error.empty())
        {
            PrintReport(context_.out, report_);
        }
    }

    const ExportVerbOptions& options_;
    const ExportRequest& request_;
    VerbContext& context_;
    ExportReport report_;
    ExportPlan plan_;
    std::unique_ptr<mobu_host::Plugin> plugin_;
    ScriptEntry* entry_ = nullptr;
};

} // namespace

void AddExportVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<ExportVerbOptions>();
    ExportRequest& request = options->request;
    CLI::App* verb = app.add_subcommand("export", "Exports a scene (FBX, BVH, glTF, Collada) to .tv2 files");
    verb->add_option("SCENE", request.scene, "The scene file")->required();
    verb->add_option("OUTPUT", request.output,
                     "The file to write, ending in .tv2; with --all-takes the pattern of the names: "
                     "out.tv2 gives out_<take>.tv2, a bare .tv2 gives <take>.tv2")
        ->required();
    const CLI::Validator given(
        [](const std::string& value) { return value.empty() ? std::string("is empty") : std::string(); }, "");
    verb->add_option("--fps", request.fps, "Samples a second (default: the scene's transport rate, rounded)")
        ->check(given);
    verb->add_option("--start-frame", request.start_frame,
                     "First frame, counted at the transport rate (default: of the take)")
        ->check(given);
    verb->add_option("--end-frame", request.end_frame,
                     "Last frame, counted at the transport rate (default: of the take)")
        ->check(given);
    CLI::Option* take =
        verb->add_option("--take", request.take, "Export this take (default: the first)")->check(given);
    verb->add_flag("--all-takes", request.all_takes, "Export every take, each to a file of its own")
        ->excludes(take);
    verb->add_option("--select", request.select,
                     "Export this model and what is below it, by its long name; may be given more than once "
                     "(default: the whole scene)")
        ->allow_extra_args(false);
    verb->add_flag("--spaces-to-underscores,!--no-spaces-to-underscores", request.spaces_to_underscores,
                   "Replace spaces in file names (on)");
    verb->add_flag("--keep-positive-z,!--no-keep-positive-z", request.keep_positive_z,
                   "Turn the scene so that its Z axis keeps its sign (on)");
    verb->add_flag("--remove-namespace,!--no-remove-namespace", request.remove_namespace,
                   "Write node names without their namespaces (on)");
    verb->add_flag("--disable-constraints", request.disable_constraints, "Export with constraints inactive");
    verb->add_flag("--yes", request.overwrite_read_only, "Over-write read-only files without asking");
    verb->add_option("--plugin", options->plugin,
                     "The exporter's module (default: the one beside this command)");
    verb->add_flag("--dialog", options->dialog,
                   "Ask for the options as MotionBuilder does: in the exporter's own dialog, which "
                   "remembers them");
    verb->add_option(
            "--dialog-script", options->dialog_script,
            "Play the steps of this file to the dialog instead of showing it: click \"REGION\", edit "
            "\"REGION\" NUMBER, move LEFT TOP, close")
        ->check(given);
    verb->add_flag("--quiet", options->quiet, "Print nothing but errors");
    verb->add_flag("--json", options->json,
                   "Print JSON: an object with one entry of \"files\" for each file");
    verb->footer(
        "Examples:\n"
        "  tv2 export walk.bvh walk.tv2\n"
        "  tv2 export --all-takes --fps 60 robot.glb robot.tv2\n"
        "  tv2 export --select Hips --start-frame 10 --end-frame 60 walk.bvh hips.tv2\n"
        "  tv2 export --dialog --take Dance robot.glb dance.tv2\n"
        "  tv2 export --dialog-script steps.txt robot.glb robot.tv2\n"
        "A file counts as exported when it has been read back whole. Exit code: 0 every file was; 1 at least "
        "one was not, or was skipped as read-only, or the dialog was cancelled; 2 nothing was started.");
    verb->callback(
        [options, verb, &context]
        {
            options->dialog = options->dialog || !options->dialog_script.empty();
            ExportRun(*options, context).Run(options->dialog ? OptionsOfTheDialog(*verb) : std::string());
        });
}
