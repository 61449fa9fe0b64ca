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

struct CountedModel
{
    FBModel* model = nullptr;
    int parent = -1;
};

std::vector<std::string> scene_files; // that the open scene was read from
std::vector<CountedModel> models;     // as of the last count

template <typename Item>
const Item* At(const std::vector<Item>& items, int index)
{
    const auto place = static_cast<std::size_t>(index);
    return index >= 0 && place < items.size() ? &items[place] : nullptr;
}

int OpenScene(const std::string& path, double frames_per_second, std::string& text)
{
    mobu_host::ImportOptions options;
    options.scene_rate = frames_per_second;
    models.clear();
    mobu_host::SceneImportResult result = mobu_host::ImportScene(path, options);
    text = result.error;
    if (!result.ok)
        return 0;
    for (const std::string& note : result.notes)
        text += note + '\n';
    scene_files = std::move(result.source_files);
    scene_files.insert(scene_files.begin(), path);
    return 1;
}

/// What an export changes in the scene and restores when it completes.
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

/// Calls the caller's function now and then while the player moves. Stops the export by an exception, which passes
/// through the plug-in up to its entry point.
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

/// The result of a function, or `failed` when it throws.
template <int failed = 0, typename Function>
int Guarded(Function function) noexcept
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

/// The same for a function that fills a text, which goes to the caller; an exception becomes the text.
template <typename Function>
int GuardedWithText(char* text, std::size_t size, Function function) noexcept
{
    return Guarded(
        [&]
        {
            std::string filled;
            int result = 0;
            try
            {
                result = function(filled);
            }
            catch (const std::exception& error)
            {
                filled = error.what();
            }
            catch (...)
            {
                filled = "unknown failure";
            }
            CopyText(filled, text, size);
            return result;
        });
}

int CopyName(const char* from, char* to, std::size_t size) // null: there is no such object
{
    if (from)
        CopyText(from, to, size);
    return from != nullptr;
}

std::vector<std::string> TakeNames()
{
    std::vector<std::string> names;
    for (int take = 0; FBTake* const found = TakeAt(take); ++take)
        names.emplace_back(static_cast<const char*>(found->Name));
    return names;
}

std::vector<std::string> ModelNames()
{
    std::vector<std::string> names;
    for (FBModel* model : mobu_host::ModelsInPreOrder())
        names.emplace_back(static_cast<const char*>(model->LongName));
    return names;
}

int Suggest(std::vector<std::string> (*names)(), const char* unknown, char* text, std::size_t size)
{
    return Guarded(
        [=]
        {
            CopyText(DidYouMean(unknown ? unknown : "", names()), text, size);
            return 1;
        });
}

} // namespace

int mobu_host_open_scene(const char* path, char* text, std::size_t size)
{
    return mobu_host_open_scene_at(path, 0.0, text, size);
}

int mobu_host_open_scene_at(const char* path, double frames_per_second, char* text, std::size_t size)
{
    return GuardedWithText(
        text, size, [=](std::string& told) { return OpenScene(path ? path : "", frames_per_second, told); });
}

int mobu_host_scene_file_count()
{
    return static_cast<int>(scene_files.size());
}

int mobu_host_scene_file(int file, char* path, std::size_t size)
{
    const std::string* const found = At(scene_files, file);
    if (found)
        CopyText(*found, path, size);
    return found != nullptr;
}

double mobu_host_transport_rate()
{
    return FBPlayerControl().GetTransportFpsValue();
}

int mobu_host_new_scene()
{
    return Guarded(
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
    return Guarded([] { return mobu_host::Scene().Takes.GetCount(); });
}

int mobu_host_take_name(int take, char* name, std::size_t size)
{
    return Guarded(
        [=]
        {
            FBTake* const found = TakeAt(take);
            return CopyName(found ? static_cast<const char*>(found->Name) : nullptr, name, size);
        });
}

int mobu_host_take_span(int take, double* start, double* stop)
{
    return Guarded(
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

int mobu_host_current_take()
{
    return Guarded<-1>([] { return mobu_host::Scene().Takes.Find(FBSystem().CurrentTake); });
}

int mobu_host_choose_take(int take)
{
    return Guarded(
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
    return Guarded(
        [=]
        {
            FBModel* const model = long_name ? mobu_host::FindModel(long_name) : nullptr;
            if (model)
                model->Selected = true;
            return model != nullptr;
        });
}

void mobu_host_clear_selection()
{
    Guarded(
        []
        {
            for (FBModel* model : mobu_host::ModelsInPreOrder())
                model->Selected = false;
            return 1;
        });
}

int mobu_host_model_count()
{
    return Guarded(
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
    return Guarded(
        [=]
        {
            const CountedModel* const found = At(models, model);
            if (!found || !properties)
                return 0;
            *properties = {found->parent, found->model->Selected ? 1 : 0,
                           found->model->Is(FBCamera::TypeInfo) ? 1 : 0};
            return 1;
        });
}

int mobu_host_model_name(int model, char* long_name, std::size_t size)
{
    return Guarded(
        [=]
        {
            const CountedModel* const found = At(models, model);
            return CopyName(found ? static_cast<const char*>(found->model->LongName) : nullptr, long_name,
                            size);
        });
}

void mobu_host_suggest_take(const char* unknown, char* text, std::size_t size)
{
    Suggest(TakeNames, unknown, text, size);
}

void mobu_host_suggest_model(const char* unknown, char* text, std::size_t size)
{
    Suggest(ModelNames, unknown, text, size);
}

int mobu_host_export(const mobu_host_export_call* call, mobu_host_progress progress, void* user, char* text,
                     std::size_t size)
{
    return GuardedWithText(text, size,
                           [=](std::string& error)
                           {
                               if (call && call->size == sizeof(mobu_host_export_call))
                                   return Export(*call, progress, user, error);
                               error = "the call has another size than this library knows";
                               return 0;
                           });
}
