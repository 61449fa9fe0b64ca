#pragma once

#include "mobu_host/scene.h"

#include <vector>

namespace mobu_host
{

/// The current take and time, the transport rate, and who watches them.
class Player
{
public:
    void Reset();

    /// Moves to a time, snapped to frames as the snap mode says.
    void Goto(FBTime time, bool clamp_to_take);
    void ReportEvaluation();

    /// Frames per second.
    double RateOf(FBTimeMode mode) const;

    FBTake* take = nullptr;
    FBTime time;
    FBTime evaluated_time;
    unsigned long long evaluations = 0;
    FBTimeMode transport_mode = kFBTimeMode30Frames;
    double custom_rate = 0.0;
    int snap_mode = kFBTransportSnapModeNoSnap;
    std::vector<const ObserverCalls*> observers; ///< they outlive scenes
};

} // namespace mobu_host
