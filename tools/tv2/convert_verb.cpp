// tv2 convert: scenes to glTF and back, with a report of what was lost or changed.

#include "gltf/convert/document_files.h"
#include "tools/tv2/convert_files.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace tv2
{

using tev2_gltf::HasExtension;
using tev2_gltf::IsGltfPath;
using TEV2_LOADER::Status;

bool IsTev2Path(const std::string& path)
{
    return HasExtension(path, ".tv2");
}

namespace
{

constexpr const char* kStandardStream = "-";

std::filesystem::path RealPath(const std::string& utf8)
{
    std::error_code ignored;
    const std::filesystem::path path(std::u8string(utf8.begin(), utf8.end()));
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
}

Json ToJson(const tev2_gltf::ConversionReport& report)
{
    Json entries = Json::array();
    for (const tev2_gltf::ReportEntry& entry : report.Entries())
    {
        entries.push_back({{"code", tev2_gltf::NameOf(entry.code)},
                           {"severity", tev2_gltf::NameOf(tev2_gltf::SeverityOf(entry.code))},
                           {"where", entry.where},
                           {"text", entry.text},
                           {"count", entry.count}});
    }
    return entries;
}

class ConvertVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &paths_,
             .help =
                 "The files to convert, then the file to write: .tv2 files and a .glb or .gltf file, or a "
                 "glTF file and a .tv2 file. Several .tv2 files of one skeleton become an animation each",
             .files = ".tv2 .glb .gltf"},
            {.name = "--at",
             .value = TakeTime(request_.at),
             .help = "To glTF: only the pose at this time in seconds, without animation"},
            {.name = "--world",
             .value = &world_,
             .help =
                 "To glTF: the axes of the .tv2 files (default: what tv2 info concludes, otherwise y-up). "
                 "Turned: by half a turn about Y, as \"Keep positive Z?\" exports",
             .one_of = {"y-up", "y-up-turned", "z-up", "z-up-turned"}},
            {.name = "--standard-materials",
             .value = &request_.standard_materials,
             .help = "From glTF: standard materials, for engines that do not know metallic-roughness ones"},
            {.name = "--strict",
             .value = &strict_,
             .help = "Write nothing when something would be lost, and exit with 2"},
            {.name = "--codes", .value = &codes_, .help = "List what a conversion can report"},
        };
    }

    std::string Refusal(const std::set<std::string>&) const override
    {
        if (codes_)
            return paths_.empty() ? "" : "--codes lists what can be reported and takes no files";
        if (paths_.size() < 2)
            return "two files are needed: the one to convert and the one to write";
        return WhyNotThese(paths_.back());
    }

    void Run(VerbContext& context) override
    {
        SurviveClosedPipes();
        if (codes_)
            return ListCodes(context);
        request_.output = paths_.back();
        request_.inputs.assign(paths_.begin(), paths_.end() - 1);
        if (!world_.empty())
            request_.world = tev2_gltf::FindWorld(world_);
        Converted converted;
        const Status made = IsGltfPath(request_.output) ? ConvertToGltf(request_, converted)
                                                        : ConvertFromGltf(request_, converted);
        if (!made)
            return context.Fail(request_.inputs[0], made.Reason(), kExitCouldNotRun);
        if (const std::string why = WhyNotWritten(converted); !why.empty())
        {
            if (!context.json)
                PrintReport(converted, context.err);
            context.Complain(why, kExitCouldNotRun);
            if (!context.json)
                return;
            Json json = JsonFailure(request_.inputs[0], why);
            json["report"] = ToJson(converted.report);
            json["lost"] = converted.report.HasLost();
            context.out << JsonAnswer(json);
            return;
        }
        for (const ConvertedFile& file : converted.files)
        {
            if (const Status written = file.write(); !written)
                return context.Fail(request_.inputs[0],
                                    file.path + ": cannot be written: " + written.Reason(), kExitCouldNotRun);
        }
        if (converted.report.HasLost())
            context.Report(kExitFindings);
        Show(converted, context);
    }

private:
    /// The error in the names of files; empty when there is none.
    std::string WhyNotThese(const std::string& output) const
    {
        const bool to_gltf = IsGltfPath(output);
        if (!to_gltf && !IsTev2Path(output))
            return output + ": the file to write is the last one and ends in .glb, .gltf or .tv2";
        for (auto input = paths_.begin(); input != paths_.end() - 1; ++input)
        {
            const bool fits = to_gltf ? IsTev2Path(*input) || *input == kStandardStream : IsGltfPath(*input);
            if (!fits && *input == kStandardStream)
                return "-: only .tv2 files are read from standard input";
            if (!fits)
                return *input + (to_gltf ? ": only .tv2 files become glTF"
                                         : ": only .glb and .gltf files become .tv2");
            if (IsSameFile(*input, output))
                return output + ": the result would replace the file that is converted";
        }
        if (to_gltf && request_.standard_materials)
            return "--standard-materials is for conversions from glTF";
        if (to_gltf && request_.at && paths_.size() > 2)
            return "--at makes a pose of one .tv2 file";
        if (!to_gltf && (request_.at || !world_.empty()))
            return std::string(request_.at ? "--at" : "--world") + " is for conversions to glTF";
        return !to_gltf && paths_.size() > 2 ? "only one glTF file at a time becomes .tv2" : "";
    }

    std::string WhyNotWritten(const Converted& converted) const
    {
        std::set<std::filesystem::path> beside;
        for (const std::string& path : converted.beside)
            beside.insert(RealPath(path));
        for (const ConvertedFile& file : converted.files)
        {
            for (const std::string& input : request_.inputs)
                if (IsSameFile(file.path, input))
                    return file.path + ": the result would replace the file that is converted";
            if (!beside.empty() && beside.contains(RealPath(file.path)))
                return file.path + ": the result would replace a file that " + request_.inputs[0] +
                       " refers to";
        }
        return strict_ && converted.report.HasLost()
                   ? request_.output + ": not written, since something would be lost"
                   : "";
    }

    void Show(const Converted& converted, VerbContext& context) const
    {
        if (!context.json)
        {
            for (const ConvertedFile& file : converted.files)
                context.out << Printable(file.path) << ": " << TextOf(file) << '\n';
            for (const std::string& note : converted.notes)
                context.out << "  note: " << Printable(note) << '\n';
            return PrintReport(converted, context.out);
        }
        Json json = {{"inputs", request_.inputs}, {"files", Json::array()}, {"worlds", Json::array()}};
        for (const ConvertedFile& file : converted.files)
        {
            Json& entry = json["files"].emplace_back(Json{{"output", file.path}, {"holds", file.holds}});
            for (const ConvertedFile::Count& count : file.counts)
                entry[count.more] = count.number;
        }
        for (const tev2_gltf::World world : converted.worlds)
            json["worlds"].push_back(tev2_gltf::NameOf(world));
        json["report"] = ToJson(converted.report);
        json["lost"] = converted.report.HasLost();
        json["notes"] = converted.notes;
        context.out << JsonAnswer(json);
    }

    /// "40 nodes, 1 animation, 2 cameras", or what else the file holds.
    static std::string TextOf(const ConvertedFile& file)
    {
        if (file.counts.empty())
            return std::string(file.holds);
        std::string text;
        for (const ConvertedFile::Count& count : file.counts)
            if (count.number > 0)
                text += (text.empty() ? "" : ", ") + CountOf(count.number, count.one, count.more);
        return text.empty() ? "an empty scene" : text;
    }

    static void PrintReport(const Converted& converted, std::ostream& out)
    {
        for (const tev2_gltf::ReportEntry& entry : converted.report.Entries())
            out << "  " << tev2_gltf::EntryText(entry) << '\n';
    }

    static void ListCodes(VerbContext& context)
    {
        Json codes = Json::array();
        for (const tev2_gltf::ConversionCode& code : tev2_gltf::ConversionCodes())
        {
            const std::string_view severity = tev2_gltf::NameOf(tev2_gltf::SeverityOf(code.code));
            if (context.json)
                codes.push_back({{"code", code.name}, {"severity", severity}, {"meaning", code.sentence}});
            else
                context.out << std::string(code.name)
                            << std::string(25 - std::min<std::size_t>(24, code.name.size()), ' ') << severity
                            << std::string(9 - severity.size(), ' ') << code.sentence << '\n';
        }
        if (context.json)
            context.out << JsonAnswer({{"codes", codes}});
    }

    std::vector<std::string> paths_;
    ConvertRequest request_;
    std::string world_;
    bool strict_ = false;
    bool codes_ = false;
};

const VerbRegistration kConvertVerb({
    .name = "convert",
    .place = 75,
    .help = "Convert to glTF, for viewers and modellers, and from glTF",
    .examples = "tv2 convert walk.tv2 walk.glb\n"
                "tv2 convert walk.tv2 run.tv2 both.glb\n"
                "tv2 convert --at 1.5 walk.tv2 pose.gltf\n"
                "tv2 convert robot.glb robot.tv2\n"
                "tv2 convert --codes",
    .json_help = "Print JSON: what was written, and a report of what was lost or changed",
    .writes_files = true,
    .make = Make<ConvertVerb>,
});

} // namespace

} // namespace tv2
