#include "tests/host/import/fbx/expected_values.h"

#include <ostream>

namespace
{

std::array<double, 3> AsItIs(const std::array<double, 3>& v)
{
    return v;
}

std::array<double, 3> FromInchesZUp(const std::array<double, 3>& v)
{
    return {2.54 * v[0], 2.54 * v[2], -2.54 * v[1]};
}

struct ExpectedScene
{
    const char* scene;
    int take;
    std::array<double, 3> (*convert)(const std::array<double, 3>&) = AsItIs;

    friend std::ostream& operator<<(std::ostream& out, const ExpectedScene& expected)
    {
        return out << expected.scene;
    }
};

// Scenes of others, in TV2_SCENES_DIR.
class ExpectedScenesTest : public ExpectedValues, public testing::WithParamInterface<ExpectedScene>
{
};

TEST_P(ExpectedScenesTest, TransformsAndPropertiesAgree)
{
    const ExpectedScene& expected = GetParam();
    const std::string scenes = TV2_SCENES_DIR;
    const std::string table =
        scenes + "/expected/" + expected.scene + ".take" + std::to_string(expected.take);
    const auto rows = ReadExpected(table + ".transforms.tsv");
    if (rows.empty())
        GTEST_SKIP() << table << " is not in TV2_SCENES_DIR";
    const auto result = mobu_host::ImportScene(scenes + "/" + expected.scene + ".fbx");
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_GE(CompareTransforms(expected.take, rows, expected.convert), 7U);
    CompareProperties(expected.take, ReadExpected(table + ".properties.tsv"));
}

// A slice of the same tables for the samples that come with the project.
class ExpectedSamplesTest : public ExpectedValues, public testing::WithParamInterface<const char*>
{
};

TEST_P(ExpectedSamplesTest, TransformsAndPropertiesAgree)
{
    const std::string name = GetParam();
    const std::string table = std::string(TV2_FIXTURES_DIR) + "/fbx/" + name + ".take0";
    const auto result = mobu_host::ImportScene(std::string(TV2_SAMPLES_DIR) + "/" + name + ".fbx");
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_GE(CompareTransforms(0, ReadExpected(table + ".transforms.tsv"), AsItIs), 7U);
    EXPECT_GE(CompareProperties(0, ReadExpected(table + ".properties.tsv")), 6U);
}

INSTANTIATE_TEST_SUITE_P(Files, ExpectedSamplesTest,
                         testing::Values("mocap_walk_cameras", "spring_camera_interest",
                                         "user_property_kinds"),
                         [](const auto& name) { return std::string(name.param); });

INSTANTIATE_TEST_SUITE_P(
    Scenes, ExpectedScenesTest,
    testing::Values(ExpectedScene{"animated_pivots", 0}, ExpectedScene{"hand_two_takes_rig", 1},
                    ExpectedScene{"mocap_55_01", 0}, ExpectedScene{"mocap_atlas", 0},
                    ExpectedScene{"mocap_walk_cameras", 0},
                    ExpectedScene{"non_ascii_name_inches_zup", 0, FromInchesZUp},
                    ExpectedScene{"optical_18_cameras_v6000", 0}, ExpectedScene{"robot_user_channels", 0},
                    ExpectedScene{"spring_camera_interest", 0}, ExpectedScene{"three_takes_later_starts", 0},
                    ExpectedScene{"three_takes_later_starts", 1}, ExpectedScene{"user_property_kinds", 0},
                    ExpectedScene{"view360_seven_cameras", 0}),
    [](const auto& scene)
    { return std::string(scene.param.scene) + "_" + std::to_string(scene.param.take); });

} // namespace
