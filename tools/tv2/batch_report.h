#pragma once

#include "tools/tv2/batch_scenes.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/process_pool.h"

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace tv2
{

enum class SceneState
{
    kExported,
    kWouldExport, ///< of a dry run
    kUpToDate,
    kSkipped,
    kFailed
};

/// What became of one scene of a batch.
struct SceneOutcome
{
    std::string scene;
    SceneState state = SceneState::kFailed;
    /// Why it failed or was skipped, and files of it that are missing; with --newer why it was exported.
    std::vector<std::string> reasons = {};
    Json answer = {};     ///< of its export; null where there was none
    double seconds = 0.0; ///< it took
};

/// What a process that exported one scene has done. `take_optional`: a scene without the takes is skipped.
SceneOutcome OutcomeOf(const BatchScene& scene, const EndedProcess& ended, bool take_optional);

bool IsExported(const SceneOutcome& outcome); ///< or would be, in a dry run

/// A line of --json: the answer of the export, and the state.
Json OutcomeJson(const SceneOutcome& outcome);

/// What a batch did, and says at its end.
class BatchReport
{
public:
    /// The scenes of this run.
    BatchReport(std::size_t scenes, bool dry_run) : scenes_(scenes), dry_run_(dry_run) {}

    void Add(const SceneOutcome& outcome);

    /// Records a failure of something else than a scene, such as a folder that cannot be read.
    void AddFailure(const std::string& what) { others_.push_back(what); }
    void AddNotes(const std::string& scene, const std::vector<std::string>& notes);

    bool HasFailures() const { return failed_ > 0 || !others_.empty(); }
    std::size_t Failed() const { return failed_; }
    /// Whether that is why every scene was skipped.
    bool NoSceneHasTheTake() const { return scenes_ > 0 && without_take_ == scenes_; }
    std::size_t Ended() const { return exported_ + would_export_ + up_to_date_ + skipped_ + failed_; }

    /// The failures, one line each: sorted by scene, each once.
    std::vector<std::string> Failures() const;

    /// The files of a dry run, the notes, those of many scenes once, and one line with the sums. For a terminal of
    /// `columns` columns; 0 where it is none.
    void Print(std::ostream& out, std::size_t columns, double seconds) const;

    /// The same as the last line of --json.
    Json SummaryJson(double seconds, bool interrupted) const;

private:
    void AddFiles(const Json& files, const std::string& why);
    std::string Sums(double seconds) const;

    std::size_t scenes_;
    bool dry_run_;
    std::size_t exported_ = 0, would_export_ = 0, up_to_date_ = 0, skipped_ = 0, failed_ = 0;
    std::size_t without_take_ = 0; ///< of the skipped ones
    std::uint64_t files_ = 0, kept_files_ = 0, bytes_ = 0, keys_sampled_ = 0, keys_kept_ = 0;
    std::vector<std::string> others_;
    std::vector<std::pair<std::string, std::string>> failures_; ///< scene and reason
    std::vector<std::string> planned_;                          ///< lines of a dry run
    std::vector<std::pair<std::string, std::string>> notes_;    ///< scene and text
};

} // namespace tv2
