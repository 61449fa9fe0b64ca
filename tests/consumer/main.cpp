// Uses the installed library as another project would, and runs the examples of its headers. Also compiled without
// exceptions and run-time type information.

#include "tev2_loader/file.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/visit_keys.h"
#include "tev2_loader/up_axis.h"

#include <cmath>
#include <cstdio>

static void Draw(const TEV2_LOADER::TEV2_MATRIX_3X4&) {} // of the README

#include "examples.inc"

namespace
{

using namespace TEV2_LOADER;

void FillScene(TEV2& scene)
{
    scene.environment.timeRange = {0.0f, 1.0f};
    scene.information.creatorText = TEV2_WIDE_STRING(u"MotionBuilder v17.00  Tev2 Exporter v1.14");
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    auto translation = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
    translation->Append(0.0f, {});
    translation->Append(1.0f, {});
    auto rotation = std::make_unique<TEV2_ANIMATABLE_QUATERNION_SLERP>();
    rotation->Append(0.0f, {0.0f, 0.0f, 0.0f, 1.0f});
    rotation->Append(1.0f, {0.0f, 0.0f, 1.0f, 0.0f}); // half a turn about Z
    node.translation = std::move(translation);
    node.rotation = std::move(rotation);
}

bool Expect(bool condition, const char* what)
{
    if (!condition)
        std::fprintf(stderr, "not as expected: %s\n", what);
    return condition;
}

} // namespace

int main()
{
    TEV2 scene;
    FillScene(scene);
    bool good = Expect(SetName(scene.matrixHierarchy.nodes[0], "t\xC3\xAAte").Ok(), "a name");
    good &= Expect(SaveFile(scene, "walk.tv2").Ok(), "a save");

    TEV2 loaded;
    good &= Expect(LoadFile("walk.tv2", loaded).Ok(), "a load");
    loaded.SetTime(0.5f);
    const TEV2_MATRIX_NODE* const node = FindNode(loaded, "t\xC3\xAAte");
    good &=
        Expect(node != nullptr && std::fabs(node->worldMatrix.m[1][0] - 1.0f) < 1e-6f, "a quarter of a turn");
    good &=
        Expect(UpAxis(loaded) == TEV2_UP_AXIS::Unknown && UpAxis(scene) == TEV2_UP_AXIS::Unknown, "no axis");
    good &= Expect(LoadFile("none.tv2", loaded).Reason().size() > 0, "a reason");
    return good && RunExamples(scene, *scene.matrixHierarchy.nodes[0].translation) == 0 ? 0 : 1;
}
