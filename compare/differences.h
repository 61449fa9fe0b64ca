#pragma once

#include "compare/difference.h"
#include "compare/motion.h"
#include "compare/scene_match.h"

#include <cstddef>
#include <vector>

// Everything that is different between two scenes.
//
//     tev2_compare::Comparison comparison = tev2_compare::CompareScenes(yesterday, today, {});
//     for (const tev2_compare::Difference& difference : comparison.differences)
//         std::printf("%s %s\n", std::string(NameOf(difference.change)).c_str(), difference.name.c_str());

namespace tev2_compare
{

struct CompareOptions
{
    Tolerance tolerance;

    /// Leave out poses, values and everything else that CompareStructure (structure.h) does not compare.
    bool structure_only = false;

    /// Evaluations of nodes that a comparison may take; of more instants every n-th is looked at.
    std::size_t most_evaluations = 40'000'000;
};

struct Comparison
{
    /// By topic; poses and user properties with the worst first.
    std::vector<Difference> differences;

    /// Where the time ranges overlap: poses and values are compared there. False: nowhere.
    bool overlap = true;
    TimeSpan span;

    MotionComparison motion; ///< its differences are among the others
};

/// Compares two scenes by name. What is not in both is a difference of the structure, and its values are not compared.
///
/// Values over time are compared at the key times of both and between them: floats in percent of the largest value that
/// a track has, distances of cameras and positions of vertices in millimetres, angles of lenses in degrees, and whole
/// numbers, texts, indices and bytes exactly. Indices of nodes, materials and lights are the same where what they lead
/// to is. The information record is left out: it says when and by whom a file was written. Changes the time of both
/// scenes.
Comparison CompareScenes(TEV2_LOADER::TEV2& left, TEV2_LOADER::TEV2& right, const SceneMatch& match,
                         const CompareOptions& options);

} // namespace tev2_compare
