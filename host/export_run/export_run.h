#pragma once

#include <functional>
#include <memory>
#include <string>

#include "exporter/base/export_options.h"

#include <mobu_host/plugin.h>

// One export of the open scene by a plug-in, without a user.

namespace mobu_host
{

using tev2_exporter::ExportCall;

class Exporter
{
public:
    // Loads the plug-in. The user's stored settings are put aside during the exporter's lifetime, since a fractional
    // rate goes through the dialog, which starts with them and stores new ones. Null when that fails.
    static std::unique_ptr<Exporter> Load(const std::string& plugin, std::string& error);
    ~Exporter();
    Exporter(const Exporter&) = delete;
    Exporter& operator=(const Exporter&) = delete;

    // A whole rate goes through the plug-in's script entry. That takes whole numbers, so that a fractional rate goes
    // through its menu entry, with a dialog that is filled in and left with "Export" in memory. True when the plug-in
    // completed the run; otherwise `error` says why where that is known.
    bool Run(const ExportCall& call, std::string& error) const;

private:
    struct Parts;
    explicit Exporter(std::unique_ptr<Parts> parts);
    std::unique_ptr<Parts> parts_;
};

// The entry of the loaded plug-ins in the export menu; null when there is none.
FBMenuItem* ExportEntry();

} // namespace mobu_host
