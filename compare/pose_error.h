#pragma once

#include "tev2_loader/math/matrix.h"

#include <cstddef>

// How far poses are apart.
//
//     #include "compare/pose_error.h"
//     #include "compare/rewound_scene.h"
//
//     tev2_compare::RewoundScene before(full), after(reduced); // scenes with the same nodes
//     tev2_compare::NodeErrors hips;
//     for (const float time : times)
//     {
//         before.SetTime(time);
//         after.SetTime(time);
//         hips.Add(time, tev2_compare::ErrorBetween(before.Node(0).worldMatrix, after.Node(0).worldMatrix));
//     }
//     std::printf("%g mm at %g s\n", hips.millimetres.Worst(), hips.millimetres.WorstTime());

namespace tev2_compare
{

struct PoseError
{
    double millimetres = 0.0; ///< between the origins
    double degrees = 0.0;     ///< of the rotation that turns one into the other, 0 to 180
};

/// How far two transforms are apart, in double precision. 0 for equal matrices.
///
/// Of the rotations, scale along the axes is taken out first, and then shear: what is compared are the closest
/// rotations. Where one is a mirror image and the other is not, it is 180 degrees. A matrix without a rotation (two
/// axes of length 0, or all three in a plane by shear) is 0 degrees from every other.
///
/// Numbers that are not finite are equal to themselves, NaN to NaN. Where only one matrix has such a number, or another
/// one, the place or the rotation that it belongs to is infinitely far off.
PoseError ErrorBetween(const TEV2_LOADER::TEV2_MATRIX_3X4& left, const TEV2_LOADER::TEV2_MATRIX_3X4& right);

/// One kind of error over time.
class ErrorOverTime
{
public:
    void Add(float time, double error);

    double Worst() const { return worst_; }

    /// The first time of the worst; 0 when nothing was off.
    float WorstTime() const { return worst_time_; }

    /// Over all times added; 0 for none.
    double Mean() const { return times_ == 0 ? 0.0 : sum_ / static_cast<double>(times_); }

    std::size_t Times() const { return times_; }

private:
    double worst_ = 0.0;
    double sum_ = 0.0;
    float worst_time_ = 0.0f;
    std::size_t times_ = 0;
};

/// Both errors of a node over time.
struct NodeErrors
{
    ErrorOverTime millimetres;
    ErrorOverTime degrees;

    void Add(float time, const PoseError& error)
    {
        millimetres.Add(time, error.millimetres);
        degrees.Add(time, error.degrees);
    }
};

} // namespace tev2_compare
