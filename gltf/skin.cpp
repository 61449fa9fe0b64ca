#include "gltf/skin.h"

#include <string>

namespace gltf
{

Skin SkinAt(const Document& document, std::size_t index)
{
    Skin skin;
    skin.json = document.Root()["skins"][index];
    skin.name = skin.json["name"].Text();
    skin.index = index;
    const Place place = document.PlaceOf("skins", index);
    const JsonValue joints = skin.json["joints"];
    if (joints.Size() == 0)
        place.Fail("has no joints");
    skin.joints.resize(joints.Size());
    for (std::size_t i = 0; i < skin.joints.size(); ++i)
    {
        const std::optional<std::int64_t> joint = joints[i].Whole();
        if (!joint || *joint < 0 || static_cast<std::size_t>(*joint) >= document.Count("nodes"))
            place.Fail("joints", "are not all nodes of the file");
        skin.joints[i] = static_cast<std::size_t>(*joint);
    }
    skin.skeleton = OptionalIndexIn(skin.json, "skeleton", document.Count("nodes"), place);
    skin.inverse_bind_matrices =
        OptionalIndexIn(skin.json, "inverseBindMatrices", document.Count("accessors"), place);
    if (!skin.inverse_bind_matrices)
        return skin;
    const AccessorShape shape = ShapeOf(document, *skin.inverse_bind_matrices);
    if (shape.width != 16 || shape.components != Components::Floats)
        place.Fail("inverseBindMatrices", "are not matrices of 16 floats");
    if (shape.count < skin.joints.size())
        place.Fail("inverseBindMatrices", "are " + std::to_string(shape.count) + " for " +
                                              std::to_string(skin.joints.size()) + " joints");
    return skin;
}

} // namespace gltf
