#include "host/sdk/scene_state.h"

#include "host/sdk/model_space.h"

namespace mobu_host
{

SceneState& TheScene()
{
    static SceneState state;
    if (state.stage == SceneState::Stage::Unmade) // not in the constructor: the new objects call TheScene
        state.Reset();
    return state;
}

SceneState::~SceneState()
{
    stage = Stage::Changing;
    Clear();
}

void SceneState::Clear()
{
    clearing_ = true;
    animation.Clear();
    graph.Clear();
    player.take = nullptr;
    clearing_ = false;
}

void SceneState::Reset()
{
    stage = Stage::Changing;
    try
    {
        Make();
    }
    catch (...)
    {
        stage = Stage::Unmade;
        throw;
    }
    stage = Stage::Made;
}

void SceneState::Make()
{
    graph.MakeScene();
    Clear();
    player.Reset();
    has_path = false;
    path.clear();
    behaviour = Behaviour();
    graph.MakeSystemObjects();
    AddTake("Take 001", FBTime(), FBTime());
}

void SceneState::Adopt(FBTake& take)
{
    if (graph.Add(take) && !player.take)
        player.take = &take;
}

void SceneState::Forget(FBModel& model)
{
    if (clearing_ || !graph.Holds(model))
        return;
    animation.Forget(model);
    graph.Remove(model);
}

void SceneState::Forget(FBCamera& camera)
{
    if (!clearing_)
        graph.Remove(camera);
}

void SceneState::Forget(FBConstraint& constraint)
{
    if (clearing_)
        return;
    animation.Forget(constraint);
    graph.Remove(constraint);
}

void SceneState::Forget(FBTake& take)
{
    if (clearing_)
        return;
    animation.Forget(take);
    graph.Remove(take);
    if (player.take == &take)
        player.take = graph.scene->Takes[0];
}

void SceneState::Evaluate()
{
    animation.Apply(player.take, player.time.GetSecondDouble());
    for (FBModel* model : graph.TreeInPreOrder())
        UpdateMatrices(*model);
    for (FBModel* model : graph.SystemModels())
        UpdateMatrices(*model);
    player.ReportEvaluation();
}

} // namespace mobu_host
