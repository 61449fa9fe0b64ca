#include "tools/tv2/host_verbs.h"

#include "tools/tv2/module_path.h"

#ifndef _WIN32
#include <dlfcn.h>
#endif

namespace tv2
{

#ifdef _WIN32

std::vector<VerbRow> HostVerbs(std::string&)
{
    return {};
}

#else

std::vector<VerbRow> HostVerbs(std::string& error)
{
    // Never closed: the verbs are in it.
    void* const module = dlopen(ModulePath("tv2_host_verbs").c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* const function = module != nullptr ? dlsym(module, "tv2_host_verbs") : nullptr;
    if (function == nullptr)
    {
        const char* const cause = dlerror();
        error =
            "the commands that open scenes cannot be loaded: " + std::string(cause != nullptr ? cause : "");
        return {};
    }
    return *reinterpret_cast<const std::vector<VerbRow>* (*)()>(function)();
}

#endif

} // namespace tv2
