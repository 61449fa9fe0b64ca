#include "tools/tv2/dialog_export.h"

#include "host/export_run/export_run.h"
#include "host/popup/popup_script.h"
#include "host/popup/window_module.h"
#include "tools/tv2/dialog_choices.h"
#include "tools/tv2/exporter_module.h"
#include "tools/tv2/module_path.h"
#include "tools/tv2/text.h"

#include <mobu_host/private_settings.h>
#include <mobu_host/ui.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>

namespace tv2
{

using tev2_exporter::ExportCall;
using tev2_exporter::ExportPlan;
using tev2_exporter::FilePlan;
using TEV2_LOADER::Status;

namespace
{

/// Makes read-only files writable. With the object, those that nobody wrote to become read-only again.
class WritableForAWhile
{
public:
    WritableForAWhile() = default;
    ~WritableForAWhile()
    {
        for (const auto& [path, opened] : opened_)
        {
            if (FileStamp::Of(path) == opened.stamp)
            {
                std::error_code ignored;
                std::filesystem::permissions(path, opened.permissions, ignored);
            }
        }
    }
    WritableForAWhile(const WritableForAWhile&) = delete;
    WritableForAWhile& operator=(const WritableForAWhile&) = delete;

    Status Open(const std::vector<FilePlan>& files)
    {
        for (const FilePlan& file : files)
        {
            if (FileStamp::Of(file.path).read_only)
            {
                std::error_code ignored;
                const auto permissions = std::filesystem::status(file.path, ignored).permissions();
                if (Status writable = MakeTargetsWritable({file}); !writable)
                    return writable;
                opened_[file.path] = {FileStamp::Of(file.path), permissions};
            }
        }
        return {};
    }

private:
    struct Opened
    {
        FileStamp stamp;
        std::filesystem::perms permissions{}; ///< before
    };
    std::map<std::string, Opened> opened_;
};

class DialogRun
{
public:
    DialogRun(const ExportRequest& request, DialogExportResult& result) : request_(request), result_(result)
    {
    }

    /// Fails when nothing was exported for another reason than a cancellation.
    Status Run(const std::string& plugin_path, const DialogUser& user)
    {
        if (Status found = FindUser(user.script); !found)
            return found;
        if (Status opened = OpenScene(); !opened)
            return opened;
        std::string error;
        std::unique_ptr<mobu_host::PrivateSettings> private_settings;
        if (!user.stored_settings)
        {
            private_settings = mobu_host::PrivateSettings::Make(error);
            if (!private_settings)
                return Status::Failure(error);
        }
        const std::unique_ptr<mobu_host::Plugin> plugin = LoadExporter(plugin_path, error);
        if (!plugin)
            return Status::Failure(error);
        FBMenuItem* const entry = mobu_host::ExportEntry();
        if (!entry)
            return Status::Failure(plugin->Path() + " is no exporter: it has no entry in the export menu");
        WritableForAWhile writable;
        if (request_.overwrite_read_only)
        {
            if (Status opened = writable.Open(FilesOfAnyChoice()); !opened)
                return opened;
        }
        return Export(*entry);
    }

private:
    /// Who will use the dialog: a script, or the person at the display.
    Status FindUser(const std::string& script_path)
    {
        std::string error;
        if (!script_path.empty())
        {
            script_ = mobu_host::PopupScript::Read(script_path, error);
            return script_ ? Status() : Status::Failure(error);
        }
        window_ = mobu_host::WindowModule::Load(ModulePath("tv2_popup_window"), error);
        return window_ ? Status()
                       : Status::Failure("the dialog cannot be shown: " + error +
                                         "; give its steps with --dialog-script, or leave --dialog out and "
                                         "give the options on the command line");
    }

    Status OpenScene()
    {
        if (Status checked = CheckRequest(request_); !checked)
            return checked;
        if (Status opened = tv2::OpenScene(request_, result_.report.notes); !opened)
            return opened;
        if (Status prepared = PrepareScene(request_, result_.report.notes); !prepared)
            return prepared;
        if (!request_.question.takes.empty())
            return Status::Failure("the dialog exports one take or all: give one --take, by its name");
        return StatusOf(
            request_, tev2_exporter::CheckTargets(request_.question, FilesOfAnyChoice(), FactsOf(request_)));
    }

    /// The files that the dialog can name: once it is shown, nothing can refuse a target.
    std::vector<FilePlan> FilesOfAnyChoice() const
    {
        std::vector<FilePlan> files;
        tev2_exporter::ExportQuestion question = request_.question;
        for (const bool all_takes : {false, true})
        {
            for (const bool underscores : {true, false})
            {
                question.flags.all_takes = all_takes;
                question.flags.spaces_to_underscores = underscores;
                const std::vector<FilePlan> named = tev2_exporter::NameFiles(question, FactsOf(request_));
                files.insert(files.end(), named.begin(), named.end());
            }
        }
        return files;
    }

    Status Export(FBMenuItem& entry)
    {
        DialogWatch dialog([this](const ExportCall& choices) { Begin(choices); });
        std::optional<Status> watched;
        Status played;
        mobu_host::SetPopupPlayer(
            [&](FBPopup& popup)
            {
                watched = watched ? watched : dialog.Watch(popup);
                if (*watched)
                    Play(popup, played);
            });
        const std::string path = tev2_exporter::PathForExporter(request_.question.path, FactsOf(request_));
        const bool completed = mobu_host::UseMenuItem(entry, path);
        mobu_host::SetPopupPlayer({});

        if (!watched || !*watched)
            return watched ? *watched : Status::Failure("the exporter has shown no dialog");
        const Status choices = choices_ ? CheckChoices(*choices_) : Status();
        const bool cancelled = completed && (!choices_ || !choices);
        if (!played && cancelled)
            return played;
        result_.report.cancelled = cancelled;
        if (!played)
            result_.failures.push_back(played.Reason());
        if (!completed)
        {
            result_.failures.push_back(plan_.objection ? "the exporter refused: " + plan_.objection.text
                                                       : "the exporter gave up before its last file");
        }
        if (cancelled)
            result_.report.why_cancelled = choices.Reason();
        else
            ReadBack();
        return {};
    }

    /// Shows an open popup to the user. Steps end with the first that fails.
    void Play(FBPopup& popup, Status& played)
    {
        if (window_)
        {
            window_->Show(popup);
        }
        else if (played)
        {
            const std::string error = script_->Play(popup);
            played = error.empty() ? Status() : Status::Failure(error);
        }
    }

    /// Export has been pressed: from here the files are known, and none is written yet.
    void Begin(const ExportCall& choices)
    {
        choices_ = choices;
        choices_->path = request_.question.path;
        if (!CheckChoices(choices))
            return;
        plan_ = tev2_exporter::PlanOfDialog(*choices_, FactsOf(request_));
        result_.choices = *choices_;
        for (const FilePlan& file : plan_.files)
            before_.push_back(FileStamp::Of(file.path));
    }

    void ReadBack()
    {
        std::vector<ExportReport::File>& files = result_.report.files;
        for (std::size_t i = 0; i < plan_.files.size(); ++i)
        {
            const FilePlan& planned = plan_.files[i];
            for (ExportReport::File& other : files)
                if (other.planned.path == planned.path)
                    other.exported.error = "was overwritten by take \"" + planned.take_name + '"';
            files.push_back({planned, CheckExportedFile(planned, plan_, before_[i]), plan_.call.rate, {}});
        }
    }

    ExportRequest request_;
    DialogExportResult& result_;
    std::optional<mobu_host::PopupScript> script_; ///< or the window
    std::optional<mobu_host::WindowModule> window_;
    std::optional<ExportCall> choices_; ///< when Export was pressed
    ExportPlan plan_;                   ///< of these choices
    std::vector<FileStamp> before_;     ///< of its files
};

} // namespace

DialogExportResult ExportByDialog(const ExportRequest& request, const std::string& plugin,
                                  const DialogUser& user)
{
    DialogExportResult result;
    result.report.error = DialogRun(request, result).Run(plugin, user).Reason();
    return result;
}

} // namespace tv2
