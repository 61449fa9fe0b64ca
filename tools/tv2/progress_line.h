#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <ostream>
#include <string>

namespace tv2
{

/// The progress of an export, or of a batch.
struct ProgressText
{
    std::string name;     ///< of the take; of the scene that ended last in a batch
    std::size_t file = 0; ///< or scene, counted from 1; 0 where there is only one
    std::size_t files = 1;
    double part = 0.0;                  ///< of this file, or of the batch: 0 to 1
    double seconds = 0.0;               ///< of the take, now
    std::optional<double> end;          ///< of the take
    std::size_t failed = 0;             ///< scenes
    std::optional<double> seconds_left; ///< of the export
};

/// `Dance (3/14)  60 % [######....]  1.20 of 2.00 s  ETA 4 s`, in at most `columns` columns: parts that do not fit
/// are left out from the end; the name is shortened last.
std::string ProgressLine(const ProgressText& text, std::size_t columns);

/// Seconds that the rest of some work takes, when `part` of it (0 to 1) took `elapsed` seconds; none too early to say.
std::optional<double> SecondsLeft(double elapsed, double part);

/// The progress line of a terminal, drawn over itself.
class DrawnProgress
{
public:
    /// Null: draws nothing.
    DrawnProgress(std::ostream* terminal, std::size_t columns) : terminal_(terminal), columns_(columns) {}

    /// Whether it is time to draw again.
    bool IsDue() const;
    void Draw(const ProgressText& text);
    void Erase();

private:
    std::ostream* terminal_;
    std::size_t columns_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point last_drawn_;
};

} // namespace tv2
