#pragma once

#include "tests/host/import/import_fixture.h"

#include <array>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// What an independent evaluation gives for a scene, read from tab-separated tables: NAME.takeN.transforms.tsv and
// NAME.takeN.properties.tsv, at instants spread evenly over a take.
struct ExpectedRow
{
    double instant = 0.0;             // 0 at the start of the take, 1 at its end
    std::vector<std::string> columns; // after the time
};

inline std::vector<ExpectedRow> ReadExpected(const std::string& path)
{
    std::vector<ExpectedRow> rows;
    std::ifstream file(path);
    std::vector<std::string> times;
    for (std::string line; std::getline(file, line);)
    {
        std::istringstream cells(line);
        std::string time;
        std::getline(cells, time, '\t');
        if (times.empty() || times.back() != time)
            times.push_back(time);
        ExpectedRow row{static_cast<double>(times.size() - 1), {}};
        for (std::string cell; std::getline(cells, cell, '\t');)
            row.columns.push_back(cell);
        rows.push_back(row);
    }
    for (ExpectedRow& row : rows)
        row.instant /= static_cast<double>(times.size() - 1);
    return rows;
}

class ExpectedValues : public SceneImportTest
{
protected:
    static constexpr double kCentimetres = 0.001; // a hundredth of a millimetre
    static constexpr double kDirection =
        1.745e-5; // a thousandth of a degree, as the distance of unit vectors

    static void GotoInstant(int take, double instant)
    {
        FBSystem().CurrentTake = &Take(take);
        const FBTimeSpan span = Take(take).LocalTimeSpan;
        const double start = span.GetStart().GetSecondDouble();
        const double stop = span.GetStop().GetSecondDouble();
        Goto(start + (stop - start) * instant);
    }

    // In the host's axes and unit, as the file's own relate to them.
    using Conversion = std::array<double, 3> (*)(const std::array<double, 3>&);

    static std::size_t CompareTransforms(int take, const std::vector<ExpectedRow>& rows, Conversion convert)
    {
        std::size_t compared = 0;
        double instant = -1.0;
        for (const ExpectedRow& row : rows)
        {
            if (row.instant != instant)
                GotoInstant(take, instant = row.instant);
            const std::string& name = row.columns[0];
            FBModel* const model = FBFindModelByLabelName(name.c_str());
            if (name == "Camera Switcher")
                continue;
            EXPECT_NE(model, nullptr) << name;
            if (!model)
                continue;
            double numbers[12];
            for (std::size_t i = 0; i < 12; ++i)
                numbers[i] = std::stod(row.columns[i + 1]);
            FBMatrix matrix;
            model->GetMatrix(matrix, kModelTransformation, true, nullptr);
            Compare(name + " at instant " + std::to_string(instant), numbers, matrix, convert, Looks(*model));
            ++compared;
        }
        return compared;
    }

    // Angles of view, aspect, planes and roll; user properties rounded as their kind asks; the switcher's index.
    static std::size_t CompareProperties(int take, const std::vector<ExpectedRow>& rows)
    {
        std::size_t compared = 0;
        double instant = -1.0;
        for (const ExpectedRow& row : rows)
        {
            if (row.instant != instant)
                GotoInstant(take, instant = row.instant);
            SCOPED_TRACE(row.columns[1] + " at instant " + std::to_string(instant));
            if (row.columns[0] == "user")
                CompareUserProperty(row.columns);
            else if (row.columns[0] == "camera")
                CompareLens(row.columns);
            else
                CompareSwitcher(row.columns);
            ++compared;
        }
        return compared;
    }

private:
    static void CompareUserProperty(const std::vector<std::string>& columns)
    {
        FBProperty* const property = Model(columns[1]).PropertyList.Find(columns[2].c_str());
        ASSERT_NE(property, nullptr) << columns[2];
        EXPECT_TRUE(property->IsUserProperty());
        const std::string kind = columns[3];
        const double first = std::stod(columns[4]);
        double values[4] = {};
        switch (property->GetPropertyType())
        {
        case kFBPT_bool:
            EXPECT_EQ(kind, "bool");
            EXPECT_EQ(property->AsInt(), first >= 0.5 ? 1 : 0) << columns[2];
            return;
        case kFBPT_int:
        case kFBPT_enum:
            EXPECT_EQ(kind, "int");
            EXPECT_EQ(property->AsInt(), std::lround(first)) << columns[2];
            return;
        case kFBPT_double:
            EXPECT_EQ(kind, "number");
            property->GetData(values, sizeof(double));
            break;
        case kFBPT_Vector3D:
            EXPECT_EQ(kind, "vector");
            property->GetData(values, 3 * sizeof(double));
            break;
        case kFBPT_ColorRGBA:
            EXPECT_EQ(kind, "rgba");
            property->GetData(values, 4 * sizeof(double));
            break;
        default:
            FAIL() << columns[2] << " is of type " << property->GetPropertyType();
        }
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(values[i], std::stod(columns[4 + i]), 1e-4) << columns[2];
    }

    static FBCamera* CameraOf(const std::string& name)
    {
        FBModel* const model = FBFindModelByLabelName(name.c_str());
        return model && model->Is(FBCamera::TypeInfo) ? static_cast<FBCamera*>(model) : nullptr;
    }

    static double Other(double degrees, double ratio)
    {
        constexpr double kHalfDegree = 3.14159265358979323846 / 360.0;
        return std::atan(std::tan(degrees * kHalfDegree) * ratio) / kHalfDegree;
    }

    static void CompareLens(const std::vector<std::string>& columns)
    {
        FBCamera* const camera = CameraOf(columns[1]);
        ASSERT_NE(camera, nullptr);
        double across = 0, up = 0, aspect = 0, near_plane = 0, far_plane = 0, roll = 0;
        ASSERT_EQ(std::sscanf(columns[2].c_str(), "fov %lf %lf", &across, &up), 2);
        ASSERT_EQ(std::sscanf(columns[3].c_str(), "aspect %lf", &aspect), 1);
        ASSERT_EQ(std::sscanf(columns[4].c_str(), "near %lf", &near_plane), 1);
        ASSERT_EQ(std::sscanf(columns[5].c_str(), "far %lf", &far_plane), 1);
        ASSERT_EQ(std::sscanf(columns[6].c_str(), "roll %lf", &roll), 1);
        const double ratio = camera->ResolutionWidth / camera->ResolutionHeight;
        EXPECT_NEAR(ratio, aspect, 1e-6);
        EXPECT_NEAR(camera->NearPlaneDistance, near_plane, 1e-6);
        EXPECT_NEAR(camera->FarPlaneDistance, far_plane, 1e-6);
        EXPECT_NEAR(camera->Roll, roll, 1e-4);
        const double angle = camera->FieldOfView;
        const bool horizontal = camera->ApertureMode == kFBApertureHorizontal;
        EXPECT_NEAR(horizontal ? angle : Other(angle, ratio), across, 1e-4);
        EXPECT_NEAR(horizontal ? Other(angle, 1.0 / ratio) : angle, up, 1e-4);
    }

    static void CompareSwitcher(const std::vector<std::string>& columns)
    {
        FBModel* const switcher = FBFindModelByLabelName("Camera Switcher");
        ASSERT_NE(switcher, nullptr);
        EXPECT_EQ("index " + std::to_string(static_cast<int>(
                                 static_cast<FBCameraSwitcher*>(switcher)->CurrentCameraIndex)),
                  columns[2]);
    }

    // The tables have such cameras as their curves turn them.
    static bool Looks(FBModel& model)
    {
        return model.Is(FBCamera::TypeInfo) && static_cast<FBModel*>(static_cast<FBCamera&>(model).Interest);
    }

    static void Compare(const std::string& what, const double* numbers, FBMatrix& matrix, Conversion convert,
                        bool place_only)
    {
        for (int row = place_only ? 3 : 0; row < 4; ++row)
        {
            const std::array<double, 3> want =
                convert({numbers[3 * row], numbers[3 * row + 1], numbers[3 * row + 2]});
            const std::array<double, 3> have{matrix(row, 0), matrix(row, 1), matrix(row, 2)};
            const double length = std::hypot(want[0], want[1], want[2]);
            const double tolerance = row == 3 ? kCentimetres : kDirection * std::max(length, 1e-9);
            const double miss = std::hypot(want[0] - have[0], want[1] - have[1], want[2] - have[2]);
            EXPECT_LE(miss, tolerance) << what << " row " << row << ": " << have[0] << ' ' << have[1] << ' '
                                       << have[2] << " for " << want[0] << ' ' << want[1] << ' ' << want[2];
        }
    }
};
