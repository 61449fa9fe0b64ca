#pragma once

#include "tev2_loader/math/matrix.h"
#include "tev2_playback/detail/channel_data.h"
#include "tev2_playback/transform.h"

#include <cstdint>
#include <span>

// The skeleton of a clip as it lies in memory.
//
// The tracks of nodes are of three sorts. Those that share the most common key times are in rows: one row for each of
// these times, with the keys of all nodes side by side. The others are gathered: their keys stay one after another, and
// four nodes at a time are put together while they are evaluated. Both go through the same arithmetic in groups of four
// nodes, component by component. What does not move has no keys at all.

namespace TEV2_PLAYBACK
{

/// What moves in a group.
enum class Moves : std::uint8_t
{
    Both,
    Rotation,
    Translation,
};

/// How a group is evaluated.
enum class Way : std::uint8_t
{
    Rows,
    Gathered,
    Alone, ///< one node, by its channels
};

/// Keys of one lane of a gathered group.
struct Lane
{
    std::uint32_t clock = 0;
    std::uint32_t keys = 0; ///< the first float of the first key, in the gathered keys
};

/// Up to four nodes that are evaluated at once. Lanes without a node repeat another one.
struct Group
{
    std::uint32_t nodes[4] = {TEV2_LOADER::kNone, TEV2_LOADER::kNone, TEV2_LOADER::kNone, TEV2_LOADER::kNone};
    std::uint32_t parents[4] = {}; ///< in the world matrices; of a group that is below its parents
    std::uint32_t keys =
        0; ///< Rows: float in a row. Gathered: first of its lanes, four for each track. Alone: channels
    std::uint32_t resting = 0;  ///< float of what does not move, component by component
    std::uint32_t products = 0; ///< the products up to here can be formed once this group is evaluated
    std::uint8_t lanes = 0;     ///< with nodes
    Way way = Way::Rows;
    Moves moves = Moves::Both;
    bool belowParents = false; ///< every node has a parent, whose world matrix is formed before
    std::uint8_t straight = 0; ///< a bit for each lane whose rotation never takes the arc
};

/// A node whose world matrix is its parent's times its own.
struct WorldProduct
{
    std::uint32_t node = 0;
    std::uint32_t parent = 0; ///< in the world matrices
    std::uint32_t resting =
        TEV2_LOADER::kNone; ///< in the local matrices that do not move; none: formed by a group
};

/// Channels of a node that is evaluated alone; TEV2_LOADER::kNone where it has none.
struct LoneNode
{
    std::uint32_t translation = TEV2_LOADER::kNone;
    std::uint32_t rotation = TEV2_LOADER::kNone;
    std::uint32_t scale = TEV2_LOADER::kNone;
};

struct SkeletonData
{
    std::span<std::int32_t> parents; ///< -1: none

    std::span<float> rows;
    std::uint32_t rowSize = 0; ///< floats
    std::span<float> gathered;
    std::span<Lane> lanes;
    std::span<Group> groups;
    std::span<float> resting;
    std::span<LoneNode> alone;

    std::span<WorldProduct> products;
    std::span<TEV2_LOADER::TEV2_MATRIX_3X4> locals;

    /// World matrices before any time: right for nodes that never move. After those of the nodes come matrices that
    /// some have for a parent: `top`, if there is one, then one for each node whose parent does not come before it.
    std::span<TEV2_LOADER::TEV2_MATRIX_3X4> worlds;
    std::uint32_t top = TEV2_LOADER::kNone; ///< in the world matrices: the parent of nodes at top level

    /// Right for what does not move.
    std::span<Transform> transforms;

    std::span<Channel> channels;    ///< of the nodes that are evaluated alone
    std::span<std::uint32_t> words; ///< their values
};

} // namespace TEV2_PLAYBACK
