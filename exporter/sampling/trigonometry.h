#pragma once

namespace tev2_exporter
{

struct SineCosine
{
    float sine;
    float cosine;
};

// Sine and cosine of `angle` (radians), the same to the last bit on every platform. The functions of the C
// library differ from one system to the next in their last bit, and one scene has to give one file
// everywhere. An angle that is not finite gives two values that are no numbers.
SineCosine SineAndCosine(float angle);

} // namespace tev2_exporter
