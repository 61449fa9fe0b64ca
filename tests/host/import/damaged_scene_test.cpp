#include "tests/host/import/builders/collada_text.h"
#include "tests/host/import/import_fixture.h"
#include "tests/support/scene_texts.h"

namespace
{

struct DamagedScene
{
    const char* file;
    std::string content;
    const char* cause; // part of the message
};

// What a failed import has to say, and that it leaves the scene alone.
class DamagedSceneTest : public SceneImportTest
{
protected:
    static void ExpectRefusal(const std::string& path, const std::string& cause)
    {
        mobu_host::NewScene();
        mobu_host::AddModel("Here before");
        const mobu_host::SceneImportResult result = mobu_host::ImportScene(path);
        EXPECT_FALSE(result.ok) << path;
        EXPECT_NE(result.error.find(path), std::string::npos) << result.error;
        EXPECT_NE(result.error.find(cause), std::string::npos) << result.error;
        EXPECT_EQ(result.error.find('\n'), std::string::npos) << result.error;
        EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene", "Here before"}));
    }
};

std::string Bvh(const std::string& offset, const std::string& motion)
{
    return tv2_tests::OneJointBvh(offset, "1 Xrotation", motion);
}

std::string Gltf(const std::string& rest)
{
    return R"({"asset":{"version":"2.0"})" + rest + "}";
}

TEST_F(DamagedSceneTest, EachNamesFileAndCause)
{
    const DamagedScene scenes[] = {
        {"empty.bvh", "", "is empty"},
        {"text.txt", "hello", "is not a scene that can be read"},
        {"header.fbx", "Kaydara FBX Binary  ", "ends inside its header (byte 20)"},
        {"renamed.bvh", "Kaydara FBX Binary  ", "ends inside its header"},
        {"ascii.dat", "; FBX 7.3.0 project file\nFBXHeaderExtension: {", "ends inside a record (byte 45)"},
        {"junk.FBX", "junk", "is not a scene that can be read"},

        {"cut.bvh", Bvh("0 0 0", "Frames: 3\nFrame Time: 0.04\n1\n2\n"), "cut.bvh"},
        {"cut_early.bvh", "HIERARCHY\nROOT a\n{\nOFF", "cut_early.bvh"},
        {"no_time.bvh", Bvh("0 0 0", "Frames: 1\n1\n"), "no_time.bvh"},
        {"zero_time.bvh", Bvh("0 0 0", "Frames: 1\nFrame Time: 0\n1\n"), "frame time"},
        {"nan.bvh", Bvh("nan 0 0", "Frames: 1\nFrame Time: 0.04\n1\n"), "not a finite number"},
        {"nan_key.bvh", Bvh("0 0 0", "Frames: 1\nFrame Time: 0.04\ninf\n"), "not a finite number"},
        {"far.bvh", Bvh("1e39 0 0", "Frames: 1\nFrame Time: 0.04\n1\n"), "\"1e39\" is out of range"},
        {"far_key.bvh", Bvh("0 0 0", "Frames: 1\nFrame Time: 0.04\n-4e38\n"), "\"-4e38\" is out of range"},
        {"eternity.bvh", Bvh("0 0 0", "Frames: 2\nFrame Time: 1e30\n1\n2\n"),
         "longer than a million seconds"},

        {"cut.gltf", R"({"asset":{"version":"2.)", "damaged JSON (byte 24)"},
        {"other.gltf", R"({"a":1})", "not a glTF scene"},
        {"old.gltf", R"({"asset":{"version":"1.0"}})", "glTF version \"1.0\" is not read"},
        {"child.gltf", Gltf(R"(,"nodes":[{"children":[5]}],"scenes":[{"nodes":[0]}])"),
         "nodes[0].children are not all nodes of the file"},
        {"circle.gltf", Gltf(R"(,"nodes":[{"children":[1]},{"children":[0]}],"scenes":[{"nodes":[0]}])"),
         "its own ancestor"},
        {"shared.gltf", Gltf(R"(,"nodes":[{"children":[2]},{"children":[2]},{}],"scenes":[{"nodes":[0,1]}])"),
         "nodes[2]: is in the scene twice"},
        {"twice.gltf", Gltf(R"(,"nodes":[{}],"scenes":[{"nodes":[0,0]}])"),
         "nodes[0]: is in the scene twice"},
        {"no_top.gltf", Gltf(R"(,"nodes":[{},{"children":[1]}])"), "nodes[1]: is its own ancestor"},
        {"camera.gltf", Gltf(R"(,"nodes":[{"camera":0}],"scenes":[{"nodes":[0]}])"),
         "nodes[0].camera is 0, where there are none"},
        {"sampler.gltf",
         Gltf(R"(,"nodes":[{}],"scenes":[{"nodes":[0]}],"animations":[{"samplers":[],)"
              R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}]}])"),
         "animations[0].channels[0].sampler is 0, where there are none"},
        {"buffer.gltf",
         Gltf(R"(,"nodes":[{}],"scenes":[{"nodes":[0]}],"buffers":[{"byteLength":24,"uri":"gone.bin"}],)"
              R"("bufferViews":[{"buffer":0,"byteLength":24}],)"
              R"("accessors":[{"bufferView":0,"componentType":5126,"count":2,"type":"VEC3"},)"
              R"({"componentType":5126,"count":2,"type":"SCALAR"}],)"
              R"("animations":[{"samplers":[{"input":1,"output":0}],)"
              R"("channels":[{"sampler":0,"target":{"node":0,"path":"scale"}}]}])"),
         "gone.bin"},
        {"cut.glb", "glTF\x02", "ends inside its header"},
        {"short.glb", std::string("glTF\x02\0\0\0\x40\0\0\0\x40\0\0\0JSON{}", 22),
         "ends inside its JSON chunk"},
        {"old.glb", std::string("glTF\x01\0\0\0\x18\0\0\0\x04\0\0\0JSON{  }", 24), "glTF version 1"},

        {"cut.dae", R"(<?xml version="1.0"?><COLLADA version="1.4.1"><library_visual)", "cut.dae"},
        {"extra.dae",
         collada_text::Document(
             "", R"(<node name="A"><extra><technique><user_properties>p = 1e39</user_properties>)"
                 R"(</technique></extra></node>)"),
         "the property \"p\" of \"A\" is not finite in single precision"},
        {"no_scene.dae", R"(<?xml version="1.0"?><COLLADA version="1.4.1"></COLLADA>)", "no_scene.dae"},
    };
    for (const DamagedScene& scene : scenes)
        ExpectRefusal(Write(scene.file, scene.content), scene.cause);
}

TEST_F(DamagedSceneTest, NestingHasAnEnd)
{
    std::string nodes;
    constexpr int kDeep = 100000;
    for (int i = 0; i < kDeep; ++i)
        nodes += "{\"children\":[" + std::to_string(i + 1) + "]},";
    ExpectRefusal(Write("deep.gltf", Gltf(",\"nodes\":[" + nodes + "{}],\"scenes\":[{\"nodes\":[0]}]")),
                  "nested more than");
    ExpectRefusal(Write("deep_json.gltf", Gltf(",\"x\":" + std::string(kDeep, '['))),
                  "its JSON is nested more than 100 deep");
}

TEST_F(DamagedSceneTest, OnlyFilesAreRead)
{
    ExpectRefusal((folder_ / "missing.bvh").string(), "there is no such file");
    ExpectRefusal((folder_ / "missing" / "a.bvh").string(), "there is no such file");
    ExpectRefusal(folder_.string(), "it is a folder");
    ExpectRefusal("/dev/zero", "it is not a file");
    ExpectRefusal(Write("plain", "x") + "/below.bvh", "below.bvh");
}

// Every way to cut a sound file off gives a scene or a reason, never both or neither.
TEST_F(DamagedSceneTest, EveryTruncationEndsWell)
{
    const std::string bvh = Bvh("0 0 0", "Frames: 2\nFrame Time: 0.04\n1\n2\n");
    const std::string dae =
        R"(<?xml version="1.0"?><COLLADA version="1.4.1"><asset><up_axis>Z_UP</up_axis></asset>
<library_visual_scenes><visual_scene id="v"><node id="n"><translate>1 2 3</translate></node></visual_scene>
</library_visual_scenes><scene><instance_visual_scene url="#v"/></scene></COLLADA>)";
    const std::string gltf = Gltf(R"(,"nodes":[{"name":"a","children":[1]},{}],"scenes":[{"nodes":[0]}])");
    for (const std::string& whole : {bvh, dae, gltf})
    {
        for (std::size_t size = 0; size < whole.size(); ++size)
        {
            const auto result = mobu_host::ImportScene(Write("cut", whole.substr(0, size)));
            EXPECT_EQ(result.ok, result.error.empty()) << size;
        }
        EXPECT_TRUE(mobu_host::ImportScene(Write("whole", whole)).ok);
    }
}

} // namespace
