#pragma once

#include "tests/host/scene_import/import_fixture.h"

#include <array>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// What an independent evaluation gives for a scene, read from tab-separated tables: NAME.takeN.transforms.tsv and
// NAME.takeN.properties.tsv, at seven instants spread evenly over a take.
struct ExpectedRow
{
    std::size_t instant;              // 0 to 6
    std::vector<std::string> columns; // behind the time
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
        ExpectedRow row{times.size() - 1, {}};
        for (std::string cell; std::getline(cells, cell, '\t');)
            row.columns.push_back(cell);
        rows.push_back(row);
    }
    return rows;
}

class ExpectedValues : public SceneImportTest
{
protected:
    static constexpr double kCentimetres = 0.001; // a hundredth of a millimetre
    static constexpr double kDirection =
        1.745e-5; // a thousandth of a degree, as the distance of unit vectors

    static void GotoInstant(int take, std::size_t instant)
    {
        FBSystem().CurrentTake = &Take(take);
        const FBTimeSpan span = Take(take).LocalTimeSpan;
        const double start = span.GetStart().GetSecondDouble();
        const double stop = span.GetStop().GetSecondDouble();
        Goto(start + (stop - start) * static_cast<double>(instant) / 6.0);
    }

    // In the host's axes and unit, as the file's own relate to them.
    using Conversion = std::array<double, 3> (*)(const std::array<double, 3>&);

    static std::size_t CompareTransforms(int take, const std::vector<ExpectedRow>& rows, Conversion convert)
    {
        std::size_t compared = 0, instant = 99;
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

private:
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
