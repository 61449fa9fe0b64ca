#pragma once

#include "host/import/base/parse_error.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mobu_host
{

inline constexpr std::size_t kMostModels = 250'000; // 2 GiB of scene at most

inline constexpr double kHighestRate = 1.0e6; // frames per second

/// What was read of a file: from its beginning, and of a scene file all of it.
struct SourceBytes
{
    std::string path;
    std::uint64_t bytes = 0;
    std::string sha256; // of these bytes, 64 hexadecimal digits
};

struct ImportOptions
{
    /// Frames per second of the scene, at most kHighestRate. 0: the rate that the file states, else the lowest common
    /// one at which all keys and ends of takes are whole frames.
    double scene_rate = 0.0;

    std::size_t most_models = kMostModels; // a file with more is refused

    /// Receives every file that is read, the scene file first; not owned. Null: nothing is hashed.
    std::vector<SourceBytes>* sources = nullptr;
};

/// `models` as far as they are read.
inline void CheckModelCount(std::size_t models, const ImportOptions& options)
{
    if (models > options.most_models)
        throw ParseError("it has more than " + std::to_string(options.most_models) +
                         " models, which is the limit");
}

} // namespace mobu_host
