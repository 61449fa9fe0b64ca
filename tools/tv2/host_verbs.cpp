#include "tools/tv2/host_verbs.h"

#include "tools/tv2/module_path.h"

#include <algorithm>

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

std::vector<VerbRow> AllVerbs(std::string& error)
{
    std::vector<VerbRow> rows = Verbs();
    const std::vector<VerbRow> more = HostVerbs(error);
    rows.insert(rows.end(), more.begin(), more.end());
    std::sort(rows.begin(), rows.end(), [](const VerbRow& a, const VerbRow& b) { return a.place < b.place; });
    return rows;
}

} // namespace tv2
