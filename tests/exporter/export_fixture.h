#pragma once

#include "exporter/base/text.h"
#include "exporter/export_driver.h"
#include "mobu_host/scene.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/test_platform.h"
#include "tev2_loader/file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

namespace tev2_exporter
{

// A fresh scene, a fresh folder and a fresh platform for each test. Tests build the scene, export it through
// the driver and look at what the file holds once it is loaded again.
class ExportTest : public testing::Test
{
protected:
    void SetUp() override
    {
        mobu_host::NewScene();
        platform::TestPlatform::Get() = {};
        options_.SamplingRate = 4.0f;
        options_.KeepPositiveZ = 0;
    }

    void TearDown() override { mobu_host::NewScene(); }

    // The only take of the scene, from 0 to `seconds`.
    FBTake& OneTake(double seconds)
    {
        mobu_host::ClearTakes();
        return *mobu_host::AddTake("Take 001", 0.0, seconds);
    }

    unsigned Run(const std::string& file_name = "run.tv2")
    {
        ExportContext context;
        return ExportScene(context, options_, (folder_ / file_name).string().c_str());
    }

    // The export of the scene as it stands, loaded from its file. Null when there is none that loads.
    std::unique_ptr<TEV2_LOADER::TEV2> Export()
    {
        EXPECT_EQ(Run(), 1u);
        return Load("run.tv2");
    }

    std::unique_ptr<TEV2_LOADER::TEV2> Load(const std::string& file_name)
    {
        auto scene = std::make_unique<TEV2_LOADER::TEV2>();
        const std::string path = (folder_ / file_name).string();
        return LoadFile(path, *scene, {.applyStartTime = false}) ? std::move(scene) : nullptr;
    }

    std::vector<std::uint8_t> Bytes(const std::string& file_name)
    {
        return tv2_tests::ReadBytes(folder_ / file_name);
    }

    static std::string Text(const TEV2_LOADER::TEV2_WIDE_STRING& text) { return Narrow(text.Text()); }

    const tv2_tests::ScratchFolder scratch_;
    const std::filesystem::path folder_ = scratch_.Folder();
    ExportOptions options_;
};

inline void ExpectOptions(const ExportOptions& actual, const ExportOptions& expected)
{
    const auto numbers = [](const ExportOptions& o)
    {
        return std::vector<float>{o.CustomStart,
                                  o.CustomEnd,
                                  o.SamplingRate,
                                  float(o.Cancelled),
                                  float(o.FilenameSpacesToUnderscores),
                                  float(o.KeepPositiveZ),
                                  float(o.RemoveNamespaceFromNames),
                                  float(o.DisableConstraints),
                                  float(o.UseCustomRange),
                                  float(o.AllTakes)};
    };
    EXPECT_EQ(numbers(actual), numbers(expected)); // in the order of the structure
}

// The keys of a track in a loaded file, by way of the class that its kind stands for.
template <typename Concrete, typename Family>
const Concrete& Keys(const std::unique_ptr<Family>& track)
{
    return dynamic_cast<const Concrete&>(*track);
}

inline const TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3_LINEAR&
Translation(const TEV2_LOADER::TEV2_MATRIX_NODE& node)
{
    return Keys<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3_LINEAR>(node.translation);
}

inline const TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION_SLERP&
Rotation(const TEV2_LOADER::TEV2_MATRIX_NODE& node)
{
    return Keys<TEV2_LOADER::TEV2_ANIMATABLE_QUATERNION_SLERP>(node.rotation);
}

inline void ExpectVector(const TEV2_LOADER::TEV2_VECTOR_3& actual, float x, float y, float z,
                         float tolerance = 1e-6f)
{
    EXPECT_NEAR(actual.x, x, tolerance);
    EXPECT_NEAR(actual.y, y, tolerance);
    EXPECT_NEAR(actual.z, z, tolerance);
}

inline void ExpectQuaternion(const TEV2_LOADER::TEV2_QUATERNION& actual, float x, float y, float z, float w)
{
    EXPECT_NEAR(actual.x, x, 1e-6f);
    EXPECT_NEAR(actual.y, y, 1e-6f);
    EXPECT_NEAR(actual.z, z, 1e-6f);
    EXPECT_NEAR(actual.w, w, 1e-6f);
}

} // namespace tev2_exporter
