#pragma once

#include "host/import/scene_import.h"
#include "tests/support/scratch_folder.h"

#include <gtest/gtest.h>
#include <mobu_host/scene.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Writes scene files into a folder of its own, opens them and looks at the host's scene.
class SceneImportTest : public testing::Test
{
protected:
    SceneImportTest() { mobu_host::NewScene(); }

    std::string Write(const std::string& name, const std::string& content) const
    {
        return scratch_.Make(name, content);
    }

    mobu_host::SceneImportResult Open(const std::string& name, const std::string& content) const
    {
        mobu_host::SceneImportResult result = mobu_host::ImportScene(Write(name, content));
        EXPECT_TRUE(result.ok) << result.error;
        return result;
    }

    static FBModel& Model(const std::string& long_name)
    {
        FBModel* model = FBFindModelByLabelName(long_name.c_str());
        if (!model)
        {
            ADD_FAILURE() << "no model " << long_name;
            return *static_cast<FBModel*>(mobu_host::Scene().RootModel);
        }
        return *model;
    }

    static void Goto(double seconds)
    {
        FBTime time;
        time.SetSecondDouble(seconds);
        FBPlayerControl().Goto(time);
        mobu_host::Scene().Evaluate();
    }

    static FBMatrix Global(const std::string& long_name)
    {
        FBMatrix matrix;
        Model(long_name).GetMatrix(matrix, kModelTransformation, true, nullptr);
        return matrix;
    }

    // Row 0 to 2: an axis in the world, with its scale; row 3: the place in centimetres.
    static void ExpectRow(FBMatrix matrix, int row, double x, double y, double z, double tolerance = 1e-4)
    {
        EXPECT_NEAR(matrix(row, 0), x, tolerance) << "row " << row;
        EXPECT_NEAR(matrix(row, 1), y, tolerance) << "row " << row;
        EXPECT_NEAR(matrix(row, 2), z, tolerance) << "row " << row;
    }

    static std::vector<std::string> ModelNames()
    {
        std::vector<std::string> names;
        for (FBModel* model : mobu_host::ModelsInPreOrder())
            names.emplace_back(static_cast<const char*>(model->LongName));
        return names;
    }

    static FBTake& Take(int index) { return *mobu_host::Scene().Takes[index]; }

    static std::vector<std::string> TakeNames()
    {
        std::vector<std::string> names;
        for (int i = 0; i < mobu_host::Scene().Takes.GetCount(); ++i)
            names.emplace_back(static_cast<const char*>(Take(i).Name));
        return names;
    }

    static double StopOf(int take)
    {
        const FBTimeSpan span = Take(take).LocalTimeSpan;
        return span.GetStop().GetSecondDouble();
    }

    // The last whole frame of the take, truncated.
    static long LastFrame(int take)
    {
        return static_cast<long>(StopOf(take) * FBPlayerControl().GetTransportFpsValue());
    }

    tv2_tests::ScratchFolder scratch_;
    const std::filesystem::path& folder_ = scratch_.Folder();
};
