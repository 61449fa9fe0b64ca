#pragma once

#include "tev2_playback/detail/block_plan.h"
#include "tev2_playback/detail/clip_source.h"
#include "tev2_playback/detail/clock_table.h"
#include "tev2_playback/detail/skeleton_data.h"

#include <cstdint>
#include <span>
#include <vector>

namespace TEV2_PLAYBACK
{

/// How a track is played.
enum class Play : std::uint8_t
{
    Resting, ///< one value for all times
    InGroup, ///< ascending times, a value for each
    Alone,   ///< anything else
};

struct TrackPlan
{
    Play play = Play::Resting;
    std::uint32_t clock = 0;
};

enum class NodeWay : std::uint8_t
{
    Resting,
    Rows,
    Gathered,
    Alone,
};

struct NodePlan
{
    TrackPlan translation;
    TrackPlan rotation;
    TrackPlan scale;
    NodeWay way = NodeWay::Resting;
    Moves moves = Moves::Both;
    std::uint32_t depth = 0;
    std::uint32_t parent = TEV2_LOADER::kNone; ///< in the world matrices
    bool restsInWorld = false;                 ///< so do all nodes above it
};

/// Decides how the nodes of a clip are laid out, and lays them out.
class SkeletonLayout
{
public:
    /// Adds the clocks of the nodes to an empty table. The source must outlive the layout.
    SkeletonLayout(const ClipSource& source, ClockTable& clocks);

    void TakeArrays(BlockPlan& plan, SkeletonData& data) const;
    void Fill(SkeletonData& data) const;

private:
    TrackPlan PlanTrack(const TrackSource& track);
    void PlanTracks();
    void PutRowClockFirst();
    void PlanNodes();
    bool IsInRows(const TrackPlan& track) const { return track.play == Play::Resting || track.clock == 0; }
    void FormGroups();
    std::vector<std::uint32_t> FormGroupsOf(NodeWay way, Moves moves,
                                            const std::vector<std::uint32_t>& nodes);
    void AddGroup(NodeWay way, Moves moves, std::span<const std::uint32_t> nodes);
    void PlanProducts();
    std::uint32_t AddChannel(const TrackSource& track, const TrackPlan& plan);

    Transform RestingTransform(std::size_t node) const;
    void FillNodes(SkeletonData& data) const;
    void FillGroups(SkeletonData& data) const;
    void FillRows(SkeletonData& data) const;
    void FillGathered(SkeletonData& data) const;
    void FillChannels(SkeletonData& data) const;
    void FillWorlds(SkeletonData& data) const;

    const ClipSource& source_;
    std::vector<NodePlan> nodes_;
    ClockTable& clocks_;
    std::vector<Group> groups_;
    std::vector<WorldProduct> products_;
    std::uint32_t top_ = TEV2_LOADER::kNone;
    std::vector<TEV2_LOADER::TEV2_MATRIX_3X4>
        outside_;                       ///< world matrices of parents that come after their children
    std::vector<std::uint32_t> locals_; ///< nodes that rest below a parent that moves
    std::vector<LoneNode> alone_;
    std::vector<Channel> channels_;
    std::vector<const TrackSource*> channel_sources_;
    std::size_t words_ = 0;
    std::size_t row_size_ = 0;
    std::size_t resting_ = 0;
    std::size_t lanes_ = 0;
    std::size_t gathered_ = 0;
};

} // namespace TEV2_PLAYBACK
