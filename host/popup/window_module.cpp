#include "host/popup/window_module.h"

#include "host/sdk/shared_module.h"

namespace mobu_host
{

std::optional<WindowModule> WindowModule::Load(const std::string& path, std::string& error)
{
    std::string cause;
    void* const module = OpenModule(path, cause);
    const void* const functions = module ? ModuleSymbol(module, kWindowFunctions) : nullptr;
    if (!functions)
    {
        error = "the module of its window, " + path + " (made where FLTK is installed), cannot be loaded: " +
                (module ? std::string("it has no ") + kWindowFunctions : cause);
        return std::nullopt;
    }
    const auto& window = *static_cast<const WindowFunctions*>(functions);
    error = window.connect();
    return error.empty() ? std::optional(WindowModule(window)) : std::nullopt;
}

} // namespace mobu_host
