#include "exporter/sampling/cameras.h"

#include "exporter/base/text.h"
#include "exporter/sampling/global_matrix.h"

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

/// The angle in radians, meant as horizontal: the angle of any other aperture mode is scaled by the aspect
/// ratio, not converted through its tangent.
float HorizontalFieldOfView(FBCamera& camera)
{
    const double degrees = camera.FieldOfView;
    const auto angle = static_cast<float>(degrees * kPi / 180.0);
    if (camera.ApertureMode == kFBApertureHorizontal)
        return angle;
    const double aspect = camera.FilmAspectRatio;
    return static_cast<float>(static_cast<double>(angle) * aspect);
}

CameraBinding Bind(FBCamera& camera, const TEV2_CAMERA& entity)
{
    return {&camera,
            &SampledIn(entity.distance),
            &SampledIn(entity.fieldOfView),
            &SampledIn(entity.clipRange),
            {}};
}

void SampleLens(const CameraBinding& binding, float time)
{
    FBCamera& camera = *binding.camera;
    binding.distance->Append(time, Metres(camera.FocusSpecificDistance));
    binding.field_of_view->Append(time, HorizontalFieldOfView(camera));
    TEV2_FLOAT32_RANGE clip_range;
    clip_range.minimum = Metres(camera.NearPlaneDistance);
    clip_range.maximum = Metres(camera.FarPlaneDistance);
    binding.clip_range->Append(time, clip_range);
}

void CreateCameraEntity(FBCamera& camera, const UserPropertySet& user_properties, TEV2& scene,
                        std::uint32_t node_index, const SamplingRange& range, bool keep_positive_z)
{
    const double aspect = camera.FilmAspectRatio;

    TEV2_CAMERA& entity = *scene.cameras.emplace_back(std::make_unique<TEV2_CAMERA>());
    MakeTrack(entity.distance, range);
    MakeTrack(entity.fieldOfView, range);
    MakeTrack(entity.clipRange, range);
    entity.name = WideText(camera.Name);
    entity.value = node_index;
    BuildExtendedProperties(entity.properties, user_properties, range, keep_positive_z);
    entity.inverseAspect = static_cast<float>(1.0 / aspect);
    SampleLens(Bind(camera, entity), range.start);
}

} // namespace

void IndexExportCameras(const std::vector<FBModel*>& models, CameraIndexTable& table)
{
    std::int32_t next_index = 0;
    for (FBModel* model : models)
        IndexCameras(*model, table, next_index);
}

void CreateCameraEntities(ExportSubtree& subtree, TEV2& scene, std::uint32_t node_index,
                          std::size_t& next_camera, const SamplingRange& range, bool keep_positive_z)
{
    for (const ModelBinding& exported : subtree.models)
    {
        if (exported.model->Is(FBCamera::TypeInfo))
        {
            FBCamera& camera = static_cast<FBCamera&>(*exported.model);
            CreateCameraEntity(camera, exported.user_properties, scene, node_index, range, keep_positive_z);
            if (exported.model->GetTypeId() == FBCamera::TypeInfo)
            {
                TEV2_CAMERA& entity = *scene.cameras[next_camera++];
                CameraBinding& binding = subtree.cameras.emplace_back(Bind(camera, entity));
                BindProperties(entity.properties, exported.user_properties, binding.properties);
            }
        }
        ++node_index;
    }
}

void SampleCameras(const std::vector<CameraBinding>& cameras, float time)
{
    for (const CameraBinding& binding : cameras)
    {
        SampleLens(binding, time);
        SampleProperties(binding.properties, time);
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

void SampleSwitcher(const SwitcherBinding& binding, float time)
{
    // 1-based among the cameras that are not system cameras. Added in 64 bits, since the index may be anything.
    const int index = binding.switcher->CurrentCameraIndex;
    const std::int64_t position = std::int64_t{binding.system_cameras} + index - 1;
    FBScene& source = *binding.source;
    FBCamera* selected = nullptr;
    if (position >= 0 && position < source.Cameras.GetCount())
        selected = source.Cameras[static_cast<int>(position)];
    binding.track->Append(time, binding.indices->Find(selected));
}

} // namespace tev2_exporter
