#pragma once

#include "compare/pose_error.h"
#include "tev2_loader/status.h"
#include "tev2_loader/tev2.h"
#include "tools/tv2/json_answer.h"

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace tv2
{

/// What a track, a node or a file lost in an export: keys, and the pose's accuracy in the world.
struct KeyReductionCost
{
    struct Keys
    {
        std::size_t sampled = 0;
        std::size_t kept = 0;
    };

    struct Node
    {
        std::size_t node = 0;
        std::string name;
        Keys keys; ///< of its transform and its user properties
        tev2_compare::NodeErrors errors;
    };

    std::string error; ///< why there is nothing else; empty otherwise
    std::size_t instants = 0;
    Keys keys;               ///< of all nodes
    std::vector<Node> nodes; ///< the farthest off first; those with equal errors in file order
};

/// Compares the poses of two exports of one take, with every key and with those that were kept, at each key time of the
/// former. Fails when they are not exports of the same samples. Moves both scenes.
TEV2_LOADER::Status MeasureKeyReduction(TEV2_LOADER::TEV2& sampled, TEV2_LOADER::TEV2& reduced,
                                        KeyReductionCost& cost);

/// A table of the nodes that are farthest off, and all nodes together.
void PrintCost(std::ostream& out, const KeyReductionCost& cost);

/// All of it.
Json CostJson(const KeyReductionCost& cost);

} // namespace tv2
