#include "exporter/base/clamped_cast.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace tev2_exporter
{
namespace
{

TEST(Numbers, LoseTheirFractionAndAreHeldWithinTheType)
{
    const struct
    {
        double value;
        std::int32_t whole;
    } cases[] = {{2.9, 2},           {-2.9, -2},          {-0.0, 0},         {2147483647.9, INT32_MAX},
                 {1e300, INT32_MAX}, {-1e300, INT32_MIN}, {std::nan(""), 0}, {-HUGE_VAL, INT32_MIN}};
    for (const auto& c : cases)
        EXPECT_EQ(ToInt32(c.value), c.whole) << c.value;
}

} // namespace
} // namespace tev2_exporter
