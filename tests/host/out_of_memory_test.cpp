#include <memory>
#include <new>

#include <gtest/gtest.h>

#include "mobu_host/scene.h"
#include "tests/support/allocation_watch.h"

namespace mobu_host
{
namespace
{

/// Wherever memory runs out, a take is copied with its animation or not at all.
TEST(OutOfMemory, TakesAreCopiedAsAWhole)
{
    NewScene();
    FBSystem system;
    FBProperty* level = AddUserProperty(*AddModel("Model"), "Level", kFBPT_double, true);
    const auto value = std::make_shared<double>(100.0);
    AnimateProperty(*level, *system.CurrentTake, [value](double, int) { return *value; });
    const long others = value.use_count() - 1;
    FBTake* take = system.CurrentTake;
    for (int takes = 1; takes < 40; ++takes) // the lists of the scene grow now and then
    {
        FBTake* copy = nullptr;
        for (long before = 0; !copy; ++before)
        {
            try
            {
                const tv2_tests::AllocationFailure failure(before);
                copy = take->CopyTake("Copy");
            }
            catch (const std::bad_alloc&)
            {
                ASSERT_EQ(Scene().Takes.GetCount(), takes) << "allocation " << before;
                ASSERT_EQ(value.use_count(), others + takes) << "allocation " << before;
            }
        }
        take = copy;
    }
    system.CurrentTake = take;
    Scene().Evaluate();
    EXPECT_STREQ(level->AsString(), "100");
}

TEST(OutOfMemory, LeavesNoHalfOfANewScene)
{
    long before = 0;
    for (bool made = false; !made; ++before)
    {
        try
        {
            const tv2_tests::AllocationFailure failure(before);
            NewScene();
            made = true;
        }
        catch (const std::bad_alloc&)
        {
            ASSERT_EQ(ModelsInPreOrder().size(), 1u) << "allocation " << before;
            ASSERT_EQ(Scene().Cameras.GetCount(), 7) << "allocation " << before;
            ASSERT_EQ(Scene().Takes.GetCount(), 1) << "allocation " << before;
        }
    }
    EXPECT_GT(before, 100);
}

} // namespace
} // namespace mobu_host
