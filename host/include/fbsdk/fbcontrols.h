#pragma once

#include <fbsdk/fbcomponent.h>
#include <fbsdk/fbevents.h>

// Windows: layouts of named regions, controls, and menu items.

namespace FBSDKNamespace
{

enum FBAttachType
{
    kFBAttachLeft,
    kFBAttachRight,
    kFBAttachTop,
    kFBAttachBottom,
    kFBAttachWidth,
    kFBAttachHeight,
    kFBAttachCenter,
    kFBAttachNone
};

enum FBBorderStyle
{
    kFBNoBorder,
    kFBStandardBorder,
    kFBEmbossBorder,
    kFBEmbossSmoothBorder,
    kFBEmbossEdgeSmoothBorder,
    kFBEmbossSmoothEdgeBorder,
    kFBStandardSmoothBorder,
    kFBStandardEdgeSmoothBorder,
    kFBStandardSmoothEdgeBorder,
    kFBHighlightBorder,
    kFBPickingBorder
};

enum FBTextJustify
{
    kFBTextJustifyLeft,
    kFBTextJustifyRight,
    kFBTextJustifyCenter
};

enum FBTextStyle
{
    kFBTextStyleNone = 0,
    kFBTextStyleBold = 1 << 0,
    kFBTextStyleItalic = 1 << 1,
    kFBTextStyleUnderlined = 1 << 2
};

enum FBButtonStyle
{
    kFBPushButton = 0,
    kFBBitmapButton = 1,
    kFBRadioButton = 2,
    kFB2States = 3,
    kFBCheckbox = 3,
    kFBBitmap2States = 4
};

enum FBButtonLook
{
    kFBLookNormal,
    kFBLookColorChange,
    kFBLookPush,
    kFBLookFlat
};

enum FBMenuItemType
{
    kFBMenuItemMotionImport,
    kFBMenuItemSceneImport,
    kFBMenuItemMotionExport,
    kFBMenuItemSceneExport
};

typedef FBPropertyBaseEnum<FBBorderStyle> FBPropertyBorderStyle;
typedef FBPropertyBaseEnum<FBTextJustify> FBPropertyTextJustify;
typedef FBPropertyBaseEnum<FBTextStyle> FBPropertyTextStyle;
typedef FBPropertyBaseEnum<FBButtonStyle> FBPropertyButtonStyle;
typedef FBPropertyBaseEnum<FBButtonLook> FBPropertyButtonLook;
typedef FBPropertyBaseEnum<FBMenuItemType> FBPropertyMenuItemType;

class FBSDK_DLL FBVisualComponent : public FBComponent
{
    FBSDKClassDeclare(FBVisualComponent, FBComponent);

    explicit FBVisualComponent(HIObject pObject = nullptr);
    ~FBVisualComponent() override;

    virtual bool AddChild(FBVisualComponent* pChild, int pId = 0); // the child stays with its owner
    virtual FBVisualComponent* GetChild(int pId = 0);
    virtual void Refresh(bool pNow = false);
    virtual bool IsView();
    virtual void ViewExpose();
    virtual void ViewInput(int pMouseX, int pMouseY, int pAction, int pButtonKey, int pModifier);

    struct FBSDK_DLL RegionPlace
    {
        FBPropertyString Name;
        FBPropertyInt X; // the same numbers as Left, Top, Width, Height
        FBPropertyInt Y;
        FBPropertyInt Width;
        FBPropertyInt Height;
    };
    struct FBSDK_DLL BorderLook
    {
        FBPropertyString Caption;
        FBPropertyBool ShowCaption;
        FBPropertyBorderStyle Style;
        FBPropertyBool InSet;
        FBPropertyInt Width;
        FBPropertyInt Spacing;
        FBPropertyFloat MaxAngle;
        FBPropertyInt CornerRadius;
    };

    FBPropertyString Caption;
    FBPropertyString Hint;
    FBPropertyBool Visible;
    FBPropertyBool ReadOnly;
    FBPropertyBool Enabled;
    FBPropertyInt Left; // pixels
    FBPropertyInt Top;
    FBPropertyInt Width;
    FBPropertyInt Height;
    RegionPlace Region;
    BorderLook Border;
    FBPropertyEvent OnEnter;
    FBPropertyEvent OnExit;

private:
    friend struct ::mobu_host::SdkAccess;
    struct Children;
    std::unique_ptr<Children> children_;
};

// Regions placed by four attachments each; one control a region.
class FBSDK_DLL FBLayout : public FBVisualComponent
{
    FBSDKClassDeclare(FBLayout, FBVisualComponent);

    explicit FBLayout(HIObject pObject = nullptr);
    ~FBLayout() override;

    // Each edge is an offset from an edge of the relative region (NULL or "": the layout itself); a
    // multiplier scales attached widths and heights. False for a name that is taken or a relative that is
    // unknown.
    virtual bool AddRegion(const char* pName, const char* pTitle, int pX, FBAttachType pXType,
                           const char* pXRelative, float pMultX, int pY, FBAttachType pYType,
                           const char* pYRelative, float pMultY, int pW, FBAttachType pWType,
                           const char* pWRelative, float pMultW, int pH, FBAttachType pHType,
                           const char* pHRelative, float pMultH);
    virtual bool MoveRegion(const char* pName, int pX, int pY);
    virtual bool SizeRegion(const char* pName, int pW, int pH);
    virtual bool RemoveRegion(const char* pName);
    virtual bool RenameRegion(const char* pOldName, const char* pNewName);
    virtual bool SetRegionTitle(const char* pName, const char* pTitle);
    virtual const char* GetRegion(int pIndex); // name, NULL outside
    // As placed: left, top, right and bottom edge. Otherwise the four offsets given to AddRegion.
    virtual bool GetRegionPositions(const char* pName, bool pComputed, int* pX1 = nullptr, int* pY1 = nullptr,
                                    int* pX2 = nullptr, int* pY2 = nullptr);

    virtual bool SetControl(const char* pName,
                            FBVisualComponent* pComponent); // the control stays with its owner
    virtual bool SetControl(const char* pName, FBVisualComponent& pComponent);
    virtual FBVisualComponent* GetControl(const char* pName);
    virtual bool ClearControl(const char* pName);
    virtual bool SetView(const char* pName, FBVisualComponent* pComponent);
    virtual bool SetBorder(const char* pName, FBBorderStyle pType, bool pShowTitle, bool pInSet, int pWidth,
                           int pSpacing, float pMaxAngle, int pCornerRadius);
    virtual void Restructure(bool pNow);

    FBPropertyEvent OnShow;
    FBPropertyEvent OnResize;
    FBPropertyEvent OnPaint;
    FBPropertyEvent OnIdle;
    FBPropertyEvent OnInput;

private:
    friend struct ::mobu_host::SdkAccess;
    struct Regions;
    std::unique_ptr<Regions> regions_;
};

class FBSDK_DLL FBPopup : public FBLayout
{
    FBSDKClassDeclare(FBPopup, FBLayout);

    FBPopup();

    FBPropertyString Caption;
    FBPropertyBool Modal;

    // Returns when the popup is closed: by Close, or at the end of what the host plays to it.
    virtual bool Show(FBVisualComponent* pParent = nullptr);
    void Close(bool pOk = false);

private:
    friend struct ::mobu_host::SdkAccess;
    bool open_ = false;
};

class FBSDK_DLL FBButton : public FBVisualComponent
{
    FBSDKClassDeclare(FBButton, FBVisualComponent);

    FBButton();

    FBPropertyInt State; // 0 or 1
    FBPropertyButtonStyle Style;
    FBPropertyButtonLook Look;
    FBPropertyTextJustify Justify;
    FBPropertyEvent OnClick;
};

class FBSDK_DLL FBEditNumber : public FBVisualComponent
{
    FBSDKClassDeclare(FBEditNumber, FBVisualComponent);

    FBEditNumber();

    FBPropertyDouble Value; // the user's edits stay within Min..Max, assignments need not
    FBPropertyDouble Min;
    FBPropertyDouble Max;
    FBPropertyDouble Precision; // digits.decimals
    FBPropertyDouble LargeStep;
    FBPropertyDouble SmallStep;
    FBPropertyEvent OnChange;
};

class FBSDK_DLL FBLabel : public FBVisualComponent
{
    FBSDKClassDeclare(FBLabel, FBVisualComponent);

    FBLabel();

    FBPropertyTextJustify Justify;
    FBPropertyTextStyle Style;
    FBPropertyBool WordWrap;
};

// An entry of the file menu that imports or exports.
class FBSDK_DLL FBMenuItem : public FBVisualComponent
{
    FBSDKClassDeclare(FBMenuItem, FBVisualComponent);

    FBMenuItem();
    ~FBMenuItem() override;

    void Set(FBMenuItemType pType, const char* pExtension, const char* pLabel, const char* pDescription);
    bool IsActive();
    void Activate(bool pState = true); // puts it into the menu, once

    FBPropertyBaseComponent<FBComponent*> Component;
    FBPropertyString Extension; // "*.ext"
    FBPropertyString Label;
    FBPropertyString Description;
    FBPropertyString Path; // start folder of the file dialog
    FBPropertyMenuItemType Type;

    virtual void OnItemSelectEvent(HIRegister pRegister, HKEvent pEvent);
    virtual bool Execute(const char* pFilename = nullptr) = 0; // the user's choice of file

private:
    bool active_ = false;
};

} // namespace FBSDKNamespace

// NOLINTBEGIN(bugprone-macro-parentheses): class names take none

// The class of an export or import tool; FBCreate, overridden, configures it from the constructor.
#define FBMenuItemDeclare(Class, Parent)                                                                     \
    FBClassDeclare(Class, Parent);                                                                           \
                                                                                                             \
public:                                                                                                      \
    Class()                                                                                                  \
    {                                                                                                        \
        Class::FBCreate();                                                                                   \
    }                                                                                                        \
    static Class* g##Class;                                                                                  \
                                                                                                             \
private:                                                                                                     \
    static_assert(true)

#define FBMenuItemImplementation(Class)                                                                      \
    FBClassImplementation(Class);                                                                            \
    Class* Class::g##Class = nullptr

#define FBRegisterMenuItem(Class)                                                                            \
    FBLibraryModule(Class) {}                                                                                \
    void FBRegister##Class()

#define FBMenuItemActivation(Class)                                                                          \
    {                                                                                                        \
        Class::g##Class = new Class;                                                                         \
        Class::g##Class->Activate();                                                                         \
    }

#define FBMenuItemHandle(Class, Handle) Class* Handle = Class::g##Class

// NOLINTEND(bugprone-macro-parentheses)
