// The plug-in as MotionBuilder loads it: the library object's phases and the entry points.

#include "exporter/export_driver.h"
#include "exporter/export_tool.h"

#include <fbsdk/fbsdk.h>

FBLibraryDeclare(tev2_motionbuilder_export_tool)
{
    FBLibraryRegister(Tev2MotionBuilderExportTool);
}
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
    try
    {
        FBMenuItemActivation(Tev2MotionBuilderExportTool);
        return true;
    }
    catch (...)
    {
        return false;
    }
}
bool FBLibrary::LibClose()
{
    return true;
}
bool FBLibrary::LibRelease()
{
    FBMenuItemHandle(Tev2MotionBuilderExportTool, tool);
    if (tool)
        tool->FBDelete();
    return true;
}

#if defined(_WIN32)
#define TEV2_EXPORTED __declspec(dllexport)
#else
#define TEV2_EXPORTED __attribute__((visibility("default")))
#endif

// One export of the open scene without a dialog, for scripts. `path` is the target file; frames count at the
// transport rate; with `exportAllKeys` the whole take is exported and the frames are ignored. Returns 1 when
// the run completed, 0 when a conversion failed or memory ran out.
extern "C" TEV2_EXPORTED unsigned python_export_tv2(const char* path, int startFrame, int endFrame, int fps,
                                                    bool spacesToUnderscores, bool keepPositiveZ,
                                                    bool removeNamespace, bool disableConstraints,
                                                    bool exportAllKeys, bool allTakes) noexcept
{
    using namespace tev2_exporter;
    try
    {
        ExportContext context;
        const ExportOptions options =
            FillOptionsFromScript(context, {startFrame, endFrame, fps, spacesToUnderscores, keepPositiveZ,
                                            removeNamespace, disableConstraints, exportAllKeys, allTakes});
        return ExportScene(context, options, path);
    }
    catch (...) // nothing may be thrown into the script's interpreter
    {
        return 0;
    }
}
