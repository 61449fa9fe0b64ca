#include "tools/tv2/module_path.h"

#include "tools/tv2/system.h"

#include <filesystem>

namespace tv2
{

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

} // namespace tv2
