#pragma once

#include "exporter/rules/rules.h"
#include "tools/tv2/progress_line.h"

#include <fbsdk/fbsdk.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

namespace mobu_host
{
class SceneObserver;
}

namespace tv2
{

/// Follows the host's player during an export: measures the time per take and, on a terminal, shows a progress line.
class ExportWatch
{
public:
    using Clock = std::chrono::steady_clock;

    /// `terminal` is where the line is drawn, `columns` wide; null for none. The files must outlive the watch.
    ExportWatch(const std::vector<tev2_exporter::FilePlan>& files, std::ostream* terminal,
                std::size_t columns = 80);
    ~ExportWatch();

    /// Call when the export has returned: removes the line and stops the clock.
    void Finish();

    /// Seconds that a file of the plan took; 0 for one whose take was never sampled.
    double Seconds(std::size_t file) const { return seconds_[file]; }

private:
    static constexpr std::size_t kNoFile = static_cast<std::size_t>(-1);

    void OnGoto(double seconds, FBTake* take);
    void Draw(double seconds);
    void EndFile();

    const std::vector<tev2_exporter::FilePlan>& files_;
    std::vector<std::size_t> samples_of_; ///< each file
    DrawnProgress line_;
    std::vector<double> seconds_;
    std::vector<bool> begun_;
    std::unordered_map<const FBTake*, std::size_t> file_of_; ///< index in the files
    std::size_t file_ = kNoFile;                             ///< that is sampled now
    std::size_t samples_ = 0;                                ///< of that file
    std::size_t total_ = 0;                                  ///< of all files of the plan
    std::size_t done_ = 0;                                   ///< of the files before
    Clock::time_point start_ = Clock::now();
    Clock::time_point file_start_;
    std::unique_ptr<mobu_host::SceneObserver> observer_;
};

} // namespace tv2
