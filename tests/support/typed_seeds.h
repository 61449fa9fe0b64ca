#pragma once

#include "tests/support/scratch_folder.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tv2_tests
{

/// The seeds of the fuzz targets that have one typed record each: small files, by their names. The program defines
/// TV2_CORPUS_DIR, the folder of the seeds.
inline std::map<std::string, std::vector<std::uint8_t>> TypedSeeds()
{
    std::map<std::string, std::vector<std::uint8_t>> seeds;
    for (const auto& entry : std::filesystem::directory_iterator(TV2_CORPUS_DIR))
        if (const std::string name = entry.path().filename().string(); name.starts_with("typed_"))
            seeds[name] = ReadBytes(entry.path().string());
    return seeds;
}

} // namespace tv2_tests
