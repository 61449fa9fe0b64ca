#include "host/scene_import/fbx/fbx_import.h"
#include "tests/host/scene_import/fbx/fbx_writer.h"
#include "tests/host/scene_import/import_fixture.h"
#include "tests/support/allocation_watch.h"

// How much memory an FBX file can ask for, and what happens when there is none.

namespace
{

using namespace fbx_writer;

/// What reading and building a scene takes at most for each byte of a file, and besides.
constexpr std::size_t kMostPerByte = 2048;
constexpr std::size_t kMostBesides = std::size_t{1} << 20;

class FbxMemoryTest : public SceneImportTest
{
protected:
    struct Arrays
    {
        std::vector<std::int64_t> times;
        std::vector<float> values;
        std::vector<std::int32_t> flags;
        std::vector<float> data;
        std::vector<std::int32_t> counts;
    };

    /// The file of one take with one curve that moves a model.
    static std::string FileWithCurve(const Arrays& arrays)
    {
        Node curve = CurveObject(50, {});
        curve.children = {{"KeyTime", {arrays.times}, {}},
                          {"KeyValueFloat", {arrays.values}, {}},
                          {"KeyAttrFlags", {arrays.flags}, {}},
                          {"KeyAttrDataFloat", {arrays.data}, {}},
                          {"KeyAttrRefCount", {arrays.counts}, {}}};
        return Binary(
            7400,
            fbx_writer::Scene({},
                              {Object("Model", 1, "m", "Null", {}), Object("AnimationStack", 20, "t", "", {}),
                               Object("AnimationLayer", 30, "l", "", {}),
                               Object("AnimationCurveNode", 40, "T", "", {}), curve},
                              {Child(1, 0), Child(30, 20), Child(40, 30),
                               ToProperty(40, 1, "Lcl Translation"), ToProperty(50, 40, "d|X")}),
            true);
    }

    /// The shortest text with a line many times among its objects, or between others there.
    static std::string FileWithMany(const std::string& line, const std::string& before = "",
                                    const std::string& behind = "")
    {
        std::string file = "; FBX 7.4.0\nObjects:{\n" + before;
        for (int i = 0; i < 2000; ++i)
            file += line + "\n";
        return file + behind + "}\n";
    }

    /// A scaled model with so many below it, and so many takes that move it.
    static std::string FileWithMovingModels(int models, int takes)
    {
        std::string objects =
            "Objects:{\nAnimationCurve:9,\"\",\"\"{\nKeyTime:0,1000000000\nKeyValueFloat:1,2\n"
            "KeyAttrFlags:8\nKeyAttrDataFloat:0,0,0,0\nKeyAttrRefCount:2\n}\n";
        std::string connections = "}\nConnections:{\n";
        for (int i = 0; i < models; ++i)
        {
            const std::string id = std::to_string(1000 + i);
            objects += "Model:" + id + ",\"\",\"\"\n";
            if (i > 0)
                connections += "C:\"OO\"," + id + ",1000\n";
        }
        for (int i = 0; i < takes; ++i)
        {
            const std::string stack = std::to_string(100000 + 3 * i), layer = std::to_string(100001 + 3 * i),
                              node = std::to_string(100002 + 3 * i);
            objects += "AnimationStack:" + stack + ",\"\",\"\"\nAnimationLayer:" + layer +
                       ",\"\",\"\"\nAnimationCurveNode:" + node + ",\"\",\"\"\n";
            connections += "C:\"OO\"," + layer + "," + stack + "\nC:\"OO\"," + node + "," + layer +
                           "\nC:\"OP\"," + node + ",1000,\"Lcl Scaling\"\nC:\"OP\",9," + node + ",\"d|X\"\n";
        }
        return "; FBX 7.4.0\n" + objects + connections + "}\n";
    }
};

TEST_F(FbxMemoryTest, StaysInProportionToTheFile)
{
    constexpr std::size_t kMany = 3'000'000; // 24 MB of times, which take 24 kB of a file
    constexpr std::size_t kKeys = 30'000;
    constexpr std::int32_t kCubicAuto = 0x108;
    Arrays rising{{}, std::vector<float>(kKeys), {kCubicAuto}, std::vector<float>(4), {kKeys}};
    for (std::size_t key = 0; key < kKeys; ++key)
        rising.times.push_back(static_cast<std::int64_t>(key) << 20); // as small as times become
    Arrays blocks = rising;
    blocks.flags.assign(kKeys, kCubicAuto);
    blocks.counts.assign(kKeys, 1);
    blocks.data.assign(4 * kKeys, 0.0F);
    const std::vector<std::int64_t> still(kMany);
    const std::vector<std::int64_t> two{0, 1 << 20};
    const std::vector<float> zeros(kMany), values(2), data(4);
    const std::vector<std::int32_t> whole(kMany), flags{kCubicAuto}, counts{2};
    struct Case
    {
        const char* what;
        std::string file;
        const char* cause; ///< empty: it opens
    };
    const Case cases[] = {
        {"many keys", FileWithCurve(rising), ""},
        {"many keys, each with its attributes", FileWithCurve(blocks), ""},
        {"times that stand still", FileWithCurve({still, zeros, flags, data, counts}), "no more than"},
        {"more values than times", FileWithCurve({two, zeros, flags, data, counts}), "no more than 2"},
        {"more flags than keys", FileWithCurve({two, values, whole, data, counts}), "no more than 2"},
        {"more data than keys", FileWithCurve({two, values, flags, zeros, counts}), "no more than 8"},
        {"more counts than keys", FileWithCurve({two, values, flags, data, whole}), "no more than 2"},
        {"models", FileWithMany("Model:"), ""},
        {"cameras", FileWithMany("Model:1,\"\",\"Camera\""), ""},
        {"user properties",
         FileWithMany("P:\"\",\"Number\",\"\",\"U\"", "Model:{\nProperties70:{\n", "}\n}\n"), ""},
        {"constraints", FileWithMany("Constraint:"), ""},
        {"takes", FileWithMany("AnimationStack:"), ""},
        {"models that each take moves", FileWithMovingModels(400, 250), ""},
    };
    for (const Case& item : cases)
    {
        mobu_host::NewScene();
        mobu_host::ImportNotes notes;
        std::string cause;
        const tv2_tests::AllocationPeak peak;
        const bool opened = mobu_host::fbx::ImportFbx(item.file, notes, cause);
        const std::size_t bytes = peak.Bytes();
        EXPECT_EQ(opened, *item.cause == '\0') << item.what << ": " << cause;
        EXPECT_NE(cause.find(item.cause), std::string::npos) << item.what << ": " << cause;
        EXPECT_LE(bytes, kMostPerByte * item.file.size() + kMostBesides) << item.what;
        std::printf("%-36s %6zu bytes, %5.1f bytes a byte\n", item.what, item.file.size(),
                    static_cast<double>(bytes) / static_cast<double>(item.file.size()));
    }
}

/// Wherever memory runs out, what is left is an empty scene that the next file opens into.
TEST_F(FbxMemoryTest, ThatRunsOutLeavesAnEmptyScene)
{
    const std::string path = Write("rich.fbx", Binary(7700, RichScene(), true));
    long before = 0;
    for (bool struck = true; struck && !HasFailure(); before += before < 300 ? 1 : 7)
    {
        mobu_host::AddModel("Here before");
        mobu_host::SceneImportResult result;
        {
            const tv2_tests::AllocationFailure failure(before);
            result = mobu_host::ImportScene(path);
            struck = failure.Struck();
        }
        EXPECT_EQ(result.ok, !struck) << "allocation " << before;
        EXPECT_EQ(result.error.empty(), result.ok);
        if (!struck)
            break;
        EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene"}));
        EXPECT_EQ(TakeNames(), (std::vector<std::string>{"Take 001"}));
        EXPECT_EQ(mobu_host::Scene().Constraints.GetCount(), 0);
        EXPECT_TRUE(mobu_host::ImportScene(path).ok);
        EXPECT_EQ(ModelNames().size(), 4u);
    }
    EXPECT_GT(before, 500);
}

} // namespace
