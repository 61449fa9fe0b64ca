#include "tev2_playback/detail/clip_builder.h"

#include "tev2_playback/detail/block_plan.h"
#include "tev2_playback/detail/extras_layout.h"
#include "tev2_playback/detail/framed_source.h"
#include "tev2_playback/detail/skeleton_layout.h"

#include <cstring>
#include <memory>
#include <new>

namespace TEV2_PLAYBACK
{

namespace
{

void TakeClocks(const ClockTable& table, BlockPlan& plan, ClipData& data)
{
    std::size_t times = 0;
    for (const ClockTable::Entry& entry : table.Entries())
        times += entry.times.size();
    data.times = plan.Take<float>(times);
    data.clocks = plan.Take<Clock>(table.Entries().size());
}

void FillClocks(const ClockTable& table, ClipData& data)
{
    std::size_t first = 0;
    for (std::size_t clock = 0; clock < data.clocks.size(); ++clock)
    {
        const ClockTable::Entry& entry = table.Entries()[clock];
        const std::size_t count = entry.times.size();
        data.clocks[clock] = {IndexOf(first), IndexOf(count), entry.ascending};
        std::memcpy(&data.times[first], entry.times.data(), count * sizeof(float));
        first += count;
    }
}

} // namespace

Block BuildClip(ClipSource source, const ClipOptions& options)
{
    std::unique_ptr<float[]> keys;
    if (options.frame == Frame::RightHandedYUp)
        keys = MakeRightHandedYUp(source);
    ClockTable clocks;
    const SkeletonLayout skeleton(source, clocks);
    const std::size_t node_clocks = clocks.Entries().size();
    NameLayout node_names(source.nodes.size());
    for (const NodeSource& node : source.nodes)
        node_names.Add(node.name);
    const ExtrasLayout extras(source, clocks);

    const auto take = [&](BlockPlan& plan, ClipData& data)
    {
        TakeClocks(clocks, plan, data);
        skeleton.TakeArrays(plan, data.skeleton);
        node_names.TakeArrays(plan, data.nodeNames);
        extras.TakeArrays(plan, data.extras);
    };
    BlockPlan measure;
    ClipData measured;
    measure.Take<ClipData>(1);
    take(measure, measured);

    Block block(measure.Size(), options.memory != nullptr ? options.memory : std::pmr::new_delete_resource());
    BlockPlan plan(block.Begin());
    ClipData& data = *new (plan.Take<ClipData>(1).data()) ClipData;
    take(plan, data);
    data.upAxis = source.upAxis;
    data.frame = options.frame;
    data.begin = source.begin;
    data.end = source.end;
    data.nodeClocks = static_cast<std::uint32_t>(node_clocks);
    FillClocks(clocks, data);
    skeleton.Fill(data.skeleton);
    node_names.Fill(data.nodeNames);
    extras.Fill(data.extras);
    return block;
}

} // namespace TEV2_PLAYBACK
