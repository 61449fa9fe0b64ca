#include "host/sdk/shared_module.h"

#include <windows.h>

namespace mobu_host
{
namespace
{

HMODULE Handle(void* module)
{
    return static_cast<HMODULE>(module);
}

// The module of the code or data at an address; null for none.
HMODULE ModuleAt(const void* address)
{
    HMODULE module = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return GetModuleHandleExA(flags, static_cast<const char*>(address), &module) ? module : nullptr;
}

// The system's text for an error, without its line end.
std::string Words(DWORD error)
{
    char text[512];
    DWORD size = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                                text, sizeof text, nullptr);
    while (size > 0 && (text[size - 1] == '\n' || text[size - 1] == '\r' || text[size - 1] == ' '))
        --size;
    return size > 0 ? std::string(text, size) : "system error " + std::to_string(error);
}

} // namespace

void* OpenModule(const std::string& path, std::string& cause)
{
    // The absolute path: a file name would be searched for in the system's folders first. Dependencies are looked for
    // beside the module.
    std::string file(32768, '\0');
    file.resize(GetFullPathNameA(path.c_str(), static_cast<DWORD>(file.size()), file.data(), nullptr));
    const HMODULE module = LoadLibraryExA(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module)
        cause = Words(GetLastError());
    return module;
}

void* ModuleSymbol(void* module, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(Handle(module), name));
}

void CloseModule(void* module)
{
    FreeLibrary(Handle(module));
}

bool SameModule(const void* first, const void* second)
{
    const HMODULE module = ModuleAt(first);
    return module && module == ModuleAt(second);
}

} // namespace mobu_host
