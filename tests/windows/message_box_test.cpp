// The question about read-only files, asked by a real message box and answered by a real button.

#include "exporter/base/script_entry.h"
#include "exporter/platform/platform.h"
#include "tests/windows/scratch_folder.h"

#include "mobu_host/plugin.h"
#include "mobu_host/scene.h"

#include <atomic>
#include <thread>

namespace
{

using tev2_exporter::platform::AskOkCancel;
using tev2_tests::ScratchFolder;
using tev2_tests::Wide;

struct Shown
{
    std::u16string caption;
    std::u16string text;
    std::vector<int> buttons;
    bool has_owner = false;
};

std::u16string TextOf(HWND window)
{
    wchar_t text[2048] = {};
    GetWindowTextW(window, text, 2048);
    return reinterpret_cast<const char16_t*>(text);
}

bool IsVisible(HWND window, std::wstring_view kind)
{
    wchar_t own_kind[64] = {};
    GetClassNameW(window, own_kind, 64);
    return own_kind == kind && IsWindowVisible(window);
}

/// Waits for the message boxes of the thread that made it, records them and presses a button in each.
class Presser
{
public:
    explicit Presser(int button) : button_(button), asker_(GetCurrentThreadId()), worker_([this] { Work(); })
    {
    }
    ~Presser() { Finish(); }

    /// The boxes so far; no more are answered.
    std::vector<Shown> Finish()
    {
        done_ = true;
        if (worker_.joinable())
            worker_.join();
        return shown_;
    }

private:
    static BOOL CALLBACK Take(HWND window, LPARAM self)
    {
        if (IsVisible(window, L"#32770"))
            reinterpret_cast<Presser*>(self)->Answer(window);
        return TRUE;
    }

    static BOOL CALLBACK AddButton(HWND child, LPARAM buttons)
    {
        if (IsVisible(child, L"Button"))
            reinterpret_cast<std::vector<int>*>(buttons)->push_back(GetDlgCtrlID(child));
        return TRUE;
    }

    void Answer(HWND box)
    {
        constexpr int kMessage = 0xFFFF;
        if (box == answered_)
            return;
        answered_ = box;
        Shown& shown = shown_.emplace_back(Shown{TextOf(box), TextOf(GetDlgItem(box, kMessage)), {}});
        shown.has_owner = GetWindow(box, GW_OWNER) != nullptr;
        EnumChildWindows(box, AddButton, reinterpret_cast<LPARAM>(&shown.buttons));
        PostMessageW(box, WM_COMMAND, MAKEWPARAM(button_, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(box, button_)));
    }

    void Work()
    {
        for (; !done_; Sleep(10))
            EnumThreadWindows(asker_, Take, reinterpret_cast<LPARAM>(this));
    }

    int button_;
    DWORD asker_;
    HWND answered_ = nullptr;
    std::vector<Shown> shown_;
    std::atomic<bool> done_{false};
    std::thread worker_;
};

TEST(MessageBox, TellsWhichButtonWasPressed)
{
    for (const int button : {IDOK, IDCANCEL})
    {
        Presser presser(button);
        EXPECT_EQ(AskOkCancel(u"Caption \u4E2D", u"Text \u0416 & more"), button == IDOK);
        const std::vector<Shown> boxes = presser.Finish();
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].caption, u"Caption \u4E2D");
        EXPECT_EQ(boxes[0].text, u"Text \u0416 & more");
        EXPECT_EQ(boxes[0].buttons, (std::vector<int>{IDOK, IDCANCEL}));
        EXPECT_FALSE(boxes[0].has_owner);
    }
}

// Through the DLL: three takes, the file of the second one is read-only.
TEST(MessageBox, GuardsReadOnlyFilesOfAnExport)
{
    if (GetACP() != 1252)
        GTEST_SKIP() << "the names are of code page 1252, this is " << GetACP();
    std::string error;
    const auto plugin = mobu_host::Plugin::Load(TV2_PLUGIN, error);
    ASSERT_TRUE(plugin) << error;
    auto* const script = plugin->Symbol<tev2_exporter::ScriptEntry>(tev2_exporter::kScriptEntryName);
    ASSERT_TRUE(script);
    mobu_host::NewScene();
    mobu_host::ClearTakes();
    for (const char* take : {"A", "B\xE9", "C"})
        mobu_host::AddTake(take, 0.0, 1.0);

    for (const int button : {IDCANCEL, IDOK})
    {
        const ScratchFolder folder(u"d\u00E9p\u00F4t & co");
        const std::u16string path = folder.Make(u"run_B\u00E9.tv2", "old", FILE_ATTRIBUTE_READONLY);
        Presser presser(button);
        EXPECT_EQ(script(folder.BytePath(u"run.tv2").c_str(), 0, 0, 25, true, true, true, false, true, true),
                  1u);
        const std::vector<Shown> boxes = presser.Finish();
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].caption, u"Read Only File!");
        EXPECT_EQ(boxes[0].text,
                  path + u" already exists and has read-only file properties!  Are you sure that you "
                         u"wish to over-write this file?");
        EXPECT_GT(folder.Content(u"run_A.tv2").size(), 200u);
        EXPECT_GT(folder.Content(u"run_C.tv2").size(), 200u);
        const bool read_only = (GetFileAttributesW(Wide(path)) & FILE_ATTRIBUTE_READONLY) != 0;
        EXPECT_EQ(read_only, button == IDCANCEL);
        // One character more than the first, in the file name that it contains.
        const std::size_t size = button == IDOK ? folder.Content(u"run_A.tv2").size() + 2 : 3;
        EXPECT_EQ(folder.Content(u"run_B\u00E9.tv2").size(), size);
    }
    mobu_host::NewScene();
}

} // namespace
