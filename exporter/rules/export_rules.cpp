#include "exporter/rules/export_rules.h"

#include "exporter/base/option_table.h"
#include "exporter/base/script_entry.h"
#include "exporter/rules/rules.h"

#include <iterator>

struct tv2_rules_plan
{
    tev2_exporter::ExportPlan plan;
};

using namespace tev2_exporter;

namespace
{

std::string Text(const char* text)
{
    return text != nullptr ? text : "";
}

std::optional<std::int32_t> Frame(const int32_t* frame)
{
    return frame != nullptr ? std::optional(*frame) : std::nullopt;
}

ExportQuestion QuestionOf(const tv2_rules_request& request)
{
    ExportQuestion question;
    question.path = Text(request.path);
    question.rate = Text(request.rate);
    question.start_frame = Frame(request.start_frame);
    question.end_frame = Frame(request.end_frame);
    question.flags.all_takes = request.all_takes != 0;
    question.flags.spaces_to_underscores = request.spaces_to_underscores != 0;
    question.whole_rates_only = request.whole_rates_only != 0;
    question.wording = request.python_wording != 0 ? ExportQuestion::Wording::kPython
                                                   : ExportQuestion::Wording::kCommandLine;
    question.file_names = request.file_names == 1   ? ExportQuestion::FileNames::kPosix
                          : request.file_names == 2 ? ExportQuestion::FileNames::kWindows
                                                    : ExportQuestion::FileNames::kOfThisSystem;
    return question;
}

SceneFacts SceneOf(const tv2_rules_request& request)
{
    SceneFacts scene;
    scene.transport_rate = request.transport_rate;
    for (std::size_t i = 0; i < request.take_count; ++i)
    {
        const tv2_rules_take& take = request.takes[i];
        scene.takes.push_back({Text(take.name), take.start, take.stop});
    }
    if (request.current_take >= 0 && static_cast<std::size_t>(request.current_take) < request.take_count)
        scene.current_take = static_cast<std::size_t>(request.current_take);
    for (std::size_t i = 0; i < request.model_count; ++i)
    {
        const tv2_rules_model& model = request.models[i];
        const bool has_parent = model.parent >= 0 && static_cast<std::size_t>(model.parent) < i;
        scene.models.push_back({has_parent ? model.parent : -1, model.selected != 0, model.camera != 0});
    }
    for (std::size_t i = 0; i < request.file_count; ++i)
        scene.files.push_back(Text(request.files[i]));
    return scene;
}

} // namespace

tv2_rules_plan* tv2_rules_check(const tv2_rules_request* request)
{
    if (request == nullptr || request->size != sizeof(tv2_rules_request))
        return nullptr;
    try
    {
        const SceneFacts scene = SceneOf(*request);
        return new tv2_rules_plan{
            PlanExport(QuestionOf(*request), request->has_scene != 0 ? &scene : nullptr)};
    }
    catch (...) // out of memory
    {
        return nullptr;
    }
}

void tv2_rules_free(tv2_rules_plan* plan)
{
    delete plan;
}

tv2_rules_result tv2_rules_result_of(const tv2_rules_plan* plan)
{
    const ExportPlan& made = plan->plan;
    tv2_rules_result result{};
    result.objection = made.objection ? made.objection.text.c_str() : nullptr;
    result.code = made.objection.code;
    result.rate = made.call.rate;
    result.path = made.call.path.c_str();
    result.start_frame = made.call.start_frame;
    result.end_frame = made.call.end_frame;
    result.whole_take = made.call.whole_take ? 1 : 0;
    result.file_count = made.files.size();
    result.note_count = made.notes.size();
    return result;
}

tv2_rules_file tv2_rules_file_at(const tv2_rules_plan* plan, size_t index)
{
    if (index >= plan->plan.files.size())
        return {};
    const FilePlan& file = plan->plan.files[index];
    return {file.path.c_str(), file.take, static_cast<double>(file.range.start),
            static_cast<double>(file.range.end)};
}

const char* tv2_rules_note(const tv2_rules_plan* plan, size_t index)
{
    return index < plan->plan.notes.size() ? plan->plan.notes[index].c_str() : nullptr;
}

int32_t tv2_rules_frame_at(double seconds, double transport_rate)
{
    return FrameAt(seconds, transport_rate);
}

size_t tv2_rules_option_count(void)
{
    return std::size(kExportOptions);
}

tv2_rules_option tv2_rules_option_at(size_t index)
{
    if (index >= std::size(kExportOptions))
        return {};
    const ExportOption& row = kExportOptions[index];
    return {row.name, row.help, row.flag != nullptr, row.flag != nullptr && ExportFlags{}.*row.flag};
}

const char* tv2_rules_script_entry(void)
{
    return kScriptEntryName;
}
