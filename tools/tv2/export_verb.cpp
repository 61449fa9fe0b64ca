#include "tools/tv2/export_check.h"
#include "tools/tv2/export_plan.h"
#include "tools/tv2/progress_bar.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include "host/scene_import/scene_import.h"

#include <mobu_host/plugin.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <iomanip>
#include <memory>
#include <sstream>

namespace
{

using ExportJson = nlohmann::ordered_json;
using ScriptEntry = unsigned(const char* path, int start_frame, int end_frame, int fps,
                             bool spaces_to_underscores, bool keep_positive_z, bool remove_namespace,
                             bool disable_constraints, bool export_all_keys, bool all_takes);

constexpr const char* kModuleName = "tv2_motionbuilder_export_tool";
constexpr const char* kEntryName = "python_export_tv2";

struct ExportVerbOptions
{
    ExportRequest request;
    std::string plugin;
    bool quiet = false;
    bool json = false;
};

/// Where the exporter's module is: beside this program in the tree it was built in, or as it was installed.
std::string FindModule()
{
    std::error_code error;
    const std::string module = ModuleFileName(kModuleName);
    const std::filesystem::path prefix = std::filesystem::path(ProgramPath()).parent_path().parent_path();
    const std::filesystem::path built = prefix / "lib/tv2" / module;
    const std::filesystem::path installed =
        prefix / TV2_MODULE_DIR / module; // replaced where that is absolute
    return std::filesystem::exists(built, error) ? built.string() : installed.string();
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
        if (!reason.empty())
        {
            Complain(reason, kExitCouldNotRun);
            if (options_.json)
            {
                PrintJson(reason);
            }
            return;
        }
        Export();
        if (options_.json)
        {
            PrintJson({});
        }
        else if (!options_.quiet)
        {
            PrintSummary();
        }
    }

private:
    struct Outcome
    {
        ExportedFile file;
        double seconds = 0.0;
    };

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
        notes_ = scene.notes;
        return scene.ok ? std::string() : scene.error;
    }

    std::string LoadEntry()
    {
        std::string error;
        plugin_ = mobu_host::Plugin::Load(options_.plugin.empty() ? FindModule() : options_.plugin, error);
        if (!plugin_)
        {
            return "the exporter cannot be loaded: " + error;
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
            outcomes_.push_back({CheckExportedFile(plan_.files[i], plan_, before[i]), watch.Seconds(i)});
            if (const std::string& error = outcomes_.back().file.error; !error.empty())
            {
                Complain(OneLine(plan_.files[i].path) + ": " + error, kExitFindings);
            }
        }
        if (result != 1)
        {
            Complain("the exporter gave up before its last file", kExitFindings);
        }
    }

    void PrintSummary() const
    {
        std::ostringstream text;
        for (std::size_t i = 0; i < plan_.files.size(); ++i)
        {
            const PlannedFile& planned = plan_.files[i];
            const ExportedFile& file = outcomes_[i].file;
            if (!file.error.empty())
            {
                continue;
            }
            text << OneLine(planned.path) << ": take \"" << OneLine(planned.take_name) << "\", "
                 << CountOf(file.nodes, "node", "nodes") << ", " << CountOf(file.cameras, "camera", "cameras")
                 << ", " << CountOf(file.samples, "sample", "samples") << ", " << CountText(file.keys_sampled)
                 << " keys sampled, " << CountText(file.keys_kept) << " kept, " << CountText(file.bytes)
                 << " bytes, " << std::fixed << std::setprecision(2) << outcomes_[i].seconds << " s\n";
        }
        for (const std::string& note : notes_)
        {
            text << "note: " << OneLine(note) << '\n';
        }
        context_.out << text.str();
    }

    void PrintJson(const std::string& refusal) const
    {
        ExportJson json = {{"scene", request_.scene}, {"notes", notes_}};
        if (!refusal.empty())
        {
            json["error"] = refusal;
        }
        json["files"] = ExportJson::array();
        for (std::size_t i = 0; i < outcomes_.size(); ++i)
        {
            const PlannedFile& planned = plan_.files[i];
            const ExportedFile& file = outcomes_[i].file;
            ExportJson entry = {
                {"path", planned.path}, {"take", planned.take_name}, {"ok", file.error.empty()}};
            if (!file.error.empty())
            {
                entry["error"] = file.error;
                entry["skipped"] = file.skipped;
            }
            else
            {
                entry["start"] = planned.range.start;
                entry["end"] = planned.range.end;
                entry["rate"] = plan_.fps;
                entry["nodes"] = file.nodes;
                entry["cameras"] = file.cameras;
                entry["samples"] = file.samples;
                entry["keysSampled"] = file.keys_sampled;
                entry["keysKept"] = file.keys_kept;
                entry["bytes"] = file.bytes;
                entry["seconds"] = outcomes_[i].seconds;
            }
            json["files"].push_back(std::move(entry));
        }
        context_.out << json.dump(2, ' ', false, ExportJson::error_handler_t::replace) << '\n';
    }

    const ExportVerbOptions& options_;
    const ExportRequest& request_;
    VerbContext& context_;
    std::vector<std::string> notes_; ///< of the import
    ExportPlan plan_;
    std::unique_ptr<mobu_host::Plugin> plugin_;
    ScriptEntry* entry_ = nullptr;
    std::vector<Outcome> outcomes_; ///< one for each planned file
};

} // namespace

void AddExportVerb(CLI::App& app, VerbContext& context)
{
    auto options = std::make_shared<ExportVerbOptions>();
    ExportRequest& request = options->request;
    CLI::App* verb = app.add_subcommand("export", "Exports a scene (BVH, glTF, Collada) to .tv2 files");
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
    verb->add_flag("--quiet", options->quiet, "Print nothing but errors");
    verb->add_flag("--json", options->json,
                   "Print JSON: an object with one entry of \"files\" for each file");
    verb->footer(
        "Examples:\n"
        "  tv2 export walk.bvh walk.tv2\n"
        "  tv2 export --all-takes --fps 60 robot.glb robot.tv2\n"
        "  tv2 export --select Hips --start-frame 10 --end-frame 60 walk.bvh hips.tv2\n"
        "A file counts as exported when it has been read back whole. Exit code: 0 every file was; 1 at least "
        "one was not, or was skipped as read-only; 2 nothing was started.");
    verb->callback([options, &context] { ExportRun(*options, context).Run(); });
}
