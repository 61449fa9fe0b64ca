#include "tests/gltf/converted.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <optional>

// glTF to .tv2, through the bytes of a file, and back to glTF: what comes back is compared with what went in, number by
// number, without the converter's readers.

using namespace tv2_tests;

namespace
{

using Codes = std::set<std::string>;

constexpr float kTurned = 2e-7f; // of rotations at top level, and of cameras and lights

std::string BytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Trip
{
    RawGltf before, after;
    Codes lost_coming, lost_going;
};

Trip RoundTrip(const std::string& glb)
{
    const FromDocument from(glb);
    std::vector<std::unique_ptr<TEV2_LOADER::TEV2>> scenes;
    std::vector<tev2_gltf::GltfSource> sources;
    for (std::size_t i = 0; i < from.scenes.size(); ++i)
    {
        scenes.push_back(Reloaded(*from.scenes[i]));
        sources.push_back({*scenes.back(), from.names[i]});
    }
    gltf::DocumentBuilder builder;
    tev2_gltf::ConversionReport report;
    const TEV2_LOADER::Status made = tev2_gltf::ToGltf(sources, {}, builder, report);
    EXPECT_TRUE(made) << made.Reason();
    return {RawGltf(glb), RawGltf(builder.Glb()), CodesOf(from.report), CodesOf(report)};
}

/// The nodes of a document by their way from the top: names, and a number where siblings share one.
class Tree
{
public:
    explicit Tree(const Json& root) : nodes_(root.value("nodes", Json::array())), paths_(nodes_.size())
    {
        std::vector<std::size_t> tops;
        if (root.contains("scenes"))
            tops = root["scenes"][root.value("scene", std::size_t{0})].value("nodes", tops);
        Walk(tops, "", std::nullopt);
    }

    struct Entry
    {
        std::size_t node;
        std::optional<std::size_t> parent;
    };

    const std::string& PathOf(std::size_t node) const { return paths_[node]; }
    const std::map<std::string, Entry>& Entries() const { return entries_; }

private:
    void Walk(const std::vector<std::size_t>& nodes, const std::string& above,
              std::optional<std::size_t> parent)
    {
        std::map<std::string, int> met;
        for (const std::size_t node : nodes)
        {
            const std::string name = nodes_[node].value("name", "");
            paths_[node] = above + "/" + name + "#" + std::to_string(met[name]++);
            entries_[paths_[node]] = {node, parent};
            Walk(nodes_[node].value("children", std::vector<std::size_t>{}), paths_[node], node);
        }
    }

    Json nodes_;
    std::vector<std::string> paths_;
    std::map<std::string, Entry> entries_;
};

std::vector<float> Floats(const Json& object, const char* member, std::vector<float> otherwise)
{
    return object.value(member, otherwise);
}

bool IsNear(std::span<const float> a, std::span<const float> b, float tolerance)
{
    return std::ranges::equal(a, b, [tolerance](float x, float y) { return std::abs(x - y) <= tolerance; });
}

/// Up to the sign of the whole quaternion.
bool IsSameRotation(std::span<const float> a, std::span<const float> b, float tolerance)
{
    std::vector<float> negated(b.begin(), b.end());
    for (float& number : negated)
        number = -number;
    return IsNear(a, b, tolerance) || IsNear(a, negated, tolerance);
}

/// Both documents of a trip, and how their nodes correspond.
class Comparison
{
public:
    explicit Comparison(const Trip& trip)
        : before_(trip.before), after_(trip.after), before_tree_(before_.root), after_tree_(after_.root)
    {
    }

    void Expect()
    {
        for (const auto& [path, entry] : before_tree_.Entries())
        {
            SCOPED_TRACE(path);
            ASSERT_TRUE(after_tree_.Entries().contains(path)) << "is not there";
            ExpectNode(entry, after_tree_.Entries().at(path).node);
        }
        for (std::size_t i = 0; i < before_.root.value("animations", Json::array()).size(); ++i)
            ExpectAnimation(before_.root["animations"][i], after_.root["animations"][i]);
    }

private:
    const Json& Before(std::size_t node) const { return before_.root["nodes"][node]; }
    const Json& After(std::size_t node) const { return after_.root["nodes"][node]; }

    bool IsOrdinary(std::size_t node) const
    {
        const bool is_camera =
            Before(node).contains("camera") &&
            before_.root["cameras"][Before(node)["camera"].get<std::size_t>()]["type"] == "perspective";
        return !is_camera &&
               !Before(node).value("extensions", Json::object()).contains("KHR_lights_punctual");
    }

    float RotationTolerance(const Tree::Entry& entry) const
    {
        return entry.parent && IsOrdinary(*entry.parent) && IsOrdinary(entry.node) ? 0.0f : kTurned;
    }

    void ExpectNode(const Tree::Entry& entry, std::size_t node)
    {
        const Json& from = Before(entry.node);
        const Json& to = After(node);
        const std::vector<float> zeros(3, 0.0f), ones(3, 1.0f), none{0.0f, 0.0f, 0.0f, 1.0f};
        // What an animation moves is compared with its keys.
        EXPECT_TRUE(IsMoved(entry.node, "translation") ||
                    Floats(from, "translation", zeros) == Floats(to, "translation", zeros));
        EXPECT_TRUE(IsMoved(entry.node, "scale") || Floats(from, "scale", ones) == Floats(to, "scale", ones));
        EXPECT_TRUE(IsMoved(entry.node, "rotation") ||
                    IsSameRotation(Floats(from, "rotation", none), Floats(to, "rotation", none),
                                   RotationTolerance(entry)))
            << from << '\n'
            << to;
        EXPECT_EQ(from.value("extras", Json()), to.value("extras", Json()));
        if (from.contains("mesh"))
            ExpectMesh(from, to);
    }

    bool IsMoved(std::size_t node, const char* path) const
    {
        for (const Json& animation : before_.root.value("animations", Json::array()))
            for (const Json& channel : animation["channels"])
                if (channel["target"]["node"] == node && channel["target"]["path"] == path)
                    return true;
        return false;
    }

    void ExpectMesh(const Json& from, const Json& to)
    {
        const Json& mesh = before_.root["meshes"][from["mesh"].get<std::size_t>()];
        const Json* other_node = &to;
        if (from.contains("skin"))
            other_node = SkinnedNode(mesh.value("name", from.value("name", "")));
        ASSERT_TRUE(other_node && other_node->contains("mesh")) << mesh.value("name", "");
        const Json& other = after_.root["meshes"][(*other_node)["mesh"].get<std::size_t>()];
        ASSERT_EQ(mesh["primitives"].size(), other["primitives"].size());
        for (std::size_t i = 0; i < mesh["primitives"].size(); ++i)
            ExpectPrimitive(mesh["primitives"][i], other["primitives"][i]);
        if (from.contains("skin"))
            ExpectSkin(before_.root["skins"][from["skin"].get<std::size_t>()],
                       after_.root["skins"][(*other_node)["skin"].get<std::size_t>()], mesh, other);
        const Json names = mesh.value("extras", Json::object()).value("targetNames", Json::array());
        if (!names.empty())
        {
            EXPECT_EQ(names, other["extras"]["targetNames"]);
        }
    }

    const Json* SkinnedNode(const std::string& mesh_name) const
    {
        for (const Json& node : after_.root["nodes"])
            if (node.contains("skin") &&
                after_.root["meshes"][node["mesh"].get<std::size_t>()].value("name", "") == mesh_name)
                return &node;
        return nullptr;
    }

    /// The vertex of each corner of a list, strip or fan, in the order that makes all triangles face one way.
    static std::vector<std::size_t> CornersOf(const RawGltf& document, const Json& primitive)
    {
        std::vector<std::size_t> order;
        if (primitive.contains("indices"))
            for (const float index : document.Read(primitive["indices"]))
                order.push_back(static_cast<std::size_t>(index));
        else
            for (std::size_t i = 0; i < document.Read(primitive["attributes"]["POSITION"]).size() / 3; ++i)
                order.push_back(i);
        const int mode = primitive.value("mode", 4);
        std::vector<std::size_t> corners;
        if (mode == 4)
            return order;
        for (std::size_t i = 0; i + 2 < order.size(); ++i)
        {
            const std::size_t odd = i % 2;
            const std::size_t strip[3] = {order[i], order[i + 1 + odd], order[i + 2 - odd]};
            const std::size_t fan[3] = {order[i + 1], order[i + 2], order[0]};
            const auto& triangle = mode == 5 ? strip : fan;
            corners.insert(corners.end(), std::begin(triangle), std::end(triangle));
        }
        return corners;
    }

    void ExpectPrimitive(const Json& from, const Json& to)
    {
        const std::vector<std::size_t> corners = CornersOf(before_, from);
        const std::vector<std::size_t> others = CornersOf(after_, to);
        ASSERT_EQ(corners.size(), others.size());
        EXPECT_EQ(from.contains("material"), to.contains("material"));
        for (const auto& [name, accessor] : from["attributes"].items())
        {
            SCOPED_TRACE(name);
            if (name.starts_with("JOINTS_") || name.starts_with("WEIGHTS_") || name.starts_with("_"))
                continue;
            ASSERT_TRUE(to["attributes"].contains(name));
            ExpectSame(accessor, corners, to["attributes"][name], others);
        }
        const Json targets = from.value("targets", Json::array());
        ASSERT_EQ(targets.size(), to.value("targets", Json::array()).size());
        for (std::size_t i = 0; i < targets.size(); ++i)
            for (const auto& [name, accessor] : targets[i].items())
            {
                SCOPED_TRACE(name + " of target " + std::to_string(i));
                if (to["targets"][i].contains(name))
                    ExpectSame(accessor, corners, to["targets"][i][name], others);
                else // a target that moves nothing
                    for (const float number : before_.Read(accessor))
                        ASSERT_EQ(number, 0.0f);
            }
    }

    void ExpectSame(std::size_t accessor, const std::vector<std::size_t>& corners, std::size_t other,
                    const std::vector<std::size_t>& others)
    {
        const std::vector<float> from = before_.Read(accessor);
        const std::vector<float> to = after_.Read(other);
        const std::size_t width = before_.Width(accessor);
        const std::size_t other_width = after_.Width(other);
        for (std::size_t i = 0; i < corners.size(); ++i)
            for (std::size_t k = 0; k < other_width; ++k)
            {
                const float expected = k < width ? from[corners[i] * width + k] : 1.0f; // alpha of colours
                ASSERT_EQ(expected, to[others[i] * other_width + k]) << "corner " << i << ", component " << k;
            }
    }

    /// Weight by bone, of a vertex.
    std::map<std::string, float> WeightsOf(const RawGltf& document, const Tree& tree, const Json& skin,
                                           const Json& attributes, std::size_t vertex) const
    {
        std::map<std::string, float> weights;
        for (int set = 0; attributes.contains("JOINTS_" + std::to_string(set)); ++set)
        {
            const std::vector<float> joints = document.Read(attributes["JOINTS_" + std::to_string(set)]);
            const std::vector<float> numbers = document.Read(attributes["WEIGHTS_" + std::to_string(set)]);
            for (std::size_t i = 4 * vertex; i < 4 * vertex + 4; ++i)
                if (numbers[i] != 0.0f)
                    weights[tree.PathOf(skin["joints"][static_cast<std::size_t>(joints[i])])] += numbers[i];
        }
        return weights;
    }

    void ExpectSkin(const Json& from, const Json& to, const Json& mesh, const Json& other)
    {
        ASSERT_EQ(from["joints"].size(), to["joints"].size());
        std::map<std::string, std::vector<float>> matrices;
        const std::vector<float> after = after_.Read(to["inverseBindMatrices"]);
        for (std::size_t i = 0; i < to["joints"].size(); ++i)
            matrices[after_tree_.PathOf(to["joints"][i])] = {
                after.begin() + static_cast<std::ptrdiff_t>(16 * i),
                after.begin() + static_cast<std::ptrdiff_t>(16 * i + 16)};
        const std::vector<float> before = before_.Read(from["inverseBindMatrices"]);
        for (std::size_t i = 0; i < from["joints"].size(); ++i)
        {
            const std::vector<float> matrix(before.begin() + static_cast<std::ptrdiff_t>(16 * i),
                                            before.begin() + static_cast<std::ptrdiff_t>(16 * i + 16));
            EXPECT_EQ(matrix, matrices[before_tree_.PathOf(from["joints"][i])]);
        }
        for (std::size_t p = 0; p < mesh["primitives"].size(); ++p)
            ExpectWeights(from, to, mesh["primitives"][p], other["primitives"][p]);
    }

    void ExpectWeights(const Json& from, const Json& to, const Json& primitive, const Json& other)
    {
        const std::vector<std::size_t> corners = CornersOf(before_, primitive);
        const std::vector<std::size_t> others = CornersOf(after_, other);
        std::set<std::size_t> compared;
        for (std::size_t i = 0; i < corners.size(); ++i)
        {
            if (!compared.insert(corners[i]).second)
                continue;
            const auto expected = WeightsOf(before_, before_tree_, from, primitive["attributes"], corners[i]);
            const auto found = WeightsOf(after_, after_tree_, to, other["attributes"], others[i]);
            double sum = 0.0;
            for (const auto& [bone, weight] : expected)
                sum += static_cast<double>(weight);
            if (std::abs(sum - 1.0) <= 2e-7 * static_cast<double>(expected.size()))
            {
                ASSERT_EQ(expected, found) << "vertex " << corners[i];
                continue;
            }
            ASSERT_EQ(expected.size(), found.size());
            for (const auto& [bone, weight] : expected) // divided by their sum
                ASSERT_NEAR(static_cast<double>(weight) / sum, static_cast<double>(found.at(bone)), 1e-7);
        }
    }

    struct Keys
    {
        std::vector<float> times, values;
        std::string interpolation;
        std::size_t width = 0;
    };

    static Keys KeysOf(const RawGltf& document, const Json& animation, const Json& channel)
    {
        const Json& sampler = animation["samplers"][channel["sampler"].get<std::size_t>()];
        Keys keys{document.Read(sampler["input"]), document.Read(sampler["output"]),
                  sampler.value("interpolation", "LINEAR")};
        keys.width = keys.values.size() / keys.times.size();
        return keys;
    }

    const Json* ChannelOf(const Json& animation, const std::string& node, const Json& path) const
    {
        for (const Json& channel : animation["channels"])
            if (channel["target"]["path"] == path && after_tree_.PathOf(channel["target"]["node"]) == node)
                return &channel;
        return nullptr;
    }

    void ExpectAnimation(const Json& from, const Json& to)
    {
        SCOPED_TRACE("animation " + from.value("name", ""));
        EXPECT_EQ(from.value("name", ""), to.value("name", ""));
        for (const Json& channel : from["channels"])
        {
            const std::size_t node = channel["target"]["node"];
            const std::string& path = before_tree_.PathOf(node);
            SCOPED_TRACE(path + " " + channel["target"]["path"].get<std::string>());
            const Keys keys = KeysOf(before_, from, channel);
            if (keys.interpolation == "CUBICSPLINE")
                continue; // resampled
            const Json* const other = ChannelOf(to, path, channel["target"]["path"]);
            const bool is_rotation = channel["target"]["path"] == "rotation";
            const float tolerance = is_rotation ? RotationTolerance(before_tree_.Entries().at(path)) : 0.0f;
            if (other)
                ExpectKeys(keys, KeysOf(after_, to, *other), is_rotation, tolerance);
            else // one value throughout may be no animation
                for (std::size_t key = 0; key < keys.times.size(); ++key)
                    ASSERT_TRUE(
                        IsSameRotation(ValueOf(keys, 0), ValueOf(keys, key), is_rotation ? 1e-6f : 0.0f));
        }
    }

    static std::span<const float> ValueOf(const Keys& keys, std::size_t key)
    {
        return std::span<const float>(keys.values).subspan(key * keys.width, keys.width);
    }

    /// Each key at its time. Of steps there is one more key before each.
    static void ExpectKeys(const Keys& keys, const Keys& others, bool is_rotation, float tolerance)
    {
        ASSERT_EQ(keys.width, others.width);
        if (keys.interpolation != "STEP")
        {
            ASSERT_EQ(keys.times, others.times);
        }
        for (std::size_t key = 0; key < keys.times.size(); ++key)
        {
            const auto found = std::ranges::find(others.times, keys.times[key]);
            ASSERT_NE(found, others.times.end());
            const auto other = ValueOf(others, static_cast<std::size_t>(found - others.times.begin()));
            ASSERT_TRUE(is_rotation ? IsSameRotation(ValueOf(keys, key), other, tolerance)
                                    : std::ranges::equal(ValueOf(keys, key), other))
                << "key " << key;
        }
    }

    const RawGltf& before_;
    const RawGltf& after_;
    Tree before_tree_;
    Tree after_tree_;
};

void ExpectComesBack(const std::string& glb, const Codes& lost_coming, const Codes& lost_going)
{
    const Trip trip = RoundTrip(glb);
    EXPECT_EQ(trip.lost_coming, lost_coming);
    EXPECT_EQ(trip.lost_going, lost_going);
    Comparison(trip).Expect();
}

Json Trs(const char* name, const Json& translation, const Json& rotation)
{
    return {{"name", name}, {"translation", translation}, {"rotation", rotation}};
}

/// 7 vertices that no rule of the mapping leaves as they are.
Json Attributes(RawGltf& document)
{
    std::vector<float> positions, normals, tangents, uvs, colours;
    for (int i = 0; i < 7; ++i)
    {
        const auto f = static_cast<float>(i);
        positions.insert(positions.end(), {0.1f * f, 1.0f / (f + 3.0f), -0.7f * f * f});
        normals.insert(normals.end(), {0.6f, 0.0f, 0.8f});
        tangents.insert(tangents.end(), {0.8f, 0.0f, -0.6f, i % 2 == 0 ? 1.0f : -1.0f});
        uvs.insert(uvs.end(), {0.3f * f, 1.0f - 0.3f * f});
        colours.insert(colours.end(), {0.1f * f, 0.5f, 0.9f});
    }
    return {{"POSITION", document.Add(positions, "VEC3")}, {"NORMAL", document.Add(normals, "VEC3")},
            {"TANGENT", document.Add(tangents, "VEC4")},   {"TEXCOORD_0", document.Add(uvs, "VEC2")},
            {"TEXCOORD_1", document.Add(uvs, "VEC2")},     {"COLOR_0", document.Add(colours, "VEC3")}};
}

void AddAnimation(RawGltf& document, std::size_t node, const char* path, std::size_t times,
                  std::size_t values, const char* interpolation = "LINEAR")
{
    Json& animations = document.root["animations"];
    if (animations.is_null())
        animations = {{{"name", "Go"}, {"channels", Json::array()}, {"samplers", Json::array()}}};
    Json& animation = animations[0];
    animation["channels"].push_back(
        {{"sampler", animation["samplers"].size()}, {"target", {{"node", node}, {"path", path}}}});
    animation["samplers"].push_back({{"input", times}, {"output", values}, {"interpolation", interpolation}});
}

/// A material without what it says about textures, which are numbered anew.
Json WithoutTextures(Json material)
{
    for (auto& [name, value] : material.items())
    {
        if (name.ends_with("Texture"))
            value.erase("index");
        if (value.is_object())
            value = WithoutTextures(value);
    }
    return material;
}

std::string RobotPath()
{
    return TV2_SAMPLES_DIR "/robot_14_takes.glb";
}

TEST(RoundTrip, TheRobotWithAllItsTakes)
{
    ExpectComesBack(BytesOf(RobotPath()), {"weights-normalised", "skin-name-lost"}, {"skin-moved"});
}

TEST(RoundTrip, ScenesOfTheFolder)
{
    std::size_t compared = 0;
    if (std::filesystem::is_directory(TV2_SCENES_DIR))
        for (const auto& entry : std::filesystem::directory_iterator(TV2_SCENES_DIR))
            if (entry.path().extension() == ".glb")
            {
                SCOPED_TRACE(entry.path().filename().string());
                Comparison(RoundTrip(BytesOf(entry.path().string()))).Expect();
                ++compared;
            }
    if (compared == 0)
        GTEST_SKIP() << "no scenes in TV2_SCENES_DIR";
}

TEST(RoundTrip, HierarchyCamerasLightsAndKeys)
{
    RawGltf document;
    const std::vector<float> turn{0.5f, -0.5f, 0.5f, 0.5f};
    const float r = std::sqrt(0.5f);
    Json& root = document.root;
    root["extensionsUsed"] = {"KHR_lights_punctual"};
    root["extensions"]["KHR_lights_punctual"]["lights"] = {
        {{"type", "spot"},
         {"name", "Spot"},
         {"color", {1.0, 0.5, 0.25}},
         {"intensity", 40.0},
         {"range", 12.5},
         {"spot", {{"innerConeAngle", 0.25}, {"outerConeAngle", 0.75}}}}};
    root["cameras"] = {
        {{"type", "perspective"},
         {"name", "Main"},
         {"perspective", {{"yfov", 0.75}, {"aspectRatio", 1.5}, {"znear", 0.125}, {"zfar", 64.0}}}}};
    Json top = Trs("Top", {1.5, -2.25, 3.125}, {0.1, 0.2, 0.3, 0.92736184});
    top["children"] = {1, 2, 4};
    top["extras"] = {{"speed", 2.5},
                     {"count", 7},
                     {"label", "\u00e9t\u00e9"},
                     {"aim", {1.0, 2.0, 3.5}},
                     {"words", {"a", "b"}}};
    Json child = Trs("Child", {0.1, 0.2, 0.3}, turn);
    child["scale"] = {2.0, 0.5, -1.0};
    Json camera = Trs("Camera", {0.0, 4.0, 5.0}, {r, 0.0, 0.0, r});
    camera["camera"] = 0;
    camera["children"] = {3};
    Json light = Trs("Light", {-1.0, 0.0, 0.5}, turn);
    light["extensions"]["KHR_lights_punctual"]["light"] = 0;
    root["nodes"] = {top, child, camera, Trs("Below", {1.0, 2.0, 3.0}, turn), light};
    root["scenes"] = {{{"nodes", {0}}}};
    root["scene"] = 0;
    const std::size_t times = document.Add<float>({0.0f, 0.1f, 0.7f}, "SCALAR");
    const std::size_t moves =
        document.Add<float>({0.0f, 1.0f / 3.0f, -2.0f, 0.1f, 0.2f, 0.3f, 5.0f, 6.0f, 7.0f}, "VEC3");
    const std::size_t turns =
        document.Add<float>({0.0f, 0.0f, 0.0f, 1.0f, -0.5f, 0.5f, -0.5f, -0.5f, r, 0.0f, 0.0f, r}, "VEC4");
    for (std::size_t node = 0; node < 5; ++node)
    {
        AddAnimation(document, node, "translation", times, moves, node == 1 ? "STEP" : "LINEAR");
        AddAnimation(document, node, "rotation", times, turns);
    }
    AddAnimation(document, 1, "scale", times, moves);
    const Trip trip = RoundTrip(document.Glb());
    EXPECT_EQ(trip.lost_coming, Codes{});
    EXPECT_EQ(trip.lost_going, Codes{});
    Comparison(trip).Expect();
    const Json& lens = trip.after.root["cameras"][0]["perspective"];
    EXPECT_NEAR(lens["yfov"].get<double>(), 0.75, 1e-6);
    EXPECT_NEAR(lens["aspectRatio"].get<double>(), 1.5, 1e-6);
    EXPECT_EQ(lens["znear"], 0.125);
    EXPECT_EQ(lens["zfar"], 64.0);
    EXPECT_EQ(trip.after.root["extensions"], root["extensions"]);
}

TEST(RoundTrip, MorphTargetsAndTheirWeights)
{
    RawGltf document;
    std::vector<float> offsets(21, 0.0f);
    offsets[4] = 0.1f;
    offsets[20] = -3.0f;
    const std::size_t some = document.Add(offsets, "VEC3");
    Json& root = document.root;
    root["accessors"].push_back(
        {{"componentType", 5126},
         {"type", "VEC3"},
         {"count", 7},
         {"sparse",
          {{"count", 1},
           {"indices", {{"bufferView", document.View<std::uint16_t>({5})}, {"componentType", 5123}}},
           {"values", {{"bufferView", document.View<float>({0.25f, 0.5f, 0.75f})}}}}}});
    const std::size_t sparse = root["accessors"].size() - 1;
    Json strip = {{"attributes", Attributes(document)}, {"mode", 5}};
    strip["targets"] = {{{"POSITION", some}, {"NORMAL", sparse}, {"TANGENT", sparse}},
                        {{"POSITION", sparse}}};
    Json fan = strip;
    fan["mode"] = 6;
    fan["indices"] = document.Add<std::uint16_t>({6, 5, 4, 3}, "SCALAR");
    root["meshes"] = {{{"name", "Face"}, {"primitives", {strip, fan}}, {"weights", {0.25, 0.0}}}};
    root["meshes"][0]["extras"]["targetNames"] = {"smile", "frown"};
    root["nodes"] = {{{"name", "Head"}, {"mesh", 0}}};
    root["scenes"] = {{{"nodes", {0}}}};
    AddAnimation(document, 0, "weights", document.Add<float>({0.0f, 0.5f, 1.0f}, "SCALAR"),
                 document.Add<float>({0.0f, 1.0f, 0.125f, 0.5f, 1.0f, 0.1f}, "SCALAR"));
    ExpectComesBack(document.Glb(), {}, {});
}

/// Two joints; `weights` are those of each vertex.
RawGltf Skinned(const std::vector<float>& weights)
{
    RawGltf document;
    Json attributes = Attributes(document);
    std::vector<std::uint8_t> joints;
    std::vector<float> all, matrices;
    for (int i = 0; i < 7; ++i)
    {
        joints.insert(joints.end(), {0, 1, 0, 0});
        all.insert(all.end(), weights.begin(), weights.end());
    }
    for (int i = 0; i < 32; ++i)
        matrices.push_back(i % 16 == 15 ? 1.0f : i % 4 == 3 ? 0.0f : static_cast<float>(i) / 7.0f);
    attributes["JOINTS_0"] = document.Add(joints, "VEC4");
    attributes["WEIGHTS_0"] = document.Add(all, "VEC4");
    Json& root = document.root;
    root["skins"] = {{{"joints", {0, 1}}, {"inverseBindMatrices", document.Add(matrices, "MAT4")}}};
    root["meshes"] = {{{"name", "Body"},
                       {"primitives",
                        {{{"attributes", attributes},
                          {"indices", document.Add<std::uint16_t>({0, 1, 2, 4, 6, 5}, "SCALAR")}}}}}};
    root["nodes"] = {{{"name", "Hips"}, {"children", {1}}},
                     {{"name", "Leg"}, {"translation", {0.0, 1.5, 0.0}}},
                     {{"name", "Skin"}, {"mesh", 0}, {"skin", 0}}};
    root["scenes"] = {{{"nodes", {0, 2}}}};
    return document;
}

TEST(RoundTrip, SkinsWeightsAndBindMatrices)
{
    ExpectComesBack(Skinned({0.3f, 0.7f, 0.0f, 0.0f}).Glb(), {}, {});
    ExpectComesBack(Skinned({0.5f, 0.25f, 0.0f, 0.0f}).Glb(), {"weights-normalised"}, {});
}

TEST(RoundTrip, MaterialsAsTheyAreStated)
{
    RawGltf document;
    Json& root = document.root;
    const Json transform = {
        {"KHR_texture_transform", {{"offset", {0.5, 0.25}}, {"scale", {2.0, 4.0}}, {"rotation", 0.5}}}};
    root["extensionsUsed"] = {"KHR_texture_transform", "KHR_materials_clearcoat", "KHR_materials_unlit"};
    root["images"] = {{{"uri", "skin.png"}}, {{"uri", "maps/bumps.jpg"}}};
    root["samplers"] = {{{"magFilter", 9728}, {"minFilter", 9986}, {"wrapS", 33648}, {"wrapT", 33071}}};
    root["textures"] = {{{"source", 0}, {"sampler", 0}}, {{"source", 1}}};
    root["materials"] = {
        {{"name", "All"},
         {"doubleSided", true},
         {"alphaMode", "MASK"},
         {"alphaCutoff", 0.25},
         {"emissiveFactor", {0.25, 0.5, 1.0}},
         {"pbrMetallicRoughness",
          {{"baseColorFactor", {0.25, 0.5, 0.75, 1.0}},
           {"metallicFactor", 0.5},
           {"roughnessFactor", 0.125},
           {"baseColorTexture", {{"index", 0}, {"texCoord", 1}, {"extensions", transform}}},
           {"metallicRoughnessTexture", {{"index", 1}}}}},
         {"normalTexture", {{"index", 1}, {"scale", 0.5}}},
         {"occlusionTexture", {{"index", 1}, {"strength", 0.75}}},
         {"emissiveTexture", {{"index", 0}}},
         {"extensions",
          {{"KHR_materials_clearcoat", {{"clearcoatFactor", 0.5}, {"clearcoatTexture", {{"index", 1}}}}}}},
         {"extras", {{"rule", {{"deep", {1, 2}}}}}}},
        {{"name", "Nothing"}},
        {{"name", "Flat"}, {"extensions", {{"KHR_materials_unlit", Json::object()}}}}};
    Json& primitives = root["meshes"][0]["primitives"];
    root["meshes"][0]["name"] = "Box";
    const Json attributes = Attributes(document);
    for (int material = 0; material < 3; ++material)
        primitives.push_back({{"attributes", attributes},
                              {"indices", document.Add<std::uint16_t>({0, 1, 2}, "SCALAR")},
                              {"material", material}});
    root["nodes"] = {{{"name", "Box"}, {"mesh", 0}}};
    root["scenes"] = {{{"nodes", {0}}}};
    const Trip trip = RoundTrip(document.Glb());
    EXPECT_EQ(trip.lost_coming, Codes{});
    EXPECT_EQ(trip.lost_going, Codes{});
    Comparison(trip).Expect();
    const RawGltf& after = trip.after;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const std::size_t found = after.root["meshes"][0]["primitives"][i]["material"];
        EXPECT_EQ(WithoutTextures(root["materials"][i]), WithoutTextures(after.root["materials"][found]));
    }
    const Json& use = after.root["materials"][0]["pbrMetallicRoughness"]["baseColorTexture"];
    EXPECT_EQ(use["extensions"], transform);
    const Json& texture = after.root["textures"][use["index"].get<std::size_t>()];
    EXPECT_EQ(after.root["images"][texture["source"].get<std::size_t>()]["uri"], "skin.png");
    EXPECT_EQ(after.root["samplers"][texture["sampler"].get<std::size_t>()], root["samplers"][0]);
}

TEST(RoundTrip, OneMeshOnSeveralNodes)
{
    RawGltf document;
    Json& root = document.root;
    const Json attributes = Attributes(document);
    const std::size_t indices = document.Add<std::uint16_t>({0, 1, 2}, "SCALAR");
    const std::size_t others = document.Add<std::uint16_t>({4, 3, 2, 1, 5, 6}, "SCALAR");
    const auto mesh = [&](const char* name, std::size_t accessor, int material)
    {
        return Json{
            {"name", name},
            {"primitives", {{{"attributes", attributes}, {"indices", accessor}, {"material", material}}}}};
    };
    root["materials"] = {{{"name", "Red"}}, {{"name", "Blue"}}};
    root["meshes"] = {mesh("Wall", indices, 0), mesh("BlueWall", indices, 1), mesh("Other", others, 0)};
    root["nodes"] = {{{"name", "A"}, {"mesh", 0}},
                     {{"name", "B"}, {"mesh", 0}},
                     {{"name", "C"}, {"mesh", 1}},
                     {{"name", "D"}, {"mesh", 2}}};
    root["scenes"] = {{{"nodes", {0, 1, 2, 3}}}};
    const std::string glb = document.Glb();
    const FromDocument from(glb);
    ASSERT_EQ(from.scenes[0]->rigids.size(), 1u);
    const auto& instances = from.scenes[0]->instanceLists[5];
    ASSERT_EQ(instances.size(), 3u);
    const std::uint32_t kinds[] = {16, 18, 19};
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(instances[i]->GetChunkId(), kinds[i]);
    ExpectComesBack(glb, {}, {});
}

} // namespace
