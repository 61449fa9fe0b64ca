#include "exporter/rules/rules.h"

#include "exporter/rules/rule.h"
#include "text/message_text.h"

#include <algorithm>
#include <span>

namespace tev2_exporter
{
namespace
{

Objection SceneIsOpen(const Case& c)
{
    return CheckScene(*c.scene);
}

/// Counts what every file will hold.
void CountNodes(const std::vector<SceneModel>& models, ExportPlan& plan)
{
    const bool whole_scene = std::ranges::none_of(models, &SceneModel::selected);
    std::vector<bool> exported(models.size());
    for (std::size_t i = 0; i < models.size(); ++i)
    {
        const SceneModel& model = models[i];
        const bool below = model.parent >= 0 && exported[static_cast<std::size_t>(model.parent)];
        exported[i] = whole_scene || model.selected || below;
        plan.nodes += exported[i] ? 1 : 0;
        plan.cameras += exported[i] && model.camera ? 1 : 0;
    }
    // The exporter inserts a root above selected models.
    plan.nodes += !exported.empty() && !exported.front() ? 1 : 0;
}

void ListFiles(const Case& c)
{
    c.plan.files = NameFiles(c.question, *c.scene);
    CountNodes(c.scene->models, c.plan);
}

Objection TakesExist(const Case& c)
{
    ListFiles(c);
    return c.plan.files.empty() ? Objection{"no-take", "no take is current"} : Objection{};
}

Objection TargetsAreFree(const Case& c)
{
    return CheckTargets(c.question, c.plan.files, *c.scene);
}

constexpr Rule* kRulesWithoutScene[] = {EndsInTv2, PathFits, RateCanBeRead, RangeGoesForward};

constexpr Rule* kRulesOfScenes[] = {
    RateCanBePassedOn, SceneIsOpen, TakesExist,    RangeIsInside, TimeMovesOn,    SamplesFit,
    TakesCanNameFiles, NamesFit,    NamesAreFiles, FilesDiffer,   TargetsAreFree,
};

constexpr Rule* kRulesOfSampling[] = {TimeMovesOn, SamplesFit};

Objection FirstOf(std::span<Rule* const> rules, const Case& c)
{
    for (Rule* const rule : rules)
        if (Objection objection = rule(c))
            return objection;
    return {};
}

} // namespace

Objection CheckScene(const SceneFacts& scene)
{
    if (scene.models.size() > 1)
        return {};
    return scene.files.empty() ? Objection{"no-scene", "no scene is open, or it has no models"}
                               : Objection{"no-models", "the scene has no models"};
}

ExportPlan PlanExport(const ExportQuestion& question, const SceneFacts* scene)
{
    ExportPlan plan;
    plan.call.flags = question.flags;
    const Case c{question, scene, plan};
    plan.objection = FirstOf(kRulesWithoutScene, c);
    if (plan.objection || scene == nullptr)
        return plan;
    plan.call.path = PathForExporter(question.path, *scene);
    plan.objection = FirstOf(kRulesOfScenes, c);
    if (!plan.objection)
        AddNotes(c);
    return plan;
}

std::vector<CallOfPlan> CallsOf(const ExportQuestion& question, const ExportPlan& plan)
{
    std::vector<CallOfPlan> calls;
    if (question.takes.empty() && std::ranges::none_of(plan.files, &FilePlan::kept))
        return {{plan.call, std::nullopt}};
    for (const FilePlan& file : plan.files)
    {
        if (file.kept)
            continue;
        CallOfPlan& call = calls.emplace_back(CallOfPlan{plan.call, file.take});
        call.call.flags.all_takes = false;
        call.call.path = file.named;
    }
    return calls;
}

ExportPlan PlanOfDialog(const ExportCall& chosen, const SceneFacts& scene)
{
    ExportQuestion question;
    question.path = chosen.path;
    question.flags = chosen.flags;
    if (!chosen.whole_take)
    {
        question.start_frame = chosen.start_frame;
        question.end_frame = chosen.end_frame;
    }
    ExportPlan plan;
    plan.call.rate = chosen.rate;
    plan.call.flags = chosen.flags;
    const Case c{question, &scene, plan};
    ListFiles(c);
    SetRanges(c);
    plan.objection = FirstOf(kRulesOfSampling, c);
    return plan;
}

std::string OptionName(const ExportQuestion& question, const ExportOption& option)
{
    return question.wording == ExportQuestion::Wording::kPython ? option.name : CommandLineName(option);
}

TakeTimes TimesOf(const Case& c, const FilePlan& file)
{
    const SceneTake& take = c.scene->takes[file.take];
    return {take.start, take.stop, c.scene->transport_rate};
}

std::string FramesText(const TakeTimes& take, const SamplingRange& range)
{
    return "frames " + std::to_string(FrameAt(take.start, take.transport_rate)) + " to " +
           std::to_string(FrameAt(take.stop, take.transport_rate)) + " (" + NumberText(range.start) + " to " +
           NumberText(range.end) + " s)";
}

} // namespace tev2_exporter
