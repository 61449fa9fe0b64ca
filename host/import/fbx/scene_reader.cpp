#include "host/import/fbx/scene_data.h"
#include "host/import/fbx/scene_models.h"
#include "host/import/fbx/scene_settings.h"
#include "host/import/fbx/scene_takes.h"
#include "host/import/parse_error.h"

namespace mobu_host::fbx
{
namespace
{

void ReadConstraints(const Document& document, SceneData& scene)
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

// They stand as the file has them; who turns their frame into a rotation finds none.
void TellMirrored(const SceneData& scene, ImportNotes& notes)
{
    const Rig& rig = scene.rig;
    std::vector<bool> mirrored(rig.nodes.size());
    for (std::size_t i = 0; i < rig.nodes.size(); ++i)
    {
        const RigNode& node = rig.nodes[i];
        mirrored[i] = (node.scaling[0] * node.scaling[1] * node.scaling[2] < 0.0) !=
                      (node.parent != kNoNode && mirrored[node.parent]);
        if (mirrored[i])
            notes.Add({"model is mirrored (negative scale); its rotation is not valid",
                       "models are mirrored (negative scale); their rotations are not valid"},
                      scene.models[i].label);
    }
}

// Scale that moves high up moves all models below it, in each take; a small file could ask for more than any memory.
void CheckSize(const Document& document, const SceneData& scene)
{
    const std::size_t limit = 100000 + document.Tree().File().size() / 16;
    std::size_t moving = 0;
    for (std::size_t take = 0; take < scene.takes.size() && moving <= limit; ++take)
    {
        moving += scene.rig.MovingNodes(take).size();
    }
    if (moving > limit)
        throw ParseError("its takes move more models than a file of its size can describe");
}

} // namespace

SceneData ReadScene(const Document& document, ImportNotes& notes)
{
    SceneData scene;
    scene.frames_per_second = TransportRate(document);
    scene.centimetres = UnitOfLength(document);
    scene.rig.world = AxesToHost(document, notes) * Scaling(kOnes * scene.centimetres);
    const ModelList models = ReadModels(document, scene, notes);
    ReadTakes(document, models, scene, notes);
    ReadConstraints(document, scene);
    TellMirrored(scene, notes);
    scene.rig.Prepare();
    CheckSize(document, scene);
    return scene;
}

} // namespace mobu_host::fbx
