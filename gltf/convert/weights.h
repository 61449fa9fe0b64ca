#pragma once

#include <span>

namespace tev2_gltf
{

/// Makes the weights of a vertex sum to 1, as glTF asks: within 2e-7 for each weight above 0. Others are divided by
/// their sum; negative ones and those that are not finite become 0 first, and where none is left, the first becomes 1.
/// Returns whether anything was changed.
bool NormaliseWeights(std::span<float> weights);

} // namespace tev2_gltf
