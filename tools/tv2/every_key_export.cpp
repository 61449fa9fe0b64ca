#include "tools/tv2/every_key_export.h"

#include "tev2_loader/file.h"
#include "tools/tv2/export_watch.h"
#include "tools/tv2/system.h"

#include <mobu_host/scene.h>

#include <filesystem>
#include <memory>

namespace tv2
{

using tev2_exporter::FilePlan;
using TEV2_LOADER::Status;

namespace
{

/// A folder that goes with the object, and all that is in it.
class PrivateFolder
{
public:
    PrivateFolder() = default;
    ~PrivateFolder()
    {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;

    Status Make()
    {
        std::string path;
        Status made = MakePrivateFolder(path);
        path_ = made ? path : std::string();
        return made;
    }

    std::string File() const { return path_ + "/every_key.tv2"; }

private:
    std::string path_;
};

class CurrentTake
{
public:
    CurrentTake() : before_(FBSystem().CurrentTake) {}
    ~CurrentTake() { FBSystem().CurrentTake = before_; }
    CurrentTake(const CurrentTake&) = delete;
    CurrentTake& operator=(const CurrentTake&) = delete;

private:
    FBTake* before_;
};

Status LoadAs(const std::string& what, const std::string& path, TEV2_LOADER::TEV2& scene)
{
    const Status loaded = TEV2_LOADER::LoadFile(path, scene, {.applyStartTime = false});
    return loaded ? loaded : Status::Failure(what + " cannot be read: " + loaded.Reason());
}

/// Exports the take of a file once more, and compares.
Status Measure(const mobu_host::Exporter& exporter, const tev2_exporter::ExportCall& call,
               const FilePlan& planned, std::ostream* terminal, KeyReductionCost& cost)
{
    const CurrentTake current;
    FBSystem().CurrentTake = mobu_host::Scene().Takes[static_cast<int>(planned.take)];
    std::vector<FilePlan> watched{planned};
    watched[0].take_name += " (every key)";
    ExportWatch watch(watched, terminal, TerminalColumns(Stream::kErrors));
    std::string error;
    const bool completed = exporter.RunWithEveryKey(call, error);
    watch.Finish();
    if (!completed)
        return Status::Failure(error.empty() ? "the exporter gave up" : error);
    TEV2_LOADER::TEV2 sampled;
    TEV2_LOADER::TEV2 reduced;
    if (Status loaded = LoadAs("the file with every key", call.path, sampled); !loaded)
        return loaded;
    if (Status loaded = LoadAs("the file", planned.path, reduced); !loaded)
        return loaded;
    return MeasureKeyReduction(sampled, reduced, cost);
}

} // namespace

void MeasureReductions(const mobu_host::Exporter& exporter, tev2_exporter::ExportCall call,
                       ExportReport& report, std::ostream* terminal)
{
    PrivateFolder folder;
    const Status made = folder.Make();
    call.path = folder.File();
    call.flags.all_takes = false;
    for (ExportReport::File& file : report.files)
    {
        if (!file.exported.error.empty() || file.planned.kept)
            continue;
        KeyReductionCost& cost = file.reduction.emplace();
        const Status measured = made ? Measure(exporter, call, file.planned, terminal, cost) : made;
        if (!measured)
            cost.error = measured.Reason();
        std::error_code ignored;
        std::filesystem::remove(call.path, ignored); // of the next take nothing may be left of this one
    }
}

} // namespace tv2
