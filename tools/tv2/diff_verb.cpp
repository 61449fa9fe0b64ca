// tv2 diff: what is different between two files.

#include "compare/difference_text.h"
#include "compare/differences.h"
#include "compare/structure.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/loaded_file.h"
#include "tools/tv2/text.h"
#include "tools/tv2/verb.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

namespace tv2
{

using namespace tev2_compare;
using TEV2_LOADER::Status;

namespace
{

/// Differences that are printed unless --all is given.
constexpr std::size_t kMostLines = 20;

/// Two files that were compared.
struct Answer
{
    const LoadedFile& left;
    const LoadedFile& right;
    const SceneMatch& match;
    const CompareOptions& options;
    const Comparison& comparison;
    bool identical; ///< byte for byte

    bool Equal() const { return comparison.differences.empty(); }
    bool Fits() const { return Obstacles(comparison.differences).empty(); }
};

std::string ToleranceText(const Tolerance& tolerance)
{
    return ShortNumber(tolerance.millimetres) + " mm, " + ShortNumber(tolerance.degrees) + " degrees and " +
           ShortNumber(tolerance.percent) + " %";
}

/// How many differences of each topic are printed: all of small topics, and as many of the others as there is room.
std::array<std::size_t, kTopics> LinesByTopic(const std::vector<Difference>& differences, bool all)
{
    std::array<std::size_t, kTopics> found{};
    for (const Difference& difference : differences)
        ++found[static_cast<std::size_t>(difference.topic)];
    if (all || differences.size() <= kMostLines)
        return found;
    std::array<std::size_t, kTopics> lines{};
    for (std::size_t left = kMostLines; left > 0;)
        for (std::size_t topic = 0; topic < kTopics && left > 0; ++topic)
            if (lines[topic] < found[topic])
            {
                ++lines[topic];
                --left;
            }
    return lines;
}

class DiffScreen
{
public:
    DiffScreen(const Answer& answer, bool all, std::ostream& out) : answer_(answer), all_(all), out_(out) {}

    void Print()
    {
        const std::string left = Printable(answer_.left.title);
        const std::string right = Printable(answer_.right.title);
        const Comparison& comparison = answer_.comparison;
        if (answer_.Equal())
        {
            out_ << left << " and " << right
                 << (answer_.identical ? " are identical"
                     : answer_.options.structure_only
                         ? " have the same rig"
                         : " are the same within " + ToleranceText(answer_.options.tolerance))
                 << '\n';
        }
        else
        {
            out_ << right << " compared with " << left << ":\n";
            PrintDifferences();
        }
        if (answer_.options.structure_only && !answer_.Equal())
            out_ << (answer_.Fits() ? left + " fits the rig of " + right +
                                          ": every node that it animates is there, below the same parents\n"
                                    : left + " does not fit the rig of " + right + '\n');
        if (!answer_.options.structure_only && !answer_.identical)
            PrintInstants(comparison);
    }

private:
    void PrintDifferences()
    {
        const std::vector<Difference>& differences = answer_.comparison.differences;
        auto lines = LinesByTopic(differences, all_);
        for (std::size_t index = 0; index < differences.size(); ++index)
        {
            const Topic topic = differences[index].topic;
            if (index == 0 || differences[index - 1].topic != topic)
                PrintTopic(topic);
            std::size_t& left = lines[static_cast<std::size_t>(topic)];
            if (left == 0)
            {
                ++hidden_;
            }
            else
            {
                --left;
                out_ << "    " << DifferenceText(differences[index], answer_.match) << '\n';
            }
            const bool last = index + 1 == differences.size() || differences[index + 1].topic != topic;
            if (last && hidden_ > 0)
                out_ << "    and " << CountText(std::exchange(hidden_, 0)) << " more (--all shows them)\n";
            if (last && topic == Topic::Motion)
                PrintFollowers();
        }
    }

    void PrintTopic(Topic topic)
    {
        const auto& motion = answer_.comparison.motion;
        switch (topic)
        {
        case Topic::Rig:
            out_ << "  rig\n";
            break;
        case Topic::Scene:
            out_ << "  scene\n";
            break;
        case Topic::Motion:
            out_ << "  motion: " << CountText(motion.differences.size()) << " of "
                 << CountOf(motion.compared, "node", "nodes")
                 << (motion.differences.size() == 1 ? " moves" : " move")
                 << " differently, the worst first\n";
            break;
        case Topic::Property:
            out_ << "  user properties, the worst first\n";
            break;
        case Topic::Camera:
            out_ << "  cameras\n";
            break;
        case Topic::Object:
            out_ << "  objects\n";
            break;
        }
    }

    void PrintFollowers()
    {
        const MotionComparison& motion = answer_.comparison.motion;
        if (motion.followers == 0)
            return;
        out_ << "    " << CountOf(motion.followers, "node follows", "nodes follow")
             << " what is above, the farthest " << Quoted(motion.farthest_follower) << ": "
             << DeviationText(motion.farthest) << '\n';
    }

    void PrintInstants(const Comparison& comparison)
    {
        if (!comparison.overlap)
        {
            out_ << "  poses and values are not compared: the time ranges do not overlap\n";
            return;
        }
        const Instants& instants = comparison.motion.instants;
        out_ << "  compared at " << CountOf(instants.times.size(), "instant", "instants");
        if (instants.times.size() < instants.all)
            out_ << " of " << CountText(instants.all);
        out_ << " from " << TimeText(comparison.span.start) << " to " << TimeText(comparison.span.end)
             << '\n';
    }

    const Answer& answer_;
    bool all_;
    std::ostream& out_;
    std::size_t hidden_ = 0; ///< of the present topic
};

Json JsonNumber(double number)
{
    return std::isfinite(number) ? Json(number) : Json("Infinity");
}

Json ToJson(const Deviation& deviation)
{
    Json json = {{"unit", NameOf(deviation.unit)}};
    if (deviation.unit != Unit::Value)
        json["worst"] = JsonNumber(deviation.worst);
    if (deviation.over_time)
    {
        json["time"] = JsonFloat(deviation.worst_time);
        json["firstTime"] = JsonFloat(deviation.first_time);
    }
    return json;
}

Json JsonNodes(const NodeTree& tree, const std::vector<std::uint32_t>& nodes)
{
    Json json = Json::array();
    for (const std::uint32_t node : nodes)
        json.push_back({{"node", node}, {"nodeName", tree.Name(node)}, {"nodePath", tree.Path(node)}});
    return json;
}

Json JsonNumbers(const std::vector<double>& numbers)
{
    Json json = Json::array();
    for (const double number : numbers) // floats, or integers that a float need not hold
    {
        const auto single = static_cast<float>(number);
        const bool exact = static_cast<double>(single) == number || !std::isfinite(number);
        json.push_back(exact ? JsonFloat(single) : Json(number));
    }
    return json;
}

Json ToJson(const Difference& difference, const SceneMatch& match)
{
    Json json = {{"topic", NameOf(difference.topic)},
                 {"change", NameOf(difference.change)},
                 {"aspect", NameOf(difference.aspect)},
                 {"object", difference.object},
                 {"name", difference.name},
                 {"part", difference.part},
                 {"left", difference.left},
                 {"right", difference.right},
                 {"message", DifferenceText(difference, match)}};
    json["moreNames"] = difference.more_names;
    json["leftNumbers"] = JsonNumbers(difference.left_numbers);
    json["rightNumbers"] = JsonNumbers(difference.right_numbers);
    json["leftNodes"] = JsonNodes(match.left_tree, difference.left_nodes);
    json["rightNodes"] = JsonNodes(match.right_tree, difference.right_nodes);
    json["nodesBelow"] = difference.below;
    json["deviations"] = Json::array();
    for (const Deviation& deviation : difference.deviations)
        json["deviations"].push_back(ToJson(deviation));
    return json;
}

Json ToJson(const Answer& answer)
{
    const Comparison& comparison = answer.comparison;
    const Tolerance& tolerance = answer.options.tolerance;
    Json json = {{"file", answer.left.argument},
                 {"other", answer.right.argument},
                 {"equal", answer.Equal()},
                 {"identical", answer.identical},
                 {"structureOnly", answer.options.structure_only},
                 {"fits", answer.Fits()},
                 {"compared", nullptr}};
    if (!answer.options.structure_only && !answer.identical && comparison.overlap)
    {
        const MotionComparison& motion = comparison.motion;
        json["compared"] = {{"start", JsonFloat(comparison.span.start)},
                            {"end", JsonFloat(comparison.span.end)},
                            {"instants", motion.instants.times.size()},
                            {"instantsOfAll", motion.instants.all},
                            {"nodes", motion.compared},
                            {"nodesThatDiffer", motion.differences.size()},
                            {"nodesThatFollow", motion.followers},
                            {"toleranceMm", tolerance.millimetres},
                            {"toleranceDegrees", tolerance.degrees},
                            {"tolerancePercent", tolerance.percent}};
    }
    json["differences"] = Json::array();
    for (const Difference& difference : comparison.differences)
        json["differences"].push_back(ToJson(difference, answer.match));
    return json;
}

OptionRow ToleranceOption(const char* name, double& tolerance, const char* help)
{
    const auto take = [&tolerance](const std::string& text) -> std::string
    {
        double number = 0.0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, number);
        if (error != std::errc() || stop != end || !std::isfinite(number) || !(number >= 0.0))
            return "needs a number that is not negative: 0.1";
        tolerance = number;
        return {};
    };
    return {.name = name, .value = TakeText(take), .help = help};
}

class DiffVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        Tolerance& tolerance = options_.tolerance;
        return {
            {.name = "FILE",
             .value = &left_,
             .help = "The .tv2 file to compare with; - is standard input",
             .required = true,
             .files = ".tv2"},
            {.name = "OTHER",
             .value = &right_,
             .help = "The .tv2 file that is compared; - is standard input",
             .required = true,
             .files = ".tv2"},
            {.name = "--structure",
             .value = &options_.structure_only,
             .help = "Compare only the rigs: nodes, parents, properties, cameras and other objects by name; "
                     "says whether FILE, a clip, fits OTHER"},
            {.name = "--all", .value = &all_, .help = "Show every difference, however many there are"},
            ToleranceOption("--tolerance-mm", tolerance.millimetres,
                            "From where on places differ, in the world (default: 0.01)"),
            ToleranceOption("--tolerance-degrees", tolerance.degrees,
                            "From where on rotations and lenses differ (default: 0.01)"),
            ToleranceOption("--tolerance-percent", tolerance.percent,
                            "From where on scale, user properties and other numbers differ, in percent of "
                            "their largest value (default: 0.01)"),
        };
    }

    std::string Refusal(const std::set<std::string>&) const override
    {
        return left_ == kStandardInput && right_ == kStandardInput ? "only one file can be standard input"
                                                                   : "";
    }

    void Run(VerbContext& context) override
    {
        LoadedFile left;
        LoadedFile right;
        if (!Load(left_, left, context) || !Load(right_, right, context))
            return;
        const SceneMatch match(*left.scene, *right.scene);
        const bool identical = left.image == right.image;
        const Comparison comparison =
            identical ? Comparison() : CompareScenes(*left.scene, *right.scene, match, options_);
        const Answer answer{left, right, match, options_, comparison, identical};
        context.Report(answer.Equal() ? kExitDone : kExitFindings);
        if (context.json)
            context.out << JsonAnswer(ToJson(answer));
        else
            DiffScreen(answer, all_, context.out).Print();
    }

private:
    static bool Load(const std::string& path, LoadedFile& file, VerbContext& context)
    {
        const Status read = ReadFile(path, file);
        if (!read || !file.loaded)
            context.Fail(path, read ? WhyNotLoaded(file) : read.Reason(), kExitCouldNotRun);
        return read && file.loaded;
    }

    std::string left_;
    std::string right_;
    bool all_ = false;
    CompareOptions options_;
};

const VerbRegistration kDiffVerb({
    .name = "diff",
    .place = 62,
    .help = "What is different between two files",
    .examples = "tv2 diff yesterday/walk.tv2 walk.tv2\n"
                "tv2 diff --structure walk.tv2 hero.tv2\n"
                "tv2 diff --tolerance-mm 1 --tolerance-degrees 0.1 walk.tv2 smaller.tv2\n"
                "git show HEAD:walk.tv2 | tv2 diff - walk.tv2",
    .remarks =
        "A node is listed where its own transform is off, seen from its parent. Two kinds of nodes are "
        "compared "
        "by their place in the world instead: those with another parent, and those that are farther off "
        "there "
        "than the tolerance because deviations above them add up, each of them within the tolerance. What is "
        "below a listed node follows it and is counted only. "
        "Exit code: 0: equal within the tolerances; 1: different; 2: a file cannot be read.",
    .json_help = "Print JSON: an object with one entry of \"differences\" for each",
    .make = Make<DiffVerb>,
});

} // namespace

} // namespace tv2
