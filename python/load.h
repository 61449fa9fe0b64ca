#pragma once

#include "tev2_loader/io/load_report.h"
#include "tev2_loader/status.h"

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tev2_python
{

/// Reads a file without the GIL; takes it now and then, so that ctrl-C ends the wait for a pipe.
TEV2_LOADER::Status Read(const std::string& path, std::vector<std::uint8_t>& image, std::size_t most_bytes);

/// The bytes of a file; raises LoadError where it cannot be read.
std::vector<std::uint8_t> ReadOrRaise(const std::string& path, std::size_t most_bytes = 0);

/// Raises LoadError for a file that is not a sound scene file, with everything that the report has.
[[noreturn]] void RaiseNotLoaded(const std::string& file, const TEV2_LOADER::TEV2_LOAD_REPORT& report);

} // namespace tev2_python
