#pragma once

#include "mobu_host/scene.h"

namespace mobu_host
{

inline FBTime Seconds(double seconds)
{
    FBTime time;
    time.SetSecondDouble(seconds);
    return time;
}

inline FBTime Now()
{
    return FBSystem().LocalTime;
}

inline LocalTransform At(double x, double y = 0.0)
{
    return {{x, y, 0.0}, {}, {1.0, 1.0, 1.0}};
}

/// X and Y of a model in the world, as of the last evaluation.
inline double X(FBModel& model)
{
    FBMatrix matrix;
    model.GetMatrix(matrix);
    return matrix(3, 0);
}

inline double Y(FBModel& model)
{
    FBMatrix matrix;
    model.GetMatrix(matrix);
    return matrix(3, 1);
}

inline void EvaluateAt(double seconds)
{
    FBPlayerControl().Goto(Seconds(seconds));
    Scene().Evaluate();
}

} // namespace mobu_host
