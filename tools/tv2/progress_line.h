#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace tv2
{

/// The progress of an export.
struct ProgressText
{
    std::string take;
    std::size_t file = 0; ///< counted from 1; 0 where there is only one
    std::size_t files = 1;
    double part = 0.0;                  ///< of this file, 0 to 1
    double seconds = 0.0, end = 0.0;    ///< of the take: now and at its end
    std::optional<double> seconds_left; ///< of the export
};

/// `Dance (3/14)  60 % [######....]  1.20 of 2.00 s  ETA 4 s`, in at most `columns` columns: parts that do not fit
/// are left out from the end; the name of the take is shortened last.
std::string ProgressLine(const ProgressText& text, std::size_t columns);

} // namespace tv2
