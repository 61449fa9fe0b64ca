#include "gltf/accessor.h"
#include "tests/support/sample_scenes.h"
#include "tev2_loader/skinning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

// A real character, converted here, against what glTF says about its vertices: the sum of weight * world(joint) *
// inverse bind matrix * (position + weighted targets), in double precision and straight from the glTF.

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

using Vector = std::array<double, 3>;
using Quaternion = std::array<double, 4>; // x, y, z, w

struct Affine
{
    double m[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};
};

Affine operator*(const Affine& a, const Affine& b)
{
    Affine product;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
        {
            product.m[row][column] = a.m[row][0] * b.m[0][column] + a.m[row][1] * b.m[1][column] +
                                     a.m[row][2] * b.m[2][column] + (column == 3 ? a.m[row][3] : 0.0);
        }
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

/// A mesh of the glTF with its primitives end to end.
struct GltfMesh
{
    std::size_t influences = 0; // 4 with a skin, otherwise 0
    std::vector<Vector> positions;
    std::vector<std::uint32_t> joints;
    std::vector<double> weights;
    std::vector<std::vector<Vector>> targets;
};

/// The sample, its accessors, and what the JSON says about meshes and skins.
class Robot
{
public:
    gltf::Node NodeAt(std::size_t place) const { return document_.NodeAt(shown[place].index); }

    std::size_t PlaceOf(std::size_t node) const
    {
        const auto found = std::find_if(shown.begin(), shown.end(),
                                        [node](const gltf::ShownNode& at) { return at.index == node; });
        return static_cast<std::size_t>(found - shown.begin());
    }

    /// Of the node of this name that has a mesh; bones have the same names.
    std::size_t PlaceOfMesh(std::string_view name) const
    {
        std::size_t place = 0;
        while (NodeAt(place).name != name || !NodeAt(place).mesh)
            ++place;
        return place;
    }

    GltfMesh MeshAt(std::size_t index)
    {
        GltfMesh mesh;
        const gltf::JsonValue primitives = document_.Root()["meshes"][index]["primitives"];
        for (std::size_t p = 0; p < primitives.Size(); ++p)
        {
            const gltf::JsonValue attributes = primitives[p]["attributes"];
            Append(attributes["POSITION"], mesh.positions);
            if (attributes["JOINTS_0"])
            {
                mesh.influences = 4;
                for (const double joint : Numbers(attributes["JOINTS_0"]))
                    mesh.joints.push_back(static_cast<std::uint32_t>(joint));
                for (const double weight : Numbers(attributes["WEIGHTS_0"]))
                    mesh.weights.push_back(weight);
            }
            const gltf::JsonValue targets = primitives[p]["targets"];
            mesh.targets.resize(targets.Size());
            for (std::size_t t = 0; t < targets.Size(); ++t)
                Append(targets[t]["POSITION"], mesh.targets[t]);
        }
        return mesh;
    }

    /// The joints of a skin as places among the shown nodes.
    std::vector<std::uint32_t> JointsOf(std::size_t skin) const
    {
        std::vector<std::uint32_t> joints;
        const gltf::JsonValue listed = document_.Root()["skins"][skin]["joints"];
        for (std::size_t j = 0; j < listed.Size(); ++j)
            joints.push_back(
                static_cast<std::uint32_t>(PlaceOf(static_cast<std::size_t>(listed[j].Whole().value()))));
        return joints;
    }

    std::vector<Affine> InverseBindMatricesOf(std::size_t skin)
    {
        const std::vector<double>& numbers = Numbers(document_.Root()["skins"][skin]["inverseBindMatrices"]);
        std::vector<Affine> matrices(numbers.size() / 16);
        for (std::size_t i = 0; i < numbers.size(); ++i)
            if (i % 4 < 3) // column by column
                matrices[i / 16].m[i % 4][i / 4 % 4] = numbers[i];
        return matrices;
    }

    /// Seconds of the keys of an animation; all channels have the same.
    std::vector<double> TimesOf(std::size_t animation)
    {
        const gltf::Animation read = document_.AnimationAt(animation);
        const std::size_t input = document_.SamplerAt(read, 0).input;
        for (std::size_t i = 0; i < read.samplers.Size(); ++i)
            EXPECT_EQ(document_.SamplerAt(read, i).input, input);
        return *accessors_.Read(input);
    }

    /// The local transforms of the shown nodes at a key of an animation.
    std::vector<gltf::Trs> LocalsAt(std::size_t animation, std::size_t key)
    {
        std::vector<gltf::Trs> locals;
        for (const gltf::ShownNode& node : shown)
            locals.push_back(std::get<gltf::Trs>(document_.NodeAt(node.index).local));
        const gltf::Animation read = document_.AnimationAt(animation);
        for (std::size_t c = 0; c < read.channels.Size(); ++c)
        {
            const gltf::Channel channel = document_.ChannelAt(read, c);
            const std::vector<double>& values =
                *accessors_.Read(document_.SamplerAt(read, channel.sampler).output);
            gltf::Trs& local = locals[PlaceOf(channel.node.value())];
            if (channel.target == gltf::Target::Translation)
                std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(3 * key), 3,
                            local.translation.begin());
            else if (channel.target == gltf::Target::Rotation)
                std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(4 * key), 4, local.rotation.begin());
        }
        return locals;
    }

    std::vector<Affine> Worlds(const std::vector<gltf::Trs>& locals) const
    {
        std::vector<Affine> worlds;
        for (std::size_t place = 0; place < shown.size(); ++place)
        {
            const Affine local = ToAffine(locals[place]);
            worlds.push_back(shown[place].parent ? worlds[*shown[place].parent] * local : local);
        }
        return worlds;
    }

private:
    const std::vector<double>& Numbers(gltf::JsonValue accessor)
    {
        return *accessors_.Read(static_cast<std::size_t>(accessor.Whole().value()));
    }

    void Append(gltf::JsonValue accessor, std::vector<Vector>& to)
    {
        const std::vector<double>& numbers = Numbers(accessor);
        for (std::size_t i = 0; i + 2 < numbers.size(); i += 3)
            to.push_back({numbers[i], numbers[i + 1], numbers[i + 2]});
    }

    std::string bytes_ = ReadText(TV2_SAMPLES_DIR "/robot_14_takes.glb");
    gltf::FolderFiles files_{TV2_SAMPLES_DIR};
    gltf::Document document_{bytes_, files_};
    gltf::AccessorReader accessors_{document_};

public:
    const std::vector<gltf::ShownNode> shown = document_.ShownNodes(100);
};

constexpr std::size_t kSwapped[] = {0, 2,
                                    1}; // y and z exchanged: the axes of nodes other than cameras and lights

TEV2_VECTOR_3 Swapped(const std::array<double, 3>& v)
{
    return {static_cast<float>(v[0]), static_cast<float>(v[2]), static_cast<float>(v[1])};
}

TEV2_MATRIX_3X4 Swapped(const Affine& affine)
{
    TEV2_MATRIX_3X4 swapped;
    for (std::size_t row = 0; row < 3; ++row)
        for (std::size_t column = 0; column < 4; ++column)
            swapped.m[row][column] =
                static_cast<float>(affine.m[kSwapped[row]][column < 3 ? kSwapped[column] : 3]);
    return swapped;
}

Quaternion Times(const Quaternion& a, const Quaternion& b)
{
    return {a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
            a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
            a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3],
            a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

/// The world of the records is the glTF's with z negated; below the top level only y and z are exchanged.
TEV2_VECTOR_3 Translation(const gltf::Trs& trs, bool top)
{
    const auto& [x, y, z] = trs.translation;
    return top ? TEV2_VECTOR_3{static_cast<float>(x), static_cast<float>(y), static_cast<float>(-z)}
               : Swapped(trs.translation);
}

TEV2_QUATERNION Rotation(const gltf::Trs& trs, bool top)
{
    const auto& [x, y, z, w] = trs.rotation;
    Quaternion q = {-x, -z, -y, w};
    if (top)
        q = Times({-std::sqrt(0.5), 0.0, 0.0, std::sqrt(0.5)}, q);
    return {static_cast<float>(q[0]), static_cast<float>(q[1]), static_cast<float>(q[2]),
            static_cast<float>(q[3])};
}

/// The robot as a scene of records, with a key for each pose that is added.
class Records
{
public:
    TEV2 scene;

    explicit Records(const Robot& robot) : robot_(robot)
    {
        for (const gltf::ShownNode& shown : robot.shown)
        {
            TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
            node.parentIndex = shown.parent ? static_cast<std::int32_t>(*shown.parent) : -1;
            node.translation = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
            node.rotation = std::make_unique<TEV2_ANIMATABLE_QUATERNION_SLERP>();
            node.scale = std::make_unique<TEV2_ANIMATABLE_VECTOR_3_LINEAR>();
        }
    }

    void AddPose(float time, const std::vector<gltf::Trs>& locals)
    {
        for (std::size_t place = 0; place < locals.size(); ++place)
        {
            const bool top = !robot_.shown[place].parent;
            TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes[place];
            Track<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(*node.translation)
                .Append(time, Translation(locals[place], top));
            auto& rotation = Track<TEV2_ANIMATABLE_QUATERNION_SLERP>(*node.rotation);
            const TEV2_QUATERNION q = Rotation(locals[place], top);
            const bool turned = !rotation.m_values.empty() && Dot(rotation.m_values.back(), q) < 0.0f;
            rotation.Append(time, turned ? -q : q);
            Track<TEV2_ANIMATABLE_VECTOR_3_LINEAR>(*node.scale).Append(time, Swapped(locals[place].scale));
        }
        scene.environment.timeRange.maximum = time;
    }

private:
    template <typename Concrete, typename Family>
    static Concrete& Track(Family& track)
    {
        return dynamic_cast<Concrete&>(track);
    }

    const Robot& robot_;
};

/// Positions and targets, with only the vertices that they move.
void Convert(const GltfMesh& from, TEV2_RIGID_VERTICES& vertices, std::vector<TEV2_MORPH_TARGET>& targets)
{
    for (const Vector& position : from.positions)
        vertices.positions.push_back(Swapped(position));
    for (const std::vector<Vector>& offsets : from.targets)
    {
        TEV2_MORPH_TARGET& target = targets.emplace_back();
        target.track = std::make_unique<TEV2_ANIMATABLE_FLOAT32_LINEAR>();
        for (std::size_t vertex = 0; vertex < offsets.size(); ++vertex)
        {
            if (offsets[vertex] == Vector{})
                continue;
            target.offsets.vertices.push_back(static_cast<std::uint32_t>(vertex));
            target.offsets.positions.push_back(Swapped(offsets[vertex]));
        }
    }
}

/// How far vertices of the records' world are from those of the glTF's at most, and how large the latter are.
struct Distance
{
    double largest = 0.0;
    double size = 0.0;

    void Add(const std::vector<TEV2_VECTOR_3>& found, const std::vector<Vector>& expected)
    {
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t vertex = 0; vertex < found.size(); ++vertex)
        {
            const auto& [x, y, z] = expected[vertex];
            const Vector at{found[vertex].x, found[vertex].y, found[vertex].z};
            largest = std::max({largest, std::abs(at[0] - x), std::abs(at[1] - y), std::abs(at[2] + z)});
            size = std::max({size, std::abs(x), std::abs(y), std::abs(z)});
        }
    }
};

constexpr double kAgreement = 1e-5; // of the size

/// Some keys of some animations, far apart.
struct Pose
{
    float time; // in the records
    std::vector<gltf::Trs> locals;
};

std::vector<Pose> SomePoses(Robot& robot)
{
    std::vector<Pose> poses;
    for (const std::size_t animation : {0u, 5u, 10u, 12u}) // Dance, Punch, Walking, Wave
        for (const std::size_t part : {0u, 1u, 2u})
        {
            const std::size_t last = robot.TimesOf(animation).size() - 1;
            poses.push_back(
                {0.5f * static_cast<float>(poses.size()), robot.LocalsAt(animation, part * last / 2)});
        }
    return poses;
}

/// The sum of weight * world * inverse bind matrix * position.
std::vector<Vector> GltfSkinned(const GltfMesh& mesh, const std::vector<Affine>& palette)
{
    std::vector<Vector> skinned;
    for (std::size_t vertex = 0; vertex < mesh.positions.size(); ++vertex)
    {
        Vector sum{};
        for (std::size_t entry = vertex * mesh.influences; entry < (vertex + 1) * mesh.influences; ++entry)
        {
            const Vector moved = palette[mesh.joints[entry]] * mesh.positions[vertex];
            for (std::size_t axis = 0; axis < 3; ++axis)
                sum[axis] += mesh.weights[entry] * moved[axis];
        }
        skinned.push_back(sum);
    }
    return skinned;
}

TEST(GltfAgreement, OfSkinnedHands)
{
    Robot robot;
    const std::vector<Pose> poses = SomePoses(robot);
    Records records(robot);
    for (const Pose& pose : poses)
        records.AddPose(pose.time, pose.locals);
    std::vector<gltf::Node> nodes;
    std::vector<GltfMesh> meshes;
    for (const char* name : {"Hand.L", "Hand.R"})
    {
        const gltf::Node node = nodes.emplace_back(robot.NodeAt(robot.PlaceOfMesh(name)));
        const GltfMesh& from = meshes.emplace_back(robot.MeshAt(node.mesh.value()));
        EXPECT_GT(from.positions.size(), 500u);
        TEV2_WEIGHTED_MESH& mesh =
            *records.scene.weightedMeshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>());
        Convert(from, *mesh.vertices, mesh.targets);
        mesh.skin->influences = 4;
        mesh.skin->boneIndices = from.joints;
        mesh.skin->weights.assign(from.weights.begin(), from.weights.end());
        mesh.skin->bones = robot.JointsOf(node.skin.value());
        for (const Affine& matrix : robot.InverseBindMatricesOf(node.skin.value()))
            mesh.skin->bindMatrices.push_back(Swapped(matrix));
    }

    const auto loaded = LoadImageOf(SceneImage(records.scene));
    ASSERT_TRUE(loaded->loaded);
    ASSERT_FALSE(loaded->scene.HasKeptBodies());
    for (const Pose& pose : poses)
    {
        loaded->scene.SetTime(pose.time);
        const std::vector<Affine> worlds = robot.Worlds(pose.locals);
        for (std::size_t index = 0; index < meshes.size(); ++index)
        {
            std::vector<Affine> palette = robot.InverseBindMatricesOf(nodes[index].skin.value());
            const std::vector<std::uint32_t> joints = robot.JointsOf(nodes[index].skin.value());
            for (std::size_t joint = 0; joint < palette.size(); ++joint)
                palette[joint] = worlds[joints[joint]] * palette[joint];
            std::vector<TEV2_VECTOR_3> found(meshes[index].positions.size());
            SkinVertices(*loaded->scene.weightedMeshes[index], {.positions = found});
            Distance distance;
            distance.Add(found, GltfSkinned(meshes[index], palette));
            EXPECT_LE(distance.largest, kAgreement * distance.size) << pose.time;
        }
    }
}

/// The head, a mesh with three targets on a bone: as a morph mesh on that bone's node, and as a mesh with one bone.
TEST(GltfAgreement, OfAMorphedHead)
{
    Robot robot;
    const std::vector<Pose> poses = SomePoses(robot);
    const std::size_t place = robot.PlaceOfMesh("Head");
    Records records(robot);
    const GltfMesh head = robot.MeshAt(robot.NodeAt(place).mesh.value());
    ASSERT_EQ(head.targets.size(), 3u);
    TEV2_MORPH_MESH& morphed = *records.scene.morphMeshes.emplace_back(std::make_unique<TEV2_MORPH_MESH>());
    TEV2_WEIGHTED_MESH& skinned =
        *records.scene.weightedMeshes.emplace_back(std::make_unique<TEV2_WEIGHTED_MESH>());
    Convert(head, *morphed.vertices, morphed.targets);
    Convert(head, *skinned.vertices, skinned.targets);
    skinned.skin->influences = 1;
    skinned.skin->boneIndices.assign(head.positions.size(), 0);
    skinned.skin->weights.assign(head.positions.size(), 1.0f);
    skinned.skin->bones = {static_cast<std::uint32_t>(place)};
    skinned.skin->bindMatrices.resize(1); // the head's own axes
    // Exact in single precision: below 0, above 1, and each target alone.
    const auto weight = [](std::size_t pose, std::size_t target)
    { return pose == target ? 1.0 : 0.25 * static_cast<double>((pose * 5 + target * 3) % 7) - 0.5; };
    for (std::size_t pose = 0; pose < poses.size(); ++pose)
    {
        records.AddPose(poses[pose].time, poses[pose].locals);
        for (std::size_t target = 0; target < head.targets.size(); ++target)
            for (const auto& track :
                 {morphed.targets[target].track.get(), skinned.targets[target].track.get()})
                dynamic_cast<TEV2_ANIMATABLE_FLOAT32_LINEAR&>(*track).Append(
                    poses[pose].time, static_cast<float>(weight(pose, target)));
    }

    const auto loaded = LoadImageOf(SceneImage(records.scene));
    ASSERT_TRUE(loaded->loaded);
    ASSERT_FALSE(loaded->scene.HasKeptBodies());
    for (std::size_t pose = 0; pose < poses.size(); ++pose)
    {
        loaded->scene.SetTime(poses[pose].time);
        const Affine world = robot.Worlds(poses[pose].locals)[place];
        std::vector<Vector> expected = head.positions;
        for (std::size_t vertex = 0; vertex < expected.size(); ++vertex)
        {
            for (std::size_t target = 0; target < head.targets.size(); ++target)
                for (std::size_t axis = 0; axis < 3; ++axis)
                    expected[vertex][axis] += weight(pose, target) * head.targets[target][vertex][axis];
            expected[vertex] = world * expected[vertex];
        }
        std::vector<TEV2_VECTOR_3> found(head.positions.size());
        SkinVertices(*loaded->scene.weightedMeshes[0], {.positions = found});
        Distance distance;
        distance.Add(found, expected);

        MorphVertices(*loaded->scene.morphMeshes[0], {.positions = found});
        const std::vector<TEV2_MATRIX_3X4> node{loaded->scene.matrixHierarchy.nodes[place].worldMatrix};
        const std::vector<std::uint32_t> bones(found.size(), 0);
        const std::vector<float> ones(found.size(), 1.0f);
        SkinVertices({.positions = found}, {1, bones, ones, node}, {.positions = found});
        distance.Add(found, expected);
        EXPECT_LE(distance.largest, kAgreement * distance.size) << pose;
    }
}

} // namespace
