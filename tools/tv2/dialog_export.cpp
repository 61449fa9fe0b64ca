#include "tools/tv2/dialog_export.h"

#include "host/export_run/export_run.h"
#include "host/popup/popup_script.h"
#include "host/popup/window_module.h"
#include "tools/tv2/dialog_choices.h"
#include "tools/tv2/exporter_module.h"
#include "tools/tv2/module_path.h"
#include "tools/tv2/text.h"

#include <mobu_host/private_settings.h>
#include <mobu_host/scene.h>
#include <mobu_host/ui.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>

namespace tv2
{

namespace
{

/// Watches which takes are sampled, and when. The player is first put where no take is, so that putting it back can be
/// told from sampling.
class SamplingWatch
{
public:
    struct Sampled
    {
        FBTake* take = nullptr;
        std::vector<float> instants;
    };

    SamplingWatch() : rest_(TimeBeforeAllTakes())
    {
        FBPlayerControl().Goto(rest_);
        mobu_host::Scene().Evaluate();
        mobu_host::ObserverCalls calls;
        calls.on_goto = [this](FBTime time, FBTake* take) { OnGoto(time, take); };
        observer_ = std::make_unique<mobu_host::SceneObserver>(std::move(calls));
    }

    bool PlayerMoved() const { return moved_; }
    const std::vector<Sampled>& Takes() const { return takes_; } ///< in the order in which they were sampled

    const Sampled* Find(const FBTake* take) const
    {
        const auto found = std::find_if(takes_.begin(), takes_.end(),
                                        [take](const Sampled& sampled) { return sampled.take == take; });
        return found == takes_.end() ? nullptr : &*found;
    }

private:
    static FBTime TimeBeforeAllTakes()
    {
        constexpr double kHour = 3600.0;
        double seconds = 0.0;
        FBPropertyListTake& takes = mobu_host::Scene().Takes;
        for (int i = 0; i < takes.GetCount(); ++i)
        {
            const FBTimeSpan span = takes[i]->LocalTimeSpan;
            seconds = std::min(seconds, span.GetStart().GetSecondDouble());
        }
        FBTime time;
        time.SetSecondDouble(std::floor(seconds) - kHour);
        return time;
    }

    void OnGoto(FBTime time, FBTake* take)
    {
        moved_ = true;
        if (time == rest_)
        {
            return;
        }
        if (takes_.empty() || takes_.back().take != take)
        {
            takes_.push_back({take, {}});
        }
        takes_.back().instants.push_back(static_cast<float>(time.GetSecondDouble()));
    }

    FBTime rest_;
    bool moved_ = false;
    std::vector<Sampled> takes_;
    std::unique_ptr<mobu_host::SceneObserver> observer_;
};

/// Why the exporter gave up on what was chosen, as far as that can be told.
std::string WhyGivenUp(ExportRequest request, const std::optional<DialogChoices>& choices)
{
    std::string gave_up = "the exporter gave up before its last file";
    if (!choices)
    {
        return gave_up;
    }
    request.all_takes = choices->all_takes;
    if (!choices->whole_take)
    {
        request.start_frame = choices->start_key;
        request.end_frame = choices->end_key;
    }
    const std::string reason = WhyNotSampled(request, choices->rate);
    return reason.empty() ? gave_up : "the exporter refused: " + reason;
}

/// The files that the dialog's choice of takes and spaces names.
std::vector<PlannedFile> FilesOf(ExportRequest request, bool all_takes, bool spaces_to_underscores)
{
    request.all_takes = all_takes;
    request.spaces_to_underscores = spaces_to_underscores;
    return NameFiles(request);
}

/// Those of every choice that can be made in the dialog.
std::vector<PlannedFile> FilesOfAnyChoice(const ExportRequest& request)
{
    std::vector<PlannedFile> files;
    for (const bool all_takes : {false, true})
    {
        for (const bool underscores : {true, false})
        {
            const std::vector<PlannedFile> named = FilesOf(request, all_takes, underscores);
            files.insert(files.end(), named.begin(), named.end());
        }
    }
    return files;
}

/// What stood under each name that can be written to.
using Stamps = std::map<std::string, FileStamp>;

Stamps StampsOf(const std::vector<PlannedFile>& files)
{
    Stamps stamps;
    for (const PlannedFile& file : files)
    {
        stamps.emplace(file.path, FileStamp::Of(file.path));
    }
    return stamps;
}

/// Read-only files made writable for a while: those that nobody wrote to are set back.
class WritableForAWhile
{
public:
    std::string Open(const Stamps& stamps)
    {
        ExportPlan plan;
        for (const auto& [path, stamp] : stamps)
        {
            if (stamp.read_only)
            {
                std::error_code ignored;
                before_[path] = std::filesystem::status(path, ignored).permissions();
                plan.files.emplace_back().path = path;
            }
        }
        return MakeTargetsWritable(plan);
    }

    void SetBack(const Stamps& stamps) const
    {
        for (const auto& [path, permissions] : before_)
        {
            if (FileStamp::Of(path) == stamps.at(path))
            {
                std::error_code ignored;
                std::filesystem::permissions(path, permissions, ignored);
            }
        }
    }

private:
    std::map<std::string, std::filesystem::perms> before_;
};

class DialogRun
{
public:
    DialogRun(const ExportRequest& request, DialogExportResult& result) : request_(request), result_(result)
    {
    }

    std::string Run(const std::string& plugin_path, const DialogUser& user)
    {
        if (std::string reason = FindUser(user.script); !reason.empty())
        {
            return reason;
        }
        if (std::string reason = OpenScene(); !reason.empty())
        {
            return reason;
        }
        std::string error;
        std::unique_ptr<mobu_host::PrivateSettings> private_settings;
        if (!user.stored_settings)
        {
            private_settings = mobu_host::PrivateSettings::Make(error);
            if (!private_settings)
            {
                return error;
            }
        }
        const std::unique_ptr<mobu_host::Plugin> plugin = LoadExporter(plugin_path, error);
        if (!plugin)
        {
            return error;
        }
        FBMenuItem* const entry = mobu_host::ExportEntry();
        if (!entry)
        {
            return plugin->Path() + " is no exporter: it has no entry in the export menu";
        }
        Stamps before = StampsOf(possible_);
        WritableForAWhile writable;
        if (request_.overwrite_read_only)
        {
            if (std::string reason = writable.Open(before); !reason.empty())
            {
                return reason;
            }
            before = StampsOf(possible_);
        }
        std::string reason = Export(*entry, before);
        writable.SetBack(before);
        return reason;
    }

private:
    /// Who will use the dialog: a script, or whoever sits at the display.
    std::string FindUser(const std::string& script_path)
    {
        std::string error;
        if (!script_path.empty())
        {
            script_ = mobu_host::PopupScript::Read(script_path, error);
            return error;
        }
        window_ = mobu_host::WindowModule::Load(ModulePath("tv2_popup_window"), error);
        return window_ ? std::string()
                       : "the dialog cannot be shown: " + error +
                             "; give its steps with --dialog-script, or leave --dialog out and give "
                             "the options on the command line";
    }

    std::string OpenScene()
    {
        if (const std::string reason = CheckRequest(request_); !reason.empty())
        {
            return OfScene(request_, reason);
        }
        if (std::string reason = tv2::OpenScene(request_, result_.report.notes); !reason.empty())
        {
            return reason;
        }
        if (const std::string reason = PrepareScene(request_, plan_); !reason.empty())
        {
            return OfScene(request_, reason);
        }
        possible_ = FilesOfAnyChoice(request_);
        ExportPlan all = plan_;
        all.files = possible_;
        return OfScene(request_, CheckTargets(request_, all));
    }

    std::string Export(FBMenuItem& entry, const Stamps& before)
    {
        bool shown = false;
        std::string not_ours;
        std::string step_error;
        DialogWatch dialog;
        mobu_host::SetPopupPlayer(
            [&](FBPopup& popup)
            {
                if (!shown)
                {
                    not_ours = dialog.Watch(popup);
                }
                shown = true;
                if (!not_ours.empty())
                {
                    return;
                }
                if (window_)
                {
                    window_->Show(popup);
                }
                else if (step_error.empty())
                {
                    step_error = script_->Play(popup);
                }
            });
        const SamplingWatch sampling;
        const bool completed = mobu_host::UseMenuItem(entry, OutputForExporter(request_));
        mobu_host::SetPopupPlayer({});

        if (!shown || !not_ours.empty())
        {
            return shown ? not_ours : "the exporter has shown no dialog";
        }
        const bool nothing_done = completed && !sampling.PlayerMoved();
        if (!step_error.empty() && nothing_done)
        {
            return step_error;
        }
        result_.report.cancelled = nothing_done;
        if (!step_error.empty())
        {
            result_.failures.push_back(step_error);
        }
        if (!completed)
        {
            result_.failures.push_back(WhyGivenUp(request_, dialog.Choices()));
        }
        if (nothing_done)
        {
            result_.why_cancelled = dialog.Choices() ? dialog.Choices()->Objection() : std::string();
        }
        else if (dialog.Choices())
        {
            ReadBack(*dialog.Choices(), sampling, before);
        }
        return {};
    }

    void ReadBack(const DialogChoices& choices, const SamplingWatch& watch, const Stamps& before)
    {
        for (PlannedFile& planned : FilesOf(request_, choices.all_takes, choices.spaces_to_underscores))
        {
            if (const SamplingWatch::Sampled* const sampled = watch.Find(planned.take))
            {
                planned.instants = sampled->instants;
                planned.range.start = planned.instants.front();
                planned.range.end = planned.instants.back();
                std::sort(planned.instants.begin(), planned.instants.end());
            }
            ExportReport::File file;
            file.rate = choices.rate;
            file.exported = CheckExportedFile(planned, plan_, before.at(planned.path));
            file.planned = std::move(planned);
            for (ExportReport::File& other : result_.report.files)
            {
                if (other.planned.path == file.planned.path)
                {
                    other.exported.error = "was over-written by take \"" + file.planned.take_name + '"';
                }
            }
            result_.report.files.push_back(std::move(file));
        }
    }

    ExportRequest request_;
    DialogExportResult& result_;
    std::optional<mobu_host::PopupScript> script_; ///< or the window
    std::optional<mobu_host::WindowModule> window_;
    ExportPlan plan_;
    std::vector<PlannedFile> possible_;
};

} // namespace

DialogExportResult ExportByDialog(const ExportRequest& request, const std::string& plugin,
                                  const DialogUser& user)
{
    DialogExportResult result;
    result.report.error = DialogRun(request, result).Run(plugin, user);
    return result;
}

} // namespace tv2
