#include "mobu_host/plugin.h"

#include <set>
#include <vector>

#include "host/sdk/library.h"
#include "host/sdk/shared_module.h"

namespace mobu_host
{

namespace
{

// Library objects that are in use by a Plugin.
std::set<FBLibraryBase*>& UsedLibraries()
{
    static std::set<FBLibraryBase*> libraries;
    return libraries;
}

// The library objects of a module that was loaded before by other means.
std::vector<FBLibraryBase*> LibrariesOfModule(const void* init)
{
    std::vector<FBLibraryBase*> found;
    for (FBLibraryBase* library : Libraries())
        if (init && SameModule(library, init) && !UsedLibraries().contains(library))
            found.push_back(library);
    return found;
}

} // namespace

struct Plugin::Module
{
    std::string path;
    void* handle = nullptr;
    std::vector<FBLibraryBase*> libraries; // of this module
    bool started = false;                  // init went well: close and release are due

    Module() = default;
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    ~Module()
    {
        if (started)
        {
            for (FBLibraryBase* library : libraries)
                library->LibClose();
            for (FBLibraryBase* library : libraries)
                library->LibRelease();
        }
        for (FBLibraryBase* library : libraries)
            UsedLibraries().erase(library);
        if (handle)
            CloseModule(handle);
    }
};

std::unique_ptr<Plugin> Plugin::Load(const std::string& path, std::string& error)
{
    auto module = std::make_unique<Module>();
    module->path = path;
    const auto fail = [&](const std::string& cause)
    {
        error = path + ": " + cause;
        return nullptr;
    };

    const std::size_t known = Libraries().size();
    std::string cause;
    module->handle = OpenModule(path, cause);
    if (!module->handle)
        return fail(cause);
    module->libraries.assign(Libraries().begin() + static_cast<std::ptrdiff_t>(known), Libraries().end());
    if (module->libraries.empty())
        module->libraries = LibrariesOfModule(ModuleSymbol(module->handle, "LIBRARY_INIT"));
    UsedLibraries().insert(module->libraries.begin(), module->libraries.end());
    if (module->libraries.empty())
        return fail("is no plug-in: it declares no library object");

    using LibraryInit = bool(HIError);
    auto* const init = reinterpret_cast<LibraryInit*>(ModuleSymbol(module->handle, "LIBRARY_INIT"));
    if (!init)
        return fail("is no plug-in: it exports no LIBRARY_INIT");
    if (!init(nullptr))
        return fail("LibInit failed");
    module->started = true;
    for (FBLibraryBase* library : module->libraries)
        if (!library->LibOpen())
            return fail("LibOpen failed");
    for (FBLibraryBase* library : module->libraries)
        if (!library->LibReady())
            return fail("LibReady failed");
    return std::unique_ptr<Plugin>(new Plugin(std::move(module)));
}

Plugin::Plugin(std::unique_ptr<Module> module) : module_(std::move(module)) {}
Plugin::~Plugin() = default;
const std::string& Plugin::Path() const
{
    return module_->path;
}
void* Plugin::Address(const char* name) const
{
    return ModuleSymbol(module_->handle, name);
}

} // namespace mobu_host
