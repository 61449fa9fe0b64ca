#include "tools/tv2/exporter_module.h"

#include "tools/tv2/module_path.h"

namespace tv2
{

namespace
{

constexpr const char* kModuleName = "tv2_motionbuilder_export_tool";

} // namespace

std::string ExporterPath(const std::string& path)
{
    return path.empty() ? ModulePath(kModuleName) : path;
}

std::unique_ptr<mobu_host::Plugin> LoadExporter(const std::string& path, std::string& error)
{
    std::unique_ptr<mobu_host::Plugin> plugin = mobu_host::Plugin::Load(ExporterPath(path), error);
    if (!plugin)
        error = "the exporter cannot be loaded: " + error;
    return plugin;
}

} // namespace tv2
