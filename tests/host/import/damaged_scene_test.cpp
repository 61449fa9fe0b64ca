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
        {"camera.gltf", Gltf(R"(,"nodes":[{"camera":0}],"scenes":[{"nodes":[0]}])"),
         "nodes[0].camera is 0, where there are none"},
        {"cut.glb", "glTF\x02", "ends inside its header"},
        {"short.glb", std::string("glTF\x02\0\0\0\x40\0\0\0\x40\0\0\0JSON{}", 22),
         "ends inside its JSON chunk"},
        {"old.glb", std::string("glTF\x01\0\0\0\x18\0\0\0\x04\0\0\0JSON{  }", 24), "glTF version 1"},

        {"cut.dae", "<COLLADA", "well-formed XML"},
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

} // namespace
