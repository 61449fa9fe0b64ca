#include "compare/motion.h"

#include "compare/pose_error.h"
#include "compare/rewound_scene.h"
#include "tev2_loader/tracks/visit_keys.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <tuple>

namespace tev2_compare
{

using namespace TEV2_LOADER;

namespace
{

/// The transform of a node relative to its parent at the present time.
struct Local
{
    TEV2_VECTOR_3 translation;
    TEV2_QUATERNION rotation;
    TEV2_VECTOR_3 scale{1.0f, 1.0f, 1.0f};

    explicit Local(const TEV2_MATRIX_NODE& node)
    {
        if (node.translation)
            translation = node.translation->GetValue();
        if (node.rotation)
            rotation = node.rotation->GetValue();
        if (node.scale)
            scale = node.scale->GetValue();
    }

    TEV2_MATRIX_3X4 Matrix() const
    {
        TEV2_MATRIX_3X4 matrix = RigidMatrix(rotation, translation);
        for (auto& row : matrix.m)
        {
            row[0] *= scale.x;
            row[1] *= scale.y;
            row[2] *= scale.z;
        }
        return matrix;
    }
};

template <typename Value>
bool SameBits(const Value& left, const Value& right)
{
    using Words = std::array<std::uint32_t, sizeof(Value) / sizeof(std::uint32_t)>;
    return std::bit_cast<Words>(left) == std::bit_cast<Words>(right);
}

bool IsFinite(const TEV2_MATRIX_3X4& matrix)
{
    for (const auto& row : matrix.m)
        if (!std::ranges::all_of(row, [](float number) { return std::isfinite(number); }))
            return false;
    return true;
}

/// What a translation that is off by this is off in the world, in millimetres.
double WorldMillimetres(const TEV2_MATRIX_3X4& parent, const TEV2_VECTOR_3& left, const TEV2_VECTOR_3& right)
{
    const std::array<double, 3> off = {
        Apart(static_cast<double>(left.x), static_cast<double>(right.x)) * (left.x < right.x ? 1.0 : -1.0),
        Apart(static_cast<double>(left.y), static_cast<double>(right.y)) * (left.y < right.y ? 1.0 : -1.0),
        Apart(static_cast<double>(left.z), static_cast<double>(right.z)) * (left.z < right.z ? 1.0 : -1.0)};
    if (!std::ranges::all_of(off, [](double number) { return std::isfinite(number); }))
        return std::numeric_limits<double>::infinity();
    double squares = 0.0;
    for (const auto& row : parent.m)
    {
        const double along = static_cast<double>(row[0]) * off[0] + static_cast<double>(row[1]) * off[1] +
                             static_cast<double>(row[2]) * off[2];
        squares += along * along;
    }
    constexpr double kMillimetres = 1000.0;
    return std::sqrt(squares) * kMillimetres;
}

double ScalePercent(const TEV2_VECTOR_3& left, const TEV2_VECTOR_3& right)
{
    double worst = 0.0;
    const auto compare = [&worst](float a, float b)
    {
        const double largest = std::max(std::abs(static_cast<double>(a)), std::abs(static_cast<double>(b)));
        const double apart = Apart(static_cast<double>(a), static_cast<double>(b));
        if (apart > 0.0)
            worst = std::max(worst, std::isfinite(apart) ? 100.0 * apart / largest : apart);
    };
    compare(left.x, right.x);
    compare(left.y, right.y);
    compare(left.z, right.z);
    return worst;
}

/// A node of both scenes and how far it is off.
struct ComparedNode
{
    std::uint32_t left;
    std::uint32_t right;
    bool same_parent;
    DeviationOverTime millimetres{Unit::Millimetres};
    DeviationOverTime degrees{Unit::Degrees};
    DeviationOverTime scale{Unit::Percent};
    DeviationOverTime world_millimetres{Unit::Millimetres};
    DeviationOverTime world_degrees{Unit::Degrees};

    bool OffItself() const
    {
        return (same_parent ? millimetres.Beyond() || degrees.Beyond() : OffInWorld()) || scale.Beyond();
    }
    bool OffInWorld() const { return world_millimetres.Beyond() || world_degrees.Beyond(); }
};

class MotionComparer
{
public:
    MotionComparer(TEV2& left, TEV2& right, const SceneMatch& match, const Tolerance& tolerance)
        : left_(left), right_(right), match_(match), tolerance_(tolerance)
    {
        for (const std::uint32_t node : match.left_tree.PreOrder())
        {
            const std::uint32_t other = match.nodes.right_of[node];
            if (other != kNoNode)
                nodes_.push_back(
                    {node, other, match.nodes.SameParent(match.left_tree, node, match.right_tree, other)});
        }
    }

    void CompareAt(float time)
    {
        left_.SetTime(time);
        right_.SetTime(time);
        for (ComparedNode& node : nodes_)
            CompareNode(node, time);
    }

    std::size_t Count() const { return nodes_.size(); }

    void Report(MotionComparison& result) const
    {
        std::vector<bool> off(match_.left_tree.Count()); // at it or above it
        for (const ComparedNode& node : nodes_)
        {
            const std::uint32_t parent = match_.left_tree.Parent(node.left);
            const bool off_above = parent != kNoNode && off[parent];
            const bool adds_up = !off_above && node.OffInWorld();
            off[node.left] = off_above || adds_up || node.OffItself();
            if (node.OffItself() || adds_up)
                result.differences.push_back(Describe(node));
            else if (node.OffInWorld())
                AddFollower(result, node);
        }
        std::ranges::stable_sort(result.differences, [this](const Difference& a, const Difference& b)
                                 { return Weight(a, tolerance_) > Weight(b, tolerance_); });
    }

private:
    void CompareNode(ComparedNode& compared, float time)
    {
        const TEV2_MATRIX_NODE& left = left_.Node(compared.left);
        const TEV2_MATRIX_NODE& right = right_.Node(compared.right);
        if (!SameBits(left.worldMatrix, right.worldMatrix))
        {
            const PoseError error = ErrorBetween(left.worldMatrix, right.worldMatrix);
            compared.world_millimetres.Add(time, error.millimetres,
                                           tolerance_.millimetres + Rounding(left.worldMatrix));
            compared.world_degrees.Add(time, error.degrees, tolerance_.degrees);
        }
        const Local left_local(left);
        const Local right_local(right);
        if (SameBits(left_local, right_local))
            return;
        compared.scale.Add(time, ScalePercent(left_local.scale, right_local.scale), tolerance_.percent);
        if (!compared.same_parent)
            return;
        TEV2_MATRIX_3X4 parent;
        const std::uint32_t parent_node = match_.left_tree.Parent(compared.left);
        if (parent_node != kNoNode && IsFinite(left_.Node(parent_node).worldMatrix))
            parent = left_.Node(parent_node).worldMatrix;
        compared.millimetres.Add(time,
                                 WorldMillimetres(parent, left_local.translation, right_local.translation),
                                 tolerance_.millimetres);
        if (SameBits(left_local.rotation, right_local.rotation))
            return;
        const PoseError turned =
            ErrorBetween(Product(parent, left_local.Matrix()), Product(parent, right_local.Matrix()));
        compared.degrees.Add(time, turned.degrees, tolerance_.degrees);
    }

    /// What single precision makes of a place, in millimetres.
    static double Rounding(const TEV2_MATRIX_3X4& world)
    {
        double farthest = 0.0;
        for (const auto& row : world.m)
            if (std::isfinite(row[3]))
                farthest = std::max(farthest, std::abs(static_cast<double>(row[3])));
        constexpr double kRounding = 1e-6 * 1000.0;
        return farthest * kRounding;
    }

    Difference Describe(const ComparedNode& node) const
    {
        Difference difference{.topic = Topic::Motion,
                              .object = "node",
                              .name = match_.left_tree.Name(node.left),
                              .left_nodes = {node.left},
                              .right_nodes = {node.right}};
        const bool in_world = !node.same_parent || !node.OffItself();
        difference.aspect = in_world ? Aspect::WorldPose : Aspect::Pose;
        for (const DeviationOverTime* deviation :
             {in_world ? &node.world_millimetres : &node.millimetres,
              in_world ? &node.world_degrees : &node.degrees, &node.scale})
            if (deviation->Beyond())
                difference.deviations.push_back(deviation->Result());
        return difference;
    }

    void AddFollower(MotionComparison& result, const ComparedNode& node) const
    {
        const Deviation& off = node.world_millimetres.Result();
        if (result.followers++ > 0 && off.worst <= result.farthest.worst)
            return;
        result.farthest = off;
        result.farthest_follower = match_.left_tree.Label(node.left);
    }

    RewoundScene left_;
    RewoundScene right_;
    const SceneMatch& match_;
    const Tolerance& tolerance_;
    std::vector<ComparedNode> nodes_;
};

void AddKeyTimes(const TEV2& scene, InstantCollector& collector)
{
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        collector.Add(node.translation.get());
        collector.Add(node.rotation.get());
        collector.Add(node.scale.get());
    }
}

} // namespace

double Weight(const Difference& difference, const Tolerance& tolerance)
{
    constexpr double kLeast = 1e-9; // for a tolerance of 0
    double weight = 0.0;
    for (const Deviation& deviation : difference.deviations)
        weight = std::max(weight, deviation.worst / std::max(tolerance.Of(deviation.unit), kLeast));
    return weight;
}

MotionComparison CompareMotion(TEV2& left, TEV2& right, const SceneMatch& match, const TimeSpan& span,
                               const Tolerance& tolerance, std::size_t most_evaluations)
{
    MotionComparison result;
    MotionComparer comparer(left, right, match, tolerance);
    result.compared = comparer.Count();
    InstantCollector collector(span);
    AddKeyTimes(left, collector);
    AddKeyTimes(right, collector);
    const std::size_t nodes =
        std::max<std::size_t>(1, left.matrixHierarchy.nodes.size() + right.matrixHierarchy.nodes.size());
    result.instants = collector.Take(std::max<std::size_t>(2, most_evaluations / nodes));
    for (const float time : result.instants.times)
        comparer.CompareAt(time);
    comparer.Report(result);
    return result;
}

} // namespace tev2_compare
