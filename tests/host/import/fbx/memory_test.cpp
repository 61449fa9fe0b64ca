#include "host/import/base/parse_error.h"
#include "host/import/fbx/fbx_reader.h"
#include "host/import/host_scene.h"
#include "tests/host/import/builders/fbx_writer.h"
#include "tests/host/import/import_fixture.h"
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
    static constexpr std::int32_t kCubicAuto = 0x108;

    struct Arrays
    {
        std::vector<std::int64_t> times;
        std::vector<float> values;
        std::vector<std::int32_t> flags;
        std::vector<float> data;
        std::vector<std::int32_t> counts;
    };

    /// Keys of value 0 at such times, all of one block of attributes.
    static Arrays KeysAt(std::vector<std::int64_t> times)
    {
        const std::size_t keys = times.size();
        return {std::move(times),
                std::vector<float>(keys),
                {kCubicAuto},
                std::vector<float>(4),
                {static_cast<std::int32_t>(keys)}};
    }

    static Arrays KeysAtRate(std::size_t keys, double per_second)
    {
        std::vector<std::int64_t> times;
        for (std::size_t key = 0; key < keys; ++key)
            times.push_back(Ticks(static_cast<double>(key) / per_second));
        return KeysAt(std::move(times));
    }

    /// The arrays with `blocks` blocks of attributes, each for one key.
    static Arrays WithBlocks(Arrays arrays, std::size_t blocks)
    {
        arrays.flags.assign(blocks, kCubicAuto);
        arrays.data.assign(4 * blocks, 0.0F);
        arrays.counts.assign(blocks, 1);
        return arrays;
    }

    /// The file of one take with `curves` curves, each of which moves a model.
    static std::string FileWithCurves(const Arrays& arrays, int curves = 1, bool deflate = true)
    {
        std::vector<Node> objects{Object("AnimationStack", 1, "t", "", {}),
                                  Object("AnimationLayer", 2, "l", "", {})};
        std::vector<Node> connections{Child(2, 1)};
        for (int i = 0; i < curves; ++i)
        {
            const std::int64_t model = 10 + 3 * i, node = model + 1, curve = model + 2;
            objects.push_back(Object("Model", model, "m", "Null", {}));
            objects.push_back(Object("AnimationCurveNode", node, "T", "", {}));
            objects.push_back(CurveObject(curve, {}));
            objects.back().children = {{"KeyTime", {arrays.times}, {}},
                                       {"KeyValueFloat", {arrays.values}, {}},
                                       {"KeyAttrFlags", {arrays.flags}, {}},
                                       {"KeyAttrDataFloat", {arrays.data}, {}},
                                       {"KeyAttrRefCount", {arrays.counts}, {}}};
            connections.push_back(Child(model, 0));
            connections.push_back(Child(node, 2));
            connections.push_back(ToProperty(node, model, "Lcl Translation"));
            connections.push_back(ToProperty(curve, node, "d|X"));
        }
        return Binary(7400, fbx_writer::Scene({}, objects, connections), deflate);
    }

    /// The shortest text with a line many times among its objects, or between others there. '#' is a number of its own.
    static std::string FileWithMany(const std::string& line, const std::string& before = "",
                                    const std::string& behind = "", int times = 2000,
                                    const std::string& version = "7.4.0")
    {
        std::string file = "; FBX " + version + "\nObjects:{\n" + before;
        for (int i = 0; i < times; ++i)
            for (const char c : line + "\n")
                file += c == '#' ? std::to_string(i + 100000) : std::string(1, c);
        return file + behind + "}\n";
    }

    /// A scaled model with `models` below it, and `takes` takes that move it.
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

    struct Case
    {
        const char* what;
        std::string file;
        const char* cause; ///< empty: it opens
    };

    static std::vector<Case> Cases()
    {
        constexpr std::size_t kMany = 3'000'000; // 24 MB of times, which take 24 kB of a file
        constexpr std::size_t kKeys = 30'000;
        std::vector<std::int64_t> times;
        for (std::size_t key = 0; key < kKeys; ++key)
            times.push_back(static_cast<std::int64_t>(key)
                            << 5); // few steps deflate as well: to 1.07 bytes each
        const Arrays rising = KeysAt(times);
        const Arrays still = KeysAt(std::vector<std::int64_t>(25)); // in 12 bytes
        const Arrays few = KeysAt(std::vector<std::int64_t>(256));
        const Arrays two = KeysAt({0, 1 << 20});
        Arrays values = two, flags = two, data = two, counts = two;
        values.values.resize(kMany);
        flags.flags.resize(kMany);
        data.data.resize(kMany);
        counts.counts.resize(kMany);
        return {
            {"many keys", FileWithCurves(rising), ""},
            {"many keys, each with its attributes", FileWithCurves(WithBlocks(rising, kKeys)), ""},
            {"24 keys a second", FileWithCurves(KeysAtRate(5000, 24.0)), ""},
            {"29.97 keys a second", FileWithCurves(KeysAtRate(5000, 30.0 / 1.001)), ""},
            {"120 keys a second", FileWithCurves(KeysAtRate(5000, 120.0)), ""},
            {"a few times that stand still", FileWithCurves(still), ""},
            {"more attributes than keys", FileWithCurves(WithBlocks(two, 25)), ""},
            {"small curves that stand still", FileWithCurves(few, 2000), ""},
            {"times that stand still", FileWithCurves(KeysAt(std::vector<std::int64_t>(kMany))),
             "no more than"},
            {"far more values than times", FileWithCurves(values), "no more than 256"},
            {"far more flags than keys", FileWithCurves(flags), "no more than 256"},
            {"far more data than keys", FileWithCurves(data), "no more than 1024"},
            {"far more counts than keys", FileWithCurves(counts), "no more than 256"},
            {"models", FileWithMany("Model:#"), ""},
            {"cameras", FileWithMany("Model:#,\"\",\"Camera\""), ""},
            {"user properties",
             FileWithMany("P:\"\",\"Number\",\"\",\"U\"", "Model:1{\nProperties70:{\n", "}\n}\n"), ""},
            {"constraints", FileWithMany("Constraint:#"), ""},
            {"takes", FileWithMany("AnimationStack:#"), ""},
            {"models that each take moves", FileWithMovingModels(400, 250), ""},
            {"too many of them", FileWithMovingModels(700, 300), "more models than"},
        };
    }
};

TEST_F(FbxMemoryTest, StaysInProportionToTheFile)
{
    for (const Case& item : Cases())
    {
        mobu_host::NewScene();
        mobu_host::ImportNotes notes;
        std::string cause;
        const tv2_tests::AllocationPeak peak;
        try
        {
            mobu_host::BuildHostScene(mobu_host::fbx::ReadFbx(item.file, {}, notes), {}, notes);
        }
        catch (const mobu_host::ParseError& error)
        {
            cause = error.what();
        }
        const std::size_t bytes = peak.Bytes();
        EXPECT_EQ(cause.empty(), *item.cause == '\0') << item.what << ": " << cause;
        EXPECT_NE(cause.find(item.cause), std::string::npos) << item.what << ": " << cause;
        EXPECT_LE(bytes, kMostPerByte * item.file.size() + kMostBesides) << item.what;
    }
}

/// What the reader takes before the host has anything of it.
TEST_F(FbxMemoryTest, TheReaderTakesInProportionToWhatIsUnpacked)
{
    constexpr std::size_t kPerByte = 64, kBesides = 16 << 20;
    constexpr int kMany = 100'000;
    const Arrays keys = KeysAtRate(200'000, 30.0);
    const Arrays few = KeysAtRate(20, 30.0);
    struct Unpacked
    {
        const char* what;
        std::string file;
        std::size_t unpacked;
    };
    const std::string rows = "Properties70:{\n", end = "}\n}\n";
    const Unpacked cases[] = {
        {"models", FileWithMany("Model:#", "", "", kMany), 0},
        {"models without id", FileWithMany("Model:", "", "", kMany), 0},
        {"models of version 6", FileWithMany("Model:\"#\"", "", "", kMany, "6.1.0"), 0},
        {"models of one name", FileWithMany("Model:\"\"", "", "", kMany, "6.1.0"), 0},
        {"cameras", FileWithMany("Model:#,\"\",\"Camera\"", "", "", kMany), 0},
        {"rows", FileWithMany("P:", "Model:1{\n" + rows, end, kMany), 0},
        {"user properties", FileWithMany("P:\"\",\"Number\",\"\",\"U\"", "Model:1{\n" + rows, end, kMany), 0},
        {"constraints", FileWithMany("Constraint:#", "", "", kMany), 0},
        {"takes", FileWithMany("AnimationStack:#", "", "", kMany), 0},
        {"connections", FileWithMany("C:\"OO\",1,0", "Model:1\n}\nConnections:{\n", "", kMany), 0},
        {"models that each take moves", FileWithMovingModels(400, 250), 0},
        {"keys", FileWithCurves(keys), FileWithCurves(keys, 1, false).size()},
        {"curves", FileWithCurves(few, 5'000), FileWithCurves(few, 5'000, false).size()},
    };
    for (const Unpacked& item : cases)
    {
        mobu_host::ImportNotes notes;
        const tv2_tests::AllocationPeak peak;
        const auto scene = mobu_host::fbx::ReadFbx(item.file, {}, notes);
        EXPECT_LE(peak.Bytes(), kPerByte * std::max(item.unpacked, item.file.size()) + kBesides) << item.what;
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
