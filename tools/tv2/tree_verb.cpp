// tv2 tree: the hierarchy, what is at each node, and the pose at a time.

#include "tev2_loader/names.h"
#include "text/closest_name.h"
#include "tools/tv2/notes.h"
#include "tools/tv2/system.h"
#include "tools/tv2/text.h"
#include "tools/tv2/tree_writer.h"
#include "tools/tv2/verb.h"

#include <algorithm>
#include <limits>

namespace tv2
{

using namespace TEV2_LOADER;
using tev2_compare::kNoNode;
using tev2_compare::NodeTree;

namespace
{

/// What a reader of the tree cannot see in it.
std::vector<std::string> NotesOf(const TEV2_MATRIX_HIERARCHY& hierarchy, const NodeTree& tree)
{
    std::vector<std::string> early, lost, cut;
    for (std::uint32_t i = 0; i < tree.Count(); ++i)
    {
        const std::int32_t parent = hierarchy.nodes[i].parentIndex;
        if (parent < 0)
            continue;
        const auto index = static_cast<std::uint32_t>(parent);
        if (tree.IsCut(i))
            cut.push_back(tree.Name(i));
        if (index >= tree.Count())
            lost.push_back(tree.Name(i));
        else if (index >= i)
            early.push_back(tree.Name(i));
    }
    std::vector<std::string> notes;
    if (!cut.empty())
        notes.push_back("parents form circles, which are shown from their first nodes: " + Listed(cut));
    if (!lost.empty())
        notes.push_back("parents are no nodes, so these are at top level: " + Listed(lost));
    if (!early.empty())
        notes.push_back("nodes come before their parents, whose pose does not reach them in time: " +
                        Listed(early));
    return notes;
}

class TreeVerb : public Verb
{
public:
    std::vector<OptionRow> Options() override
    {
        return {
            {.name = "FILE",
             .value = &file_,
             .help = "The .tv2 file; - is standard input",
             .required = true,
             .files = ".tv2"},
            {.name = "--node",
             .value = &node_,
             .help = "Only the nodes of this name and what is below them",
             .check = NotEmpty},
            {.name = "--depth",
             .value = &depth_,
             .help = "How many levels to show below the first (default: all)",
             .range = {{0, std::numeric_limits<int>::max()}}},
            {.name = "--at",
             .value = TakeTime(time_),
             .help = "Show poses and lenses at this time in seconds: of each node translation, rotation and "
                     "scale relative to its parent, and where it is in the world"},
        };
    }

    void Run(VerbContext& context) override
    {
        LoadedFile file;
        if (const Status read = ReadFile(file_, file); !read)
            return context.Fail(file_, read.Reason(), kExitCouldNotRun);
        if (!file.loaded)
            return context.Fail(file_, WhyNotLoaded(file), kExitFindings);
        if (const std::string why = UnknownNode(*file.scene); !why.empty())
            return context.Fail(file_, file.title + ": " + why, kExitCouldNotRun);
        Show(file, context);
    }

private:
    /// Why there is nothing to show; empty when there is.
    std::string UnknownNode(const TEV2& scene) const
    {
        if (node_.empty() || FindNode(scene, node_) != nullptr)
            return {};
        std::vector<std::string> names;
        for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
            names.push_back(Name(node));
        return "there is no node " + Quoted(node_) + DidYouMean(node_, names);
    }

    void Show(LoadedFile& file, VerbContext& context)
    {
        TEV2& scene = *file.scene;
        const NodeTree tree(scene.matrixHierarchy);
        const NodeObjects objects(scene);
        EvaluatedScene evaluated(scene);
        TreeView view{file, evaluated, tree, objects, time_, false, NotesOf(scene.matrixHierarchy, tree)};
        evaluated.Rewind();
        if (time_)
        {
            evaluated.SetTime(*time_);
            const TEV2_FLOAT32_RANGE& range = scene.environment.timeRange;
            view.outside_range = *time_ < range.minimum || *time_ > range.maximum;
            if (view.outside_range)
            {
                view.notes.push_back(OutsideRangeNote(*time_, range));
            }
        }
        const auto writer = context.json ? MakeJsonTree(view, context.out) : MakeTextTree(view, context.out);
        writer->Begin();
        VisitShown(view, *writer);
        writer->End();
    }

    /// Whole subtrees, from top level or from the nodes of a name.
    void VisitShown(const TreeView& view, TreeWriter& writer) const
    {
        const NodeTree& tree = view.tree;
        std::vector<std::size_t> depths(tree.Count());
        std::optional<std::size_t> first; // depth of the node that the present subtree is below
        for (const std::uint32_t node : tree.PreOrder())
        {
            const std::uint32_t parent = tree.Parent(node);
            const std::size_t depth = depths[node] = parent == kNoNode ? 0 : depths[parent] + 1;
            if (node_.empty())
                first = 0;
            else if (!first || depth <= *first)
                first = tree.Name(node) == node_ ? std::optional(depth) : std::nullopt;
            if (!first || (depth_ && depth - *first > static_cast<std::size_t>(*depth_)))
                continue;
            const bool shows_children = !tree.Children(node).empty() &&
                                        (!depth_ || depth - *first < static_cast<std::size_t>(*depth_));
            writer.Node({node, depth - *first, tree.Children(parent).back() == node, shows_children});
        }
    }

    std::string file_;
    std::string node_;
    std::optional<int> depth_;
    std::optional<float> time_;
};

const VerbRegistration kTreeVerb({
    .name = "tree",
    .place = 43,
    .help = "The hierarchy with cameras, meshes, properties and keys, and poses at a time",
    .examples = "tv2 tree walk.tv2\n"
                "tv2 tree --node Hips --depth 2 walk.tv2\n"
                "tv2 tree --at 0.5 --json walk.tv2 | jq '.nodes[] | [.name, .world[3]]'",
    .remarks = "Angles are rotations about the X, then the Y, then the Z axis, which stay where they are.",
    .json_help = "Print JSON: an object with one entry of \"nodes\" for each node, parents first",
    .make = Make<TreeVerb>,
});

} // namespace

} // namespace tv2
