#include "exporter/sampling/sample_take.h"

#include "exporter/sampling/cameras.h"
#include "exporter/sampling/skeleton.h"

#include <cmath>

namespace tev2_exporter
{
namespace
{

void MoveTo(ExportContext& context, const FBTime& time)
{
    context.player.Goto(time);
    context.system.Scene->Evaluate();
}

void MoveTo(ExportContext& context, float seconds)
{
    FBTime time;
    time.SetSecondDouble(static_cast<double>(seconds));
    MoveTo(context, time);
}

/// Moves to `requested`; a player that lands elsewhere goes to `fallback` instead.
void SnapTo(ExportContext& context, float requested, const FBTime& fallback)
{
    constexpr float kAccepted = 0.01f; // seconds
    MoveTo(context, requested);
    const FBTime landed = context.system.LocalTime;
    if (std::fabs(static_cast<float>(landed.GetSecondDouble()) - requested) > kAccepted)
        MoveTo(context, fallback);
}

FBTimeSpan CurrentTakeSpan(ExportContext& context)
{
    FBTake* take = context.system.CurrentTake;
    return take->LocalTimeSpan;
}

void SnapToTakeStart(ExportContext& context, float requested)
{
    SnapTo(context, requested, CurrentTakeSpan(context).GetStart());
}

void SnapToTakeStop(ExportContext& context, float requested)
{
    SnapTo(context, requested, CurrentTakeSpan(context).GetStop());
}

/// Samples one take into one scene.
class TakeSampler
{
public:
    TakeSampler(ExportContext& context, const SampledModels& models, TEV2_LOADER::TEV2& scene)
        : models_(models), scene_(scene)
    {
        FBScene* const source = context.system.Scene;
        switcher_ = {models.switcher, source, models.camera_indices, CountSystemCameras(*source), nullptr};
        FBModel* scene_root = context.system.SceneRootModel;
        first_is_scene_root_ = !models.export_models.empty() && models.export_models.front() == scene_root;
    }

    /// Makes nodes, cameras and the switcher's track, with their keys at the start of the range, and binds them.
    void Begin(const SamplingRange& range, const ExportOptions& options)
    {
        TEV2_LOADER::TEV2_MATRIX_HIERARCHY& hierarchy = scene_.matrixHierarchy;
        const bool keep_positive_z = options.KeepPositiveZ == 1;

        subtrees_.reserve(models_.export_models.size());
        for (FBModel* model : models_.export_models)
            subtrees_.push_back(CollectSubtree(*model));
        hierarchy.nodes.reserve(CountExportNodes(subtrees_, first_is_scene_root_));
        if (!subtrees_.empty() && !first_is_scene_root_)
            InsertExporterRoot(hierarchy, range.start);
        std::size_t next_camera = 0;
        for (ExportSubtree& subtree : subtrees_)
        {
            const std::uint32_t node_index = BuildNodesForModel(subtree, hierarchy, range, keep_positive_z);
            CreateCameraEntities(subtree, scene_, node_index, next_camera, range, keep_positive_z);
        }
        if (switcher_.switcher)
        {
            switcher_.track = &MakeTrack(scene_.cameraMan.cameraIndex, range);
            SampleSwitcher(switcher_, range.start);
        }
    }

    void Sample(float time)
    {
        for (ExportSubtree& subtree : subtrees_)
        {
            SampleTransforms(subtree.models, time);
            SampleProperties(subtree.properties, time);
            SampleCameras(subtree.cameras, time);
        }
        if (switcher_.switcher)
            SampleSwitcher(switcher_, time);
    }

    void Finish() { FinishHierarchy(scene_.matrixHierarchy, first_is_scene_root_); }

private:
    const SampledModels& models_;
    TEV2_LOADER::TEV2& scene_;
    SwitcherBinding switcher_;
    bool first_is_scene_root_ = false;
    std::vector<ExportSubtree> subtrees_;
};

} // namespace

bool SampleTake(ExportContext& context, const SampledModels& models, const SamplingRange& range,
                const ExportOptions& options, TEV2_LOADER::TEV2& scene)
{
    TakeSampler sampler(context, models, scene);

    SnapToTakeStart(context, range.start);
    sampler.Begin(range, options);

    RegularInstants instants(range);
    while (instants.Next())
    {
        MoveTo(context, instants.Time());
        sampler.Sample(instants.Time());
    }

    SnapToTakeStop(context, range.end);
    sampler.Sample(range.end);
    sampler.Finish();
    return true;
}

} // namespace tev2_exporter
