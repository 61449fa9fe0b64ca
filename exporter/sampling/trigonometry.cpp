#include "exporter/sampling/trigonometry.h"

#include <cmath>
#include <limits>

namespace tev2_exporter
{
namespace
{

// pi / 2 in two parts; the first has so few bits that its product with any quadrant number used here is
// exact.
constexpr double kHalfPiHigh = 1.57079632673412561417e+00;
constexpr double kHalfPiLow = 6.07710050650619224932e-11;
constexpr double kTwoPi = 6.28318530717958623200e+00;
constexpr float kManyTurns = 1e6f;
constexpr double kTwoOverPi = 6.36619772367581382433e-01;

// Taylor series on [-pi/4, pi/4]: the first term left out is below 1e-19. Only sums, products and quotients,
// which every platform rounds alike.
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

} // namespace

SineCosine SineAndCosine(float angle)
{
    if (!std::isfinite(angle))
    {
        const float nan = std::numeric_limits<float>::quiet_NaN();
        return {nan, nan};
    }
    // Beyond many turns the rest of a turn means nothing any more, but it has to stay a rest.
    const double x = std::fabs(angle) < kManyTurns ? static_cast<double>(angle)
                                                   : std::fmod(static_cast<double>(angle), kTwoPi);
    const double turns = std::floor(x * kTwoOverPi + 0.5);
    const double rest = (x - turns * kHalfPiHigh) - turns * kHalfPiLow;
    const double sine = SineNearZero(rest);
    const double cosine = CosineNearZero(rest);

    const double quadrant = turns - 4.0 * std::floor(turns / 4.0);
    double result_sine = sine;
    double result_cosine = cosine;
    if (quadrant == 1.0)
    {
        result_sine = cosine;
        result_cosine = -sine;
    }
    else if (quadrant == 2.0)
    {
        result_sine = -sine;
        result_cosine = -cosine;
    }
    else if (quadrant == 3.0)
    {
        result_sine = -cosine;
        result_cosine = sine;
    }
    return {static_cast<float>(result_sine), static_cast<float>(result_cosine)};
}

} // namespace tev2_exporter
