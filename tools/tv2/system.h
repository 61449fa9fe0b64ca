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

/// The file name of a loadable module: "tool.so" or "tool.dll" for "tool".
std::string ModuleFileName(const std::string& name);

/// The path of this program; empty when unknown.
std::string ProgramPath();

/// True when standard error is a terminal.
bool ErrorsGoToTerminal();

enum class Stream
{
    kOutput,
    kErrors
};

/// Width of the terminal that a stream goes to; 80 when it is no terminal or the width is unknown.
std::size_t TerminalColumns(Stream stream);

/// Width of the terminal that standard output goes to; 0 when it is no terminal.
std::size_t OutputColumns();

/// Opens standard streams that the caller has closed, so that no other file gets their numbers. Writing to them fails.
void KeepStandardStreams();

/// From now on writing to a closed pipe fails instead of ending the program.
void SurviveClosedPipes();

/// Appends all bytes of standard input.
TEV2_LOADER::Status ReadStandardInput(std::vector<std::uint8_t>& bytes);

using tev2_exporter::FileStamp;
using tev2_exporter::ObstacleToWriting;

/// Clears a file's read-only mark. Returns 0 or the error.
int MakeWritable(const std::string& path);

/// Why `bytes` bytes cannot be written to `path` now (permissions, disk, quota, limit), in the system's words. Empty
/// when no reason is known.
std::string WhyNotWritable(const std::string& path, std::uint64_t bytes);

/// Makes a new folder below the temporary one that only this user can read.
TEV2_LOADER::Status MakePrivateFolder(std::string& path);

/// Shows a file in the user's browser, without waiting for it to be closed. Fails where there is no display or nothing
/// to open it with.
TEV2_LOADER::Status OpenInBrowser(const std::string& absolute_path);

/// Number of processors that this program may use; at least 1.
std::size_t ProcessorCount();

/// From now on ctrl-C, and what else asks this program to end, is noted for Interruption. The second one ends it at
/// once.
void CatchInterruptions();

/// 0, or the number of the first signal that asked this program to end.
int Interruption();

/// Ends this program as that signal does, so that its caller stops, too: with exit code 128 + its number in a shell,
/// on Windows with 0xC000013A.
[[noreturn]] void EndInterrupted();

/// From now on a write beyond the file size limit fails instead of ending the program.
void ReportFileSizeLimit();

} // namespace tv2
