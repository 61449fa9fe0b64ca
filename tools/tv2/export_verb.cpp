#include "tools/tv2/dialog_export.h"
#include "tools/tv2/export_check.h"
#include "tools/tv2/export_plan.h"
#include "tools/tv2/export_report.h"
#include "tools/tv2/exporter_module.h"
#include "tools/tv2/json.h"
#include "tools/tv2/progress_bar.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include "host/export_run/export_run.h"

#include <memory>

namespace
{

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

    void Complain(const std::string& what, ExitCode code) { context_.Complain("export", what, code); }

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
        if (options_.json)
        {
            context_.out << JsonText(ReportJson(request_.scene, report_)) << '\n';
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

void RunExport(const ExportVerbOptions& options, VerbContext& context)
{
    SurviveClosedPipes();
    ExportRun(options, context).Run();
}
