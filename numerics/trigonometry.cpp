#include "numerics/trigonometry.h"

#include <cmath>
#include <limits>

namespace numerics
{
namespace
{

// pi / 2 in two parts; the first has few enough bits for its product with any quadrant number used here to be exact.
constexpr double kHalfPiHigh = 1.57079632673412561417e+00;
constexpr double kHalfPiLow = 6.07710050650619224932e-11;
constexpr double kTwoPi = 6.28318530717958623200e+00;
constexpr double kTwoOverPi = 6.36619772367581382433e-01;
constexpr double kRadiansPerDegree = 1.74532925199432954744e-02;
constexpr double kManyTurns = 1e6; // radians

constexpr SineCosine kNotANumber{std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::quiet_NaN()};

// Taylor series on [-pi/4, pi/4]; the first omitted term is below 1e-19. Only sums, products and quotients, which every
// platform rounds alike.
double SineNearZero(double x)
{
    double sum = 1.0;
    for (int n = 16; n > 0; n -= 2)
        sum = 1.0 - sum * x * x / (n * (n + 1));
    return x * sum;
}

double CosineNearZero(double x)
{
    double sum = 1.0;
    for (int n = 17; n > 0; n -= 2)
        sum = 1.0 - sum * x * x / (n * (n + 1));
    return sum;
}

// Of a number of quarter turns plus a remainder in radians, at most an eighth of a turn.
SineCosine OfQuartersAndRest(double quarters, double rest)
{
    const double sine = SineNearZero(rest);
    const double cosine = CosineNearZero(rest);
    const double quadrant = quarters - 4.0 * std::floor(quarters / 4.0);
    if (quadrant == 1.0)
        return {cosine, -sine};
    if (quadrant == 2.0)
        return {-sine, -cosine};
    if (quadrant == 3.0)
        return {-cosine, sine};
    return {sine, cosine};
}

} // namespace

SineCosine SineAndCosine(double radians)
{
    if (!std::isfinite(radians))
        return kNotANumber;
    // After many turns the remainder is meaningless, but it must stay in range.
    const double x = std::fabs(radians) < kManyTurns ? radians : std::fmod(radians, kTwoPi);
    const double quarters = std::floor(x * kTwoOverPi + 0.5);
    return OfQuartersAndRest(quarters, (x - quarters * kHalfPiHigh) - quarters * kHalfPiLow);
}

SineCosine SineAndCosineOfDegrees(double degrees)
{
    if (!std::isfinite(degrees))
        return kNotANumber;
    const double x = std::fmod(degrees, 360.0); // exact, as is the remainder below
    const double quarters = std::floor(x / 90.0 + 0.5);
    return OfQuartersAndRest(quarters, (x - quarters * 90.0) * kRadiansPerDegree);
}

} // namespace numerics
