// Helper of the tests of GLBs:
//     glb_scene_files make FOLDER             writes scenes made by code, FOLDER/NAME.tv2
//     glb_scene_files poses FILE.tv2 MOST [TIME]
//                                             prints what the format library makes of a file, as JSON: its nodes, and
//                                             their matrices and the vertices of its meshes in the world, at a time or
//                                             at those of its keys, MOST at most, which are spread evenly

#include "tests/glb/hostile_scenes.h"

#include "tev2_loader/file.h"
#include "tev2_loader/names.h"
#include "tev2_loader/skinning.h"
#include "tev2_loader/tracks/visit_keys.h"
#include "tev2_loader/up_axis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

namespace
{

using namespace TEV2_LOADER;
using nlohmann::json;

int Fail(const std::string& message)
{
    std::cerr << message << '\n';
    return 2;
}

int WriteScenes(const std::string& folder)
{
    for (const tv2_tests::HostileScene& made : tv2_tests::HostileScenes())
    {
        TEV2 scene;
        made.fill(scene);
        const std::string path = folder + "/" + made.name + ".tv2";
        if (const Status saved = SaveFile(scene, path.c_str()); !saved)
            return Fail(path + ": " + saved.Reason());
    }
    return 0;
}

/// The times of all keys of the nodes and of morph targets, at most `most` of them.
std::vector<float> SampleTimes(const TEV2& scene, std::size_t most)
{
    std::set<float> times;
    const auto add = [&](const TEV2_ANIMATABLE* track)
    {
        if (track)
            times.insert(track->m_times.begin(), track->m_times.end());
    };
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
    {
        add(node.translation.get());
        add(node.rotation.get());
        add(node.scale.get());
    }
    const auto add_targets = [&](const auto& meshes)
    {
        for (const auto& mesh : meshes)
            for (const TEV2_MORPH_TARGET& target : mesh->targets)
                add(target.track.get());
    };
    add_targets(scene.morphMeshes);
    add_targets(scene.weightedMeshes);
    const std::vector<float> all(times.begin(), times.end());
    if (all.size() <= most)
        return all;
    std::vector<float> chosen;
    for (std::size_t i = 0; i < most; ++i)
        chosen.push_back(all[i * (all.size() - 1) / (most - 1)]);
    return chosen;
}

std::vector<float> Numbers(const TEV2_MATRIX_3X4& matrix)
{
    std::vector<float> numbers;
    for (const auto& row : matrix.m)
        numbers.insert(numbers.end(), std::begin(row), std::end(row));
    return numbers;
}

std::vector<float> Numbers(std::span<const TEV2_VECTOR_3> points)
{
    std::vector<float> numbers;
    for (const TEV2_VECTOR_3& point : points)
        numbers.insert(numbers.end(), {point.x, point.y, point.z});
    return numbers;
}

std::vector<TEV2_VECTOR_3> InWorld(const TEV2& scene, std::uint32_t node, std::vector<TEV2_VECTOR_3> points)
{
    if (node >= scene.matrixHierarchy.nodes.size())
        return points;
    const auto& m = scene.matrixHierarchy.nodes[node].worldMatrix.m;
    for (TEV2_VECTOR_3& p : points)
    {
        const auto along = [&](int row)
        { return m[row][0] * p.x + m[row][1] * p.y + m[row][2] * p.z + m[row][3]; };
        p = {along(0), along(1), along(2)};
    }
    return points;
}

/// The vertices at the present time, in the world, of each mesh of a kind that glTF has.
void AddVertices(json& meshes, const TEV2& scene)
{
    const auto add = [&](const auto& mesh, const std::vector<TEV2_VECTOR_3>& points) {
        meshes.push_back({{"name", Name(mesh)}, {"positions", Numbers(points)}});
    };
    for (const auto& mesh : scene.rigids)
        add(*mesh, InWorld(scene, mesh->value, std::as_const(*mesh).vertices->positions));
    for (const auto& mesh : scene.morphMeshes)
    {
        std::vector<TEV2_VECTOR_3> points(std::as_const(*mesh).vertices->Count());
        MorphVertices(*mesh, {.positions = points});
        add(*mesh, InWorld(scene, mesh->value, points));
    }
    for (const auto& mesh : scene.weightedMeshes)
    {
        std::vector<TEV2_VECTOR_3> points(std::as_const(*mesh).vertices->Count());
        SkinVertices(*mesh, {.positions = points});
        add(*mesh, points);
    }
}

/// Whether a rotation turns and does nothing else: those of models that mirror are of some other length.
bool IsUnit(const TEV2_ANIMATABLE_QUATERNION* track)
{
    bool unit = true;
    if (track)
        VisitKeys(*track,
                  [&](std::span<const float>, auto values)
                  {
                      if constexpr (std::is_same_v<typename decltype(values)::value_type, TEV2_QUATERNION>)
                          for (const TEV2_QUATERNION& q : values)
                              unit &= std::fabs(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w - 1.0f) < 1e-4f;
                  });
    return unit;
}

int PrintPoses(const std::string& path, std::size_t most, const char* only_time)
{
    TEV2 scene;
    if (const Status loaded = LoadFile(path, scene); !loaded)
        return Fail(path + ": " + loaded.Reason());
    json answer = {{"upAxis", UpAxisName(UpAxis(scene))}, {"nodes", json::array()}, {"poses", json::array()}};
    for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
        answer["nodes"].push_back(
            {{"name", Name(node)}, {"parent", node.parentIndex}, {"unit", IsUnit(node.rotation.get())}});
    const std::vector<float> times =
        only_time ? std::vector<float>{std::strtof(only_time, nullptr)} : SampleTimes(scene, most);
    for (const float time : times)
    {
        scene.SetTime(time);
        json pose = {{"time", time}, {"matrices", json::array()}, {"meshes", json::array()}};
        for (const TEV2_MATRIX_NODE& node : scene.matrixHierarchy.nodes)
            pose["matrices"].push_back(Numbers(node.worldMatrix));
        AddVertices(pose["meshes"], scene);
        answer["poses"].push_back(std::move(pose));
    }
    std::cout << answer << '\n';
    return 0;
}

} // namespace

int main(int count, char** arguments)
{
    const std::string_view task = count > 1 ? arguments[1] : "";
    if (task == "make" && count == 3)
        return WriteScenes(arguments[2]);
    if (task == "poses" && count >= 4)
        return PrintPoses(arguments[2], std::max(2ul, std::strtoul(arguments[3], nullptr, 10)), arguments[4]);
    return Fail("glb_scene_files make FOLDER | poses FILE.tv2 MOST [TIME]");
}
