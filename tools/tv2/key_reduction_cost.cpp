#include "tools/tv2/key_reduction_cost.h"

#include "compare/rewound_scene.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/visit_keys.h"
#include "tools/tv2/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace tv2
{

using namespace TEV2_LOADER;
using tev2_compare::ErrorOverTime;
using tev2_compare::RewoundScene;

namespace
{

/// Calls visit(sampled track, reduced track) for the tracks of a node that key reduction is about. False when the nodes
/// do not have the same tracks; absent ones are passed over.
template <typename Visit>
bool VisitPairs(const TEV2_MATRIX_NODE& sampled, const TEV2_MATRIX_NODE& reduced, const Visit& visit)
{
    bool alike = true;
    const auto pair = [&](const TEV2_ANIMATABLE* left, const TEV2_ANIMATABLE* right)
    {
        const bool same = (left == nullptr) == (right == nullptr) &&
                          (left == nullptr || left->GetType() == right->GetType());
        alike = alike && same;
        if (same && left != nullptr)
            visit(*left, *right);
    };
    const auto pairs = [&](const auto& left, const auto& right)
    {
        alike = alike && left.size() == right.size();
        for (std::size_t i = 0; i < std::min(left.size(), right.size()); ++i)
            pair(left[i].track.get(), right[i].track.get());
    };
    pair(sampled.translation.get(), reduced.translation.get());
    pair(sampled.rotation.get(), reduced.rotation.get());
    pair(sampled.scale.get(), reduced.scale.get());
    pairs(sampled.properties.intValues, reduced.properties.intValues);
    pairs(sampled.properties.floatValues, reduced.properties.floatValues);
    pairs(sampled.properties.vector3Values, reduced.properties.vector3Values);
    pairs(sampled.properties.vector4Values, reduced.properties.vector4Values);
    return alike;
}

template <typename Value>
std::vector<std::uint32_t> WordsOf(const std::vector<float>& times, const std::vector<Value>& values,
                                   std::size_t key)
{
    std::vector<float> components{times[key]};
    if constexpr (ComponentValue<Value>)
        std::apply([&](const auto&... component) { (components.push_back(component), ...); },
                   values[key].Components());
    std::vector<std::uint32_t> words(components.size());
    std::memcpy(words.data(), components.data(), words.size() * sizeof(float));
    if constexpr (!ComponentValue<Value>)
        words.push_back(std::bit_cast<std::uint32_t>(values[key]));
    return words;
}

/// Whether the keys of a track are some of those of another of its kind, in the same order, to the last bit.
bool IsReductionOf(const TEV2_ANIMATABLE& reduced, const TEV2_ANIMATABLE& sampled)
{
    bool found_all = false;
    AllTracks::VisitAs(reduced,
                       [&]<typename Track>(const Track& few)
                       {
                           const auto& many = static_cast<const Track&>(sampled);
                           const std::size_t count = std::min(many.m_times.size(), many.m_values.size());
                           std::size_t key = 0;
                           std::size_t at = 0;
                           for (; key < std::min(few.m_times.size(), few.m_values.size()); ++key, ++at)
                           {
                               const auto wanted = WordsOf(few.m_times, few.m_values, key);
                               while (at < count && WordsOf(many.m_times, many.m_values, at) != wanted)
                                   ++at;
                               if (at == count)
                                   return;
                           }
                           found_all = key == few.m_times.size();
                       });
    return found_all;
}

/// The key times of all nodes, ascending, each once.
std::vector<float> InstantsOf(const TEV2_MATRIX_HIERARCHY& hierarchy)
{
    std::vector<float> times;
    const std::vector<float>* last = nullptr; // nearly all tracks have the same
    const auto add = [&](const TEV2_ANIMATABLE* track)
    {
        if (track == nullptr || (last != nullptr && track->m_times == *last))
            return;
        last = &track->m_times;
        std::vector<float> merged;
        std::ranges::set_union(times, *last, std::back_inserter(merged));
        times = std::move(merged);
    };
    for (const TEV2_MATRIX_NODE& node : hierarchy.nodes)
    {
        add(node.translation.get());
        add(node.rotation.get());
    }
    return times;
}

/// Places first, then rotations.
bool IsFartherOff(const KeyReductionCost::Node& left, const KeyReductionCost::Node& right)
{
    const auto worst = [](const KeyReductionCost::Node& node)
    { return std::pair(node.errors.millimetres.Worst(), node.errors.degrees.Worst()); };
    return worst(left) > worst(right);
}

Status CountKeys(const TEV2& sampled, const TEV2& reduced, KeyReductionCost& cost)
{
    const auto& nodes = sampled.matrixHierarchy.nodes;
    const auto& others = reduced.matrixHierarchy.nodes;
    bool same = nodes.size() == others.size();
    for (std::size_t i = 0; same && i < nodes.size(); ++i)
    {
        KeyReductionCost::Node& node = cost.nodes.emplace_back();
        node.node = i;
        node.name = Name(nodes[i]);
        const auto count = [&](const TEV2_ANIMATABLE& many, const TEV2_ANIMATABLE& few)
        {
            node.keys.sampled += many.m_times.size();
            node.keys.kept += few.m_times.size();
            same = same && IsReductionOf(few, many);
        };
        same = VisitPairs(nodes[i], others[i], count) && same && Name(others[i]) == node.name;
        cost.keys.sampled += node.keys.sampled;
        cost.keys.kept += node.keys.kept;
    }
    return same ? Status()
                : Status::Failure("the scene gave other samples when it was exported again, with every key");
}

} // namespace

Status MeasureKeyReduction(TEV2& sampled, TEV2& reduced, KeyReductionCost& cost)
{
    if (Status counted = CountKeys(sampled, reduced, cost); !counted)
        return counted;
    RewoundScene before(sampled);
    RewoundScene after(reduced);
    const std::vector<float> instants = InstantsOf(sampled.matrixHierarchy);
    cost.instants = instants.size();
    for (const float time : instants)
    {
        before.SetTime(time);
        after.SetTime(time);
        for (KeyReductionCost::Node& node : cost.nodes)
        {
            node.errors.Add(time, tev2_compare::ErrorBetween(before.Node(node.node).worldMatrix,
                                                             after.Node(node.node).worldMatrix));
        }
    }
    std::ranges::stable_sort(cost.nodes, IsFartherOff);
    return {};
}

namespace
{

using Node = KeyReductionCost::Node;
using Errors = ErrorOverTime tev2_compare::NodeErrors::*;

constexpr Errors kPlace = &tev2_compare::NodeErrors::millimetres;
constexpr Errors kRotation = &tev2_compare::NodeErrors::degrees;

/// The first node with the worst error of a kind; null without nodes.
const Node* WorstOf(const KeyReductionCost& cost, Errors errors)
{
    const auto worst = std::ranges::max_element(
        cost.nodes, {}, [errors](const Node& node) { return (node.errors.*errors).Worst(); });
    return worst != cost.nodes.end() ? &*worst : nullptr;
}

/// Over all nodes and instants.
double MeanOf(const KeyReductionCost& cost, Errors errors)
{
    double sum = 0.0;
    for (const Node& node : cost.nodes)
        sum += (node.errors.*errors).Mean();
    return cost.nodes.empty() ? 0.0 : sum / static_cast<double>(cost.nodes.size());
}

std::string ErrorText(double error)
{
    constexpr double kLeast = 0.0001;
    constexpr double kWithoutFraction = 1000.0;
    if (error > 0.0 && error < kLeast)
        return "< 0.0001";
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), error < kWithoutFraction ? "%.3g" : "%.0f", error);
    return text.data();
}

std::string RowText(const std::array<std::string, 8>& cells, const std::string& name)
{
    constexpr std::array<std::size_t, 8> kWidths{11, 11, 11, 10, 10, 11, 10, 10};
    std::string row;
    for (std::size_t i = 0; i < cells.size(); ++i)
    {
        row += std::string(kWidths[i] - std::min(kWidths[i], cells[i].size()), ' ') + cells[i];
    }
    return row + "  " + name + '\n';
}

std::string TimeText(const ErrorOverTime& errors)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(errors.WorstTime()));
    return errors.Worst() > 0.0 ? text.data() : "";
}

std::string NodeRow(const Node& node)
{
    const ErrorOverTime& place = node.errors.millimetres;
    const ErrorOverTime& rotation = node.errors.degrees;
    return RowText({CountText(node.keys.sampled), CountText(node.keys.kept), ErrorText(place.Worst()),
                    TimeText(place), ErrorText(place.Mean()), ErrorText(rotation.Worst()), TimeText(rotation),
                    ErrorText(rotation.Mean())},
                   OneLine(node.name));
}

/// `farthest off: "Toe", 0.3 mm at 0.958 s`, or that nothing is off.
std::string WorstText(const KeyReductionCost& cost, Errors errors, const char* label, const char* unit)
{
    const Node& node = *WorstOf(cost, errors);
    const ErrorOverTime& error = node.errors.*errors;
    if (!(error.Worst() > 0.0))
        return std::string(label) + ": none";
    return std::string(label) + ": " + Quoted(node.name) + ", " + ErrorText(error.Worst()) + ' ' + unit +
           " at " + TimeText(error) + " s";
}

} // namespace

void PrintCost(std::ostream& out, const KeyReductionCost& cost)
{
    if (!cost.error.empty() || cost.nodes.empty())
        return;
    constexpr std::size_t kMostRows = 10;
    out << "  What key reduction cost, in the world, at " << CountOf(cost.instants, "instant", "instants")
        << ":\n"
        << RowText({"keys", "kept", "worst mm", "at s", "mean mm", "worst deg", "at s", "mean deg"}, "node");
    const auto first_exact = std::ranges::find_if(
        cost.nodes, [](const Node& node)
        { return !(node.errors.millimetres.Worst() > 0.0) && !(node.errors.degrees.Worst() > 0.0); });
    const std::size_t off = static_cast<std::size_t>(first_exact - cost.nodes.begin());
    for (std::size_t i = 0; i < std::min(off, kMostRows); ++i)
        out << NodeRow(cost.nodes[i]);
    const ErrorOverTime& place = WorstOf(cost, kPlace)->errors.millimetres;
    const ErrorOverTime& rotation = WorstOf(cost, kRotation)->errors.degrees;
    out << RowText({CountText(cost.keys.sampled), CountText(cost.keys.kept), ErrorText(place.Worst()),
                    TimeText(place), ErrorText(MeanOf(cost, kPlace)), ErrorText(rotation.Worst()),
                    TimeText(rotation), ErrorText(MeanOf(cost, kRotation))},
                   "all " + CountOf(cost.nodes.size(), "node", "nodes"))
        << "  " << CountOf(cost.nodes.size() - off, "node is", "nodes are") << " exact";
    if (off > kMostRows)
        out << ", " << CountText(off - kMostRows) << " more are off";
    out << "\n  " << WorstText(cost, kPlace, "farthest off", "mm") << "; "
        << WorstText(cost, kRotation, "turned most", "degrees") << '\n';
}

namespace
{

Json ErrorJson(const ErrorOverTime& errors)
{
    return {{"worst", JsonDouble(errors.Worst())},
            {"time", errors.Worst() > 0.0 ? JsonFloat(errors.WorstTime()) : Json()},
            {"mean", JsonDouble(errors.Mean())}};
}

Json TotalJson(const KeyReductionCost& cost, Errors errors)
{
    const Node* const worst = WorstOf(cost, errors);
    const bool off = worst != nullptr && (worst->errors.*errors).Worst() > 0.0;
    Json json = ErrorJson(worst != nullptr ? worst->errors.*errors : ErrorOverTime());
    json["mean"] = JsonDouble(MeanOf(cost, errors));
    json["node"] = off ? Json(worst->node) : Json();
    json["nodeName"] = off ? worst->name : "";
    return json;
}

} // namespace

Json CostJson(const KeyReductionCost& cost)
{
    if (!cost.error.empty())
        return {{"error", cost.error}};
    Json json = {{"instants", cost.instants},
                 {"keysSampled", cost.keys.sampled},
                 {"keysKept", cost.keys.kept},
                 {"millimetres", TotalJson(cost, kPlace)},
                 {"degrees", TotalJson(cost, kRotation)},
                 {"nodes", Json::array()}};
    for (const Node& node : cost.nodes)
    {
        json["nodes"].push_back({{"node", node.node},
                                 {"name", node.name},
                                 {"keysSampled", node.keys.sampled},
                                 {"keysKept", node.keys.kept},
                                 {"millimetres", ErrorJson(node.errors.millimetres)},
                                 {"degrees", ErrorJson(node.errors.degrees)}});
    }
    return json;
}

} // namespace tv2
