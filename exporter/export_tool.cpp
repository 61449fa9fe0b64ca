#include "exporter/export_tool.h"

#include "exporter/export_dialog.h"
#include "exporter/export_driver.h"

FBMenuItemImplementation(Tev2MotionBuilderExportTool);
FBRegisterMenuItem(Tev2MotionBuilderExportTool);

bool Tev2MotionBuilderExportTool::FBCreate()
{
    Type = kFBMenuItemMotionExport;
    ApplyExtensionFilter();
    Label = "QN - TV2 Exporter";
    Description = "QN - TV2 Exporter Description";
    return true;
}

bool Tev2MotionBuilderExportTool::Execute(const char* filename)
{
    using namespace tev2_exporter;
    try
    {
        ApplyExtensionFilter(); // the box may have changed; this takes effect from the next use
        TEV2_EXPORTER_DIALOG dialog;
        ExportOptions options;
        dialog.ShowFor(options);
        return options.Cancelled == 1 || ExportScene(context_, options, filename) == 1;
    }
    catch (...) // nothing may be thrown into the application
    {
        return false;
    }
}

void Tev2MotionBuilderExportTool::ApplyExtensionFilter()
{
    Extension = tev2_exporter::WantsAsteriskExtension() ? "*.tv2" : ".tv2";
}
