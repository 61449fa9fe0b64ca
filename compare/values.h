#pragma once

#include "compare/difference.h"
#include "compare/fields.h"
#include "compare/instants.h"
#include "compare/scene_match.h"

#include <string>
#include <vector>

namespace tev2_compare
{

/// Compares values of records that are the same in two scenes, and adds what is different.
class ValueComparison
{
public:
    /// Everything must outlive it. `span` is the time that is compared; null: none, then tracks are not looked at.
    ValueComparison(const SceneMatch& match, const TimeSpan* span, const Tolerance& tolerance,
                    std::vector<Difference>& found)
        : match_(match), span_(span), tolerance_(tolerance), found_(found)
    {
    }

    /// Two tracks or none. `label` is that of the field, which says what its numbers mean. The difference, if any, is
    /// `like` with what differs.
    void CompareTracks(TEV2_LOADER::TEV2_ANIMATABLE* left, TEV2_LOADER::TEV2_ANIMATABLE* right,
                       std::string_view label, const Difference& like);

    /// The fields of two records. `list` is the label of the scene's list that they are in.
    void CompareFields(const std::vector<FieldValue>& left, const std::vector<FieldValue>& right,
                       const std::string& list, const Difference& like);

    /// The values of user properties that both have.
    void CompareProperties(TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& left,
                           TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& right, const Difference& like);

    /// Which camera is shown when.
    void CompareSwitchers(const TEV2_LOADER::TEV2& left, const TEV2_LOADER::TEV2& right);

private:
    void CompareField(const FieldValue& left, const FieldValue& right, const std::string& list,
                      const Difference& like);
    void CompareNumbers(const NumberBlock& left, const NumberBlock& right, std::string_view label,
                        const Difference& like);
    void AddOnlyIn(const std::vector<FieldValue>& fields, const std::vector<std::uint32_t>& matches,
                   Change change, const Difference& like);

    /// The list that the index in a field leads into; null: it is no index, or one of a node.
    const SceneMatch::List* Target(std::string_view label, const std::string& list) const;

    /// The index on the right of what an index on the left leads to; other numbers as they are.
    double Translated(double index, std::string_view label, const std::string& list) const;

    const SceneMatch& match_;
    const TimeSpan* span_;
    const Tolerance& tolerance_;
    std::vector<Difference>& found_;
};

} // namespace tev2_compare
