#include <string>

#include <fbsdk/fbsdk.h>

// Appends each phase of its life to the property "Phases" of the scene root.

namespace
{

bool Record(const char* phase)
{
    FBModel* root = FBSystem::TheOne().SceneRootModel;
    if (FBProperty* phases = root->PropertyList.Find("Phases"))
        phases->SetString((std::string(phases->AsString()) + phase + " ").c_str());
    return true;
}

} // namespace

class RecordingTool : public FBMenuItem
{
    FBMenuItemDeclare(RecordingTool, FBMenuItem);

public:
    bool FBCreate() override;
    bool Execute(const char* pFilename = nullptr) override;

private:
    FBSystem system_;
    FBPlayerControl player_;
};

FBLibraryDeclare(recording_plugin)
{
    FBLibraryRegister(RecordingTool);
    Record("load");
}
FBLibraryDeclareEnd;

FBMenuItemImplementation(RecordingTool);
FBRegisterMenuItem(RecordingTool);

bool RecordingTool::FBCreate()
{
    Set(kFBMenuItemMotionExport, "*.rec", "Recorder", "Records what happens");
    return true;
}

bool RecordingTool::Execute(const char* pFilename)
{
    Record(pFilename);
    FBTime time;
    time.SetSecondDouble(2.5);
    return player_.Goto(time) && system_.Scene->Evaluate();
}

bool FBLibrary::LibInit()
{
    return Record("init");
}

bool FBLibrary::LibOpen()
{
    return Record("open");
}

bool FBLibrary::LibReady()
{
    Record("ready");
    FBMenuItemActivation(RecordingTool);
    return READY_RESULT;
}

bool FBLibrary::LibClose()
{
    return Record("close");
}

bool FBLibrary::LibRelease()
{
    Record("release");
    FBMenuItemHandle(RecordingTool, tool);
    if (tool)
        tool->FBDelete();
    return true;
}

extern "C" FBSDK_MODULE_EXPORT int RecordTwice(const char* pText)
{
    Record(pText);
    Record(pText);
    return 2;
}
