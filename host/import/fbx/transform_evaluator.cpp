#include "host/import/fbx/transform_evaluator.h"

#include <algorithm>
#include <cmath>

namespace mobu_host::fbx
{
namespace
{

constexpr Vector kWorldUp{0.0, 1.0, 0.0};
constexpr double kNoDirection = 1e-9; // shorter than this a vector points nowhere

bool IsUniform(const Vector& scaling)
{
    return scaling[0] == scaling[1] && scaling[1] == scaling[2] && scaling[0] != 0.0;
}

Vector Product(const Vector& a, const Vector& b)
{
    return {a[0] * b[0], a[1] * b[1], a[2] * b[2]};
}

// Reverses the third axis of a frame.
Affine Mirrored(Affine affine)
{
    for (auto& row : affine.linear.at)
        row[2] = -row[2];
    return affine;
}

// Undoes Mirrored of the frame that `affine` is in.
Affine FromMirrored(Affine affine)
{
    for (double& value : affine.linear.at[2])
        value = -value;
    affine.place[2] = -affine.place[2];
    return affine;
}

} // namespace

void TransformEvaluator::Prepare()
{
    mirrored_ = Determinant(world) < 0.0;

    std::vector<bool> own_scale(nodes.size()), own_uniform(nodes.size()), composes(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        own_scale[i] = nodes[i].scaling != kOnes;
        own_uniform[i] = IsUniform(nodes[i].scaling);
    }
    for (const TakeTransforms& take : takes)
    {
        for (const auto& [node, motion] : take)
        {
            if (motion.scaling && !(motion.scaling->IsConstant() &&
                                    First3(motion.scaling->At(0.0)) == kOnes && nodes[node].scaling == kOnes))
            {
                own_scale[node] = true;
                own_uniform[node] = false;
            }
            if (motion.rotation && motion.rotation->ComposesTurns())
                composes[node] = true;
        }
    }
    special_.assign(nodes.size(), false);
    std::vector<bool> uniform(nodes.size()); // the whole scale down to here
    const bool turned = !(world == Matrix3());
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        const TransformNode& node = nodes[i];
        const bool has_parent = node.parent != kNoModel;
        uniform[i] = own_uniform[i] && (!has_parent || uniform[node.parent]);
        bool scale_matters = false;
        if (has_parent && node.inheritance == ScaleInheritance::AfterTurn)
            scale_matters = !uniform[node.parent];
        else if (has_parent && node.inheritance == ScaleInheritance::NotParents)
            scale_matters = own_scale[node.parent] || !uniform[node.parent];
        special_[i] = scale_matters || node.pivots || composes[i] || node.interest != kNoModel || mirrored_ ||
                      (turned && !has_parent);
    }
    PrepareDependents();
}

void TransformEvaluator::PrepareDependents()
{
    tree_ends_.resize(nodes.size());
    for (std::size_t i = nodes.size(); i-- > 0;)
    {
        tree_ends_[i] = std::max(tree_ends_[i], static_cast<std::uint32_t>(i + 1));
        if (const std::uint32_t parent = nodes[i].parent; parent != kNoModel)
            tree_ends_[parent] = std::max(tree_ends_[parent], tree_ends_[i]);
    }
    scale_followers_.clear();
    place_dependents_.clear();
    self_dependents_.clear();
    for (std::uint32_t i = 0; i < nodes.size(); ++i)
    {
        const TransformNode& node = nodes[i];
        if (node.parent != kNoModel && node.inheritance != ScaleInheritance::Plain && special_[i])
            scale_followers_.push_back(i);
        if (node.interest == kNoModel)
            continue;
        self_dependents_.push_back({i, i});
        for (const std::uint32_t on : {i, node.interest, node.up})
            if (on != kNoModel)
                place_dependents_.push_back({on, i});
    }
    std::sort(place_dependents_.begin(), place_dependents_.end(),
              [](const Dependent& a, const Dependent& b) { return a.on < b.on; });
}

// The cameras that depend on what is at or below the moved nodes, which ascend.
void TransformEvaluator::AddDependents(const std::vector<std::uint32_t>& moved,
                                       const std::vector<Dependent>& dependents,
                                       std::vector<std::uint32_t>& cameras) const
{
    std::uint32_t done = 0; // the trees before this node are done
    for (const std::uint32_t node : moved)
    {
        if (node < done)
            continue;
        done = tree_ends_[node];
        const auto before = [](const Dependent& dependent, std::uint32_t index)
        { return dependent.on < index; };
        const auto first = std::lower_bound(dependents.begin(), dependents.end(), node, before);
        for (auto at = first; at != dependents.end() && at->on < done; ++at)
            cameras.push_back(at->camera);
    }
}

std::vector<std::uint32_t> TransformEvaluator::MovingNodes(std::size_t take) const
{
    const auto tidy = [](std::vector<std::uint32_t>& indices)
    {
        std::sort(indices.begin(), indices.end());
        indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
    };
    std::vector<std::uint32_t> moving, scaled;
    for (const auto& [node, motion] : takes[take])
    {
        moving.push_back(node);
        if (motion.scaling)
            scaled.push_back(node);
    }
    tidy(scaled);
    std::uint32_t done = 0;
    for (const std::uint32_t node : scaled)
    {
        if (node < done)
            continue;
        done = tree_ends_[node];
        const auto first = std::upper_bound(scale_followers_.begin(), scale_followers_.end(), node);
        moving.insert(moving.end(), first, std::lower_bound(first, scale_followers_.end(), done));
    }
    tidy(moving);

    std::vector<std::uint32_t> turned;
    AddDependents(moving, place_dependents_, turned);
    tidy(turned);
    std::vector<std::uint32_t> below_turned; // what a camera carries is moved by its turn
    AddDependents(turned, self_dependents_, below_turned);
    moving.insert(moving.end(), turned.begin(), turned.end());
    moving.insert(moving.end(), below_turned.begin(), below_turned.end());
    tidy(moving);
    return moving;
}

void TransformEvaluator::Begin(std::size_t take, double seconds)
{
    if (stamp_ != 0 && take == take_ && seconds == seconds_)
        return;
    if (poses_.size() != nodes.size())
    {
        poses_.resize(nodes.size());
        pose_stamps_.assign(nodes.size(), 0);
        host_globals_.resize(nodes.size());
        host_stamps_.assign(nodes.size(), 0);
    }
    ++stamp_;
    take_ = take;
    seconds_ = seconds;
}

const NodeMotion* TransformEvaluator::MotionOf(std::uint32_t node, std::size_t take) const
{
    if (take == kAtRest)
        return nullptr;
    const auto found = takes[take].find(node);
    return found == takes[take].end() ? nullptr : &found->second;
}

TransformEvaluator::Pose TransformEvaluator::MakePose(const TransformNode& node, const NodeMotion* motion,
                                                      double seconds, const Pose* parent) const
{
    const auto value = [&](const auto& moving, const Vector& rest)
    { return moving ? First3(moving->At(seconds)) : rest; };
    static const std::shared_ptr<const LayeredValue> kAtRestValue;
    const Vector translation = value(motion ? motion->translation : kAtRestValue, node.translation);

    Pose pose;
    pose.scaling = value(motion ? motion->scaling : kAtRestValue, node.scaling);
    Matrix3 turn = motion && motion->rotation ? motion->rotation->TurnAt(seconds, node.Order())
                                              : EulerTurn(node.rotation, node.Order());
    if (node.rotation_active)
        turn = EulerTurn(node.pre_rotation, 0) * turn * Transposed(EulerTurn(node.post_rotation, 0));
    static const Pivots kNoPivots;
    const Pivots& pivots = node.pivots ? *node.pivots : kNoPivots;
    pose.local.place = translation + pivots.rotation_offset + pivots.rotation +
                       turn * (pivots.scaling_offset + pivots.scaling -
                               Product(pose.scaling, pivots.scaling) - pivots.rotation);
    pose.local.linear = turn * Scaling(pose.scaling);
    if (!parent)
    {
        pose.global = pose.local;
        return pose;
    }

    const Matrix3 parent_scale = parent->scale_above * Scaling(parent->scaling);
    if (!(parent_scale == Matrix3()))
    {
        Matrix3 undone;
        if (node.inheritance == ScaleInheritance::Plain)
        {
            pose.scale_above = Transposed(turn) * parent_scale * turn;
        }
        else
        {
            pose.scale_above =
                node.inheritance == ScaleInheritance::AfterTurn ? parent_scale : parent->scale_above;
            if (Invert(parent_scale, undone))
                pose.local.linear = undone * turn * pose.scale_above * Scaling(pose.scaling);
        }
    }
    pose.global = parent->global * pose.local;
    return pose;
}

const TransformEvaluator::Pose& TransformEvaluator::PoseOf(std::uint32_t node)
{
    path_.clear();
    for (std::uint32_t at = node; at != kNoModel && pose_stamps_[at] != stamp_; at = nodes[at].parent)
        path_.push_back(at);
    for (; !path_.empty(); path_.pop_back())
    {
        const std::uint32_t at = path_.back();
        const std::uint32_t parent = nodes[at].parent;
        poses_[at] = MakePose(nodes[at], MotionOf(at, take_), seconds_,
                              parent == kNoModel ? nullptr : &poses_[parent]);
        pose_stamps_[at] = stamp_;
    }
    return poses_[node];
}

// +X to the interest, +Y up; place and the lengths of the axes stay.
Affine TransformEvaluator::LookingAt(const TransformNode& node, const Affine& global)
{
    Vector direction = world * PoseOf(node.interest).global.place - global.place;
    const double distance = Length(direction);
    if (!(distance > kNoDirection))
        return global;
    direction = direction * (1.0 / distance);
    const Vector up = node.up == kNoModel ? kWorldUp : world * PoseOf(node.up).global.place - global.place;
    Vector right = Cross(direction, up);
    if (!(Length(right) > kNoDirection * Length(up)))
        right = Cross(direction, Column(global.linear, 1)); // straight up or down: its own up axis decides
    if (!(Length(right) > 0.0))
        return global;
    right = right * (1.0 / Length(right));
    const Vector axes[3] = {direction, Cross(right, direction), right};
    Affine turned = global;
    for (std::size_t column = 0; column < 3; ++column)
    {
        const double length = Length(Column(global.linear, column));
        for (std::size_t row = 0; row < 3; ++row)
            turned.linear.at[row][column] = axes[column][row] * length;
    }
    return turned;
}

Affine TransformEvaluator::MakeHostLocal(std::uint32_t node)
{
    const std::uint32_t parent = nodes[node].parent;
    Affine local = PoseOf(node).local;
    if (parent == kNoModel)
        local = Affine{world, {}} * local;
    else if (mirrored_)
        local = FromMirrored(local);
    if (mirrored_)
        local = Mirrored(local);
    if (nodes[node].interest == kNoModel)
        return local;

    const Affine above = parent == kNoModel ? Affine() : HostGlobalOf(parent);
    const Affine turned = LookingAt(nodes[node], above * local);
    Matrix3 undone;
    return Invert(above.linear, undone) ? Affine{undone * turned.linear, local.place} : local;
}

Affine TransformEvaluator::HostGlobalOf(std::uint32_t node)
{
    std::vector<std::uint32_t> path;
    for (std::uint32_t at = node; at != kNoModel && host_stamps_[at] != stamp_; at = nodes[at].parent)
        path.push_back(at);
    for (; !path.empty(); path.pop_back())
    {
        const std::uint32_t at = path.back();
        const std::uint32_t parent = nodes[at].parent;
        const Affine local =
            MakeHostLocal(at); // of a camera with an interest it asks for what is above, known by now
        host_globals_[at] = parent == kNoModel ? local : host_globals_[parent] * local;
        host_stamps_[at] = stamp_;
    }
    return host_globals_[node];
}

Affine TransformEvaluator::Local(std::uint32_t node, std::size_t take, double seconds)
{
    Begin(take, seconds);
    return MakeHostLocal(node);
}

TransformParts TransformEvaluator::Parts(std::uint32_t node, const NodeMotion& motion, double seconds) const
{
    const auto value = [seconds](const std::shared_ptr<const LayeredValue>& moving, const Vector& rest)
    { return moving ? First3(moving->At(seconds)) : rest; };
    const TransformNode& rest = nodes[node];
    return {value(motion.translation, rest.translation), value(motion.rotation, rest.rotation),
            value(motion.scaling, rest.scaling)};
}

} // namespace mobu_host::fbx
