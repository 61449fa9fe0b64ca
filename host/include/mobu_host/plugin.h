#pragma once

#include <memory>
#include <string>
#include <type_traits>

#include <fbsdk/fbsdk.h>

// Loads a plug-in module as the application does.

namespace mobu_host
{

class FBSDK_DLL Plugin
{
public:
    // Loads the module and runs init, open and ready of its library object. Null when a step fails: error
    // then names the file and the cause, and nothing stays loaded.
    static std::unique_ptr<Plugin> Load(const std::string& path, std::string& error);

    // Runs close and release and unloads the module.
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    const std::string& Path() const;

    // An exported function, null when there is none: Symbol<int(const char*)>("name").
    template <class Function>
    Function* Symbol(const char* name) const
    {
        static_assert(std::is_function_v<Function>, "name a function type");
        return reinterpret_cast<Function*>(Address(name));
    }

private:
    struct Module;
    explicit Plugin(std::unique_ptr<Module> module);
    void* Address(const char* name) const;
    std::unique_ptr<Module> module_;
};

} // namespace mobu_host
