#include "numerics/trigonometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

namespace numerics
{
namespace
{

TEST(Trigonometry, RoundsRadiansToSinglePrecisionLikeTheirExactValues)
{
    for (int i = -40000; i <= 40000; ++i)
    {
        const float angle = static_cast<float>(i) * 0.01f;
        const auto [sine, cosine] = SineAndCosine(static_cast<double>(angle));
        ASSERT_EQ(static_cast<float>(sine), static_cast<float>(std::sin(static_cast<double>(angle))))
            << angle;
        ASSERT_EQ(static_cast<float>(cosine), static_cast<float>(std::cos(static_cast<double>(angle))))
            << angle;
    }
    // A turn of any size stays on the circle.
    const auto [sine, cosine] = SineAndCosine(1e30);
    EXPECT_NEAR(sine * sine + cosine * cosine, 1.0, 1e-12);
}

TEST(Trigonometry, KeepsDegreesToDoublePrecision)
{
    for (int i = -7200; i <= 7200; ++i)
    {
        const double degrees = i * 0.05;
        const auto [sine, cosine] = SineAndCosineOfDegrees(degrees);
        ASSERT_NEAR(sine, std::sin(degrees * std::numbers::pi / 180.0), 3e-15) << degrees;
        ASSERT_NEAR(cosine, std::cos(degrees * std::numbers::pi / 180.0), 3e-15) << degrees;
    }
    const struct
    {
        double degrees, sine, cosine;
    } exact[] = {{0, 0, 1},   {90, 1, 0},   {180, 0, -1},          {270, -1, 0},
                 {360, 0, 1}, {-90, -1, 0}, {360e12 + 90.0, 1, 0}, {-180, 0, -1}};
    for (const auto& c : exact)
    {
        const auto [sine, cosine] = SineAndCosineOfDegrees(c.degrees);
        EXPECT_EQ(sine, c.sine) << c.degrees;
        EXPECT_EQ(cosine, c.cosine) << c.degrees;
    }
}

TEST(Trigonometry, GivesNoNumbersForNone)
{
    for (const double angle :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), std::nan("")})
    {
        EXPECT_TRUE(std::isnan(SineAndCosine(angle).sine));
        EXPECT_TRUE(std::isnan(SineAndCosine(angle).cosine));
        EXPECT_TRUE(std::isnan(SineAndCosineOfDegrees(angle).sine));
        EXPECT_TRUE(std::isnan(SineAndCosineOfDegrees(angle).cosine));
    }
}

} // namespace
} // namespace numerics
