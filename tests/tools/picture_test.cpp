// tv2 picture: the skeleton as a drawing.

#include "tests/tools/tool_test.h"

#include <csignal>
#include <limits>
#include <regex>
#include <sys/resource.h>

using namespace TEV2_LOADER;
using namespace tv2_tests;

namespace
{

/// A node that moves by `way` in a second.
void AddNode(TEV2& scene, const char16_t* name, std::int32_t parent, TEV2_VECTOR_3 start,
             TEV2_VECTOR_3 way = {})
{
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    node.name = Wide(name);
    node.parentIndex = parent;
    const TEV2_VECTOR_3 end = {start.x + way.x, start.y + way.y, start.z + way.z};
    node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0f, start}, {1.0f, end}});
}

struct SceneOfASecond : TEV2
{
    explicit SceneOfASecond(const char16_t* root = u"Scene")
    {
        environment.timeRange.maximum = 1.0f;
        AddNode(*this, root, -1, {});
    }
};

/// On the last node.
void AddCamera(TEV2& scene, float field_of_view, float inverse_aspect)
{
    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->value = static_cast<std::uint32_t>(scene.matrixHierarchy.nodes.size() - 1);
    camera->inverseAspect = inverse_aspect;
    camera->fieldOfView = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0f, field_of_view}});
    scene.cameras.push_back(std::move(camera));
}

/// All matches of a pattern in a drawing: the numbers of its groups.
std::vector<std::vector<double>> Matches(const std::string& svg, const std::string& pattern)
{
    std::vector<std::vector<double>> all;
    const std::regex regex(pattern);
    for (auto match = std::sregex_iterator(svg.begin(), svg.end(), regex); match != std::sregex_iterator();
         ++match)
    {
        std::vector<double>& numbers = all.emplace_back();
        for (std::size_t i = 1; i < match->size(); ++i)
            numbers.push_back(std::stod(match->str(i)));
    }
    return all;
}

const std::string kPoint = "(-?[0-9.]+),(-?[0-9.]+)";
const std::string kBone = "d=\"M" + kPoint + "L" + kPoint + "\"";

class PictureTest : public ToolTest
{
protected:
    /// A root, hips that walk one metre along X in a second, and a head one metre from them.
    std::string SaveWalker(const char16_t* root, TEV2_VECTOR_3 head) const
    {
        SceneOfASecond scene(root);
        AddNode(scene, u"Hips", 0, {}, {1.0f, 0.0f, 0.0f});
        AddNode(scene, u"Head", 1, head);
        AddNode(scene, u"Nowhere", 1, {std::numeric_limits<float>::quiet_NaN(), 0.0f, 0.0f});
        return Save(scene);
    }

    /// The drawing of a file that can be drawn.
    std::string Drawing(const std::string& file, const std::vector<std::string>& options = {})
    {
        std::vector<std::string> arguments = {"picture", file, Path("a.svg")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto run = RunTv2(arguments);
        EXPECT_EQ(run.exit_code, 0) << run.err;
        out_ = run.out;
        return ReadText(Path("a.svg"));
    }

    std::string out_; ///< what the command printed
};

// A whole scene has Z up and Y to the front relative to its root, a selection has Y up and Z to the back.
TEST_F(PictureTest, DrawsUprightFiguresOfEveryExport)
{
    const struct
    {
        const char16_t* root;
        TEV2_VECTOR_3 up, front;
    } exports[] = {{u"Scene", {0.0f, 0.0f, 1.0f}, {0.0f, 1.0f, 0.0f}},
                   {u"Exporter Inserted Root", {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, -1.0f}}};
    for (const auto& item : exports)
    {
        const std::string svg = Drawing(SaveWalker(item.root, item.up), {"--figures", "3"});
        EXPECT_EQ(svg.find("nan"), std::string::npos);
        // One bone a figure, upright and as tall as the drawing, half a metre further in each cell.
        const auto bones = Matches(svg, kBone);
        ASSERT_EQ(bones.size(), 3U);
        const double cell = 260.0 + 32.0; // one metre wide, with its margins
        for (std::size_t i = 0; i < 3; ++i)
        {
            EXPECT_EQ(bones[i][0], bones[i][2]);
            EXPECT_NEAR(bones[i][1] - bones[i][3], 260.0, 0.2);
            EXPECT_NEAR(bones[i][0] - bones[0][0], static_cast<double>(i) * (cell + 130.0), 0.3);
        }
        ExpectParts(svg, {">0.50 s<"});

        const auto above = Matches(Drawing(SaveWalker(item.root, item.front), {"--view", "top"}), kBone);
        ASSERT_FALSE(above.empty());
        EXPECT_NEAR(above[0][3] - above[0][1], 260.0, 0.2) << "what is in front is below";
    }
}

TEST_F(PictureTest, SaysWhyThereIsNone)
{
    const std::string sound = Write(SoundImage(), "sound.tv2");
    const std::string disguised = Write(SoundImage(), "disguised.svg");
    const std::string garbage = Write({1, 2, 3, 4}, "garbage.tv2");
    TEV2 root_alone;
    AddNode(root_alone, u"Scene", -1, {});
    const std::string drawing = Path("a.svg");
    const struct
    {
        std::string file, output;
        int exit_code;
        std::string message;
    } cases[] = {
        {Save(TEV2(), "empty.tv2"), drawing, 1, "nothing to draw: no nodes"},
        {Save(root_alone, "root.tv2"), drawing, 1, "nothing to draw: no nodes below the root"},
        {garbage, drawing, 1, "tv2 picture: " + garbage + ": not a sound .tv2 file: bad-magic at byte 0"},
        {Path("missing.tv2"), drawing, 2, "missing.tv2"},
        {sound, Path("missing/a.svg"), 2, "cannot be written"},
        {sound, Path("a.png"), 2, "ends in .svg"},
        {sound, sound, 2, "ends in .svg"},
        {disguised, disguised, 2, "would replace the file"},
        {sound, "-", 2, "the drawing and JSON cannot both"},
    };
    for (const auto& c : cases)
    {
        const auto run = RunTv2({"picture", "--json", c.file, c.output});
        EXPECT_EQ(run.exit_code, c.exit_code) << c.message;
        ExpectParts(run.err, {c.message});
        EXPECT_EQ(run.Json()["file"], c.file);
        ExpectParts("tv2 picture: " + run.Json()["error"].get<std::string>(), {c.message});
    }
    EXPECT_EQ(ReadBytes(disguised), SoundImage());
}

TEST_F(PictureTest, ThatCannotBeWrittenLeavesTheEarlierOne)
{
    const std::string file = SaveWalker(u"Scene", {0.0f, 0.0f, 1.0f});
    const std::string drawing = Path("a.svg");
    const std::string earlier = Drawing(file, {"--figures", "2"});

    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{earlier.size() - 1, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN); // and so it is in the command
    setrlimit(RLIMIT_FSIZE, &small);
    const auto run = RunTv2({"picture", "--figures", "3", file, drawing});
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(run.exit_code, 2);
    ExpectParts(run.err, {drawing + ": cannot be written: File too large"});
    EXPECT_EQ(ReadText(drawing), earlier);
    EXPECT_EQ(folder_.Names().size(), 2U) << "a part file";
}

TEST_F(PictureTest, OneInstantIsOneFigureHoweverFarAway)
{
    for (const float height : {1.0f, 1e6f, 1e17f, 3e38f})
    {
        TEV2 scene;
        scene.environment.timeRange = {0.5f, 0.5f};
        AddNode(scene, u"Scene", -1, {});
        AddNode(scene, u"Hips", 0, {0.0f, 0.0f, height});
        AddNode(scene, u"Head", 1, {1.0f, 0.0f, 0.0f});
        const std::string svg = Drawing(Save(scene), {"--json"});
        EXPECT_EQ(nlohmann::json::parse(out_),
                  (nlohmann::json{
                      {"schema", 1}, {"file", Path("a.tv2")}, {"output", Path("a.svg")}, {"figures", 1}}));
        EXPECT_EQ(svg.find("<line") != std::string::npos, height == 1.0f) << height;
    }
}

TEST_F(PictureTest, ShowsPropsAndCamerasAndWhatTheySee)
{
    SceneOfASecond scene;
    AddNode(scene, u"Prop", 0, {1.0f, 0.0f, 2.0f});
    AddNode(scene, u"Camera", 0, {});
    AddCamera(scene, 1.5707964f, 0.5f); // a right angle
    const std::string svg = Drawing(Save(scene), {"--json"});
    EXPECT_EQ(nlohmann::json::parse(out_)["figures"], 1) << "nothing moves";

    const auto props = Matches(svg, "class=\"prop\" cx=\"([0-9.]+)\" cy=\"([0-9.]+)\"");
    const auto axes = Matches(svg, "class=\"axis\"[^/]* d=\"M" + kPoint + "L" + kPoint);
    const auto cameras =
        Matches(svg, "class=\"camera\"[^/]* d=\"M" + kPoint + "L" + kPoint + "M" + kPoint + "L" + kPoint);
    ASSERT_EQ(props.size(), 1U);
    ASSERT_EQ(axes.size(), 3U);
    ASSERT_EQ(cameras.size(), 1U);
    const auto& lens = cameras[0];
    // The prop is one metre to the right of the camera and two above it: as high as the drawing.
    EXPECT_NEAR(lens[1] - props[0][1], 520.0, 0.2);
    EXPECT_NEAR(props[0][0] - lens[0], 260.0, 0.2);
    // From the front X goes to the right, Y to the reader and Z up.
    EXPECT_GT(axes[0][2], axes[0][0]);
    EXPECT_EQ(axes[1][2], axes[1][0]);
    EXPECT_LT(axes[2][3], axes[2][1]);
    // The camera looks up along its Z axis, with half a right angle to each side.
    EXPECT_LT(lens[3], lens[1]);
    EXPECT_NEAR(lens[0] - lens[2], lens[1] - lens[3], 0.2);
    EXPECT_NEAR(lens[6] - lens[0], lens[1] - lens[7], 0.2);
}

TEST_F(PictureTest, HasRoomForWideCameras)
{
    TEV2 scene;
    AddNode(scene, u"Scene", -1, {});
    for (const float place : {0.0f, 1.0f}) // at either side of the drawing, looking up
    {
        AddNode(scene, u"Camera", 0, {place, 0.0f, 0.0f});
        AddCamera(scene, 2.0f, 4.0f); // 115 degrees
    }
    const std::string file = Save(scene);
    for (const std::string view : {"front", "side", "top"})
    {
        const std::string svg = Drawing(file, {"--view", view});
        const auto sheet = Matches(svg, "viewBox=\"0 0 ([0-9.]+) ([0-9.]+)\"");
        ASSERT_EQ(sheet.size(), 1U);
        std::size_t points = 0;
        for (std::size_t at = 0; (at = svg.find("class=\"camera\"", at)) != std::string::npos; ++at)
        {
            for (const auto& point : Matches(svg.substr(at, svg.find("/>", at) - at), kPoint))
            {
                ++points;
                EXPECT_TRUE(point[0] >= 0.0 && point[0] <= sheet[0][0] && point[1] >= 0.0 &&
                            point[1] <= sheet[0][1])
                    << view << ": " << point[0] << ", " << point[1];
            }
        }
        EXPECT_EQ(points, 2U * 15U) << view; // 4 edges, 4 corners and the 3 of the mark above
    }
}

TEST_F(PictureTest, LeavesOutWhatIsFarFromTheSkeleton)
{
    for (const float distance : {2.0f, 30.0f})
    {
        SceneOfASecond scene;
        AddNode(scene, u"Hips", 0, {});
        AddNode(scene, u"Head", 1, {0.0f, 0.0f, 2.0f});
        AddNode(scene, u"Lamp", 0, {0.0f, 0.0f, 1.0f + distance});
        const std::string svg = Drawing(Save(scene));
        const bool far = distance > 3.0f;
        EXPECT_EQ(out_.find("note: 1 camera or prop is too far") != std::string::npos, far) << out_;
        EXPECT_EQ(svg.find("class=\"prop\"") == std::string::npos, far);
    }
}

TEST_F(PictureTest, LabelsOfLinesDoNotTouchWhateverTheSize)
{
    for (const float size : {0.003f, 0.7f, 30.0f, 4000.0f})
    {
        SceneOfASecond scene;
        AddNode(scene, u"Hips", 0, {}, {size, 0.0f, 0.0f});
        AddNode(scene, u"Head", 1, {0.0f, 0.0f, size});
        const std::string svg = Drawing(Save(scene), {"--figures", "2"});
        const auto labels = Matches(svg, "<text x=\"3\" y=\"([0-9.]+)\"[^>]*>(-?[0-9.]+) m<");
        ASSERT_GE(labels.size(), 3U) << size;
        EXPECT_LE(labels.size(), 10U) << size;
        for (std::size_t i = 1; i < labels.size(); ++i)
        {
            EXPECT_GT(labels[i - 1][0] - labels[i][0], 20.0) << size;
            EXPECT_GT(labels[i][1], labels[i - 1][1]) << "labels do not overlap";
        }
    }
}

} // namespace
