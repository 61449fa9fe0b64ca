#pragma once

#include "host/sdk/animation.h"
#include "host/sdk/player.h"
#include "host/sdk/scene_graph.h"

#include <string>

namespace mobu_host
{

/// The one scene, its animation and its player. Objects call Adopt and Forget when they are constructed and destroyed.
class SceneState
{
public:
    ~SceneState();
    void Reset();
    void Evaluate();

    void Adopt(FBTake& take); ///< the first one becomes current
    void Forget(FBModel& model);
    void Forget(FBCamera& camera);
    void Forget(FBConstraint& constraint);
    void Forget(FBTake& take);

    /// Where memory ran out before all that every scene has was there, it is unmade again.
    enum class Stage
    {
        Unmade,
        Changing, ///< being made or destroyed
        Made,
    };
    Stage stage = Stage::Unmade;

    SceneGraph graph;
    Animation animation;
    Player player;
    bool has_path = false;
    std::string path;
    Behaviour behaviour;

private:
    void Make();
    void Clear();

    bool clearing_ = false; // nothing needs to be forgotten one by one
};

SceneState& TheScene();

} // namespace mobu_host
