#include "tests/tools/export/exporter_library.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <string>
#include <unistd.h>

// Fails as the name of the file says; other files are for the exporter that TRUE_EXPORTER names.

namespace
{

using Export = unsigned(const char*, int, int, int, bool, bool, bool, bool, bool, bool);

/// Leaves a part file of this process beside the file, as an export that is writing has one.
void BeginPart(const std::string& path)
{
    const std::size_t folder = path.rfind('/') + 1;
    const std::string part =
        path.substr(0, folder) + "." + path.substr(folder) + "." + std::to_string(::getpid()) + "-1.part";
    if (std::FILE* const file = std::fopen(part.c_str(), "wb"))
        std::fclose(file);
}

void FailAsNamed(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.find("abort") != std::string::npos)
        std::abort();
    if (name.find("hang") != std::string::npos || name.find("kill") != std::string::npos)
        BeginPart(path);
    while (name.find("hang") != std::string::npos)
        ::sleep(1);
    if (name.find("kill") != std::string::npos)
        ::raise(SIGKILL);
    if (name.find("memory") != std::string::npos)
        throw std::bad_alloc();
    for (int line = 0; name.find("loud") != std::string::npos && line < 40'000; ++line)
        std::fprintf(stderr, "complaint %d of many\n", line);
}

} // namespace

extern "C" __attribute__((visibility("default"))) unsigned python_export_tv2(const char* path, int start,
                                                                             int end, int rate, bool a,
                                                                             bool b, bool c, bool d, bool e,
                                                                             bool f)
{
    FailAsNamed(path);
    void* const exporter = ::dlopen(std::getenv("TRUE_EXPORTER"), RTLD_NOW | RTLD_LOCAL);
    void* const entry = exporter != nullptr ? ::dlsym(exporter, "python_export_tv2") : nullptr;
    return entry != nullptr ? reinterpret_cast<Export*>(entry)(path, start, end, rate, a, b, c, d, e, f) : 0;
}
