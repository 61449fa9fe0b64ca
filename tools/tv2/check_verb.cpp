// tv2 check: errors and suspicious values in a file.

#include "check/check_codes.h"
#include "check/lint.h"
#include "tev2_loader/up_axis.h"
#include "tools/tv2/each_file.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <map>
#include <string>
#include <vector>

namespace tv2
{

using namespace tev2_check;

namespace
{

/// Findings of one code that are printed per file unless --all is given.
constexpr std::size_t kMostOfOneCode = 5;

void PrintCodes(VerbContext& context)
{
    std::ostream& out = context.out;
    if (context.json)
    {
        Json json = {{"codes", Json::array()}};
        for (const CheckCode& code : CheckCodes())
        {
            json["codes"].push_back({{"code", code.code},
                                     {"severity", SeverityName(code.severity)},
                                     {"sentence", code.sentence}});
        }
        out << JsonAnswer(json);
        return;
    }
    for (const CheckCode& code : CheckCodes())
    {
        out << std::left << std::setw(28) << code.code << std::setw(9) << SeverityName(code.severity)
            << code.sentence << '\n';
    }
}

std::string CountsText(const std::array<std::size_t, 3>& counts)
{
    std::string text;
    const auto add = [&text](std::size_t count, const char* singular, const char* plural)
    {
        if (count > 0)
            text += (text.empty() ? "" : ", ") + CountOf(count, singular, plural);
    };
    if (counts[1] == 0 && counts[2] == 0)
        text = "clean";
    add(counts[2], "error", "errors");
    add(counts[1], "warning", "warnings");
    add(counts[0], "note", "notes");
    return text;
}

Json ToJson(const Finding& finding)
{
    Json json;
    json["code"] = finding.code;
    json["severity"] = SeverityName(finding.severity);
    json["offset"] = finding.offset;
    json["chunkId"] = nullptr;
    json["chunkOffset"] = nullptr;
    if (finding.chunk_id)
    {
        json["chunkId"] = *finding.chunk_id;
        json["chunkOffset"] = finding.chunk_offset;
    }
    json["path"] = finding.path;
    json["name"] = finding.name;
    json["message"] = finding.message;
    return json;
}

/// The findings of one code beyond those that are printed.
struct Rest
{
    std::size_t found = 0;
    std::vector<std::string> names; ///< of the nodes and cameras of those that are not printed
};

void PrintFile(const LoadedFile& file, const std::vector<Finding>& findings, const std::string& counts,
               bool all, std::ostream& out)
{
    out << Printable(file.title) << ": " << counts << '\n';
    std::map<std::string, Rest> rests;
    for (const Finding& finding : findings)
    {
        Rest& rest = rests[finding.code];
        if (++rest.found <= kMostOfOneCode || all)
            out << "  " << FindingText(finding) << '\n';
        else if (!finding.name.empty() && (rest.names.empty() || rest.names.back() != finding.name))
            rest.names.push_back(finding.name);
    }
    for (const auto& [code, rest] : rests)
    {
        if (rest.found > kMostOfOneCode && !all)
        {
            out << "  ... " << CountText(rest.found - kMostOfOneCode) << " more of " << code
                << (rest.names.empty() ? "" : ": " + Listed(rest.names)) << " (--all shows them)\n";
        }
    }
    if (file.loaded)
        out << "  up axis: " << TEV2_LOADER::UpAxisName(TEV2_LOADER::UpAxis(*file.scene)) << '\n';
}

Json ToJson(const LoadedFile& file, const std::vector<Finding>& findings, bool clean)
{
    Json json = {{"file", file.argument}, {"loaded", file.loaded}};
    if (file.loaded)
        json["upAxis"] = TEV2_LOADER::UpAxisName(TEV2_LOADER::UpAxis(*file.scene));
    else
        json["error"] = WhyNotLoaded(file);
    json["clean"] = clean;
    json["findings"] = Json::array();
    for (const Finding& finding : findings)
        json["findings"].push_back(ToJson(finding));
    return json;
}

class CheckVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &files_,
             .help = "The .tv2 files; - is standard input",
             .files = ".tv2"},
            {.name = "--codes",
             .value = &codes_,
             .help = "List all codes, each with a sentence, and do nothing else"},
            {.name = "--all",
             .value = &all_,
             .help = "Show every finding, however many there are of one code"},
            {.name = "--files",
             .value = &look_for_.files,
             .help = "Look whether the images that a scene names are there, beside the file"},
            {.name = "--like",
             .value = &like_,
             .help = "Look whether the animation fits the rig in this .tv2 file: every animated node is "
                     "there, below the same parents",
             .check = NotEmpty,
             .files = ".tv2"},
        };
    }

    std::string Refusal(const std::set<std::string>&) const override
    {
        if (look_for_.files && std::ranges::find(files_, kStandardInput) != files_.end())
            return "--files needs to know the folder of the file, but FILE is standard input";
        if (like_ == kStandardInput)
            return "--like cannot be standard input";
        return files_.empty() && !codes_ ? "FILE is required" : "";
    }

    void Run(VerbContext& context) override
    {
        if (codes_)
            return PrintCodes(context);
        LoadedFile rig;
        if (!like_.empty())
        {
            const TEV2_LOADER::Status read = ReadFile(like_, rig);
            if (!read || !rig.loaded)
                return context.Fail(like_, read ? WhyNotLoaded(rig) : read.Reason(), kExitCouldNotRun);
            look_for_.like = rig.scene.get();
        }
        AnswerForEachFile(files_, context,
                          [&](LoadedFile& file) -> Json
                          {
                              const std::vector<Finding> findings = Examine(file, look_for_);
                              std::array<std::size_t, 3> counts{};
                              for (const Finding& finding : findings)
                                  ++counts[static_cast<std::size_t>(finding.severity)];
                              const bool clean = counts[1] == 0 && counts[2] == 0;
                              context.Report(clean ? kExitDone : kExitFindings);
                              if (context.json)
                                  return ToJson(file, findings, clean);
                              PrintFile(file, findings, CountsText(counts), all_, context.out);
                              return {};
                          });
    }

private:
    std::vector<std::string> files_;
    bool codes_ = false;
    bool all_ = false;
    std::string like_;
    CheckOptions look_for_;
};

const VerbRegistration kCheckVerb({
    .name = "check",
    .place = 60,
    .help = "Errors and suspicious values in a file",
    .examples = "tv2 check takes/*.tv2\n"
                "tv2 check --json walk.tv2 | jq -r '.files[].findings[].code'\n"
                "tv2 check --files scene.tv2\n"
                "tv2 check --like hero.tv2 takes/*.tv2\n"
                "tv2 check --codes",
    .remarks =
        "Exit code: 0: no errors or warnings (notes do not count); 1: errors or warnings; 2: a file cannot "
        "be read.",
    .json_help = "Print JSON: an object with one entry of \"files\" for each file",
    .make = Make<CheckVerb>,
});

} // namespace

} // namespace tv2
