#include "tools/tv2/exporter_module.h"

#include "tools/tv2/system.h"

#include <filesystem>

namespace tv2
{

namespace
{

constexpr const char* kModuleName = "tv2_motionbuilder_export_tool";

} // namespace

std::string ModulePath(const std::string& name)
{
    std::error_code error;
    const std::string module = ModuleFileName(name);
    const std::filesystem::path prefix = std::filesystem::path(ProgramPath()).parent_path().parent_path();
    const std::filesystem::path built = prefix / "lib/tv2" / module;
    const std::filesystem::path installed =
        prefix / TV2_MODULE_DIR / module; // replaced where that is absolute
    return std::filesystem::exists(built, error) ? built.string() : installed.string();
}

std::string ExporterPath(const std::string& path)
{
    return path.empty() ? ModulePath(kModuleName) : path;
}

std::unique_ptr<mobu_host::Plugin> LoadExporter(const std::string& path, std::string& error)
{
    std::unique_ptr<mobu_host::Plugin> plugin = mobu_host::Plugin::Load(ExporterPath(path), error);
    if (!plugin)
    {
        error = "the exporter cannot be loaded: " + error;
    }
    return plugin;
}

} // namespace tv2
