#include "host/sdk/shared_module.h"

#include <dlfcn.h>

namespace mobu_host
{

void* OpenModule(const std::string& path, std::string& cause)
{
    // A name without a slash would be searched for in the library path instead of the current folder.
    const std::string file = path.find('/') == std::string::npos ? "./" + path : path;
    void* module = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module)
    {
        const char* text = dlerror();
        cause = text ? text : "cannot be loaded";
    }
    return module;
}

void* ModuleSymbol(void* module, const char* name)
{
    return dlsym(module, name);
}
void CloseModule(void* module)
{
    dlclose(module);
}

bool SameModule(const void* first, const void* second)
{
    Dl_info of_first, of_second;
    return dladdr(first, &of_first) != 0 && dladdr(second, &of_second) != 0 &&
           of_first.dli_fbase == of_second.dli_fbase;
}

} // namespace mobu_host
