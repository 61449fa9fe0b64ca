#pragma once

/// Models in space over time: local transforms with their pivots, inheritance of scale, cameras that look at something.

#include "host/import/base/scene_description.h"
#include "host/import/fbx/layered_value.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace mobu_host::fbx
{

/// How the scale of the models above reaches a model.
enum class ScaleInheritance
{
    AfterTurn, // the parent's scale acts along the model's own axes (RrSs)
    Plain,     // parent times child (RSrs)
    NotParents // as AfterTurn, but without the parent's own scale (Rrs)
};

/// In the node's local space, before scale is inherited.
struct Pivots
{
    Vector rotation_offset{}, rotation{}, scaling_offset{}, scaling{};

    bool operator==(const Pivots&) const = default;
};

struct TransformNode : EulerTransform // at rest
{
    std::uint32_t parent = kNoModel; // comes before its children; all nodes below a node follow it directly
    ScaleInheritance inheritance = ScaleInheritance::AfterTurn;
    std::uint32_t interest = kNoModel; // +X points there
    std::uint32_t up = kNoModel;       // and +Y toward there, as far as it can; else up in the world

    std::unique_ptr<const Pivots> pivots; // null where they are all zero

    int Order() const { return rotation_active ? rotation_order : 0; }
};

/// What a take moves of a node; null is at rest.
struct NodeMotion
{
    std::shared_ptr<const LayeredValue> translation, rotation, scaling;
};

/// The moving nodes of one take.
using TakeTransforms = std::unordered_map<std::uint32_t, NodeMotion>;

/// Not safe from two threads: it remembers the pose of the last instant, so that all nodes of one instant together take
/// linear time.
class TransformEvaluator
{
public:
    std::vector<TransformNode> nodes;
    std::vector<TakeTransforms> takes;
    /// From the file's axes and unit to the host's, applied on top of what has no parent. Where it mirrors, every
    /// node's third axis is reversed, so that frames stay right-handed.
    Matrix3 world;

    static constexpr std::size_t kAtRest = static_cast<std::size_t>(-1); // no take

    /// To be called once when the nodes are complete.
    void Prepare();

    /// The local transform in a hierarchy of plain products.
    Affine Local(std::uint32_t node, std::size_t take, double seconds);

    /// Of a plain node that `motion` moves.
    TransformParts Parts(std::uint32_t node, const NodeMotion& motion, double seconds) const;

    /// Whether the node is no more than scaling, turn and translation times its parent, in every take.
    bool IsPlain(std::uint32_t node) const { return !special_[node]; }
    /// The nodes whose local matrix moves in the take, by its own curves or by what others' do to it, ascending. Takes
    /// time for these nodes alone.
    std::vector<std::uint32_t> MovingNodes(std::size_t take) const;

private:
    /// Against the parent: in the host by a plain product.
    struct Pose
    {
        Affine local;        // in the file's axes
        Vector scaling;      // the node's own
        Matrix3 scale_above; // scale and shear that reach the node, before its own
        Affine global;       // in the file's axes, no camera turned to its interest
    };

    void Begin(std::size_t take, double seconds);
    const NodeMotion* MotionOf(std::uint32_t node, std::size_t take) const;
    Pose MakePose(const TransformNode& node, const NodeMotion* motion, double seconds,
                  const Pose* parent) const;
    const Pose& PoseOf(std::uint32_t node);
    Affine MakeHostLocal(std::uint32_t node);
    Affine HostGlobalOf(std::uint32_t node);
    Affine LookingAt(const TransformNode& node, const Affine& global);

    /// A camera whose turn depends on where a node is: its own place, that of its interest or of its up-vector model.
    struct Dependent
    {
        std::uint32_t on;
        std::uint32_t camera;
    };
    void PrepareDependents();
    void AddDependents(const std::vector<std::uint32_t>& moved, const std::vector<Dependent>& dependents,
                       std::vector<std::uint32_t>& cameras) const;

    std::vector<bool> special_;
    std::vector<std::uint32_t> tree_ends_;       // end of the nodes below each
    std::vector<std::uint32_t> scale_followers_; // nodes that moving scale above moves, ascending
    std::vector<Dependent> place_dependents_;    // ascending by `on`
    std::vector<Dependent> self_dependents_;     // those that depend on their own place
    std::vector<Pose> poses_;
    std::vector<std::uint64_t> pose_stamps_; // the pose is of the instant with this number
    std::vector<Affine> host_globals_;
    std::vector<std::uint64_t> host_stamps_;
    std::vector<std::uint32_t> path_;
    std::uint64_t stamp_ = 0;
    std::size_t take_ = kAtRest;
    double seconds_ = 0.0;
    bool mirrored_ = false;
};

} // namespace mobu_host::fbx
