#include "gltf/convert/weights.h"

#include <cmath>

namespace tev2_gltf
{

bool NormaliseWeights(std::span<float> weights)
{
    constexpr double kTolerance = 2e-7; // of one weight
    double sum = 0.0;
    int used = 0;
    bool changed = false;
    for (float& weight : weights)
    {
        if (!(weight >= 0.0f) || !std::isfinite(weight))
        {
            weight = 0.0f;
            changed = true;
        }
        sum += static_cast<double>(weight);
        used += weight > 0.0f ? 1 : 0;
    }
    if (used > 0 && std::abs(sum - 1.0) <= kTolerance * used)
        return changed;
    for (float& weight : weights)
        weight = used > 0 ? static_cast<float>(static_cast<double>(weight) / sum) : 0.0f;
    if (used == 0 && !weights.empty())
        weights.front() = 1.0f;
    return changed || !weights.empty();
}

} // namespace tev2_gltf
