#pragma once

#include "exporter/rules/file_facts.h"
#include "tev2_loader/status.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tv2
{

// What the command asks of the operating system itself; one source file for each system implements it. Paths are
// bytes as the system takes them, errors are errno values.

/// "tool" as a module that programs load is called here: "tool.so" or "tool.dll".
std::string ModuleFileName(const std::string& name);

/// Where this program stands; empty when that is unknown.
std::string ProgramPath();

/// True when what goes to standard error is shown to a person.
bool ErrorsGoToTerminal();

enum class Stream
{
    kOutput,
    kErrors
};

/// Width of the terminal that a stream goes to; 80 where it goes elsewhere or the width is unknown.
std::size_t TerminalColumns(Stream stream);

/// Width of the terminal that standard output goes to; 0 where that is none.
std::size_t OutputColumns();

/// Opens standard streams that the caller has closed on nothing, so that no file of ours takes their place. Writing to
/// such an output fails.
void KeepStandardStreams();

/// Writing to a pipe that nobody reads any more fails from now on, where it would end the program.
void SurviveClosedPipes();

/// Appends all bytes of standard input.
TEV2_LOADER::Status ReadStandardInput(std::vector<std::uint8_t>& bytes);

using tev2_exporter::FileStamp;
using tev2_exporter::ObstacleToWriting;

/// Takes the mark off a file that is read-only for everybody; 0, or why that failed.
int MakeWritable(const std::string& path);

/// Why `bytes` bytes cannot be written to `path` now, its disk or device, a quota or a limit included, in the system's
/// words; empty when nothing is known against it.
std::string WhyNotWritable(const std::string& path, std::uint64_t bytes);

/// Lets a write beyond the limit for file sizes fail with an error instead of ending the program.
void ReportFileSizeLimit();

} // namespace tv2
