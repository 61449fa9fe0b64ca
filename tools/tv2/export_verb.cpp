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

#include <memory>

namespace
{

using ScriptEntry = unsigned(const char* path, int start_frame, int end_frame, int fps,
                             bool spaces_to_underscores, bool keep_positive_z, bool remove_namespace,
                             bool disable_constraints, bool export_all_keys, bool all_takes);

constexpr const char* kEntryName = "python_export_tv2";

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
        report_.error = !options_.refusal.empty() ? options_.refusal
                        : options_.dialog         ? UseDialog()
                                                  : UseScriptEntry();
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
        std::string reason = OfScene(request_, CheckRequest(request_));
        if (reason.empty())
        {
            reason = OpenScene();
        }
        if (reason.empty())
        {
            reason = OfScene(request_, PlanExport(request_, plan_));
        }
        if (reason.empty())
        {
            reason = OfScene(request_, CheckTargets(request_, plan_));
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
                                     static_cast<double>(plan_.fps), watch.Seconds(i)});
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

void RunExport(const ExportVerbOptions& options, VerbContext& context)
{
    ExportRun(options, context).Run();
}
