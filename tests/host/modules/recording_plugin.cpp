#include <string>

#include <fbsdk/fbsdk.h>

// Writes every phase it goes through into the property "Phases" of the scene root.

namespace
{

void Record(const char* phase)
{
    FBModel* root = FBSystem::TheOne().SceneRootModel;
    if (FBProperty* phases = root->PropertyList.Find("Phases"))
        phases->SetString((std::string(phases->AsString()) + phase + " ").c_str());
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
    Record("init");
    return true;
}

bool FBLibrary::LibOpen()
{
    Record("open");
    return true;
}

bool FBLibrary::LibReady()
{
    Record("ready");
    FBMenuItemActivation(RecordingTool);
    return READY_RESULT;
}

bool FBLibrary::LibClose()
{
    Record("close");
    return true;
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
