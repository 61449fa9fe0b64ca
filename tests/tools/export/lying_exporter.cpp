#include <fbsdk/fbsdk.h>

#include <cstdlib>
#include <filesystem>

// Puts a copy of the file that LIE_SOURCE names where the export should go, nothing without one, and reports success.

FBLibraryDeclare(lying_exporter) {}
FBLibraryDeclareEnd;

bool FBLibrary::LibInit()
{
    return true;
}
bool FBLibrary::LibOpen()
{
    return true;
}
bool FBLibrary::LibReady()
{
    return true;
}
bool FBLibrary::LibClose()
{
    return true;
}
bool FBLibrary::LibRelease()
{
    return true;
}

extern "C" __attribute__((visibility("default"))) unsigned
python_export_tv2(const char* path, int, int, int, bool, bool, bool, bool, bool, bool)
{
    if (const char* source = std::getenv("LIE_SOURCE"))
    {
        std::error_code ignored;
        std::filesystem::copy_file(source, path, std::filesystem::copy_options::overwrite_existing, ignored);
    }
    return 1;
}
