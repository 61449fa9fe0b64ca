#include "tests/host/import/import_fixture.h"

#include <algorithm>
#include <iterator>

// Small scenes that other programs wrote, each with one thing that is easily read wrongly. What is expected comes from
// other evaluations of the same files.
namespace
{

class OtherProgramsTest : public SceneImportTest
{
protected:
    static std::string Fixture(const std::string& name)
    {
        return std::string(TV2_FIXTURES_DIR) + "/fbx/" + name;
    }

    static void OpenFixture(const std::string& name)
    {
        const auto result = mobu_host::ImportScene(Fixture(name));
        ASSERT_TRUE(result.ok) << result.error;
    }
};

TEST_F(OtherProgramsTest, CurvesPassThroughTheirValues)
{
    const struct
    {
        const char* file;
        double seconds, x;
    } cases[] = {
        {"text_72_tangents_in_binary.fbx", 24 / 24.0, 10.8730},
        {"automatic_time_independent.fbx", 9 / 24.0, 8.3475},
        {"tcb_ends.fbx", 59 / 24.0, 2.3542},
        {"automatic_bias_over_500.fbx", 21 / 24.0, -2.5333},
        {"new_ticks.fbx", 0.0, 0.0},
        {"new_ticks.fbx", 0.5, 2.5},
        {"new_ticks.fbx", 1.0, 5.0},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.file);
        OpenFixture(item.file);
        Goto(item.seconds);
        ExpectRow(Global("pCube1"), 3, item.x, 0, 0, 1e-3);
    }
}

TEST_F(OtherProgramsTest, TakesInNewTicksKeepTheirSpan)
{
    OpenFixture("new_ticks.fbx");
    EXPECT_NEAR(StopOf(0), 230930790000.0 / 141120000.0, 1e-9);
}

// Each line has four vertices of one mesh, at its model's place in the world. The first mesh is at the origin.
TEST_F(OtherProgramsTest, RotationSpaceForLimitsIsNoRotation)
{
    OpenFixture("rotation_space_for_limits.fbx");
    double mesh[12], want[12];
    int models = 0;
    std::ifstream table(Fixture("rotation_space_for_limits.tsv"));
    for (std::string model; table >> model; ++models)
    {
        for (double& number : want)
            table >> number;
        if (models == 0)
            std::copy(std::begin(want), std::end(want), mesh);
        FBMatrix world = Global("Node_" + model);
        for (int i = 0; i < 12; ++i)
        {
            const double* const local = &mesh[i - i % 3];
            EXPECT_NEAR(local[0] * world(0, i % 3) + local[1] * world(1, i % 3) + local[2] * world(2, i % 3) +
                            world(3, i % 3),
                        want[i], 2e-6)
                << model;
        }
    }
    EXPECT_EQ(models, 25);
}

// At 10/24 s the lower layer adds angles of (41.4506, 0, 20.7253) degrees, the upper one 0.697214 of the turn of
// (-45, 41.4506, 0) on the right: multiplied and slerped as quaternions, that turns the axes to these. Scales multiply
// by the power of the weight, where the layer does not add them.
TEST_F(OtherProgramsTest, EachLayerAddsRotationAndScaleAsItSays)
{
    constexpr double kAxes[3][3] = {
        {0.685873, 0.651976, -0.323275}, {-0.607321, 0.757556, 0.239311}, {0.400924, 0.032195, 0.915546}};
    const double scaling[3] = {1.0 + 2.8423, 2.0 * std::pow(2.8423, 0.697214),
                               (1.0 + 2.8423) * std::pow(2.4107, 0.697214)};
    OpenFixture("layers_mixed_rotation_modes.fbx");
    Goto(10 / 24.0);
    for (int axis = 0; axis < 3; ++axis)
        ExpectRow(Global("pCube1"), axis, scaling[axis] * kAxes[axis][0], scaling[axis] * kAxes[axis][1],
                  scaling[axis] * kAxes[axis][2], 1e-3);
}

TEST_F(OtherProgramsTest, RecordsWithoutAnEndAreReadByTheirLengths)
{
    OpenFixture("record_without_end.fbx");
    EXPECT_EQ(ModelNames(), (std::vector<std::string>{"Scene", "pCube1"}));
}

} // namespace
