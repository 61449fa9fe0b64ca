// The work of planning an export grows with takes plus models plus files, not with their product.

#include "tests/support/allocation_watch.h"

#include "exporter/rules/rules.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/stat.h>

namespace
{

long files_examined = 0;

} // namespace

/// In place of the C library's, for the whole program.
extern "C" int stat(const char* path, struct stat* status) noexcept
{
    ++files_examined;
    return ::fstatat(AT_FDCWD, path, status, 0);
}

namespace tev2_exporter
{
namespace
{

struct Work
{
    long allocations = 0;
    long files = 0;
};

/// Of planning all takes of a scene; as many models and files that it was read from as takes.
Work WorkOf(std::size_t size)
{
    const std::string folder = testing::TempDir();
    ExportQuestion question;
    question.path = folder + "growth.tv2";
    question.flags.all_takes = true;
    SceneFacts scene;
    scene.transport_rate = 25.0;
    scene.models.resize(size, {0, false, false});
    scene.models[0].parent = -1;
    scene.current_take = 0;
    for (std::size_t i = 0; i < size; ++i)
    {
        scene.takes.push_back(
            {"Take " + std::to_string(i), 0.0, 1.01}); // ends between two frames: a note each
        scene.files.push_back(folder + "missing " + std::to_string(i));
    }
    const Work before = {tv2_tests::AllocationCount(), files_examined};
    const ExportPlan plan = PlanExport(question, &scene);
    const Work work = {tv2_tests::AllocationCount() - before.allocations, files_examined - before.files};
    EXPECT_EQ(plan.objection.text, "");
    EXPECT_EQ(plan.files.size(), size);
    EXPECT_EQ(plan.notes.size(), size);
    EXPECT_EQ(plan.nodes, size);
    EXPECT_GE(work.files, static_cast<long>(size)) << "files are examined in another way";
    return work;
}

TEST(RulesGrowth, TwiceTheTakesAndModelsAreTwiceTheWork)
{
    constexpr double kMost = 2.3; // 2 and some for tables that are sized by steps
    Work work = WorkOf(500);
    for (const std::size_t size : {1000u, 2000u, 4000u})
    {
        const Work larger = WorkOf(size);
        EXPECT_LE(static_cast<double>(larger.allocations), kMost * static_cast<double>(work.allocations))
            << size;
        EXPECT_LE(static_cast<double>(larger.files), kMost * static_cast<double>(work.files)) << size;
        work = larger;
    }
}

} // namespace
} // namespace tev2_exporter
