#include "gltf/accessor.h"
#include "tests/support/sample_scenes.h"
#include "tev2_loader/skinning.h"

#include <algorithm>
#include <array>
#include <cmath>

// A real character, its numbers put into records as they are, against what glTF says about its vertices: the sum of
// weight * world(joint) * inverse bind matrix * (position + weighted targets), here in double precision.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using Vector = std::array<double, 3>;

struct Affine
{
    double m[3][4];
};

Affine operator*(const Affine& a, const Affine& b)
{
    Affine product;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            product.m[row][column] = a.m[row][0] * b.m[0][column] + a.m[row][1] * b.m[1][column] +
                                     a.m[row][2] * b.m[2][column] + (column == 3 ? a.m[row][3] : 0.0);
    return product;
}

Vector operator*(const Affine& a, const Vector& v)
{
    const auto row = [&](int r)
    { return a.m[r][0] * v[0] + a.m[r][1] * v[1] + a.m[r][2] * v[2] + a.m[r][3]; };
    return {row(0), row(1), row(2)};
}

Affine ToAffine(const gltf::Trs& trs)
{
    const auto& [x, y, z, w] = trs.rotation;
    const auto& s = trs.scale;
    const auto& t = trs.translation;
    return {
        {{s[0] * (1 - 2 * (y * y + z * z)), s[1] * 2 * (x * y - w * z), s[2] * 2 * (x * z + w * y), t[0]},
         {s[0] * 2 * (x * y + w * z), s[1] * (1 - 2 * (x * x + z * z)), s[2] * 2 * (y * z - w * x), t[1]},
         {s[0] * 2 * (x * z - w * y), s[1] * 2 * (y * z + w * x), s[2] * (1 - 2 * (x * x + y * y)), t[2]}}};
}

Affine ToAffine(const TEV2_MATRIX_3X4& matrix)
{
    Affine affine;
    for (int row = 0; row < 3; ++row)
        std::copy_n(matrix.m[row], 4, affine.m[row]);
    return affine;
}

void Add(Vector& to, double weight, const Vector& v)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
        to[axis] += weight * v[axis];
}

double Largest(const Vector& v)
{
    return std::max({std::abs(v[0]), std::abs(v[1]), std::abs(v[2])});
}

Vector Exact(const TEV2_VECTOR_3& v)
{
    return {v.x, v.y, v.z};
}

/// In single precision.
template <typename Value, std::size_t Count>
Value Rounded(const std::array<double, Count>& numbers)
{
    return std::apply([](auto... number) { return Value{static_cast<float>(number)...}; }, numbers);
}

/// The sample as a scene with its skeleton in some poses, one each half second, and with the meshes that are added.
class Robot
{
public:
    TEV2 scene;
    std::vector<std::vector<gltf::Trs>> poses; // each the local transforms of all nodes

    Robot()
    {
        for (const std::size_t animation : {0u, 5u, 10u, 12u}) // Dance, Punch, Walking, Wave
            for (const std::size_t half : {0u, 1u, 2u})
                poses.push_back(PoseAt(animation, half));
        scene.environment.timeRange.maximum = TimeOf(poses.size() - 1);
        for (std::size_t place = 0; place < shown_.size(); ++place)
        {
            auto translation = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
            auto rotation = std::make_unique<TEV2_ANIMATABLE_QUATERNION_SLERP>();
            auto scale = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
            for (std::size_t pose = 0; pose < poses.size(); ++pose)
            {
                const gltf::Trs& local = poses[pose][place];
                translation->Append(TimeOf(pose), Rounded<TEV2_VECTOR_3>(local.translation));
                rotation->Append(TimeOf(pose), Rounded<TEV2_QUATERNION>(local.rotation));
                scale->Append(TimeOf(pose), Rounded<TEV2_VECTOR_3>(local.scale));
            }
            TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
            node.parentIndex = shown_[place].parent ? static_cast<std::int32_t>(*shown_[place].parent) : -1;
            node.translation = std::move(translation);
            node.rotation = std::move(rotation);
            node.scale = std::move(scale);
        }
    }

    static float TimeOf(std::size_t pose) { return 0.5f * static_cast<float>(pose); }

    std::vector<Affine> WorldsIn(std::size_t pose) const
    {
        std::vector<Affine> worlds;
        for (std::size_t place = 0; place < shown_.size(); ++place)
        {
            const Affine local = ToAffine(poses[pose][place]);
            worlds.push_back(shown_[place].parent ? worlds[*shown_[place].parent] * local : local);
        }
        return worlds;
    }

    /// Of the node of this name that has a mesh; bones have the same names.
    std::uint32_t PlaceOfMesh(std::string_view name) const
    {
        std::uint32_t place = 0;
        while (NodeAt(place).name != name || !NodeAt(place).mesh)
            ++place;
        return place;
    }

    /// Positions, and targets with only the vertices that they move.
    void ReadVertices(std::size_t place, TEV2_RIGID_VERTICES& vertices,
                      std::vector<TEV2_MORPH_TARGET>& targets)
    {
        const gltf::JsonValue primitives = PrimitivesAt(place);
        for (std::size_t p = 0; p < primitives.Size(); ++p)
        {
            const std::size_t before = vertices.positions.size();
            for (const TEV2_VECTOR_3& position : Vectors(primitives[p]["attributes"]["POSITION"]))
                vertices.positions.push_back(position);
            targets.resize(primitives[p]["targets"].Size());
            for (std::size_t t = 0; t < targets.size(); ++t)
            {
                const std::vector<TEV2_VECTOR_3> offsets = Vectors(primitives[p]["targets"][t]["POSITION"]);
                for (std::size_t vertex = 0; vertex < offsets.size(); ++vertex)
                    if (offsets[vertex] != TEV2_VECTOR_3{})
                    {
                        targets[t].offsets.vertices.push_back(static_cast<std::uint32_t>(before + vertex));
                        targets[t].offsets.positions.push_back(offsets[vertex]);
                    }
            }
        }
    }

    void ReadSkin(std::size_t place, TEV2_SKIN& skin)
    {
        const gltf::JsonValue primitives = PrimitivesAt(place);
        skin.influences = 4;
        for (std::size_t p = 0; p < primitives.Size(); ++p)
        {
            for (const double joint : Numbers(primitives[p]["attributes"]["JOINTS_0"]))
                skin.boneIndices.push_back(static_cast<std::uint32_t>(joint));
            for (const double weight : Numbers(primitives[p]["attributes"]["WEIGHTS_0"]))
                skin.weights.push_back(static_cast<float>(weight));
        }
        const gltf::JsonValue json = document_.Root()["skins"][NodeAt(place).skin.value()];
        for (std::size_t joint = 0; joint < json["joints"].Size(); ++joint)
            skin.bones.push_back(PlaceOf(static_cast<std::size_t>(json["joints"][joint].Whole().value())));
        const std::vector<double>& numbers = Numbers(json["inverseBindMatrices"]);
        skin.bindMatrices.resize(numbers.size() / 16);
        for (std::size_t i = 0; i < numbers.size(); ++i)
            if (i % 4 < 3) // column by column
                skin.bindMatrices[i / 16].m[i % 4][i / 4 % 4] = static_cast<float>(numbers[i]);
    }

private:
    gltf::Node NodeAt(std::size_t place) const { return document_.NodeAt(shown_[place].index); }

    std::uint32_t PlaceOf(std::size_t node) const
    {
        return static_cast<std::uint32_t>(std::ranges::find(shown_, node, &gltf::ShownNode::index) -
                                          shown_.begin());
    }

    gltf::JsonValue PrimitivesAt(std::size_t place) const
    {
        return document_.Root()["meshes"][NodeAt(place).mesh.value()]["primitives"];
    }

    const std::vector<double>& Numbers(gltf::JsonValue accessor)
    {
        return *accessors_.Read(static_cast<std::size_t>(accessor.Whole().value()));
    }

    std::vector<TEV2_VECTOR_3> Vectors(gltf::JsonValue accessor)
    {
        const std::vector<double>& numbers = Numbers(accessor);
        std::vector<TEV2_VECTOR_3> vectors;
        for (std::size_t i = 0; i + 2 < numbers.size(); i += 3)
            vectors.push_back(Rounded<TEV2_VECTOR_3>(Vector{numbers[i], numbers[i + 1], numbers[i + 2]}));
        return vectors;
    }

    /// At the first, the middle or the last key of an animation.
    std::vector<gltf::Trs> PoseAt(std::size_t animation, std::size_t half)
    {
        std::vector<gltf::Trs> locals;
        for (std::size_t place = 0; place < shown_.size(); ++place)
            locals.push_back(std::get<gltf::Trs>(NodeAt(place).local));
        const gltf::Animation read = document_.AnimationAt(animation);
        for (std::size_t c = 0; c < read.channels.Size(); ++c)
        {
            const gltf::Channel channel = document_.ChannelAt(read, c);
            const gltf::Sampler sampler = document_.SamplerAt(read, channel.sampler);
            const std::size_t key = half * (accessors_.Read(sampler.input)->size() - 1) / 2;
            const double* const values = accessors_.Read(sampler.output)->data();
            gltf::Trs& local = locals[PlaceOf(channel.node.value())];
            if (channel.target == gltf::Target::Translation)
                std::copy_n(values + 3 * key, 3, local.translation.begin());
            else if (channel.target == gltf::Target::Rotation)
                std::copy_n(values + 4 * key, 4, local.rotation.begin());
        }
        return locals;
    }

    std::string bytes_ = ReadText(TV2_SAMPLES_DIR "/robot_14_takes.glb");
    gltf::FolderFiles files_{TV2_SAMPLES_DIR};
    gltf::Document document_{bytes_, files_};
    gltf::AccessorReader accessors_{document_};
    std::vector<gltf::ShownNode> shown_ = document_.ShownNodes(100);
};

/// Of a target in a pose. Exact in single precision: below 0, above 1, and each target alone.
double WeightOf(std::size_t target, std::size_t pose)
{
    return pose == target ? 1.0 : 0.25 * static_cast<double>((pose * 5 + target * 3) % 7) - 0.5;
}

std::vector<Vector> Expected(const TEV2_WEIGHTED_MESH& mesh, const Robot& robot, std::size_t pose)
{
    const TEV2_SKIN& skin = *mesh.skin;
    std::vector<Affine> palette;
    const std::vector<Affine> worlds = robot.WorldsIn(pose);
    for (const std::uint32_t bone : skin.bones)
        palette.push_back(worlds[bone] * ToAffine(skin.bindMatrices[palette.size()]));

    std::vector<Vector> vertices;
    for (const TEV2_VECTOR_3& position : mesh.vertices->positions)
        vertices.push_back(Exact(position));
    for (std::size_t target = 0; target < mesh.targets.size(); ++target)
    {
        const TEV2_TARGET_VERTICES& offsets = mesh.targets[target].offsets;
        for (std::size_t moved = 0; moved < offsets.vertices.size(); ++moved)
            Add(vertices[offsets.vertices[moved]], WeightOf(target, pose), Exact(offsets.positions[moved]));
    }
    for (std::size_t vertex = 0; vertex < vertices.size(); ++vertex)
    {
        Vector sum{};
        for (std::size_t entry = vertex * skin.influences; entry < (vertex + 1) * skin.influences; ++entry)
            Add(sum, skin.weights[entry], palette[skin.boneIndices[entry]] * vertices[vertex]);
        vertices[vertex] = sum;
    }
    return vertices;
}

/// Expects the distances to be below 1e-5 of the size.
void ExpectNear(const std::vector<TEV2_VECTOR_3>& found, const std::vector<Vector>& expected)
{
    double largest = 0.0;
    double size = 0.0;
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t vertex = 0; vertex < found.size(); ++vertex)
    {
        Vector difference = expected[vertex];
        Add(difference, -1.0, Exact(found[vertex]));
        largest = std::max(largest, Largest(difference));
        size = std::max(size, Largest(expected[vertex]));
    }
    EXPECT_LE(largest, 1e-5 * size);
}

/// The head is a mesh with three targets on a bone: as a mesh with one bone, and as a morph mesh on that bone's node.
TEST(GltfAgreement, OfSkinnedHandsAndAMorphedHead)
{
    Robot robot;
    auto& meshes = robot.scene.weightedMeshes;
    for (const char* name : {"Hand.L", "Hand.R"})
    {
        TEV2_WEIGHTED_MESH& hand = *meshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>());
        robot.ReadVertices(robot.PlaceOfMesh(name), *hand.vertices, hand.targets);
        robot.ReadSkin(robot.PlaceOfMesh(name), *hand.skin);
        EXPECT_GT(hand.vertices->positions.size(), 500u);
    }
    TEV2_WEIGHTED_MESH& head = *meshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    TEV2_MORPH_MESH& morphed = *robot.scene.morphMeshes.emplace_back(std::make_unique<TEV2_MORPH_MESH>());
    const std::uint32_t place = robot.PlaceOfMesh("Head");
    robot.ReadVertices(place, *head.vertices, head.targets);
    robot.ReadVertices(place, *morphed.vertices, morphed.targets);
    ASSERT_EQ(head.targets.size(), 3u);
    for (auto* const targets : {&head.targets, &morphed.targets})
        for (std::size_t target = 0; target < targets->size(); ++target)
        {
            auto track = std::make_unique<TEV2_ANIMATABLE_FLOAT32_LINEAR>();
            for (std::size_t pose = 0; pose < robot.poses.size(); ++pose)
                track->Append(Robot::TimeOf(pose), static_cast<float>(WeightOf(target, pose)));
            (*targets)[target].track = std::move(track);
        }
    const std::vector<std::uint32_t> zeros(head.vertices->positions.size(), 0);
    const std::vector<float> ones(zeros.size(), 1.0f);
    head.skin->influences = 1;
    head.skin->boneIndices = zeros;
    head.skin->weights = ones;
    head.skin->bones = {place};
    head.skin->bindMatrices.resize(1); // the head's own axes

    const auto loaded = LoadImageOf(SceneImage(robot.scene));
    ASSERT_TRUE(loaded->loaded);
    ASSERT_FALSE(loaded->scene.HasKeptBodies());
    for (std::size_t pose = 0; pose < robot.poses.size(); ++pose)
    {
        SCOPED_TRACE(pose);
        loaded->scene.SetTime(Robot::TimeOf(pose));
        std::vector<Vector> expected;
        std::vector<TEV2_VECTOR_3> found;
        for (std::size_t index = 0; index < meshes.size(); ++index)
        {
            expected = Expected(*meshes[index], robot, pose);
            found.resize(expected.size());
            SkinVertices(*loaded->scene.weightedMeshes[index], {.positions = found});
            ExpectNear(found, expected);
        }
        MorphVertices(*loaded->scene.morphMeshes[0], {.positions = found});
        const std::vector<TEV2_MATRIX_3X4> node{loaded->scene.matrixHierarchy.nodes[place].worldMatrix};
        SkinVertices({.positions = found}, {1, zeros, ones, node}, {.positions = found});
        ExpectNear(found, expected);
    }
}

} // namespace
