#include "exporter/sampling/cameras.h"

#include "exporter/sampling/global_matrix.h"
#include "exporter/sampling/sampled_track.h"
#include "exporter/text.h"

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

constexpr double kPi = 3.1415927410125732; // pi as the format's single precision knows it

void IndexCameras(FBModel& model, CameraIndexTable& table, std::int32_t& next_index)
{
    if (model.Is(FBCamera::TypeInfo))
        table.Insert(&model, next_index++);
    const int children = model.Children.GetCount();
    for (int child = 0; child < children; ++child)
        IndexCameras(*model.Children[child], table, next_index);
}

float Metres(double centimetres)
{
    return static_cast<float>(centimetres) * kMetresPerCentimetre;
}

// The angle in radians, meant as horizontal: the angle of any other aperture mode is scaled by the aspect
// ratio, not converted through its tangent.
float HorizontalFieldOfView(FBCamera& camera)
{
    const double degrees = camera.FieldOfView;
    const auto angle = static_cast<float>(degrees * kPi / 180.0);
    if (camera.ApertureMode == kFBApertureHorizontal)
        return angle;
    const double aspect = camera.FilmAspectRatio;
    return static_cast<float>(static_cast<double>(angle) * aspect);
}

void SampleCameraFrame(TEV2_CAMERA& entity, FBCamera& camera, float time)
{
    Sampled(entity.distance).Append(time, Metres(camera.FocusSpecificDistance));
    Sampled(entity.fieldOfView).Append(time, HorizontalFieldOfView(camera));
    TEV2_FLOAT32_RANGE clip_range;
    clip_range.minimum = Metres(camera.NearPlaneDistance);
    clip_range.maximum = Metres(camera.FarPlaneDistance);
    Sampled(entity.clipRange).Append(time, clip_range);
}

void CreateCameraEntity(const ExportNode& exported, TEV2& scene, std::uint32_t node_index,
                        const SamplingRange& range, bool keep_positive_z)
{
    FBCamera& camera = static_cast<FBCamera&>(*exported.model);
    const double aspect = camera.FilmAspectRatio;

    TEV2_CAMERA& entity = *scene.cameras.emplace_back(std::make_unique<TEV2_CAMERA>());
    MakeTrack(entity.distance, range);
    MakeTrack(entity.fieldOfView, range);
    MakeTrack(entity.clipRange, range);
    entity.name = WideText(camera.Name);
    entity.value = node_index;
    BuildExtendedProperties(entity.properties, exported.user_properties, range, keep_positive_z);
    entity.inverseAspect = static_cast<float>(1.0 / aspect);
    SampleCameraFrame(entity, camera, range.start);
}

} // namespace

void IndexExportCameras(const std::vector<FBModel*>& models, CameraIndexTable& table)
{
    std::int32_t next_index = 0;
    for (FBModel* model : models)
        IndexCameras(*model, table, next_index);
}

void CreateCameraEntities(const ExportSubtree& subtree, TEV2& scene, std::uint32_t node_index,
                          const SamplingRange& range, bool keep_positive_z)
{
    for (const ExportNode& exported : subtree)
    {
        if (exported.model->Is(FBCamera::TypeInfo))
            CreateCameraEntity(exported, scene, node_index, range, keep_positive_z);
        ++node_index;
    }
}

void SampleCamerasInSubtree(const ExportSubtree& subtree, TEV2& scene, std::size_t& next_camera, float time)
{
    for (const ExportNode& exported : subtree)
    {
        if (exported.model->GetTypeId() != FBCamera::TypeInfo)
            continue;
        TEV2_CAMERA& entity = *scene.cameras[next_camera++];
        SampleCameraFrame(entity, static_cast<FBCamera&>(*exported.model), time);
        SampleUserProperties(entity.properties, exported.user_properties, time);
    }
}

int CountSystemCameras(FBScene& scene)
{
    int count = 0;
    const int cameras = scene.Cameras.GetCount();
    for (int i = 0; i < cameras; ++i)
        if (FBCamera* camera = scene.Cameras[i]; camera && camera->SystemCamera)
            ++count;
    return count;
}

void SampleSwitcherFrame(TEV2& scene, FBScene& source, FBCameraSwitcher& switcher,
                         const CameraIndexTable& table, int system_cameras, float time)
{
    // 1-based among the cameras that are no system cameras; added up wide, since the index may be anything.
    const int index = switcher.CurrentCameraIndex;
    const std::int64_t position = std::int64_t{system_cameras} + index - 1;
    FBCamera* selected = nullptr;
    if (position >= 0 && position < source.Cameras.GetCount())
        selected = source.Cameras[static_cast<int>(position)];
    Sampled(scene.cameraMan.cameraIndex).Append(time, table.Find(selected));
}

} // namespace tev2_exporter
