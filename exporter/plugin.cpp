// The plug-in as MotionBuilder loads it: the library object's phases and the entry points.

#include "exporter/base/script_entry.h"
#include "exporter/export_driver.h"
#include "exporter/export_tool.h"

#include <fbsdk/fbsdk.h>

#include <type_traits>

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
    Tev2MotionBuilderExportTool::gTev2MotionBuilderExportTool = nullptr; // it may be started again
    return true;
}

#if defined(_WIN32)
#define TEV2_EXPORTED __declspec(dllexport)
#else
#define TEV2_EXPORTED __attribute__((visibility("default")))
#endif

extern "C" TEV2_EXPORTED unsigned python_export_tv2(const char* path, int startFrame, int endFrame, int fps,
                                                    bool spacesToUnderscores, bool keepPositiveZ,
                                                    bool removeNamespace, bool disableConstraints,
                                                    bool exportAllKeys, bool allTakes) noexcept
{
    using namespace tev2_exporter;
    try
    {
        ExportCall call;
        call.rate = fps;
        call.whole_take = exportAllKeys;
        call.start_frame = startFrame;
        call.end_frame = endFrame;
        call.flags.spaces_to_underscores = spacesToUnderscores;
        call.flags.keep_positive_z = keepPositiveZ;
        call.flags.remove_namespace = removeNamespace;
        call.flags.disable_constraints = disableConstraints;
        call.flags.all_takes = allTakes;
        ExportContext context;
        return ExportScene(context, FillOptionsFromScript(context, call), path);
    }
    catch (...) // nothing may be thrown into the script's interpreter
    {
        return 0;
    }
}

extern "C" TEV2_EXPORTED void tv2_set_key_reduction(bool reduce) noexcept
{
    tev2_exporter::SetKeyReduction(reduce);
}

static_assert(std::is_convertible_v<decltype(&python_export_tv2), tev2_exporter::ScriptEntry*>);
static_assert(std::is_convertible_v<decltype(&tv2_set_key_reduction), tev2_exporter::KeyReductionSwitch*>);
