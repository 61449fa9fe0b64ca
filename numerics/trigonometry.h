#pragma once

// Sine and cosine, the same to the last bit on every platform: the functions of the C library differ from one
// system to the next in their last bit, and one scene has to give one file everywhere.

namespace numerics
{

struct SineCosine
{
    double sine;
    double cosine;
};

// Of an angle in radians, good to single precision up to a million; beyond that some rest of a turn. An angle
// that is not finite gives two values that are no numbers.
SineCosine SineAndCosine(double radians);

// Of an angle in degrees, good to double precision at any size; multiples of 90 give exact zeros and ones. An
// angle that is not finite gives two values that are no numbers.
SineCosine SineAndCosineOfDegrees(double degrees);

} // namespace numerics
