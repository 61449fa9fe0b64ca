#pragma once

// Sine and cosine that are bit-identical on every platform: C libraries differ in the last bit, and a scene has to give
// the same file everywhere.

namespace numerics
{

struct SineCosine
{
    double sine;
    double cosine;
};

/// Of an angle in radians; accurate to single precision up to a million, meaningless beyond. NaN for an angle that is
/// not finite.
SineCosine SineAndCosine(double radians);

/// Of an angle in degrees; accurate to double precision at any size, and exact for multiples of 90. NaN for an angle
/// that is not finite.
SineCosine SineAndCosineOfDegrees(double degrees);

} // namespace numerics
