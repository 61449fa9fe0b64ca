#pragma once

// What an export would do, and the first reason not to start it. One table of rules for everything that starts exports
// without the dialog; it looks at the files that are there and changes none.

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
    bool all_takes = false;
    bool spaces_to_underscores = true;
    bool whole_rates_only = false; ///< there is no other way into the exporter than its script entry
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
    std::string path;
    SamplingRange range;
};

struct RulesPlan
{
    Objection objection;          ///< what follows is complete only when there is none
    double rate = 0.0;            ///< samples a second as asked for; a file has it in single precision
    std::int32_t start_frame = 0; ///< range as the script entry takes it; without effect for the whole take
    std::int32_t end_frame = 0;
    bool whole_take = true;
    std::size_t nodes = 0; ///< in each file
    std::size_t cameras = 0;
    std::string path_for_exporter;  ///< as of PathForExporter
    std::vector<FilePlan> files;    ///< in the order of the takes
    std::vector<std::string> notes; ///< what was rounded, cut or left out, one line each
};

/// Applies the rules in order until one objects. Without a scene only those apply that need none.
RulesPlan PlanExport(const ExportQuestion& question, const SceneFacts* scene);

/// Whether there is anything to export.
Objection CheckScene(const SceneFacts& scene);

/// Counts nodes and cameras of each file.
void CountNodes(const std::vector<SceneModel>& models, RulesPlan& plan);

/// Takes that the question is about, with the names of their files; ranges are left open.
std::vector<FilePlan> NameFiles(const ExportQuestion& question, const SceneFacts& scene);

/// The path as an exporter is given it by the headless host: absolute, as an application's file dialog gives it, so that
/// the file tells where it is from. As it is where the names of files would become too long for that.
std::string PathForExporter(const std::string& path, const SceneFacts& scene);

/// Whether takes can be sampled at that rate, which need not be one that the question could ask for.
Objection CheckSampling(double rate, const ExportQuestion& question, const SceneFacts& scene);

/// Looks at the places where files would be written.
Objection CheckTargets(const std::vector<FilePlan>& files, const SceneFacts& scene);

} // namespace tev2_exporter
