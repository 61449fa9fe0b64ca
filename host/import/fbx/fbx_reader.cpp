#include "host/import/fbx/fbx_reader.h"

#include "host/import/base/parse_error.h"
#include "host/import/fbx/scene_models.h"
#include "host/import/fbx/scene_settings.h"
#include "host/import/fbx/scene_takes.h"

#include <algorithm>

namespace mobu_host::fbx
{
namespace
{

void ReadConstraints(const Document& document, SceneDescription& scene)
{
    for (ObjectIndex i = 1; i < document.Count(); ++i)
    {
        const Object& object = document.At(i);
        if (object.kind != "Constraint")
            continue;
        const PropertyRows own(object.record);
        scene.constraints.push_back(
            {PlainText(object.name, document.Tree()), PlainText(object.type, document.Tree()),
             PropertyView{&own, document.Template("FbxConstraint")}.Truth("Active", true)});
    }
}

// Cameras in the order of the file's objects, whatever the tree is: a switcher counts them so.
void ListCameras(const ModelList& models, SceneDescription& scene)
{
    for (std::uint32_t i = 0; i < scene.models.size(); ++i)
        if (scene.models[i].kind == ModelKind::Camera)
            scene.cameras.push_back(i);
    std::sort(scene.cameras.begin(), scene.cameras.end(),
              [&](std::uint32_t a, std::uint32_t b)
              { return models.sources[a].object < models.sources[b].object; });
}

// They stay as the file has them, though their frames are not rotations.
void NoteMirrored(const SceneData& data, ImportNotes& notes)
{
    const std::vector<TransformNode>& nodes = data.transforms->nodes;
    std::vector<bool> mirrored(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        const TransformNode& node = nodes[i];
        mirrored[i] = (node.scaling[0] * node.scaling[1] * node.scaling[2] < 0.0) !=
                      (node.parent != kNoModel && mirrored[node.parent]);
        if (mirrored[i])
            notes.Add({"model is mirrored (negative scale); its rotation is not valid",
                       "models are mirrored (negative scale); their rotations are not valid"},
                      data.scene.models[i].name);
    }
}

void PlaceModels(SceneData& data)
{
    const std::shared_ptr<TransformEvaluator>& transforms = data.transforms;
    for (std::uint32_t i = 0; i < data.scene.models.size(); ++i)
    {
        ModelDescription& model = data.scene.models[i];
        model.parts = std::shared_ptr<const EulerTransform>(transforms, &transforms->nodes[i]);
        model.parts_are_whole = transforms->IsPlain(i);
        if (!model.parts_are_whole)
            model.rest = transforms->Local(i, TransformEvaluator::kAtRest, 0.0);
    }
}

void MoveModel(const std::shared_ptr<TransformEvaluator>& transforms, std::uint32_t i, std::size_t t,
               TakeDescription& take)
{
    if (transforms->IsPlain(i))
        take.parts.push_back({i, [transforms, i, &motion = transforms->takes[t].at(i)](double seconds)
                              { return transforms->Parts(i, motion, seconds); }});
    else
        take.models.push_back(
            {i, [transforms, i, t](double seconds) { return transforms->Local(i, t, seconds); }});
}

// Moving scale moves all models below it, in each take; a small file could ask for more than any memory.
void MoveModels(const Document& document, SceneData& data)
{
    const std::size_t limit = 100000 + document.Tree().File().size() / 16;
    std::size_t moving = 0;
    for (std::size_t t = 0; t < data.scene.takes.size(); ++t)
    {
        const std::vector<std::uint32_t> nodes = data.transforms->MovingNodes(t);
        moving += nodes.size();
        if (moving > limit)
            throw ParseError("its takes move more models than a file of its size can describe");
        for (const std::uint32_t node : nodes)
            MoveModel(data.transforms, node, t, data.scene.takes[t]);
    }
}

} // namespace

SceneDescription ReadFbx(std::string_view file, const ImportOptions& options, ImportNotes& notes)
{
    const RecordTree tree(file);
    const Document document(tree);
    SceneData data;
    data.scene.rate = TransportRate(document);
    data.scene.takes_keep_ends = true;
    data.centimetres = UnitOfLength(document);
    data.transforms->world = AxesToHost(document, notes) * Scaling(kOnes * data.centimetres);
    const ModelList models = ReadModels(document, data, notes);
    ReadTakes(document, models, data, notes);
    ReadConstraints(document, data.scene);
    ListCameras(models, data.scene);
    NoteMirrored(data, notes);
    data.transforms->Prepare();
    PlaceModels(data);
    MoveModels(document, data);
    CheckModelCount(data.scene.models.size(), options);
    return std::move(data.scene);
}

} // namespace mobu_host::fbx
