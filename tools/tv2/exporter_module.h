#pragma once

#include <mobu_host/plugin.h>

#include <memory>
#include <string>

namespace tv2
{

/// The exporter's module: `path`, or with an empty path the one that belongs to this command.
std::string ExporterPath(const std::string& path);

/// Loads the exporter as MotionBuilder does: the module at `path`, or with an empty path the one that belongs to this
/// command. Null when that fails; `error` then says why.
std::unique_ptr<mobu_host::Plugin> LoadExporter(const std::string& path, std::string& error);

} // namespace tv2
