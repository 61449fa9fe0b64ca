#include "tev2_playback/detail/skeleton_layout.h"

#include "tev2_playback/detail/channel.h"
#include "tev2_playback/detail/four_lanes.h"
#include "tev2_playback/detail/transform_matrix.h"

#include <algorithm>
#include <numeric>

namespace TEV2_PLAYBACK
{

namespace
{

using namespace TEV2_LOADER;

/// Lanes of a group.
constexpr std::uint32_t kLanes = 4;

/// Rows with fewer nodes in a group are mostly padding: such nodes are gathered.
constexpr std::uint32_t kFewestInRows = 3;

/// Rows filled at once: as many as leave their pages within reach.
constexpr std::size_t kRowsAtOnce = 32;

constexpr std::uint32_t RowFloats(Moves moves)
{
    return moves == Moves::Both ? 28u : moves == Moves::Rotation ? 16u : 12u;
}

constexpr std::uint32_t RestingFloats(Moves moves)
{
    return 28u - RowFloats(moves);
}

constexpr bool HasTranslation(Moves moves)
{
    return moves != Moves::Rotation;
}

constexpr bool HasRotation(Moves moves)
{
    return moves != Moves::Translation;
}

template <typename Value>
KeyView<Value> ValuesOf(const TrackSource& track)
{
    return {track.values, track.valueCount};
}

} // namespace

SkeletonLayout::SkeletonLayout(const ClipSource& source, ClockTable& clocks)
    : source_(source), nodes_(source.nodes.size()), clocks_(clocks)
{
    PlanTracks();
    PlanNodes();
    FormGroups();
    PlanProducts();
}

TrackPlan SkeletonLayout::PlanTrack(const TrackSource& track)
{
    const std::size_t times = track.times.size();
    if (times < 2 || track.valueCount < 2)
        return {};
    const std::uint32_t clock = clocks_.Add(track.times);
    const bool regular = track.valueCount >= times && clocks_.Entries()[clock].ascending;
    return {regular ? Play::InGroup : Play::Alone, clock};
}

void SkeletonLayout::PlanTracks()
{
    for (std::size_t node = 0; node < nodes_.size(); ++node)
    {
        nodes_[node].translation = PlanTrack(source_.nodes[node].translation);
        nodes_[node].rotation = PlanTrack(source_.nodes[node].rotation);
        nodes_[node].scale = PlanTrack(source_.nodes[node].scale);
    }
    PutRowClockFirst();
}

/// The clock that most tracks share becomes the first.
void SkeletonLayout::PutRowClockFirst()
{
    const auto& entries = clocks_.Entries();
    if (entries.empty())
        return;
    const auto weight = [](const ClockTable::Entry& entry) { return entry.ascending ? entry.tracks : 0; };
    const auto most =
        std::max_element(entries.begin(), entries.end(),
                         [&](const auto& left, const auto& right) { return weight(left) < weight(right); });
    const auto first = static_cast<std::uint32_t>(most - entries.begin());
    clocks_.PutFirst(first);
    for (NodePlan& node : nodes_)
        for (TrackPlan* track : {&node.translation, &node.rotation, &node.scale})
            if (track->clock == 0 || track->clock == first)
                track->clock = track->clock == 0 ? first : 0;
}

void SkeletonLayout::PlanNodes()
{
    if (source_.top)
    {
        top_ = static_cast<std::uint32_t>(nodes_.size());
        outside_.push_back(*source_.top);
    }
    for (std::uint32_t index = 0; index < nodes_.size(); ++index)
    {
        NodePlan& node = nodes_[index];
        const auto parent =
            static_cast<std::uint32_t>(source_.nodes[index].parent); // a negative one is beyond all
        if (parent < index)
        {
            node.depth = nodes_[parent].depth + 1;
            node.parent = parent;
        }
        else if (parent < nodes_.size())
        {
            node.parent = static_cast<std::uint32_t>(nodes_.size() + outside_.size());
            outside_.push_back(source_.nodes[parent].worldMatrix);
        }
        else
            node.parent = top_;

        const bool moves_t = node.translation.play != Play::Resting;
        const bool moves_r = node.rotation.play != Play::Resting;
        const bool moves_s = node.scale.play != Play::Resting;
        node.moves = moves_t && moves_r ? Moves::Both : moves_r ? Moves::Rotation : Moves::Translation;
        if (!moves_t && !moves_r && !moves_s)
            node.way = NodeWay::Resting;
        else if (source_.nodes[index].scale.present || node.translation.play == Play::Alone ||
                 node.rotation.play == Play::Alone)
            node.way = NodeWay::Alone;
        else
            node.way =
                IsInRows(node.translation) && IsInRows(node.rotation) ? NodeWay::Rows : NodeWay::Gathered;
        node.restsInWorld =
            node.way == NodeWay::Resting && (node.parent >= index || nodes_[node.parent].restsInWorld);
    }
}

/// Groups in order of depth: what is above is formed first.
void SkeletonLayout::FormGroups()
{
    std::vector<std::uint32_t> order(nodes_.size());
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(),
                     [this](std::uint32_t left, std::uint32_t right)
                     { return nodes_[left].depth < nodes_[right].depth; });
    for (const Moves moves : {Moves::Both, Moves::Rotation, Moves::Translation})
    {
        std::vector<std::uint32_t> rows;
        std::vector<std::uint32_t> gathered;
        for (const std::uint32_t node : order)
        {
            if (nodes_[node].way == NodeWay::Rows && nodes_[node].moves == moves)
                rows.push_back(node);
            if (nodes_[node].way == NodeWay::Gathered && nodes_[node].moves == moves)
                gathered.push_back(node);
        }
        const std::size_t rest = rows.size() % kLanes;
        if (rest < kFewestInRows)
        {
            gathered.insert(gathered.end(), rows.end() - static_cast<std::ptrdiff_t>(rest), rows.end());
            rows.resize(rows.size() - rest);
        }
        for (std::size_t at = 0; at < rows.size(); at += kLanes)
            AddGroup(NodeWay::Rows, moves,
                     std::span(rows).subspan(at, std::min<std::size_t>(kLanes, rows.size() - at)));
        for (std::size_t at = 0; at < gathered.size(); at += kLanes)
            AddGroup(NodeWay::Gathered, moves,
                     std::span(gathered).subspan(at, std::min<std::size_t>(kLanes, gathered.size() - at)));
    }
    for (const std::uint32_t node : order)
        if (nodes_[node].way == NodeWay::Alone)
            AddGroup(NodeWay::Alone, Moves::Both, {&node, 1});
    std::stable_sort(groups_.begin(), groups_.end(),
                     [this](const Group& left, const Group& right)
                     { return nodes_[left.nodes[0]].depth < nodes_[right.nodes[0]].depth; });
}

void SkeletonLayout::AddGroup(NodeWay way, Moves moves, std::span<const std::uint32_t> nodes)
{
    Group group;
    group.lanes = static_cast<std::uint8_t>(nodes.size());
    group.moves = moves;
    for (std::uint32_t lane = 0; lane < kLanes; ++lane)
    {
        const std::uint32_t node = nodes[lane < nodes.size() ? lane : 0];
        group.nodes[lane] = node;
        if (lane >= nodes.size() || source_.nodes[node].rotation.kind == kLerpTrack)
            group.straight = static_cast<std::uint8_t>(group.straight | 1u << lane);
    }
    if (way == NodeWay::Alone)
    {
        const NodeSource& source = source_.nodes[nodes[0]];
        const NodePlan& plan = nodes_[nodes[0]];
        group.way = Way::Alone;
        group.keys = static_cast<std::uint32_t>(alone_.size());
        alone_.push_back({AddChannel(source.translation, plan.translation),
                          AddChannel(source.rotation, plan.rotation), AddChannel(source.scale, plan.scale)});
    }
    else
    {
        group.resting = IndexOf(resting_);
        resting_ += RestingFloats(moves);
        if (way == NodeWay::Rows)
        {
            group.way = Way::Rows;
            group.keys = IndexOf(row_size_);
            row_size_ += RowFloats(moves);
        }
        else
        {
            group.way = Way::Gathered;
            group.keys = IndexOf(lanes_);
            lanes_ += moves == Moves::Both ? 2 * kLanes : kLanes;
            for (const std::uint32_t node : nodes)
            {
                if (HasTranslation(moves))
                    gathered_ += 3 * source_.nodes[node].translation.times.size();
                if (HasRotation(moves))
                    gathered_ += 4 * source_.nodes[node].rotation.times.size();
            }
            IndexOf(gathered_); // of every lane that FillGathered will place
        }
    }
    groups_.push_back(group);
}

std::uint32_t SkeletonLayout::AddChannel(const TrackSource& track, const TrackPlan& plan)
{
    if (!track.present)
        return kNone;
    channels_.push_back({track.kind, plan.play == Play::Resting ? kNone : plan.clock, IndexOf(words_),
                         IndexOf(track.valueCount)});
    channel_sources_.push_back(&track);
    words_ += track.valueCount * (track.kind == kVector3Track ? std::size_t{3} : std::size_t{4});
    return static_cast<std::uint32_t>(channels_.size() - 1);
}

/// Behind every group the products whose factors are known then, what is above first.
void SkeletonLayout::PlanProducts()
{
    const std::size_t count = nodes_.size();
    std::vector<std::uint32_t> child_ends(count + 1, 0); // of the children of the node before
    for (const NodePlan& node : nodes_)
        if (node.parent < count)
            ++child_ends[node.parent + 1];
    std::partial_sum(child_ends.begin(), child_ends.end(), child_ends.begin());
    std::vector<std::uint32_t> children(child_ends.back());
    std::vector<std::uint32_t> next(child_ends.begin(), child_ends.end() - 1);
    for (std::uint32_t node = 0; node < count; ++node)
        if (nodes_[node].parent < count)
            children[next[nodes_[node].parent]++] = node;

    std::vector<char> has_local(count, 0);
    std::vector<char> has_world(count, 0);
    for (std::size_t node = 0; node < count; ++node)
    {
        has_local[node] = nodes_[node].way == NodeWay::Resting;
        has_world[node] = nodes_[node].restsInWorld;
    }
    std::vector<std::uint32_t> queue;
    const auto has_parent_world = [&](std::uint32_t node)
    { return nodes_[node].parent >= count || has_world[nodes_[node].parent]; };
    const auto form = [&](std::uint32_t node, bool in_group)
    {
        const NodePlan& plan = nodes_[node];
        if (has_world[node] || !has_local[node] || !has_parent_world(node))
            return;
        has_world[node] = 1;
        queue.push_back(node);
        if (plan.parent == kNone || in_group)
            return;
        WorldProduct product{node, plan.parent, kNone};
        if (plan.way == NodeWay::Resting)
        {
            product.resting = static_cast<std::uint32_t>(locals_.size());
            locals_.push_back(node);
        }
        products_.push_back(product);
    };
    for (Group& group : groups_)
    {
        queue.clear();
        group.belowParents =
            group.way != Way::Alone &&
            std::ranges::all_of(group.nodes, [&](std::uint32_t node)
                                { return nodes_[node].parent != kNone && has_parent_world(node); });
        for (std::uint32_t lane = 0; lane < kLanes && group.belowParents; ++lane)
            group.parents[lane] = nodes_[group.nodes[lane]].parent;
        for (std::uint32_t lane = 0; lane < group.lanes; ++lane)
        {
            has_local[group.nodes[lane]] = 1;
            form(group.nodes[lane], group.belowParents);
        }
        for (std::size_t at = 0; at < queue.size(); ++at)
            for (std::uint32_t child = child_ends[queue[at]]; child < child_ends[queue[at] + 1]; ++child)
                form(children[child], false);
        group.products = static_cast<std::uint32_t>(products_.size());
    }
}

void SkeletonLayout::TakeArrays(BlockPlan& plan, SkeletonData& data) const
{
    const std::size_t row_count = row_size_ == 0 ? 0 : clocks_.Entries()[0].times.size();
    data.parents = plan.Take<std::int32_t>(nodes_.size());
    data.rows = plan.Take<float>(row_count * row_size_);
    data.gathered =
        plan.Take<float>(gathered_ == 0 ? 0 : gathered_ + 1); // the last key of three is read as four
    data.lanes = plan.Take<Lane>(lanes_);
    data.groups = plan.Take<Group>(groups_.size());
    data.resting = plan.Take<float>(resting_);
    data.alone = plan.Take<LoneNode>(alone_.size());
    data.products = plan.Take<WorldProduct>(products_.size());
    data.locals = plan.Take<TEV2_MATRIX_3X4>(locals_.size());
    data.worlds = plan.Take<TEV2_MATRIX_3X4>(nodes_.size() + outside_.size());
    data.transforms = plan.Take<Transform>(nodes_.size());
    data.channels = plan.Take<Channel>(channels_.size());
    data.words = plan.Take<std::uint32_t>(words_);
}

void SkeletonLayout::Fill(SkeletonData& data) const
{
    data.rowSize = IndexOf(row_size_);
    data.top = top_;
    FillNodes(data);
    std::ranges::copy(groups_, data.groups.begin());
    std::ranges::copy(products_, data.products.begin());
    std::ranges::copy(alone_, data.alone.begin());
    FillGroups(data);
    FillRows(data);
    FillGathered(data);
    FillChannels(data);
    FillWorlds(data);
}

/// The transform of a node where its tracks are rewound.
Transform SkeletonLayout::RestingTransform(std::size_t node) const
{
    const NodeSource& source = source_.nodes[node];
    Transform transform;
    transform.translation = ValueAt<TEV2_VECTOR_3>(ValuesOf<TEV2_VECTOR_3>(source.translation), {}, Linear());
    transform.rotation = ValueAt<TEV2_QUATERNION>(ValuesOf<TEV2_QUATERNION>(source.rotation), {},
                                                  Turning{source.rotation.kind});
    if (source.scale.present)
        transform.scale = ValueAt<TEV2_VECTOR_3>(ValuesOf<TEV2_VECTOR_3>(source.scale), {}, Linear());
    return transform;
}

void SkeletonLayout::FillNodes(SkeletonData& data) const
{
    for (std::size_t node = 0; node < nodes_.size(); ++node)
    {
        const std::int32_t parent = source_.nodes[node].parent;
        data.parents[node] = static_cast<std::uint32_t>(parent) < nodes_.size() ? parent : -1;
        data.transforms[node] = RestingTransform(node);
    }
}

namespace
{

/// Puts a value into its lane, component after component.
void PutLane(float* to, const TEV2_VECTOR_3& value)
{
    to[0] = value.x;
    to[kLanes] = value.y;
    to[2 * kLanes] = value.z;
}

void PutLane(float* to, const TEV2_QUATERNION& value)
{
    to[0] = value.x;
    to[kLanes] = value.y;
    to[2 * kLanes] = value.z;
    to[3 * kLanes] = value.w;
}

} // namespace

void SkeletonLayout::FillGroups(SkeletonData& data) const
{
    for (const Group& group : groups_)
    {
        if (group.way == Way::Alone || group.moves == Moves::Both)
            continue;
        for (std::uint32_t lane = 0; lane < kLanes; ++lane)
        {
            float* const to = &data.resting[group.resting + lane];
            const Transform& transform = data.transforms[group.nodes[lane]];
            if (group.moves == Moves::Rotation)
                PutLane(to, transform.translation);
            else
                PutLane(to, transform.rotation);
        }
    }
}

namespace
{

/// The keys of four lanes, into the floats of a group in one row after another.
class RowWriter
{
public:
    RowWriter(const std::vector<NodeSource>& nodes, const Group& group) : moves_(group.moves)
    {
        for (std::uint32_t lane = 0; lane < kLanes; ++lane)
        {
            translations_[lane] = ValuesOf<TEV2_VECTOR_3>(nodes[group.nodes[lane]].translation);
            rotations_[lane] = ValuesOf<TEV2_QUATERNION>(nodes[group.nodes[lane]].rotation);
        }
    }

    void Write(std::size_t key, float* to) const
    {
        if (HasTranslation(moves_))
        {
            const Float4x4 keys =
                Transposed({Vector(0, key), Vector(1, key), Vector(2, key), Vector(3, key)});
            StoreFour(keys.x, to);
            StoreFour(keys.y, to + 4);
            StoreFour(keys.z, to + 8);
            to += 12;
        }
        if (HasRotation(moves_))
        {
            const Float4x4 keys =
                Transposed({Rotation(0, key), Rotation(1, key), Rotation(2, key), Rotation(3, key)});
            StoreFour(keys.x, to);
            StoreFour(keys.y, to + 4);
            StoreFour(keys.z, to + 8);
            StoreFour(keys.w, to + 12);
        }
    }

private:
    static Float4 LoadUnaligned(const std::byte* from)
    {
        float floats[4];
        std::memcpy(floats, from, sizeof floats);
        return Float4::Load(floats);
    }

    /// With any number after it.
    Float4 Vector(std::size_t lane, std::size_t key) const
    {
        const KeyView<TEV2_VECTOR_3>& keys = translations_[lane];
        if (key + 1 < keys.size()) [[likely]]
            return LoadUnaligned(static_cast<const std::byte*>(keys.data()) + key * sizeof(TEV2_VECTOR_3));
        const TEV2_VECTOR_3 last = keys[key];
        return Float4::Of(last.x, last.y, last.z, 0.0f);
    }

    Float4 Rotation(std::size_t lane, std::size_t key) const
    {
        return LoadUnaligned(static_cast<const std::byte*>(rotations_[lane].data()) +
                             key * sizeof(TEV2_QUATERNION));
    }

    Moves moves_;
    KeyView<TEV2_VECTOR_3> translations_[kLanes];
    KeyView<TEV2_QUATERNION> rotations_[kLanes];
};

} // namespace

void SkeletonLayout::FillRows(SkeletonData& data) const
{
    std::vector<const Group*> in_rows;
    for (const Group& group : groups_)
        if (group.way == Way::Rows)
            in_rows.push_back(&group);
    const std::size_t count = in_rows.empty() ? 0 : data.rows.size() / row_size_;
    for (std::size_t begin = 0; begin < count; begin += kRowsAtOnce)
    {
        const std::size_t end = std::min(count, begin + kRowsAtOnce);
        for (const Group* const group : in_rows)
        {
            const RowWriter writer(source_.nodes, *group);
            float* to = &data.rows[begin * row_size_ + group->keys];
            for (std::size_t key = begin; key < end; ++key, to += row_size_)
                writer.Write(key, to);
        }
    }
}

void SkeletonLayout::FillGathered(SkeletonData& data) const
{
    std::size_t next = 0;
    const auto put = [&](const TrackSource& track, std::uint32_t clock, std::size_t floats)
    {
        const Lane lane{clock, static_cast<std::uint32_t>(next)};
        const std::size_t size = floats * track.times.size();
        std::memcpy(&data.gathered[next], track.values, size * sizeof(float));
        next += size;
        return lane;
    };
    for (const Group& group : groups_)
    {
        if (group.way != Way::Gathered)
            continue;
        for (std::uint32_t lane = 0; lane < kLanes; ++lane)
        {
            std::uint32_t at = group.keys + lane;
            const std::uint32_t node = group.nodes[lane];
            const bool repeats = lane >= group.lanes;
            for (const bool translation : {true, false})
            {
                if (!(translation ? HasTranslation(group.moves) : HasRotation(group.moves)))
                    continue;
                const TrackSource& track =
                    translation ? source_.nodes[node].translation : source_.nodes[node].rotation;
                const TrackPlan& plan = translation ? nodes_[node].translation : nodes_[node].rotation;
                data.lanes[at] =
                    repeats ? data.lanes[at - lane] : put(track, plan.clock, translation ? 3 : 4);
                at += kLanes;
            }
        }
    }
    if (!data.gathered.empty())
        data.gathered.back() = 0.0f;
}

void SkeletonLayout::FillChannels(SkeletonData& data) const
{
    std::ranges::copy(channels_, data.channels.begin());
    for (std::size_t channel = 0; channel < channels_.size(); ++channel)
    {
        const Channel& to = channels_[channel];
        const std::size_t words = to.count * (to.kind == kVector3Track ? std::size_t{3} : std::size_t{4});
        if (words != 0)
            std::memcpy(&data.words[to.values], channel_sources_[channel]->values,
                        words * sizeof(std::uint32_t));
    }
}

void SkeletonLayout::FillWorlds(SkeletonData& data) const
{
    std::ranges::copy(outside_, data.worlds.begin() + static_cast<std::ptrdiff_t>(nodes_.size()));
    for (std::size_t node = 0; node < nodes_.size(); ++node)
    {
        const NodePlan& plan = nodes_[node];
        const TEV2_MATRIX_3X4 local = MatrixOf(data.transforms[node]);
        data.worlds[node] =
            plan.restsInWorld && plan.parent != kNone ? FastProduct(data.worlds[plan.parent], local) : local;
    }
    for (std::size_t at = 0; at < locals_.size(); ++at)
        data.locals[at] = MatrixOf(data.transforms[locals_[at]]);
}

} // namespace TEV2_PLAYBACK
