#include "gltf/convert/to_gltf_losses.h"

#include <string>

namespace tev2_gltf
{

using namespace TEV2_LOADER;

namespace
{

class Losses
{
public:
    explicit Losses(ConversionReport& report) : report_(report) {}

    void Kind(const std::string& what, std::size_t count)
    {
        if (count > 0)
            report_.Add(Code::RecordLost, what, "glTF has no place for them", count);
    }

    template <typename Object>
    void Body(const TEV2_KIND& kind, const std::string& path, const Object& object)
    {
        if (IsTyped(object))
            return;
        report_.Add(Code::BodyLost, path + NameIn(object),
                    std::string(kind.className) + " of another program's layout");
    }

private:
    /// As it follows a path; empty where an object has none, or none that can be read.
    template <typename Object>
    static std::string NameIn(const Object& object)
    {
        if constexpr (requires {
                          object.HasPlaced();
                          object.name;
                      })
            return object.HasPlaced() ? " \"" + Name(object) + '"' : std::string();
        else
            return {};
    }

    template <typename Object>
    static bool IsTyped(const Object& object)
    {
        if constexpr (requires { object.IsTyped(); })
            return object.IsTyped();
        else
            return true;
    }

    ConversionReport& report_;
};

} // namespace

void ReportLosses(ToGltfContext& context)
{
    const TEV2& scene = context.Scene();
    Losses losses(context.report);
    VisitLists(scene,
               [&](const auto& list, const auto& member)
               {
                   if constexpr (requires { member.begin(); })
                   {
                       for (std::size_t i = 0; i < member.size(); ++i)
                           if (member[i])
                               losses.Body(list.kind, PathOf(list, i), *member[i]);
                   }
                   else if constexpr (requires { member.get(); })
                   {
                       if (member)
                           losses.Body(list.kind, list.label, *member);
                   }
               });
    const auto typed = [&](const auto& objects)
    {
        std::size_t count = 0;
        for (const auto& object : objects)
            count += object && object->IsTyped() ? 1 : 0;
        return count;
    };
    losses.Kind("ambientLight", scene.ambientLight && scene.ambientLight->IsTyped() ? 1 : 0);
    losses.Kind("globalLightTint", scene.globalLightTint && scene.globalLightTint->IsTyped() ? 1 : 0);
    losses.Kind("environment.environmentColour", scene.environment.environmentColour ? 1 : 0);
    losses.Kind("environment.environmentMap", scene.environment.environmentMap ? 1 : 0);
    losses.Kind("helpers", typed(scene.helpers));
    losses.Kind("bezierSplines", typed(scene.bezierSplines));
    losses.Kind("xrefs15", typed(scene.xrefs15));
    losses.Kind("xrefs20", typed(scene.xrefs20));
    losses.Kind("xrefObjects", typed(scene.xrefObjects));
    losses.Kind("speedTreeReferences", typed(scene.speedTreeReferences));
    for (const std::size_t list : {1u, 7u, 8u, 9u})
        losses.Kind("instanceLists[" + std::to_string(list) + "]", typed(scene.instanceLists[list]));
    std::size_t texts = 0;
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
        texts += node.userText.Text().empty() ? 0 : 1;
    losses.Kind("matrixHierarchy.nodes, userText", texts);
}

} // namespace tev2_gltf
