#include "host/c_api/mobu_host.h"

#include "host/export_run/export_run.h"
#include "host/import/scene_import.h"
#include "text/closest_name.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace
{

void CopyText(std::string_view from, char* to, std::size_t size)
{
    if (!to || size == 0)
        return;
    const std::size_t length = std::min(from.size(), size - 1);
    from.copy(to, length);
    to[length] = '\0';
}

FBTake* TakeAt(int take)
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    return take >= 0 && take < takes.GetCount() ? takes[take] : nullptr;
}

// Files that the open scene was read from, and its models as they were counted last.
std::vector<std::string> scene_files;
struct CountedModel
{
    FBModel* model = nullptr;
    int parent = -1;
};
std::vector<CountedModel> models;

FBModel* ModelAt(int model)
{
    const auto index = static_cast<std::size_t>(model);
    return model >= 0 && index < models.size() ? models[index].model : nullptr;
}

void OpenScene(const std::string& path, double frames_per_second, mobu_host::SceneImportResult& result)
{
    mobu_host::ImportOptions options;
    options.scene_rate = frames_per_second;
    models.clear();
    result = mobu_host::ImportScene(path, options);
    if (result.ok)
    {
        scene_files = result.source_files;
        scene_files.insert(scene_files.begin(), path);
    }
}

// What an export changes in the scene and puts back when it completes.
class SceneAsItWas
{
public:
    SceneAsItWas()
    {
        FBPropertyListConstraint& constraints = mobu_host::Scene().Constraints;
        for (int i = 0; i < constraints.GetCount(); ++i)
            active_.push_back(constraints[i]->Active);
    }

    void PutBack() const
    {
        FBPropertyListConstraint& constraints = mobu_host::Scene().Constraints;
        for (std::size_t i = 0; i < active_.size(); ++i)
            constraints[static_cast<int>(i)]->Active = active_[i];
        FBSystem().CurrentTake = take_;
        FBPlayerControl().Goto(time_);
        mobu_host::Scene().Evaluate();
    }

private:
    FBTake* take_ = FBSystem().CurrentTake;
    FBTime time_ = FBSystem().LocalTime;
    std::vector<bool> active_;
};

// Calls the caller's function now and then while the player moves. Stops the export by an exception, which passes through
// the plug-in up to its entry point.
class ProgressWatch
{
public:
    ProgressWatch(mobu_host_progress progress, void* user) : progress_(progress), user_(user)
    {
        if (!progress)
            return;
        FBPropertyListTake& takes = mobu_host::Scene().Takes;
        for (int i = 0; i < takes.GetCount(); ++i)
            takes_.emplace(takes[i], Sampled{i});
        mobu_host::ObserverCalls calls;
        calls.on_goto = [this](FBTime time, FBTake* take) { OnGoto(time.GetSecondDouble(), take); };
        observer_ = std::make_unique<mobu_host::SceneObserver>(std::move(calls));
    }

    bool Stopped() const { return stopped_; }
    void End() { observer_.reset(); }

private:
    using Clock = std::chrono::steady_clock;

    struct StoppedByCaller
    {
    };

    struct Sampled
    {
        int number = 0;
        double latest = -std::numeric_limits<double>::infinity(); // seconds
    };

    void OnGoto(double seconds, FBTake* take)
    {
        constexpr std::chrono::milliseconds kBetweenCalls{50};
        const Clock::time_point now = Clock::now();
        const auto found = takes_.find(take);
        // After the last file the player goes back to where it was: that is no progress.
        const bool is_progress = found != takes_.end() && seconds >= found->second.latest;
        if (!stopped_ && (!is_progress || now - last_ < kBetweenCalls))
            return;
        last_ = now;
        if (!stopped_)
        {
            found->second.latest = seconds;
            stopped_ = progress_(found->second.number, seconds, user_) == 0;
        }
        if (stopped_)
            throw StoppedByCaller();
    }

    mobu_host_progress progress_;
    void* user_;
    std::map<FBTake*, Sampled> takes_;
    bool stopped_ = false;
    Clock::time_point last_{};
    std::unique_ptr<mobu_host::SceneObserver> observer_;
};

mobu_host::ExportCall CallOf(const mobu_host_export_call& call)
{
    mobu_host::ExportCall result;
    result.path = call.path ? call.path : "";
    result.rate = call.rate;
    result.whole_take = call.whole_take != 0;
    result.start_frame = call.start_frame;
    result.end_frame = call.end_frame;
    result.flags.spaces_to_underscores = call.spaces_to_underscores != 0;
    result.flags.keep_positive_z = call.keep_positive_z != 0;
    result.flags.remove_namespace = call.remove_namespace != 0;
    result.flags.disable_constraints = call.disable_constraints != 0;
    result.flags.all_takes = call.all_takes != 0;
    return result;
}

int Export(const mobu_host_export_call& call, mobu_host_progress progress, void* user, std::string& error)
{
    const auto exporter = mobu_host::Exporter::Load(call.plugin ? call.plugin : "", error);
    if (!exporter)
        return 0;
    const SceneAsItWas before;
    ProgressWatch watch(progress, user);
    const bool completed = exporter->Run(CallOf(call), error);
    watch.End();
    if (!completed)
        before.PutBack();
    return watch.Stopped() ? -1 : completed ? 1 : 0;
}

// What the function returns, or `failed` when it threw.
template <class Function>
int Guarded(int failed, Function function) noexcept
{
    try
    {
        return function();
    }
    catch (...)
    {
        return failed;
    }
}

} // namespace

int mobu_host_open_scene(const char* path, char* text, std::size_t size)
{
    return mobu_host_open_scene_at(path, 0.0, text, size);
}

int mobu_host_open_scene_at(const char* path, double frames_per_second, char* text, std::size_t size)
{
    try
    {
        mobu_host::SceneImportResult result;
        OpenScene(path ? path : "", frames_per_second, result);
        std::string told = result.error;
        for (const std::string& note : result.notes)
            told += result.ok ? note + '\n' : "";
        CopyText(told, text, size);
        return result.ok;
    }
    catch (const std::exception& error)
    {
        CopyText(error.what(), text, size);
        return 0;
    }
    catch (...)
    {
        CopyText("the scene cannot be opened", text, size);
        return 0;
    }
}

int mobu_host_new_scene()
{
    return Guarded(0,
                   []
                   {
                       scene_files.clear();
                       models.clear();
                       mobu_host::NewScene();
                       return 1;
                   });
}

int mobu_host_take_count()
{
    return Guarded(0, [] { return mobu_host::Scene().Takes.GetCount(); });
}

int mobu_host_take_name(int take, char* name, std::size_t size)
{
    return Guarded(0,
                   [=]
                   {
                       FBTake* const found = TakeAt(take);
                       if (found)
                           CopyText(static_cast<const char*>(found->Name), name, size);
                       return found != nullptr;
                   });
}

int mobu_host_take_span(int take, double* start, double* stop)
{
    return Guarded(0,
                   [=]
                   {
                       FBTake* const found = TakeAt(take);
                       if (!found || !start || !stop)
                           return 0;
                       const FBTimeSpan span = found->LocalTimeSpan;
                       *start = span.GetStart().GetSecondDouble();
                       *stop = span.GetStop().GetSecondDouble();
                       return 1;
                   });
}

int mobu_host_scene_file_count()
{
    return static_cast<int>(scene_files.size());
}

int mobu_host_scene_file(int file, char* path, std::size_t size)
{
    const auto index = static_cast<std::size_t>(file);
    if (file < 0 || index >= scene_files.size())
        return 0;
    CopyText(scene_files[index], path, size);
    return 1;
}

double mobu_host_transport_rate()
{
    return FBPlayerControl().GetTransportFpsValue();
}

int mobu_host_current_take()
{
    return Guarded(-1,
                   []
                   {
                       FBTake* const current = FBSystem().CurrentTake;
                       int take = mobu_host::Scene().Takes.GetCount() - 1;
                       while (take >= 0 && TakeAt(take) != current)
                           --take;
                       return take;
                   });
}

int mobu_host_choose_take(int take)
{
    return Guarded(0,
                   [=]
                   {
                       FBTake* const found = TakeAt(take);
                       if (found)
                           FBSystem().CurrentTake = found;
                       return found != nullptr;
                   });
}

int mobu_host_select_model(const char* long_name)
{
    return Guarded(0,
                   [=]
                   {
                       for (FBModel* model : mobu_host::ModelsInPreOrder())
                           if (long_name &&
                               std::string_view(static_cast<const char*>(model->LongName)) == long_name)
                           {
                               model->Selected = true;
                               return 1;
                           }
                       return 0;
                   });
}

void mobu_host_clear_selection()
{
    Guarded(0,
            []
            {
                for (FBModel* model : mobu_host::ModelsInPreOrder())
                    model->Selected = false;
                return 1;
            });
}

int mobu_host_model_count()
{
    return Guarded(0,
                   []
                   {
                       std::map<FBModel*, int> numbers;
                       models.clear();
                       for (FBModel* model : mobu_host::ModelsInPreOrder())
                       {
                           const auto parent = numbers.find(model->Parent);
                           numbers.emplace(model, static_cast<int>(models.size()));
                           models.push_back({model, parent == numbers.end() ? -1 : parent->second});
                       }
                       return static_cast<int>(models.size());
                   });
}

int mobu_host_model_at(int model, mobu_host_model* properties)
{
    return Guarded(0,
                   [=]
                   {
                       FBModel* const found = ModelAt(model);
                       if (!found || !properties)
                           return 0;
                       *properties = {models[static_cast<std::size_t>(model)].parent, found->Selected ? 1 : 0,
                                      found->Is(FBCamera::TypeInfo) ? 1 : 0};
                       return 1;
                   });
}

int mobu_host_model_name(int model, char* long_name, std::size_t size)
{
    return Guarded(0,
                   [=]
                   {
                       FBModel* const found = ModelAt(model);
                       if (found)
                           CopyText(static_cast<const char*>(found->LongName), long_name, size);
                       return found != nullptr;
                   });
}

void mobu_host_suggest_take(const char* unknown, char* text, std::size_t size)
{
    Guarded(0,
            [=]
            {
                std::vector<std::string> names;
                for (int take = 0; FBTake* const found = TakeAt(take); ++take)
                    names.emplace_back(static_cast<const char*>(found->Name));
                CopyText(DidYouMean(unknown ? unknown : "", names), text, size);
                return 1;
            });
}

void mobu_host_suggest_model(const char* unknown, char* text, std::size_t size)
{
    Guarded(0,
            [=]
            {
                std::vector<std::string> names;
                for (FBModel* model : mobu_host::ModelsInPreOrder())
                    names.emplace_back(static_cast<const char*>(model->LongName));
                CopyText(DidYouMean(unknown ? unknown : "", names), text, size);
                return 1;
            });
}

int mobu_host_export(const mobu_host_export_call* call, mobu_host_progress progress, void* user, char* text,
                     std::size_t size)
{
    CopyText("", text, size);
    if (!call || call->size != sizeof(mobu_host_export_call))
    {
        CopyText("the call has another size than this library knows", text, size);
        return 0;
    }
    try
    {
        std::string error;
        const int result = Export(*call, progress, user, error);
        CopyText(error, text, size);
        return result;
    }
    catch (const std::exception& error)
    {
        CopyText(error.what(), text, size);
        return 0;
    }
}
