#include "host/import/formats.h"
#include "host/import/scene_import.h"
#include "tools/tv2/notes.h"
#include "tools/tv2/scene_answer.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <string>
#include <vector>

namespace tv2
{

namespace
{

std::string Short(const Json& value)
{
    if (value.is_number_float())
        return ShortNumber(value.get<double>());
    if (value.is_array())
    {
        std::string list;
        for (const Json& element : value)
            list += (list.empty() ? "" : ", ") + Short(element);
        return "(" + list + ")";
    }
    return value.is_string() ? '"' + OneLine(value.get<std::string>()) + '"' : value.dump();
}

void PrintProperties(std::ostream& out, const Json& properties, const std::string& indent)
{
    for (const Json& property : properties)
    {
        out << indent << ". " << OneLine(property["name"].get<std::string>()) << " = "
            << Short(property["value"]) << "  " << property["kind"].get<std::string>();
        if (property.contains("items"))
            out << " of " << Short(property["items"]);
        out << '\n';
    }
}

void PrintModels(std::ostream& out, const Json& models)
{
    std::vector<std::string> path; // long names from the root to the previous model
    for (const Json& model : models)
    {
        while (!path.empty() && model["parent"] != path.back())
            path.pop_back();
        const std::string indent(2 + 2 * path.size(), ' ');
        const std::string name = model["name"].get<std::string>();
        out << indent << OneLine(name);
        if (model["type"] != "model")
            out << "  [" << model["type"].get<std::string>() << ']';
        out << '\n';
        if (model.contains("lens"))
        {
            const Json& lens = model["lens"];
            out << indent << "  " << (lens["orthogonal"].get<bool>() ? "orthogonal, " : "")
                << "field of view " << Short(lens["fieldOfView"]) << " degrees ("
                << lens["apertureMode"].get<std::string>() << "), aspect " << Short(lens["aspect"]) << ", "
                << Short(lens["near"]) << " to " << Short(lens["far"]) << " cm\n";
        }
        PrintProperties(out, model["properties"], indent + "  ");
        path.push_back(name);
    }
}

void PrintScene(std::ostream& out, const Json& scene)
{
    out << Printable(scene["file"].get<std::string>()) << "\ntransport rate " << Short(scene["transportRate"])
        << " frames a second\n";
    out << CountOf(scene["takes"].size(), "take", "takes") << '\n';
    for (const Json& take : scene["takes"])
    {
        out << "  " << OneLine(take["name"].get<std::string>()) << "  " << Short(take["start"]) << " to "
            << Short(take["end"]) << " s, frames " << Short(take["startFrame"]) << " to "
            << Short(take["endFrame"]) << (take["current"].get<bool>() ? "  (current)" : "") << '\n';
    }
    out << CountOf(scene["models"].size() - 1, "model", "models") << " below the root\n";
    PrintModels(out, scene["models"]);
    out << CountOf(scene["systemCameras"].size(), "system camera", "system cameras") << ", "
        << (scene["switcher"].get<bool>() ? "a" : "no") << " camera switcher\n";
    out << CountOf(scene["constraints"].size(), "constraint", "constraints") << '\n';
    for (const Json& constraint : scene["constraints"])
    {
        out << "  " << OneLine(constraint["name"].get<std::string>());
        if (const auto type = constraint["type"].get<std::string>(); !type.empty())
            out << "  " << OneLine(type);
        out << (constraint["active"].get<bool>() ? "" : "  (inactive)")
            << (constraint["solved"].get<bool>() ? "" : "  (not solved)") << '\n';
    }
    PrintNotes(out, scene["notes"].get<std::vector<std::string>>(), OutputColumns());
}

class SceneVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {SceneFileOption(scene_, mobu_host::SceneExtensions()), SceneRateOption(import_.scene_rate)};
    }

    void Run(VerbContext& context) override
    {
        const mobu_host::SceneImportResult result = mobu_host::ImportScene(scene_, import_);
        if (!result.ok)
            return context.Fail(scene_, result.error, kExitCouldNotRun);
        const Json scene = DescribeScene(scene_, result.notes);
        if (context.json)
        {
            context.out << JsonAnswer(scene);
            return;
        }
        PrintScene(context.out, scene);
    }

private:
    std::string scene_;
    mobu_host::ImportOptions import_;
};

const std::string kSceneHelp = "What is in a scene file (" + mobu_host::ReadableFormats(", ") + ")";

const VerbRegistration kSceneVerb({
    .name = "scene",
    .place = 20,
    .help = kSceneHelp,
    .examples = "tv2 scene walk.bvh\n"
                "tv2 scene --json robot.glb | jq '.takes[].name'",
    .json_help = "Print JSON; positions are those of the first frame, in centimetres",
    .make = Make<SceneVerb>,
});

} // namespace

} // namespace tv2
