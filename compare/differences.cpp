#include "compare/differences.h"

#include "compare/structure.h"
#include "compare/values.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <type_traits>

namespace tev2_compare
{

using namespace TEV2_LOADER;

namespace
{

std::string TimesText(const TEV2_FLOAT32_RANGE& range)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.6g to %.6g s", static_cast<double>(range.minimum),
                  static_cast<double>(range.maximum));
    return text;
}

void CompareTimeRanges(const TEV2& left, const TEV2& right, std::vector<Difference>& found)
{
    constexpr double kOneInstant = 1e-4; // seconds
    const auto& range = left.environment.timeRange;
    const auto& other = right.environment.timeRange;
    const auto same = [](float a, float b)
    { return Apart(static_cast<double>(a), static_cast<double>(b)) <= kOneInstant; };
    if (same(range.minimum, other.minimum) && same(range.maximum, other.maximum))
        return;
    found.push_back(
        {.topic = Topic::Scene,
         .object = "scene",
         .name = {},
         .aspect = Aspect::Field,
         .part = "time range",
         .left = TimesText(range),
         .right = TimesText(other),
         .left_numbers = {static_cast<double>(range.minimum), static_cast<double>(range.maximum)},
         .right_numbers = {static_cast<double>(other.minimum), static_cast<double>(other.maximum)}});
}

/// The values of everything but nodes: records that a scene has once, and the objects of lists.
class ObjectValues
{
public:
    ObjectValues(TEV2& left, TEV2& right, const SceneMatch& match, ValueComparison& values,
                 std::vector<Difference>& found)
        : left_(left), right_(right), match_(match), values_(values), found_(found)
    {
    }

    void Run()
    {
        VisitLists(left_,
                   [this]<typename Member>(const auto& list, Member& member)
                   {
                       if constexpr (requires { member.begin(); })
                           CompareList(list, member, list.In(right_));
                       else if constexpr (requires { member.get(); })
                           CompareOptional(list, member, list.In(right_));
                       else if constexpr (!std::is_same_v<Member, TEV2_INF> &&
                                          !std::is_same_v<Member, TEV2_MATRIX_HIERARCHY>)
                           CompareOnce(list, member, list.In(right_));
                   });
        values_.CompareSwitchers(left_, right_);
    }

private:
    template <typename List, typename Object>
    void CompareList(const List& list, TEV2::Array<Object>& left, TEV2::Array<Object>& right)
    {
        const std::string label = LabelOf(list);
        const auto& right_of = ListOf(match_, label).right_of;
        for (std::size_t index = 0; index < left.size(); ++index)
        {
            if (!left[index] || right_of[index] == kNone || !right[right_of[index]])
                continue;
            Object& object = *left[index];
            Object& other = *right[right_of[index]];
            Difference like{.topic = std::is_same_v<Object, TEV2_CAMERA> ? Topic::Camera : Topic::Object,
                            .object = Singular(list.kind.title),
                            .name = NameOfObject(object)};
            values_.CompareFields(FieldsOf(object), FieldsOf(other), label, like);
            if constexpr (requires { object.properties; })
            {
                like.topic = Topic::Property;
                values_.CompareProperties(object.properties, other.properties, like);
            }
        }
    }

    template <typename Record>
    void CompareOptional(const TEV2_LIST& list, const std::unique_ptr<Record>& left,
                         const std::unique_ptr<Record>& right)
    {
        if (left && right)
            return CompareOnce(list, *left, *right);
        if (left || right)
            found_.push_back({.topic = Topic::Scene,
                              .change = left ? Change::Missing : Change::Added,
                              .object = list.kind.title,
                              .name = {}});
    }

    template <typename Record>
    void CompareOnce(const TEV2_LIST& list, const Record& left, const Record& right)
    {
        values_.CompareFields(FieldsOf(left), FieldsOf(right), list.label,
                              {.topic = Topic::Scene, .object = list.kind.title, .name = {}});
    }

    TEV2& left_;
    TEV2& right_;
    const SceneMatch& match_;
    ValueComparison& values_;
    std::vector<Difference>& found_;
};

void CompareNodeValues(TEV2& left, TEV2& right, const SceneMatch& match, ValueComparison& values,
                       std::vector<Difference>& found)
{
    auto& nodes = left.matrixHierarchy.nodes;
    for (std::uint32_t index = 0; index < nodes.size(); ++index)
    {
        const std::uint32_t other_index = match.nodes.right_of[index];
        if (other_index == kNoNode)
            continue;
        TEV2_MATRIX_NODE& node = nodes[index];
        TEV2_MATRIX_NODE& other = right.matrixHierarchy.nodes[other_index];
        Difference like{.topic = Topic::Property,
                        .object = "node",
                        .name = match.left_tree.Name(index),
                        .left_nodes = {index},
                        .right_nodes = {other_index}};
        values.CompareProperties(node.properties, other.properties, like);
        if (node.userText == other.userText)
            continue;
        like.topic = Topic::Object;
        like.aspect = Aspect::Field;
        like.part = "user text";
        like.left = '"' + ReadableText(node.userText.Text()) + '"';
        like.right = '"' + ReadableText(other.userText.Text()) + '"';
        found.push_back(std::move(like));
    }
}

} // namespace

Comparison CompareScenes(TEV2& left, TEV2& right, const SceneMatch& match, const CompareOptions& options)
{
    Comparison comparison;
    std::vector<Difference>& found = comparison.differences;
    found = CompareStructure(left, right, match);
    if (options.structure_only)
        return comparison;
    CompareTimeRanges(left, right, found);
    comparison.overlap = Overlap(SpanOf(left), SpanOf(right), comparison.span);
    const TimeSpan* const span = comparison.overlap ? &comparison.span : nullptr;
    if (span != nullptr)
    {
        comparison.motion =
            CompareMotion(left, right, match, *span, options.tolerance, options.most_evaluations);
        std::ranges::copy(comparison.motion.differences, std::back_inserter(found));
    }
    ValueComparison values(match, span, options.tolerance, found);
    CompareNodeValues(left, right, match, values, found);
    ObjectValues(left, right, match, values, found).Run();
    std::ranges::stable_sort(found,
                             [&options](const Difference& a, const Difference& b)
                             {
                                 if (a.topic != b.topic)
                                     return a.topic < b.topic;
                                 return a.topic == Topic::Property &&
                                        Weight(a, options.tolerance) > Weight(b, options.tolerance);
                             });
    return comparison;
}

} // namespace tev2_compare
