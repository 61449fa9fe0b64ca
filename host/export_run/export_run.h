#pragma once

#include <functional>
#include <memory>
#include <string>

#include "exporter/base/export_options.h"

#include <mobu_host/plugin.h>

namespace mobu_host
{

using tev2_exporter::ExportCall;

/// Exports the open scene with a plug-in, without a user.
class Exporter
{
public:
    /// Loads the plug-in. During the exporter's lifetime the user's stored settings are hidden, since a fractional
    /// rate goes through the dialog, which reads and writes them. Null when that fails; `error` then says why.
    static std::unique_ptr<Exporter> Load(const std::string& plugin, std::string& error);
    ~Exporter();
    Exporter(const Exporter&) = delete;
    Exporter& operator=(const Exporter&) = delete;

    /// Uses the plug-in's script entry, which takes whole rates; at a fractional rate its menu entry, with a dialog
    /// that is filled in and confirmed in memory. True when the plug-in completed the run; otherwise `error` says why,
    /// where that is known.
    bool Run(const ExportCall& call, std::string& error) const;

    /// The same without key reduction: the files have every sampled key. False also for a plug-in that cannot do that.
    bool RunWithEveryKey(const ExportCall& call, std::string& error) const;

private:
    struct Parts;
    explicit Exporter(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

/// The first entry of the loaded plug-ins in the export menu; null when there is none.
FBMenuItem* ExportEntry();

} // namespace mobu_host
