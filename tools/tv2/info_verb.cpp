// tv2 info: what is in a file, on one screen.

#include "tev2_loader/up_axis.h"
#include "tools/tv2/each_file.h"
#include "tools/tv2/scene_objects.h"
#include "tools/tv2/scene_summary.h"
#include "tools/tv2/text.h"

#include <iomanip>
#include <sstream>

namespace tv2
{

using namespace TEV2_LOADER;

namespace
{

/// The name of a camera's node; empty when the file has no such node.
std::string NodeName(const TEV2& scene, const TEV2_CAMERA& camera)
{
    const auto& nodes = scene.matrixHierarchy.nodes;
    return camera.value < nodes.size() ? ReadableText(nodes[camera.value].name.Text()) : std::string();
}

Json JsonPoint(const std::array<float, 3>& point)
{
    return {JsonFloat(point[0]), JsonFloat(point[1]), JsonFloat(point[2])};
}

Json ToJson(const LoadedFile& file, const Summary& summary)
{
    const TEV2& scene = *file.scene;
    Json json = {{"file", file.argument}};
    json["bytes"] = file.image.size();
    json["version"] = nullptr;
    json["creatorText"] = nullptr;
    json["informationLines"] = summary.information_lines;
    json["timeRange"] = nullptr;
    if (summary.has_information)
    {
        json["version"] = JsonFloat(scene.information.version);
        json["creatorText"] = ReadableText(scene.information.creatorText.Text());
    }
    if (summary.has_environment)
    {
        json["timeRange"] = {{"start", JsonFloat(scene.environment.timeRange.minimum)},
                             {"end", JsonFloat(scene.environment.timeRange.maximum)}};
    }
    json["upAxis"] = UpAxisName(UpAxis(scene));
    json["nodes"] = scene.matrixHierarchy.nodes.size();
    json["topNodes"] = summary.top_nodes;
    json["cameras"] = Json::array();
    for (const auto& camera : scene.cameras)
    {
        json["cameras"].push_back({{"name", ReadableText(camera->name.Text())},
                                   {"node", camera->value},
                                   {"nodeName", NodeName(scene, *camera)},
                                   {"inverseAspect", JsonFloat(camera->inverseAspect)}});
    }
    json["switcher"] = nullptr;
    if (scene.cameraMan.cameraIndex != nullptr)
        json["switcher"] = {{"keys", summary.switcher_keys}, {"cameras", summary.active_cameras}};
    json.update(DescribeObjects(file));
    json["tracks"] = Json::array();
    for (const auto& [kind, total] : summary.tracks)
    {
        json["tracks"].push_back({{"kind", kind},
                                  {"class", kTrackKinds[kind].className},
                                  {"tracks", total.tracks},
                                  {"keys", total.keys}});
    }
    json["extents"] = nullptr;
    if (summary.extents.found)
    {
        json["extents"] = {{"minimum", JsonPoint(summary.extents.minimum)},
                           {"maximum", JsonPoint(summary.extents.maximum)},
                           {"keyTimes", summary.extents.key_times},
                           {"keyTimesEvaluated", summary.extents.evaluated}};
    }
    json["chunks"] = Json::array();
    for (const auto& [id, total] : summary.chunks)
    {
        const TEV2_KIND* const kind = FindChunkKind(id);
        json["chunks"].push_back({{"id", id},
                                  {"class", kind != nullptr ? kind->className : ""},
                                  {"chunks", total.chunks},
                                  {"bytes", total.bytes}});
    }
    return json;
}

class InfoScreen
{
public:
    InfoScreen(std::ostream& out, const LoadedFile& file, const Summary& summary)
        : out_(out), file_(file), scene_(*file.scene), summary_(summary)
    {
    }

    void Print()
    {
        out_ << Printable(file_.title) << '\n';
        const bool known = summary_.has_information;
        Line("version") << (known ? FloatText(scene_.information.version) : kMissing) << ", "
                        << CountOf(file_.image.size(), "byte", "bytes") << '\n';
        Line("creator") << (known ? OneLine(ReadableText(scene_.information.creatorText.Text())) : kMissing)
                        << '\n';
        for (const std::string& line : summary_.information_lines)
        {
            const std::size_t tab = line.find(":\t");
            if (tab == std::string::npos)
                Line("") << OneLine(line) << '\n';
            else
                Line(OneLine(line.substr(0, tab))) << OneLine(line.substr(tab + 2)) << '\n';
        }
        const auto& range = scene_.environment.timeRange;
        Line("time range") << (summary_.has_environment
                                   ? FloatText(range.minimum) + " to " + FloatText(range.maximum) + " s"
                                   : kMissing)
                           << '\n';
        Line("up axis") << UpAxisName(UpAxis(scene_)) << '\n';
        PrintExtents();
        Line("nodes") << CountText(scene_.matrixHierarchy.nodes.size());
        if (!scene_.matrixHierarchy.nodes.empty())
            out_ << ", first \"" << OneLine(ReadableText(scene_.matrixHierarchy.nodes[0].name.Text())) << '"';
        out_ << '\n';
        PrintCameras();
        PrintObjects(DescribeObjects(file_), out_);
        PrintTotals();
    }

private:
    static constexpr std::size_t kMostCameras = 10;
    static constexpr const char* kMissing = "missing";

    std::ostream& Line(const std::string& label)
    {
        return out_ << "  " << std::left << std::setw(12) << label << ' ';
    }

    void PrintExtents()
    {
        const Extents& extents = summary_.extents;
        Line("extents");
        if (!extents.found)
        {
            out_ << "none\n";
            return;
        }
        std::ostringstream text;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            text << (axis == 0 ? "" : ", ") << "xyz"[axis] << ' ' << extents.minimum[axis] << " to "
                 << extents.maximum[axis];
        }
        out_ << text.str() << " m";
        if (extents.evaluated < extents.key_times)
        {
            out_ << " (at " << CountText(extents.evaluated) << " of " << CountText(extents.key_times)
                 << " key times)";
        }
        out_ << '\n';
    }

    void PrintCameras()
    {
        Line("cameras") << CountText(scene_.cameras.size()) << '\n';
        for (std::size_t i = 0; i < std::min(scene_.cameras.size(), kMostCameras); ++i)
        {
            const TEV2_CAMERA& camera = *scene_.cameras[i];
            Line("") << i << ": \"" << OneLine(ReadableText(camera.name.Text())) << "\" at node "
                     << camera.value << '\n';
        }
        if (scene_.cameras.size() > kMostCameras)
            Line("") << "... " << CountText(scene_.cameras.size() - kMostCameras) << " more\n";
        Line("switcher");
        if (scene_.cameraMan.cameraIndex == nullptr)
        {
            out_ << "none\n";
            return;
        }
        out_ << CountOf(summary_.switcher_keys, "key", "keys") << ", active cameras:";
        const char* separator = " ";
        for (const std::int32_t camera : summary_.active_cameras)
        {
            out_ << separator << (camera == -1 ? "none (not exported)" : std::to_string(camera));
            separator = ", ";
        }
        out_ << '\n';
    }

    void PrintTotals()
    {
        Line("tracks") << (summary_.tracks.empty() ? "none\n" : "  tracks        keys\n");
        for (const auto& [kind, total] : summary_.tracks)
        {
            Line("") << std::right << std::setw(8) << CountText(total.tracks) << std::setw(12)
                     << CountText(total.keys) << "  " << kTrackKinds[kind].title << '\n';
        }
        Line("chunks") << "  chunks       bytes\n";
        for (const auto& [id, total] : summary_.chunks)
        {
            Line("") << std::right << std::setw(8) << CountText(total.chunks) << std::setw(12)
                     << CountText(total.bytes) << "  " << ChunkTitle(id) << '\n';
        }
    }

    std::ostream& out_;
    const LoadedFile& file_;
    const TEV2& scene_;
    const Summary& summary_;
};

class InfoVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &files_,
             .help = "The .tv2 files; - is standard input",
             .required = true,
             .files = ".tv2"},
        };
    }

    void Run(VerbContext& context) override
    {
        const char* separator = "";
        AnswerForEachScene(files_, context,
                           [&](LoadedFile& file) -> Json
                           {
                               const Summary summary = Summarise(file);
                               if (context.json)
                                   return ToJson(file, summary);
                               context.out << separator;
                               separator = "\n";
                               InfoScreen(context.out, file, summary).Print();
                               return {};
                           });
    }

private:
    std::vector<std::string> files_;
};

const VerbRegistration kInfoVerb({
    .name = "info",
    .place = 40,
    .help = "What is in a file, on one screen",
    .examples = "tv2 info walk.tv2\n"
                "tv2 info --json takes/*.tv2 | jq '.files[].nodes'",
    .json_help = "Print JSON: an object with one entry of \"files\" for each file",
    .make = Make<InfoVerb>,
});

} // namespace

} // namespace tv2
