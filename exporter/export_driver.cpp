#include "exporter/export_driver.h"

#include "exporter/base/option_table.h"
#include "exporter/base/text.h"
#include "exporter/file_information.h"
#include "exporter/platform/platform.h"
#include "exporter/rules/file_naming.h"
#include "exporter/sampling/cameras.h"
#include "exporter/sampling/key_reduction.h"
#include "exporter/sampling/sample_take.h"
#include "exporter/sampling/sampling_limits.h"
#include "exporter/sampling/take_span.h"
#include "tev2_loader/file.h"
#include "tev2_loader/io/file_writer.h"

#include <algorithm>
#include <memory>

namespace tev2_exporter
{
namespace
{

using namespace TEV2_LOADER;

bool reduces_keys = true;

FBConstraint* ConstraintAt(FBScene& scene, int index)
{
    FBComponent* entry = scene.Constraints[index];
    return FBIS(entry, FBConstraint) ? static_cast<FBConstraint*>(entry) : nullptr;
}

/// The active flags of the scene's constraints, in list order; entries of other kinds are false and left
/// unchanged.
std::vector<bool> DeactivateConstraints(FBScene& scene)
{
    const int count = scene.Constraints.GetCount();
    std::vector<bool> were_active(static_cast<std::size_t>(count), false);
    for (int i = 0; i < count; ++i)
        if (FBConstraint* constraint = ConstraintAt(scene, i))
        {
            were_active[static_cast<std::size_t>(i)] = constraint->Active;
            constraint->Active = false;
        }
    return were_active;
}

void RestoreConstraints(FBScene& scene, const std::vector<bool>& were_active)
{
    const int count = std::min(scene.Constraints.GetCount(), static_cast<int>(were_active.size()));
    for (int i = 0; i < count; ++i)
        if (FBConstraint* constraint = ConstraintAt(scene, i))
            constraint->Active = were_active[static_cast<std::size_t>(i)];
}

/// The topmost selected models, depth first.
void AppendSelected(FBModel& model, std::vector<FBModel*>& selected)
{
    if (model.Selected)
    {
        selected.push_back(&model);
        return;
    }
    const int children = model.Children.GetCount();
    for (int child = 0; child < children; ++child)
        AppendSelected(*model.Children[child], selected);
}

std::vector<FBModel*> CollectExportModels(ExportContext& context)
{
    std::vector<FBModel*> models;
    if (FBModel* root = context.system.SceneRootModel)
    {
        AppendSelected(*root, models);
        if (models.empty())
            models.push_back(root);
    }
    return models;
}

/// One take and the file it goes into.
struct OutputFile
{
    FBTake* take = nullptr;
    std::u16string file_name; // one unit for each byte
    std::string path;         // the bytes, as far as they are opened
};

std::vector<FBTake*> ExportTakes(ExportContext& context, const ExportOptions& options)
{
    if (!options.AllTakes)
        return {context.system.CurrentTake};
    FBScene* scene = context.system.Scene;
    std::vector<FBTake*> takes(static_cast<std::size_t>(scene->Takes.GetCount()));
    for (std::size_t i = 0; i < takes.size(); ++i)
        takes[i] = scene->Takes[static_cast<int>(i)];
    return takes;
}

std::vector<OutputFile> ListOutputFiles(ExportContext& context, const ExportOptions& options,
                                        const char* path)
{
    std::vector<FBTake*> takes = ExportTakes(context, options);
    std::erase(takes, nullptr); // no take is current, no file

    std::vector<std::u16string> take_names(takes.size());
    for (std::size_t i = 0; i < takes.size(); ++i)
        take_names[i] = WideText(takes[i]->Name).Text();
    std::vector<std::u16string> names = OutputFileNames(
        WideText(path).Text(), take_names, options.AllTakes != 0, options.FilenameSpacesToUnderscores == 1);
    std::vector<OutputFile> files(takes.size());
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        std::string bytes = Narrow(names[i]).substr(0, kMostPathBytes);
        files[i] = {takes[i], std::move(names[i]), std::move(bytes)};
    }
    return files;
}

std::vector<FBTake*> TakesOf(const std::vector<OutputFile>& files)
{
    std::vector<FBTake*> takes(files.size());
    std::ranges::transform(files, takes.begin(), &OutputFile::take);
    return takes;
}

FBCameraSwitcher* FindCameraSwitcher()
{
    FBModel* model = FBFindModelByLabelName("Camera Switcher");
    return FBIS(model, FBCameraSwitcher) ? static_cast<FBCameraSwitcher*>(model) : nullptr;
}

/// False when the file is read-only and the user wants it kept.
bool MayWrite(const OutputFile& file)
{
    if (!platform::IsReadOnly(file.path))
        return true;
    const std::u16string question = file.file_name +
                                    u" already exists and has read-only file properties!  Are you sure "
                                    u"that you wish to over-write this file?";
    if (!platform::AskOkCancel(u"Read Only File!", question))
        return false;
    platform::MakeWritable(file.path);
    return true;
}

/// Makes the file's take current, converts it and writes it. False when the conversion failed.
bool ExportTake(ExportContext& context, const ExportOptions& options, const OutputFile& file,
                const std::vector<FBModel*>& models, const CameraIndexTable* camera_indices)
{
    TEV2 scene;
    context.system.CurrentTake = file.take;
    const SampledModels sampled{models, camera_indices ? FindCameraSwitcher() : nullptr, camera_indices};
    const SamplingRange range = GetSamplingRange(context, file.take, options);
    FillFileInformation(context, file.file_name, scene.information);
    scene.environment.timeRange.minimum = range.start;
    scene.environment.timeRange.maximum = range.end;

    if (!SampleTake(context, sampled, range, options, scene))
        return false;
    if (options.KeepPositiveZ == 1)
        KeepPositiveZ(scene.matrixHierarchy);
    if (options.RemoveNamespaceFromNames == 1)
        RemoveNamespaces(scene.matrixHierarchy);
    if (reduces_keys)
        ReduceKeys(scene.matrixHierarchy);
    static_cast<void>(
        SaveFile(scene, Utf8Path(file.path))); // a failure keeps the old file and is not reported
    return true;
}

/// False when a conversion failed; the scene is then left on the take that failed.
bool ExportFiles(ExportContext& context, const ExportOptions& options, const std::vector<OutputFile>& files,
                 const std::vector<FBModel*>& models)
{
    FBTake* current_take = context.system.CurrentTake;
    const FBTime current_time = context.system.LocalTime;

    std::unique_ptr<CameraIndexTable> camera_indices;
    if (FindCameraSwitcher())
    {
        camera_indices = std::make_unique<CameraIndexTable>();
        IndexExportCameras(models, *camera_indices);
    }

    for (const OutputFile& file : files)
        if (MayWrite(file) && !ExportTake(context, options, file, models, camera_indices.get()))
            return false;

    context.system.CurrentTake = current_take;
    FBTime restored;
    restored.SetSecondDouble(static_cast<double>(static_cast<float>(current_time.GetSecondDouble())));
    context.player.Goto(restored);
    context.system.Scene->Evaluate();
    return true;
}

} // namespace

ExportOptions FillOptionsFromScript(ExportContext& context, const ExportCall& call)
{
    const double transport_rate = GetTakeSecondSpan(context).transport_rate;

    ExportOptions options;
    options.CustomStart = SecondsOfKey(call.start_frame, transport_rate);
    options.CustomEnd = SecondsOfKey(call.end_frame, transport_rate);
    options.SamplingRate = static_cast<float>(call.rate);
    options.UseCustomRange = !call.whole_take;
    SetFlags(options, call.flags);
    return options;
}

unsigned ExportScene(ExportContext& context, const ExportOptions& options, const char* path)
{
    const std::vector<FBModel*> models = CollectExportModels(context);
    const std::vector<OutputFile> files = ListOutputFiles(context, options, path);
    if (!CanBeSampled(context, options, TakesOf(files), models))
        return 0;

    FBScene& scene = *static_cast<FBScene*>(context.system.Scene);
    std::vector<bool> were_active;
    if (options.DisableConstraints == 1)
        were_active = DeactivateConstraints(scene);

    if (!models.empty() && !ExportFiles(context, options, files, models))
        return 0;

    RestoreConstraints(scene, were_active);
    return 1;
}

void SetKeyReduction(bool reduce)
{
    reduces_keys = reduce;
}

} // namespace tev2_exporter
