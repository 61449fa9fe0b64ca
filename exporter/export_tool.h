#pragma once

#include "exporter/base/export_context.h"

/// The entry in MotionBuilder's export menu. Stands at global scope, where the SDK's registration looks for
/// it.
class Tev2MotionBuilderExportTool : public FBMenuItem
{
    FBMenuItemDeclare(Tev2MotionBuilderExportTool, FBMenuItem);

public:
    /// Sets type, extension filter and captions. Called by the constructor.
    virtual bool FBCreate();

    /// Asks for the options and exports to `filename`, the choice of MotionBuilder's own save dialog. True
    /// when the export completed or was cancelled; false also when memory ran out.
    virtual bool Execute(const char* filename = nullptr);

private:
    void ApplyExtensionFilter();

    tev2_exporter::ExportContext context_;
};
