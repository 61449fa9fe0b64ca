#include "tools/tv2/export_scene.h"

#include "host/import/scene_import.h"
#include "text/closest_name.h"
#include "text/wildcard.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>

namespace tv2
{

using tev2_exporter::FilePlan;
using tev2_exporter::Objection;
using tev2_exporter::SceneFacts;
using TEV2_LOADER::Status;

namespace
{

std::vector<FBTake*> TakesOfScene()
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    std::vector<FBTake*> list;
    list.reserve(static_cast<std::size_t>(takes.GetCount()));
    for (int i = 0; i < takes.GetCount(); ++i)
        list.push_back(takes[i]);
    return list;
}

std::string NameOf(FBTake& take)
{
    return static_cast<const char*>(take.Name);
}

std::string LongNameOf(FBModel& model)
{
    return static_cast<const char*>(model.LongName);
}

/// Suggestions for a name that is not in the scene.
std::string MeantOrAll(const std::string& name, const std::vector<std::string>& names)
{
    return DidYouMeanOr(name, names, "; the scene has " + Listed(names));
}

/// The takes with a name or, where there is none, those that it matches as a wildcard.
std::vector<std::size_t> TakesNamed(const std::string& name, const std::vector<std::string>& names)
{
    if (const auto exact = std::ranges::find(names, name); exact != names.end())
        return {static_cast<std::size_t>(exact - names.begin())};
    std::vector<std::size_t> found;
    const Wildcard wildcard(name);
    for (std::size_t i = 0; i < names.size(); ++i)
        if (wildcard.HasWildcards() && wildcard.Matches(names[i]))
            found.push_back(i);
    return found;
}

Objection ChooseTakes(ExportRequest& request, std::vector<std::string>& notes)
{
    const std::vector<FBTake*> takes = TakesOfScene();
    std::vector<std::string> names(takes.size());
    std::ranges::transform(takes, names.begin(), [](FBTake* take) { return NameOf(*take); });
    std::vector<std::string> missing;
    std::set<std::size_t> chosen;
    for (const std::string& name : request.takes)
    {
        const std::vector<std::size_t> found = TakesNamed(name, names);
        chosen.insert(found.begin(), found.end());
        if (found.empty())
            missing.push_back("there is no take " + Quoted(name) + MeantOrAll(name, names));
    }
    if (chosen.empty())
        return {kNoSuchTake, missing.front()};
    if (request.takes.size() == 1 && names[*chosen.begin()] == request.takes.front())
        FBSystem().CurrentTake = takes[*chosen.begin()];
    else
        request.question.takes.assign(chosen.begin(), chosen.end());
    notes.insert(notes.end(), missing.begin(), missing.end());
    return {};
}

Status SelectModel(const std::string& name)
{
    if (FBModel* const model = mobu_host::FindModel(name))
    {
        model->Selected = true;
        return {};
    }
    std::vector<std::string> names;
    std::vector<std::string> meant;
    for (FBModel* model : mobu_host::ModelsInPreOrder())
    {
        names.push_back(LongNameOf(*model));
        if (names.back().ends_with(":" + name))
            meant.push_back(names.back());
    }
    return Status::Failure(
        "there is no model " + Quoted(name) +
        (meant.empty() ? MeantOrAll(name, names) : "; models of that short name: " + Listed(meant)));
}

Status OfScene(const ExportRequest& request, const Status& status)
{
    return status ? status : Status::Failure(OneLine(request.scene) + ": " + status.Reason());
}

std::vector<tev2_exporter::SceneModel> ModelsOfScene()
{
    std::vector<tev2_exporter::SceneModel> list;
    std::map<FBModel*, std::int32_t> indices;
    for (FBModel* model : mobu_host::ModelsInPreOrder())
    {
        const auto parent = indices.find(model->Parent);
        indices.emplace(model, static_cast<std::int32_t>(list.size()));
        list.push_back(
            {parent == indices.end() ? -1 : parent->second, model->Selected, model->Is(FBCamera::TypeInfo)});
    }
    return list;
}

} // namespace

Status CheckRequest(ExportRequest& request)
{
    return StatusOf(request, tev2_exporter::PlanExport(request.question, nullptr).objection);
}

Status OpenScene(ExportRequest& request, std::vector<std::string>& notes)
{
    mobu_host::ImportOptions options;
    options.scene_rate = request.scene_rate;
    options.sources = request.hash_sources ? &request.sources : nullptr;
    const mobu_host::SceneImportResult scene = mobu_host::ImportScene(request.scene, options);
    notes = scene.notes;
    request.source_files = scene.source_files;
    return scene.ok ? Status() : Status::Failure(scene.error);
}

Status PrepareScene(ExportRequest& request, std::vector<std::string>& notes)
{
    if (const Objection nothing = tev2_exporter::CheckScene(FactsOf(request)))
        return StatusOf(request, nothing);
    if (const Objection none = request.takes.empty() ? Objection() : ChooseTakes(request, notes))
        return StatusOf(request, none);
    for (const std::string& name : request.select)
        if (const Status selected = SelectModel(name); !selected)
            return OfScene(request, selected);
    return {};
}

SceneFacts FactsOf(const ExportRequest& request)
{
    SceneFacts scene;
    scene.transport_rate = FBPlayerControl().GetTransportFpsValue();
    FBTake* const current = FBSystem().CurrentTake;
    for (FBTake* take : TakesOfScene())
    {
        const FBTimeSpan span = take->LocalTimeSpan;
        if (take == current)
            scene.current_take = scene.takes.size();
        scene.takes.push_back(
            {NameOf(*take), span.GetStart().GetSecondDouble(), span.GetStop().GetSecondDouble()});
    }
    scene.models = ModelsOfScene();
    scene.files = request.source_files;
    scene.files.insert(scene.files.begin(), request.scene);
    return scene;
}

Status MakeFolders(const std::vector<FilePlan>& files)
{
    for (const FilePlan& file : files)
    {
        std::error_code error;
        const std::filesystem::path folder = std::filesystem::path(file.path).parent_path();
        if (!file.kept && !folder.empty() && !FileStamp::Of(folder.string()).folder)
            std::filesystem::create_directories(folder, error);
        if (error)
            return Status::Failure("cannot make the folder " + Quoted(folder.string()) + ": " +
                                   error.message());
    }
    return {};
}

Status MakeTargetsWritable(const std::vector<FilePlan>& files)
{
    for (const FilePlan& file : files)
    {
        const int error = !file.kept && FileStamp::Of(file.path).read_only ? MakeWritable(file.path) : 0;
        if (error != 0)
            return Status::Failure("cannot make " + Quoted(file.path) + " writable: " + std::strerror(error));
    }
    return {};
}

Status StatusOf(ExportRequest& request, const Objection& objection)
{
    if (!objection)
        return {};
    request.refusal = objection.code;
    return OfScene(request, Status::Failure(objection.text));
}

} // namespace tv2
