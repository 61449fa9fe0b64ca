#include "host/import/collada/collada_reader.h"

#include "host/import/base/parse_error.h"
#include "host/import/collada/document_index.h"
#include "host/import/collada/numbers.h"
#include "host/import/collada/scene_models.h"
#include "host/import/collada/scene_takes.h"
#include "host/import/collada/xml_document.h"

#include <limits>
#include <string>

namespace mobu_host::collada
{
namespace
{

constexpr double kCentimetresPerMetre = 100.0;

// From the file's axes to +Y up; rows of +X, +Y and +Z.
Affine AxesOf(const XmlDocument& document, Element asset)
{
    Affine axes;
    const Element element = asset.child("up_axis");
    Words words(element);
    std::string_view up = "Y_UP";
    words.Next(up);
    if (up == "X_UP")
        axes.linear = {{{0.0, -1.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}}};
    else if (up == "Z_UP")
        axes.linear = {{{1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, -1.0, 0.0}}};
    else if (up != "Y_UP")
        document.Fail(element, "says " + Quoted(up) + ", which is not X_UP, Y_UP or Z_UP");
    return axes;
}

// Of one unit of length.
double CentimetresOf(const XmlDocument& document, Element asset, ImportNotes& notes)
{
    const double metres = ReadNumber(document, asset.child("unit"), "meter", 1.0);
    if (metres > 0.0)
        return metres * kCentimetresPerMetre;
    notes.Tell("the unit of length is not above 0 metres; one unit was read as one metre");
    return kCentimetresPerMetre;
}

std::uint32_t ShownScene(const XmlDocument& document, const DocumentIndex& index)
{
    const Element instance = document.Root().child("scene").child("instance_visual_scene");
    if (instance)
    {
        const std::string_view url = Attribute(instance, "url");
        const std::uint32_t* const found = index.visual_scene_ids.Find(IdOf(url));
        if (!found)
            document.Fail(instance, "has the url " + Quoted(url) + ", which is no visual scene of this file");
        return *found;
    }
    if (index.visual_scenes.empty())
        throw ParseError("it has no visual scene");
    return index.visual_scenes.front();
}

} // namespace

SceneDescription ReadScene(std::string_view bytes, const ImportOptions& options, ImportNotes& notes)
{
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max())
        throw ParseError("it is larger than 4 GiB");
    const XmlDocument document(bytes);
    const DocumentIndex index = IndexDocument(document);
    const Element asset = document.Root().child("asset");
    const double centimetres = CentimetresOf(document, asset, notes);

    SceneDescription scene;
    scene.axes = AxesOf(document, asset);
    SceneModels models(document, index, centimetres, options, notes);
    scene.models = models.Read(ShownScene(document, index));
    scene.takes = ReadTakes(document, index, models, centimetres, bytes.size(), notes);
    return scene;
}

} // namespace mobu_host::collada
