#include "tools/tv2/export_plan.h"

#include "exporter/rules/rules.h"
#include "host/import/scene_import.h"
#include "text/closest_name.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"

#include <mobu_host/scene.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <map>

namespace tv2
{

using tev2_exporter::ExportQuestion;
using tev2_exporter::FilePlan;
using tev2_exporter::Objection;
using tev2_exporter::RulesPlan;
using tev2_exporter::SceneFacts;

namespace
{

std::vector<FBTake*> TakesOfScene()
{
    FBPropertyListTake& takes = mobu_host::Scene().Takes;
    std::vector<FBTake*> list;
    list.reserve(static_cast<std::size_t>(takes.GetCount()));
    for (int i = 0; i < takes.GetCount(); ++i)
    {
        list.push_back(takes[i]);
    }
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

/// What to put after a name that nothing in the scene has.
std::string MeantOrAll(const std::string& name, const std::vector<std::string>& names)
{
    return DidYouMeanOr(name, names, "; the scene has " + Listed(names));
}

std::string ChooseTake(const std::string& name)
{
    if (name.empty())
    {
        return {};
    }
    std::vector<std::string> names;
    for (FBTake* take : TakesOfScene())
    {
        names.push_back(NameOf(*take));
        if (names.back() == name)
        {
            FBSystem().CurrentTake = take;
            return {};
        }
    }
    return "there is no take " + Quoted(name) + MeantOrAll(name, names);
}

std::string SelectModels(const std::vector<std::string>& wanted)
{
    const std::vector<FBModel*> models = mobu_host::ModelsInPreOrder();
    for (const std::string& name : wanted)
    {
        const auto found = std::find_if(models.begin(), models.end(),
                                        [&name](FBModel* model) { return LongNameOf(*model) == name; });
        if (found == models.end())
        {
            std::vector<std::string> names;
            names.reserve(models.size());
            for (FBModel* model : models)
            {
                names.push_back(LongNameOf(*model));
            }
            std::vector<std::string> meant = names;
            std::erase_if(meant,
                          [&name](const std::string& long_name) { return !long_name.ends_with(":" + name); });
            return "there is no model " + Quoted(name) +
                   (meant.empty() ? MeantOrAll(name, names)
                                  : "; models of that short name: " + Listed(meant));
        }
        (*found)->Selected = true;
    }
    return {};
}

ExportQuestion QuestionOf(const ExportRequest& request)
{
    ExportQuestion question;
    question.path = request.output;
    question.rate = request.rate;
    question.start_frame = request.start_frame;
    question.end_frame = request.end_frame;
    question.all_takes = request.all_takes;
    question.spaces_to_underscores = request.spaces_to_underscores;
    return question;
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

/// What the rules ask about the scene that is open.
SceneFacts FactsOf(const ExportRequest& request)
{
    SceneFacts scene;
    scene.transport_rate = FBPlayerControl().GetTransportFpsValue();
    FBTake* const current = FBSystem().CurrentTake;
    for (FBTake* take : TakesOfScene())
    {
        const FBTimeSpan span = take->LocalTimeSpan;
        if (take == current)
        {
            scene.current_take = scene.takes.size();
        }
        scene.takes.push_back(
            {NameOf(*take), span.GetStart().GetSecondDouble(), span.GetStop().GetSecondDouble()});
    }
    scene.models = ModelsOfScene();
    scene.files = request.source_files;
    scene.files.insert(scene.files.begin(), request.scene);
    return scene;
}

std::vector<PlannedFile> PlannedFiles(const std::vector<FilePlan>& files, const ExportRequest& request)
{
    const bool as_given = OutputForExporter(request) == request.output;
    const std::vector<FBTake*> takes = TakesOfScene();
    std::vector<PlannedFile> planned;
    for (const FilePlan& file : files)
    {
        FBTake* const take = takes[file.take];
        const std::string named = as_given ? file.path : std::filesystem::absolute(file.path).string();
        planned.push_back({take, NameOf(*take), file.path, named, file.range, {}});
    }
    return planned;
}

std::vector<float> InstantsOf(const tev2_exporter::SamplingRange& range)
{
    std::vector<float> instants = {range.start};
    for (tev2_exporter::RegularInstants regular(range); regular.Next();)
    {
        instants.push_back(regular.Time());
    }
    instants.push_back(range.end);
    return instants;
}

} // namespace

std::string OutputForExporter(const ExportRequest& request)
{
    return tev2_exporter::PathForExporter(request.output, FactsOf(request));
}

std::string CheckRequest(const ExportRequest& request)
{
    return tev2_exporter::PlanExport(QuestionOf(request), nullptr).objection.text;
}

std::string OpenScene(ExportRequest& request, std::vector<std::string>& notes)
{
    mobu_host::ImportOptions options;
    options.scene_rate = request.scene_rate;
    const mobu_host::SceneImportResult scene = mobu_host::ImportScene(request.scene, options);
    notes = scene.notes;
    request.source_files = scene.source_files;
    return scene.ok ? std::string() : scene.error;
}

std::string PrepareScene(const ExportRequest& request, ExportPlan& plan)
{
    if (const Objection nothing = tev2_exporter::CheckScene(FactsOf(request)))
    {
        return nothing.text;
    }
    for (const std::string& reason : {ChooseTake(request.take), SelectModels(request.select)})
    {
        if (!reason.empty())
        {
            return reason;
        }
    }
    RulesPlan counted;
    tev2_exporter::CountNodes(ModelsOfScene(), counted);
    plan.nodes = counted.nodes;
    plan.cameras = counted.cameras;
    return {};
}

std::vector<PlannedFile> NameFiles(const ExportRequest& request)
{
    return PlannedFiles(tev2_exporter::NameFiles(QuestionOf(request), FactsOf(request)), request);
}

std::string PlanExport(const ExportRequest& request, ExportPlan& plan)
{
    if (std::string reason = PrepareScene(request, plan); !reason.empty())
    {
        return reason;
    }
    const SceneFacts scene = FactsOf(request);
    const RulesPlan rules = tev2_exporter::PlanExport(QuestionOf(request), &scene);
    if (rules.objection)
    {
        return rules.objection.text;
    }
    plan.rate = rules.rate;
    plan.whole_take = rules.whole_take;
    plan.start_frame = rules.start_frame;
    plan.end_frame = rules.end_frame;
    plan.notes = rules.notes;
    plan.files = PlannedFiles(rules.files, request);
    for (PlannedFile& file : plan.files)
    {
        file.instants = InstantsOf(file.range);
    }
    return {};
}

std::string CheckTargets(const ExportRequest& request, const ExportPlan& plan)
{
    std::vector<FilePlan> files;
    for (const PlannedFile& file : plan.files)
    {
        files.emplace_back().path = file.path;
    }
    return tev2_exporter::CheckTargets(files, FactsOf(request)).text;
}

std::string WhyNotSampled(const ExportRequest& request, double rate)
{
    return tev2_exporter::CheckSampling(rate, QuestionOf(request), FactsOf(request)).text;
}

std::string MakeTargetsWritable(const ExportPlan& plan)
{
    for (const PlannedFile& file : plan.files)
    {
        const int error = FileStamp::Of(file.path).read_only ? MakeWritable(file.path) : 0;
        if (error != 0)
        {
            return "cannot make " + Quoted(file.path) + " writable: " + std::strerror(error);
        }
    }
    return {};
}

std::string OfScene(const ExportRequest& request, const std::string& reason)
{
    return reason.empty() ? std::string() : OneLine(request.scene) + ": " + reason;
}

} // namespace tv2
