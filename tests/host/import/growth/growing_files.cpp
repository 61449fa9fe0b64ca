// Reads one growing scene at four sizes, each double the one before, through MeasuredRead. growth.py counts the
// instructions.
//
// usage: growing_files             prints the names of the cases
//        growing_files NAME...     plays these

#include "host/import/formats.h"
#include "host/import/host_scene.h"
#include "tests/host/import/builders/collada_text.h"
#include "tests/support/scene_texts.h"

#include <mobu_host/scene.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

extern "C" void MeasuredRead(const std::function<void()>& read);

extern "C" __attribute__((noinline)) void MeasuredRead(const std::function<void()>& read)
{
    read();
    asm volatile(""); // not the last call: as a jump it would not count as one of this function
}

namespace
{

using namespace mobu_host;
using tv2_tests::Numbered;

constexpr int kDoublings = 3;

std::string Gltf(std::size_t nodes, const std::string& rest)
{
    return R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[)" + Numbered(nodes) + R"(]}],"nodes":[)" +
           Numbered(nodes, R"({"name":"n)", "\"}") + "]" + rest + "}";
}

// A channel for each node, all of one accessor of eight keys.
std::string SharedAccessorGltf(std::size_t nodes)
{
    const std::string view = R"(,"bufferView":0,"componentType":5126,"count":8)";
    return Gltf(
        nodes,
        R"(,"buffers":[{"byteLength":128,"uri":"data:;base64,)"
        "AAAAAAAAgD8AAABAAABAQAAAgEAAAKBAAADAQAAA4EAAAABBAAAQQQAAIEEAADBBAABAQQAAUEEAAGBBAABwQQAAgEEAAIhBAACQ"
        "QQAAmEEAAKBBAACoQQAAsEEAALhBAADAQQAAyEEAANBBAADYQQAA4EEAAOhBAADwQQAA+EE="
        R"("}],"bufferViews":[{"buffer":0,"byteLength":128}],"accessors":[{"type":"SCALAR")" +
            view + R"(},{"type":"VEC3")" + view +
            R"(}],"animations":[{"samplers":[{"input":0,"output":1}],"channels":[)" +
            Numbered(nodes, R"({"sampler":0,"target":{"path":"translation","node":)", "}}") + "]}]");
}

const std::string kStill = "Frames:0\nFrame Time:1";

// An FBX file of n takes, each with a record below Takes, on one layer.
class FbxTakes
{
public:
    explicit FbxTakes(std::size_t takes)
    {
        for (std::size_t i = 0; i < takes; ++i)
        {
            const std::string stack = Stack(i), layer = Layer(i);
            objects_ += "AnimationStack:" + stack + ",\"s" + stack + "\",\"\"\nAnimationLayer:" + layer +
                        ",\"\",\"\"\n";
            connections_ += "C:\"OO\"," + layer + "," + stack + "\n";
            records_ += "Take:\"s" + stack + "\"{\nLocalTime:0,1000\n}\n";
        }
    }

    void AddModel(std::size_t model, const std::string& rows = "")
    {
        objects_ += "Model:" + Model(model) + ",\"\",\"\"{\nProperties70:{\n" + rows + "}\n}\n";
    }
    void Move(std::size_t take, std::size_t model, const std::string& property)
    {
        const std::string node = std::to_string(2'000'000 + nodes_++);
        objects_ += "AnimationCurveNode:" + node + ",\"\",\"\"\n";
        connections_ += "C:\"OO\"," + node + "," + Layer(take) + "\nC:\"OP\"," + node + "," + Model(model) +
                        ",\"" + property + "\"\nC:\"OP\",9," + node + ",\"d|X\"\n";
    }

    std::string File() const
    {
        return "; FBX 7.4.0\nTakes:{\n" + records_ +
               "}\nObjects:{\nAnimationCurve:9,\"\",\"\"{\nKeyTime:0,1000000000\nKeyValueFloat:1,2\n"
               "KeyAttrFlags:8\nKeyAttrDataFloat:0,0,0,0\nKeyAttrRefCount:2\n}\n" +
               objects_ + "}\nConnections:{\n" + connections_ + "}\n";
    }

private:
    static std::string Stack(std::size_t take) { return std::to_string(10 + 2 * take); }
    static std::string Layer(std::size_t take) { return std::to_string(11 + 2 * take); }
    static std::string Model(std::size_t model) { return std::to_string(1'000'000 + model); }

    std::string objects_, connections_, records_;
    std::size_t nodes_ = 0;
};

std::string FbxTakesThatMoveOneModelEach(std::size_t n)
{
    FbxTakes takes(n);
    for (std::size_t i = 0; i < n; ++i)
    {
        takes.AddModel(i);
        takes.Move(i, i, "Lcl Scaling");
    }
    return takes.File();
}

std::string FbxPropertiesThatMove(std::size_t n)
{
    FbxTakes take(1);
    std::string rows;
    for (std::size_t i = 0; i < n; ++i)
        rows += "P:\"p" + std::to_string(i) + "\",\"Number\",\"\",\"AU\",0\n";
    take.AddModel(0, rows);
    for (std::size_t i = 0; i < n; ++i)
        take.Move(0, 0, "p" + std::to_string(i));
    return take.File();
}

struct GrowingFile
{
    const char* name;
    const char* format;
    std::size_t smallest; // of what is repeated
    std::string (*bytes)(std::size_t size);
};

const GrowingFile kFiles[] = {
    {"fbx_take_records", "FBX", 200, [](std::size_t n) { return FbxTakes(n).File(); }},
    {"fbx_takes_and_models", "FBX", 200, FbxTakesThatMoveOneModelEach},
    {"fbx_properties", "FBX", 200, FbxPropertiesThatMove},
    {"bvh_joints", "BVH", 100,
     [](std::size_t n) { return tv2_tests::BvhText(tv2_tests::Repeated("JOINT a\n{}", n), kStill); }},
    {"bvh_nesting", "BVH", 200,
     [](std::size_t n) {
         return tv2_tests::BvhText(tv2_tests::Repeated("JOINT a\n{", n) + tv2_tests::Repeated("}", n),
                                   kStill);
     }},
    {"bvh_channels", "BVH", 50,
     [](std::size_t n)
     {
         return tv2_tests::BvhText(tv2_tests::Repeated("JOINT\n{CHANNELS 1 Xposition}", n),
                                   "Frames:2\nFrame Time:1\n" + tv2_tests::Repeated("0.5 ", 2 * n));
     }},
    {"bvh_frames", "BVH", 1000,
     [](std::size_t n)
     {
         return tv2_tests::BvhText("CHANNELS 1 Xposition", "Frames:" + std::to_string(n) +
                                                               "\nFrame Time:.01\n" +
                                                               tv2_tests::Repeated("1.5\n", n));
     }},
    {"bvh_name", "BVH", 50'000,
     [](std::size_t n) { return "HIERARCHY\nROOT " + std::string(n, 'x') + "\n{}"; }},
    {"gltf_nodes", "glTF", 100, [](std::size_t n) { return Gltf(n, ""); }},
    {"gltf_names_of_extras", "glTF", 200,
     [](std::size_t n) { return Gltf(1, R"(,"extras":{)" + Numbered(n, "\"x", "\":1") + "}"); }},
    {"gltf_names_of_an_object", "glTF", 200,
     [](std::size_t n) { return Gltf(1, R"(,"x":{)" + Numbered(n, "\"x", "\":1") + "}"); }},
    {"gltf_takes", "glTF", 50,
     [](std::size_t n)
     {
         return Gltf(1, R"(,"animations":[)" +
                            Numbered(n, R"({"name":"t)", R"(","samplers":[],"channels":[]})") + "]");
     }},
    {"gltf_shared_accessor", "glTF", 50, SharedAccessorGltf},
    {"collada_nodes", "Collada", 200,
     [](std::size_t n)
     { return collada_text::Document("", tv2_tests::Repeated("<node id=\"a\" sid=\"b\"/>", n)); }},
    {"collada_unclosed_nodes", "Collada", 5000,
     [](std::size_t n) { return "<COLLADA>" + tv2_tests::Repeated("<node ", n); }},
    {"collada_nesting", "Collada", 200,
     [](std::size_t n) {
         return collada_text::Document("",
                                       tv2_tests::Repeated("<node>", n) + tv2_tests::Repeated("</node>", n));
     }},
    {"collada_channels", "Collada", 100,
     [](std::size_t n)
     {
         std::string transforms, animations;
         for (std::size_t i = 0; i < n; ++i)
         {
             const std::string id = "a" + std::to_string(i);
             transforms += "<translate sid=\"" + id + "\">0 0 0</translate>";
             animations += collada_text::Animation(id, {"n/" + id + ".X", "0 1", "0 1"});
         }
         return collada_text::Document(collada_text::Animations(animations),
                                       "<node id=\"n\">" + transforms + "</node>");
     }},
    {"collada_keys", "Collada", 1000,
     [](std::size_t n)
     {
         const std::string numbers = tv2_tests::Repeated("1 ", n);
         return collada_text::Document(
             collada_text::Animations(collada_text::Animation("a", {"n/t.X", numbers, numbers})),
             R"(<node id="n"><translate sid="t">0 0 0</translate></node>)");
     }},
};

void Import(const Format& format, const SceneFile& file)
{
    try
    {
        ImportNotes notes;
        mobu_host::BuildHostScene(format.read(file, {}, notes), {}, notes);
    }
    catch (const std::exception&) // refused: that has to be in proportion as well
    {
    }
}

TakeDescription TakeOfAll(std::size_t models, std::size_t keys)
{
    TakeDescription take;
    take.name = "Take";
    std::vector<double> times;
    for (std::size_t i = 0; i < keys; ++i)
        times.push_back(static_cast<double>(i) / 50.0);
    take.keys.push_back(std::make_shared<const std::vector<double>>(std::move(times)));
    for (std::size_t i = 0; i < models; ++i)
        take.models.push_back({static_cast<std::uint32_t>(i), [](double) { return Affine(); }});
    return take;
}

SceneDescription SceneOf(std::size_t models, std::size_t takes, std::size_t keys, std::size_t properties)
{
    SceneDescription scene;
    scene.models.resize(models);
    for (ModelDescription& model : scene.models)
        model.name = "Hips";
    for (std::size_t i = 0; i < properties; ++i)
        scene.properties.push_back({"p" + std::to_string(i), 0.5});
    for (std::size_t i = 0; i < takes; ++i)
        scene.takes.push_back(TakeOfAll(models, keys));
    return scene;
}

SceneDescription TakesOfSharedKeys(std::size_t takes, std::size_t keys)
{
    SceneDescription scene = SceneOf(1, takes, 0, 0);
    const TakeDescription keyed = TakeOfAll(0, keys);
    for (TakeDescription& take : scene.takes)
        take.keys = keyed.keys;
    return scene;
}

struct GrowingScene
{
    const char* name;
    SceneDescription (*scene)(std::size_t size);
};

const GrowingScene kScenes[] = {
    {"host_models", [](std::size_t n) { return SceneOf(10 * n, 1, 0, 0); }},
    {"host_takes", [](std::size_t n) { return SceneOf(1, 10 * n, 1, 0); }},
    {"host_takes_of_models", [](std::size_t n) { return SceneOf(20, 2 * n, 10, 0); }},
    {"host_keys", [](std::size_t n) { return SceneOf(1, 1, 500 * n, 0); }},
    {"host_takes_of_shared_keys", [](std::size_t n) { return TakesOfSharedKeys(n, 500 * n); }},
    {"host_properties", [](std::size_t n) { return SceneOf(1, 1, 1, 20 * n); }},
};

constexpr std::size_t kSmallestScene = 20;

void Play(std::string_view name)
{
    NewScene();
    for (int doubling = 0; doubling <= kDoublings; ++doubling)
    {
        for (const GrowingFile& growing : kFiles)
        {
            if (name != growing.name)
                continue;
            const SceneFile file{"growing", growing.bytes(growing.smallest << doubling)};
            MeasuredRead([&] { Import(*FormatNamed(growing.format), file); });
        }
        for (const GrowingScene& growing : kScenes)
        {
            if (name != growing.name)
                continue;
            SceneDescription scene = growing.scene(kSmallestScene << doubling);
            ImportNotes notes;
            MeasuredRead([&] { BuildHostScene(std::move(scene), {}, notes); });
        }
        NewScene();
    }
}

} // namespace

int main(int count, char** arguments)
{
    for (int name = 1; name < count; ++name)
        Play(arguments[name]);
    if (count > 1)
        return 0;
    for (const GrowingFile& growing : kFiles)
        std::puts(growing.name);
    for (const GrowingScene& growing : kScenes)
        std::puts(growing.name);
    return 0;
}
