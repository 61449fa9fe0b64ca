#pragma once

#include <span>
#include <string_view>

namespace tev2_check
{

/// How much a finding weighs. Notes never change the exit code.
enum class Severity
{
    Note,
    Warning,
    Error,
};

/// "note", "warning", "error"
const char* SeverityName(Severity severity);

/// A code that `tv2 check` can report. Codes are stable: scripts may rely on them.
struct CheckCode
{
    std::string_view code;
    Severity severity;
    std::string_view sentence;
};

/// All codes, those of the loader first.
std::span<const CheckCode> CheckCodes();

/// The entry of a code; one with an empty sentence when there is none.
const CheckCode& FindCheckCode(std::string_view code);

} // namespace tev2_check
