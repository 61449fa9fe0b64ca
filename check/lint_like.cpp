#include "check/lint_group.h"
#include "compare/difference_text.h"
#include "compare/structure.h"
#include "tev2_loader/up_axis.h"

#include <map>

namespace tev2_check
{

using namespace TEV2_LOADER;
using namespace tev2_compare;

namespace
{

constexpr CheckCode kRigUpAxis = {"rig-up-axis", Severity::Warning,
                                  "The rig given with --like has another up axis."};
constexpr CheckCode kRigNodeMissing = {
    "rig-node-missing", Severity::Warning,
    "A node that is animated, or has animated nodes below it that are missing, too, is not in the rig given "
    "with --like."};
constexpr CheckCode kRigNodeMoved = {
    "rig-node-moved", Severity::Warning,
    "A node that is animated, or has animated nodes below it, has another parent in the rig given with "
    "--like."};
constexpr CheckCode kRigNodeRenamed = {"rig-node-renamed", Severity::Warning,
                                       "A node that is animated, or has animated nodes below it, has another "
                                       "name in the rig given with --like."};
constexpr CheckCode kRigDiffers = {
    "rig-differs", Severity::Note,
    "Something that does not keep the animation from fitting is different in the rig given with --like: "
    "nodes that do not move, nodes that only the rig has, the order, user properties, objects."};
constexpr CheckCode kLikeCodes[] = {kRigUpAxis, kRigNodeMissing, kRigNodeMoved, kRigNodeRenamed, kRigDiffers};

/// Whether the animation of a file fits another file's rig.
class LikeGroup : public LintGroup
{
public:
    LikeGroup(const LoadedFile& file, const TEV2& rig, Findings& findings)
        : findings_(findings),
          match_(*file.scene, rig),
          differences_(CompareStructure(*file.scene, rig, match_))
    {
        const std::vector<std::size_t> obstacles = Obstacles(differences_);
        keeps_off_.resize(differences_.size());
        for (const std::size_t index : obstacles)
            keeps_off_[index] = true;
        for (std::size_t index = 0; index < differences_.size(); ++index)
        {
            if (differences_[index].left_nodes.empty())
                findings_.AddForFile(CodeOf(index), 0, DifferenceText(differences_[index], match_));
            else
                by_node_.emplace(differences_[index].left_nodes.front(), index);
        }
    }

    void Text(const TEV2_FIELD& field, const TEV2_WIDE_STRING&) override
    {
        const auto node = IndexBehind("matrixHierarchy.nodes[", field.record);
        if (!node || std::string_view(field.label) != "name" || !field.record.ends_with(']') ||
            field.record.find('.', field.record.find(']')) != std::string::npos)
            return;
        const auto [first, last] = by_node_.equal_range(static_cast<std::uint32_t>(*node));
        for (auto at = first; at != last; ++at)
            findings_.AddForRecord(CodeOf(at->second), field,
                                   DifferenceText(differences_[at->second], match_));
    }

private:
    const CheckCode& CodeOf(std::size_t index) const
    {
        if (!keeps_off_[index])
            return kRigDiffers;
        switch (differences_[index].change)
        {
        case Change::Missing:
            return kRigNodeMissing;
        case Change::Moved:
            return kRigNodeMoved;
        case Change::Renamed:
            return kRigNodeRenamed;
        default:
            return kRigUpAxis;
        }
    }

    Findings& findings_;
    SceneMatch match_;
    std::vector<Difference> differences_;
    std::vector<bool> keeps_off_;
    std::multimap<std::uint32_t, std::size_t> by_node_; ///< differences by their first node
};

} // namespace

LintGroupRow LikeLint()
{
    return {kLikeCodes,
            [](const LoadedFile& file, const CheckOptions& options,
               Findings& findings) -> std::unique_ptr<LintGroup>
            {
                if (options.like == nullptr)
                    return std::make_unique<LintGroup>();
                return std::make_unique<LikeGroup>(file, *options.like, findings);
            }};
}

} // namespace tev2_check
