#pragma once

// What the exporter needs of the operating system. One source file per system implements it; the tests have their own,
// with a fixed clock.

#include <optional>
#include <string>

namespace tev2_exporter::platform
{

struct UtcTime
{
    int year = 0;
    int month = 0; ///< 1 to 12
    int day = 0;   ///< 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

UtcTime CurrentUtcTime();

/// The name of the user who is logged in; none when it is unknown or longer than 63 bytes.
std::optional<std::string> UserName();

/// True when there is a file at `path` that is marked read-only. Paths are bytes as they are opened for writing.
bool IsReadOnly(const std::string& path);

/// Clears the read-only mark; a failure shows when the file is opened.
void MakeWritable(const std::string& path);

/// Asks the user a question with the answers OK and Cancel. True for OK; false where there is no user to ask.
bool AskOkCancel(const std::u16string& caption, const std::u16string& text);

} // namespace tev2_exporter::platform
