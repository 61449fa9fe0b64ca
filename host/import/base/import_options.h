#pragma once

#include "host/import/base/parse_error.h"

#include <cstddef>
#include <string>

namespace mobu_host
{

inline constexpr std::size_t kMostModels = 250'000; // 2 GiB of scene at most

inline constexpr double kHighestRate = 1.0e6; // frames per second

struct ImportOptions
{
    /// Frames per second of the scene, at most kHighestRate. 0: the rate that the file states, else the lowest common
    /// one at which all keys and ends of takes are whole frames.
    double scene_rate = 0.0;

    std::size_t most_models = kMostModels; // a file with more is refused
};

/// `models` as far as they are read.
inline void CheckModelCount(std::size_t models, const ImportOptions& options)
{
    if (models > options.most_models)
        throw ParseError("it has more than " + std::to_string(options.most_models) +
                         " models, which is the limit");
}

} // namespace mobu_host
