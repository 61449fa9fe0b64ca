#pragma once

// What an export would do, and the first reason not to start it: one table of rules for all that starts exports without
// the dialog. Reads files and folders, changes none.

#include "exporter/base/export_options.h"
#include "exporter/sampling/sampling_range.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tev2_exporter
{

/// What an export is asked to do.
struct ExportQuestion
{
    /// Names of options in messages: "--all-takes" or "all_takes".
    enum class Wording
    {
        kCommandLine,
        kPython
    };
    enum class FileNames
    {
        kOfThisSystem,
        kPosix,
        kWindows
    };

    std::string path;
    std::string rate;                        ///< as RateOfText reads it; empty: the scene's
    std::optional<std::int32_t> start_frame; ///< frames of the transport rate; none: the take's own ends
    std::optional<std::int32_t> end_frame;
    ExportFlags flags;
    std::vector<std::size_t>
        takes{};                ///< indices of takes, with names as of all takes; empty: what the flags say
    bool keep_existing = false; ///< files that are there already stay as they are
    bool make_folders = false;  ///< folders of files may be missing
    bool whole_rates_only = false; ///< the exporter can only be reached through its script entry
    Wording wording = Wording::kCommandLine;
    FileNames file_names = FileNames::kOfThisSystem;
};

struct SceneTake
{
    std::string name;
    double start = 0.0; ///< seconds
    double stop = 0.0;
};

/// Models in pre-order, the scene's root first.
struct SceneModel
{
    std::int32_t parent = -1; ///< index; -1 for the root
    bool selected = false;
    bool camera = false;
};

struct SceneFacts
{
    double transport_rate = 0.0; ///< frames a second
    std::vector<SceneTake> takes;
    std::optional<std::size_t> current_take;
    std::vector<SceneModel> models;
    std::vector<std::string> files; ///< that the scene was read from; empty: it was never saved or opened
};

/// Why an export is refused. Codes never change; texts are for people.
struct Objection
{
    const char* code = nullptr; ///< null: there is none
    std::string text;

    explicit operator bool() const { return code != nullptr; }
};

/// One file that would be written.
struct FilePlan
{
    std::size_t take = 0; ///< index in the scene
    std::string take_name;
    std::string path;
    std::string named; ///< the same file as the exporter names it: from the path of the call
    SamplingRange range;
    bool kept = false; ///< is there already and stays as it is: not written
};

struct ExportPlan
{
    Objection objection;   ///< the rest is complete only when there is none
    ExportCall call;       ///< what to start the exporter with, see CallsOf
    std::size_t nodes = 0; ///< in each file
    std::size_t cameras = 0;
    std::vector<FilePlan> files;    ///< in the order of the takes
    std::vector<std::string> notes; ///< what was rounded, cut or left out, one line each
};

/// Applies the rules in order until one objects. Without a scene only those apply that need none.
ExportPlan PlanExport(const ExportQuestion& question, const SceneFacts* scene);

/// The calls of the exporter that write the files of a plan, and no others: one for all of them where that is possible,
/// otherwise one for each file, whose take is then the current one.
struct CallOfPlan
{
    ExportCall call;
    std::optional<std::size_t> take; ///< to make current; none: as it is
};
std::vector<CallOfPlan> CallsOf(const ExportQuestion& question, const ExportPlan& plan);

/// The plan of an export that the dialog has started, with the choices it was left with. Only the rules about sampling
/// apply, which the exporter itself applies too.
ExportPlan PlanOfDialog(const ExportCall& chosen, const SceneFacts& scene);

/// Whether there is anything to export.
Objection CheckScene(const SceneFacts& scene);

/// The takes that the question is about and the names of their files; ranges are left empty.
std::vector<FilePlan> NameFiles(const ExportQuestion& question, const SceneFacts& scene);

/// The path that the headless host gives to the exporter: absolute, as an application's file dialog gives it, so that
/// the file records where it is; unchanged where the names of files would become too long for that.
std::string PathForExporter(const std::string& path, const SceneFacts& scene);

/// Whether the files can be written where they would be.
Objection CheckTargets(const ExportQuestion& question, const std::vector<FilePlan>& files,
                       const SceneFacts& scene);

} // namespace tev2_exporter
