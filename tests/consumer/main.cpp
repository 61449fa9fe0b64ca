// Uses the installed library as another project would, and runs the examples of its headers and of docs/engine.md. Also
// compiled without exceptions and run-time type information.

#include "tev2_loader/file.h"
#include "tev2_loader/names.h"
#include "tev2_loader/tracks/visit_keys.h"
#include "tev2_loader/up_axis.h"

#include <cmath>
#include <cstdio>

static void Draw(const TEV2_LOADER::TEV2_MATRIX_3X4&) {} // of the README

#include "engine.inc"
#include "examples.inc"

namespace
{

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

bool Near(const TEV2_VECTOR_3& point, const TEV2_VECTOR_3& expected)
{
    const TEV2_VECTOR_3 off = point - expected;
    return std::fabs(off.x) + std::fabs(off.y) + std::fabs(off.z) < 1e-5f;
}

/// The first half of docs/engine.md reads what its second half writes.
bool RunEngine()
{
    TEV2 scene;
    if (!Expect(SaveArm("arm.tv2").Ok(), "a saved arm") || !Expect(LoadFile("arm.tv2", scene).Ok(), "an arm"))
        return false;
    scene.rigids.push_back(std::make_unique<TEV2_RIGID>()); // on the forearm
    scene.rigids[0]->value = 1;
    bool good = Expect(!scene.HasKeptBodies() && scene.lights.size() == 1, "typed bodies");

    const std::vector<EngineMesh> meshes = MakeEngineMeshes(scene);
    if (!Expect(meshes.size() == 2 && meshes[0].vertices.empty(), "two meshes"))
        return false;
    const EngineMesh& arm = meshes[1];
    good &= Expect(arm.vertices.size() == 4 && arm.vertices[2].position == TEV2_VECTOR_3{2, 0, 0} &&
                       arm.vertices[2].normal == TEV2_VECTOR_3{0, 0, -1} &&
                       arm.vertices[2].uv == TEV2_VECTOR_2{1, 1},
                   "vertices");
    good &= Expect(arm.triangles == std::vector<TEV2_TRIANGLE>{{0, 1, 2}, {2, 1, 3}}, "triangles");
    good &= Expect(arm.ranges.size() == 1 && arm.ranges[0].image == "textures/sleeve.png" &&
                       arm.ranges[0].firstIndex == 0 && arm.ranges[0].indexCount == 6,
                   "a range");

    const EngineFrame frame = PlayTo(scene, 1.0f); // the forearm has turned a quarter: x to y
    good &= Expect(frame.worlds.size() == 1 && std::fabs(frame.worlds[0].m[1][0] - 1.0f) < 1e-6f, "a world");
    good &= Expect(frame.weights.size() == 1 && frame.weights[0].empty(), "no targets");
    good &= Expect(frame.palettes.size() == 1 && frame.palettes[0].size() == 2 &&
                       frame.palettes[0][0].m[1][0] == 0.0f &&
                       std::fabs(frame.palettes[0][1].m[1][0] - 1.0f) < 1e-6f,
                   "a palette");
    const std::vector<TEV2_VECTOR_3> positions = SkinnedPositions(*scene.weightedMeshes[0]);
    good &= Expect(positions.size() == 4 && Near(positions[1], {0, 1, 0}) && Near(positions[2], {0, 2, 0}) &&
                       Near(positions[3], {-1, 2, 0}),
                   "skinned positions");
    return good;
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
    good &= RunEngine();
    return good && RunExamples(scene, *scene.matrixHierarchy.nodes[0].translation) == 0 ? 0 : 1;
}
