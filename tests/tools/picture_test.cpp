// tv2 picture: the skeleton as a drawing.

#include "tests/tools/command.h"
#include "tests/tools/scene_files.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <limits>
#include <regex>
#include <sys/resource.h>

using namespace TEV2_LOADER;

namespace
{

void AddNode(TEV2& scene, const char16_t* name, std::int32_t parent, TEV2_VECTOR_3 at_0, TEV2_VECTOR_3 at_1)
{
    TEV2_MATRIX_NODE& node = scene.matrixHierarchy.nodes.emplace_back();
    node.name = TEV2_WIDE_STRING(name);
    node.parentIndex = parent;
    node.translation = MakeTrack<TEV2_ANIMATABLE_VECTOR_3_LINEAR>({{0.0F, at_0}, {1.0F, at_1}});
}

// A root, hips that walk one metre along X in a second, and a head one metre above them along `up`.
void SaveWalker(const std::string& path, const char16_t* root, TEV2_VECTOR_3 up)
{
    TEV2 scene;
    scene.environment.timeRange.maximum = 1.0F;
    AddNode(scene, root, -1, {}, {});
    AddNode(scene, u"Hips", 0, {}, {1.0F, 0.0F, 0.0F});
    AddNode(scene, u"Head", 1, up, up);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    AddNode(scene, u"Nowhere", 1, {nan, 0.0F, 0.0F}, {nan, 0.0F, 0.0F});
    SaveScene(scene, path);
}

std::string Drawing(const std::string& path)
{
    const Bytes bytes = ReadBytes(path);
    return {bytes.begin(), bytes.end()};
}

TEST(Picture, DrawsUprightFiguresOfEveryExport)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("walker.tv2");
    const std::string drawing = folder.Path("walker.svg");
    // A whole scene has Z up relative to its root, a selection has Y up.
    const std::pair<const char16_t*, TEV2_VECTOR_3> cases[] = {
        {u"Scene", {0.0F, 0.0F, 1.0F}}, {u"Exporter Inserted Root", {0.0F, 1.0F, 0.0F}}};
    for (const auto& [root, up] : cases)
    {
        SaveWalker(file, root, up);
        const CommandResult result = RunTv2({"picture", "--figures", "3", file, drawing});
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const std::string svg = Drawing(drawing);
        EXPECT_EQ(svg.find("nan"), std::string::npos);
        // One bone a figure, upright and as tall as the drawing, half a metre further in each cell.
        const std::regex bone("d=\"M([0-9.]+),([0-9.]+)L([0-9.]+),([0-9.]+)\"");
        std::vector<double> feet;
        for (auto match = std::sregex_iterator(svg.begin(), svg.end(), bone); match != std::sregex_iterator();
             ++match)
        {
            EXPECT_EQ(match->str(1), match->str(3));
            EXPECT_NEAR(std::stod(match->str(2)) - std::stod(match->str(4)), 260.0, 0.2);
            feet.push_back(std::stod(match->str(1)));
        }
        ASSERT_EQ(feet.size(), 3U);
        const double cell = 260.0 + 32.0; // one metre wide, with its margins
        EXPECT_NEAR(feet[1] - feet[0], cell + 130.0, 0.3);
        EXPECT_NEAR(feet[2] - feet[1], cell + 130.0, 0.3);
        EXPECT_NE(svg.find(">0.50 s<"), std::string::npos);
    }
}

TEST(Picture, SaysWhyThereIsNone)
{
    const ScratchFolder folder;
    const std::string sound = folder.Path("sound.tv2");
    const std::string empty = folder.Path("empty.tv2");
    const std::string garbage = folder.Path("garbage.tv2");
    const std::string disguised = folder.Path("disguised.svg");
    WriteBytes(sound, SoundImage());
    WriteBytes(disguised, SoundImage());
    SaveScene(TEV2(), empty);
    const std::string root = folder.Path("root.tv2");
    TEV2 root_alone;
    AddNode(root_alone, u"Scene", -1, {}, {});
    SaveScene(root_alone, root);
    WriteBytes(garbage, {1, 2, 3, 4});
    const struct
    {
        std::string file;
        std::string output;
        int exit_code;
        std::string message;
    } cases[] = {
        {empty, folder.Path("a.svg"), 1, "nothing to draw: no nodes"},
        {root, folder.Path("a.svg"), 1, "nothing to draw: no nodes below the root"},
        {garbage, folder.Path("a.svg"), 1,
         "tv2 picture: " + garbage + ": not a sound .tv2 file: bad-magic at byte 0"},
        {folder.Path("missing.tv2"), folder.Path("a.svg"), 2, "missing.tv2"},
        {sound, folder.Path("missing/a.svg"), 2, "cannot be written"},
        {sound, folder.Path("a.png"), 2, "ends in .svg"},
        {sound, sound, 2, "ends in .svg"},
        {disguised, disguised, 2, "would replace the file"},
    };
    for (const auto& c : cases)
    {
        const CommandResult result = RunTv2({"picture", c.file, c.output});
        EXPECT_EQ(result.exit_code, c.exit_code) << c.message;
        EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
    }
    EXPECT_EQ(ReadBytes(disguised), SoundImage());
    const auto failure = RunTv2({"picture", "--json", garbage, folder.Path("a.svg")}).Json();
    EXPECT_EQ(failure["file"], garbage);
    EXPECT_NE(failure["error"].get<std::string>().find("bad-magic"), std::string::npos);
}

TEST(Picture, ThatCannotBeWrittenLeavesTheEarlierOne)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("walker.tv2");
    const std::string drawing = folder.Path("walker.svg");
    SaveWalker(file, u"Scene", {0.0F, 0.0F, 1.0F});
    ASSERT_EQ(RunTv2({"picture", "--figures", "2", file, drawing}).exit_code, 0);
    const std::string earlier = Drawing(drawing);

    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{earlier.size() - 1, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN); // and so it is in the command
    setrlimit(RLIMIT_FSIZE, &small);
    const CommandResult run = RunTv2({"picture", "--figures", "3", file, drawing});
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);

    EXPECT_EQ(run.exit_code, 2);
    EXPECT_NE(run.err.find(drawing + ": cannot be written: File too large"), std::string::npos) << run.err;
    EXPECT_EQ(Drawing(drawing), earlier);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path("")), {}), 2) << "a part file";
}

TEST(Picture, FromAboveWhatIsInFrontIsBelow)
{
    const ScratchFolder folder;
    // One bone to the front: along Y in a whole scene, against Z in a selection.
    const std::pair<const char16_t*, TEV2_VECTOR_3> cases[] = {
        {u"Scene", {0.0F, 1.0F, 0.0F}}, {u"Exporter Inserted Root", {0.0F, 0.0F, -1.0F}}};
    for (const auto& [root, front] : cases)
    {
        SaveWalker(folder.Path("a.tv2"), root, front);
        const CommandResult result =
            RunTv2({"picture", "--view", "top", folder.Path("a.tv2"), folder.Path("a.svg")});
        ASSERT_EQ(result.exit_code, 0) << result.err;
        const std::string svg = Drawing(folder.Path("a.svg"));
        std::smatch match;
        ASSERT_TRUE(std::regex_search(svg, match, std::regex("d=\"M[0-9.]+,([0-9.]+)L[0-9.]+,([0-9.]+)\"")));
        EXPECT_NEAR(std::stod(match.str(2)) - std::stod(match.str(1)), 260.0, 0.2);
    }
}

TEST(Picture, OneInstantIsOneFigureHoweverFarAway)
{
    const ScratchFolder folder;
    const std::string file = folder.Path("a.tv2");
    for (const float height : {1.0F, 1e6F, 1e17F, 3e38F})
    {
        TEV2 scene;
        scene.environment.timeRange = {0.5F, 0.5F};
        AddNode(scene, u"Scene", -1, {}, {});
        AddNode(scene, u"Hips", 0, {0.0F, 0.0F, height}, {0.0F, 0.0F, height});
        AddNode(scene, u"Head", 1, {1.0F, 0.0F, 0.0F}, {1.0F, 0.0F, 0.0F});
        SaveScene(scene, file);
        const CommandResult result = RunTv2({"picture", "--json", file, folder.Path("a.svg")});
        ASSERT_EQ(result.exit_code, 0) << result.err;
        EXPECT_EQ(result.Json(),
                  (nlohmann::json{
                      {"schema", 1}, {"file", file}, {"output", folder.Path("a.svg")}, {"figures", 1}}));
        const std::string svg = Drawing(folder.Path("a.svg"));
        EXPECT_EQ(svg.find("<line") != std::string::npos, height == 1.0F) << height;
    }
}

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

TEST(Picture, ShowsPropsAndCamerasAndWhatTheySee)
{
    const ScratchFolder folder;
    TEV2 scene;
    scene.environment.timeRange.maximum = 1.0F;
    AddNode(scene, u"Scene", -1, {}, {});
    AddNode(scene, u"Prop", 0, {1.0F, 0.0F, 2.0F}, {1.0F, 0.0F, 2.0F});
    AddNode(scene, u"Camera", 0, {}, {});
    auto camera = std::make_unique<TEV2_CAMERA>();
    camera->value = 2;
    camera->inverseAspect = 0.5F;
    camera->fieldOfView = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0F, 1.5707964F}}); // a right angle
    scene.cameras.push_back(std::move(camera));
    SaveScene(scene, folder.Path("a.tv2"));
    const auto run = RunTv2({"picture", "--json", folder.Path("a.tv2"), folder.Path("a.svg")});
    ASSERT_EQ(run.exit_code, 0) << run.err;
    EXPECT_EQ(run.Json()["figures"], 1) << "nothing moves";

    const std::string svg = Drawing(folder.Path("a.svg"));
    const std::string point = "(-?[0-9.]+),(-?[0-9.]+)";
    const auto props = Matches(svg, "class=\"prop\" cx=\"([0-9.]+)\" cy=\"([0-9.]+)\"");
    const auto axes = Matches(svg, "class=\"axis\"[^/]* d=\"M" + point + "L" + point);
    const auto cameras =
        Matches(svg, "class=\"camera\"[^/]* d=\"M" + point + "L" + point + "M" + point + "L" + point);
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

TEST(Picture, HasRoomForWideCameras)
{
    const ScratchFolder folder;
    TEV2 scene;
    AddNode(scene, u"Scene", -1, {}, {});
    for (const float place : {0.0F, 1.0F}) // at either side of the drawing, looking up
    {
        AddNode(scene, u"Camera", 0, {place, 0.0F, 0.0F}, {place, 0.0F, 0.0F});
        auto camera = std::make_unique<TEV2_CAMERA>();
        camera->value = static_cast<std::int32_t>(scene.cameras.size()) + 1;
        camera->inverseAspect = 4.0F;
        camera->fieldOfView = MakeTrack<TEV2_ANIMATABLE_FLOAT32_LINEAR>({{0.0F, 2.0F}}); // 115 degrees
        scene.cameras.push_back(std::move(camera));
    }
    SaveScene(scene, folder.Path("a.tv2"));
    for (const char* const view : {"front", "side", "top"})
    {
        const auto run = RunTv2({"picture", "--view", view, folder.Path("a.tv2"), folder.Path("a.svg")});
        ASSERT_EQ(run.exit_code, 0) << run.err;
        const std::string svg = Drawing(folder.Path("a.svg"));
        const auto sheet = Matches(svg, "viewBox=\"0 0 ([0-9.]+) ([0-9.]+)\"");
        ASSERT_EQ(sheet.size(), 1U);
        std::size_t points = 0;
        for (std::size_t at = svg.find("class=\"camera\""); at != std::string::npos;
             at = svg.find("class=\"camera\"", at + 1))
        {
            const std::string path = svg.substr(at, svg.find("/>", at) - at);
            for (const auto& point : Matches(path, "(-?[0-9.]+),(-?[0-9.]+)"))
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

TEST(Picture, LeavesOutWhatIsFarFromTheSkeleton)
{
    const ScratchFolder folder;
    for (const float distance : {2.0F, 30.0F})
    {
        TEV2 scene;
        scene.environment.timeRange.maximum = 1.0F;
        AddNode(scene, u"Scene", -1, {}, {});
        AddNode(scene, u"Hips", 0, {}, {});
        AddNode(scene, u"Head", 1, {0.0F, 0.0F, 2.0F}, {0.0F, 0.0F, 2.0F});
        AddNode(scene, u"Lamp", 0, {0.0F, 0.0F, 1.0F + distance}, {0.0F, 0.0F, 1.0F + distance});
        SaveScene(scene, folder.Path("a.tv2"));
        const CommandResult run = RunTv2({"picture", folder.Path("a.tv2"), folder.Path("a.svg")});
        EXPECT_EQ(run.exit_code, 0) << run.err;
        const bool far = distance > 3.0F;
        EXPECT_EQ(run.out.find("note: 1 camera or prop is too far") != std::string::npos, far) << run.out;
        EXPECT_EQ(Drawing(folder.Path("a.svg")).find("class=\"prop\"") == std::string::npos, far);
    }
}

TEST(Picture, LabelsOfLinesDoNotTouchWhateverTheSize)
{
    const ScratchFolder folder;
    for (const float size : {0.003F, 0.7F, 30.0F, 4000.0F})
    {
        TEV2 scene;
        scene.environment.timeRange.maximum = 1.0F;
        AddNode(scene, u"Scene", -1, {}, {});
        AddNode(scene, u"Hips", 0, {}, {size, 0.0F, 0.0F});
        AddNode(scene, u"Head", 1, {0.0F, 0.0F, size}, {0.0F, 0.0F, size});
        SaveScene(scene, folder.Path("a.tv2"));
        ASSERT_EQ(RunTv2({"picture", "--figures", "2", folder.Path("a.tv2"), folder.Path("a.svg")}).exit_code,
                  0);
        const auto labels =
            Matches(Drawing(folder.Path("a.svg")), "<text x=\"3\" y=\"([0-9.]+)\"[^>]*>(-?[0-9.]+) m<");
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
