#pragma once

#include "tev2_loader/status.h"
#include "tools/tv2/batch_scenes.h"
#include "tools/tv2/json_answer.h"
#include "tools/tv2/verb.h"

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace tv2
{

// What --newer knows: ".tv2-stamps" at the root of the output folder. Every batch writes it, --newer reads it.

/// What the bytes of all exports of a batch depend on besides their scenes, for BatchStamps: the options as they were
/// given, without those that change no file (-j, --quiet, --json ...); SOURCE_DATE_EPOCH; the bytes of this command and
/// of its modules, `exporter` among them (ExporterPath).
std::string CircumstancesOf(const std::vector<GivenOption>& given, const std::string& exporter);

/// A path in the answer of an export: all its bytes, also where it is not UTF-8.
std::string PathIn(const Json& answer, const std::string& member);

/// The stamps of one output folder. A scene is up to date when its path, its bytes and those of every file that it was
/// read from, and the circumstances are those of its last export, and every file of that export is still there with
/// the same bytes. Nothing is concluded from times.
///
/// Several runs may use one folder at once: each writes its own stamps into what the others wrote. Where two write in
/// the same instant a stamp may be lost, and with it the knowledge that a scene is up to date, nothing else.
class BatchStamps
{
public:
    BatchStamps(std::string folder, const std::string& circumstances);

    /// Reads the stamps. A note (one line) says why what is there cannot be used; then nothing is up to date. Without
    /// this call nothing is either. Empty: nothing to remark.
    std::string Read();

    /// Why a scene has to be exported, in words ("its options have changed"); empty: it is up to date. Reads the scene
    /// and its files from disk. Several threads may ask at once.
    std::string WhyExport(const BatchScene& scene) const;

    /// The files of the last export of a scene, which WhyExport calls up to date.
    std::vector<std::string> FilesOf(const BatchScene& scene) const;

    /// Stamps a scene that was exported completely, with the answer of its export: `sources` and `files`. Writes the
    /// file when that was last done more than a second ago, and took less than a tenth of the time since.
    TEV2_LOADER::Status Record(const BatchScene& scene, const Json& answer);

    /// Writes what is not written yet. Call at the end, also of an interrupted run. Nothing happens when there is
    /// nothing new.
    TEV2_LOADER::Status Write();

private:
    using Stamps = std::map<std::string, Json>; ///< by the name of the scene's output

    static bool Parse(const std::string& text, Stamps& stamps);
    std::string Path() const;

    std::string folder_;
    Json circumstances_;
    Stamps known_;    ///< as read
    Stamps recorded_; ///< of this run
    bool written_ = true;
    std::chrono::steady_clock::time_point last_written_{};
    std::chrono::steady_clock::duration writing_took_{};
};

} // namespace tv2
