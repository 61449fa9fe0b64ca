#include "host/popup/popup_script.h"

#include "tests/host/test_dialog.h"
#include "tests/support/scratch_folder.h"

namespace mobu_host
{

FBClassImplementation(TestDialog);

namespace
{

class PopupScriptTest : public DialogTest
{
protected:
    // What reading or playing the text to the dialog complains of.
    std::string Play(const std::string& text)
    {
        folder_.Make("steps.txt", text);
        std::string error;
        const auto script = PopupScript::Read(path_, error);
        EXPECT_EQ(script.has_value(), error.empty());
        if (!script)
            return error;
        SetPopupPlayer([&](FBPopup& popup) { error = script->Play(popup); });
        dialog_.Show();
        EXPECT_FALSE(IsOpen(dialog_));
        return error;
    }

    const tv2_tests::ScratchFolder folder_;
    const std::string path_ = folder_.Path("steps.txt");
};

TEST_F(PopupScriptTest, DoesWhatEachLineSays)
{
    EXPECT_EQ(Play("# a comment\r\n"
                   "\n"
                   "  click \"a \\\"quoted\\\" #1\"   # over\r\n"
                   "edit \"number\" 12.5\n"
                   "move -20 300\n"
                   "close"),
              "");
    EXPECT_EQ(dialog_.check.State, 1);
    EXPECT_EQ(dialog_.number.Value, 12.5);
    EXPECT_EQ(dialog_.Left, -20);
    EXPECT_EQ(dialog_.Top, 300);
    EXPECT_EQ(Play("edit \"number\" 999"), "") << "the end closes it as well";
    EXPECT_EQ(dialog_.number.Value, 240.0);
    dialog_.closes = true;
    EXPECT_EQ(Play("click \"push\""), "");
}

TEST_F(PopupScriptTest, SetsABoxWhateverItWas)
{
    const std::string box = "set \"a \\\"quoted\\\" #1\" ";
    for (const int before : {0, 1})
        for (const bool on : {false, true})
        {
            dialog_.check.State = before;
            dialog_.radio.State = before;
            EXPECT_EQ(Play(box + (on ? "on\n" : "off # comment\n") + "set \"radio\" on"), "");
            EXPECT_EQ(dialog_.check.State, on ? 1 : 0) << before;
            EXPECT_EQ(dialog_.radio.State, 1) << before;
        }
}

TEST_F(PopupScriptTest, NamesFileLineAndCause)
{
    const struct
    {
        const char* text;
        int line;
        const char* cause;
    } cases[] = {
        {"push \"push\"", 1, "there is no step \"push\"; steps are click, set, edit, move and close"},
        {"clik \"push\"", 1, "there is no step \"clik\" (did you mean \"click\"?)"},
        {"set \"radio\"", 1, "set takes on or off after the region"},
        {"set \"radio\" yes", 1, "set takes on or off after the region"},
        {"set \"radio\" off", 1, "\"radio\" is a radio button: set another of its group on"},
        {"set \"push\" on", 1, "\"push\" is neither a check box nor a radio button"},
        {"set \"number\" on", 1, "\"number\" is no button"},
        {"# first\nclick", 2, "click takes the name of a region in double quotes"},
        {"click push", 1, "in double quotes"},
        {"click \"push", 1, "in double quotes"},
        {"edit \"number\"", 1, "edit takes a number after the region"},
        {"edit \"number\" 1,5", 1, "edit takes a number"},
        {"edit \"number\" nan", 1, "edit takes a number"},
        {"edit \"number\" 1e999", 1, "edit takes a number"},
        {"move 1", 1, "move takes two whole numbers"},
        {"move 1.5 2", 1, "move takes two whole numbers"},
        {"close now", 1, "nothing may follow but a comment: \"now\""},
        {"\n\nclick \"PUSH\"", 3, "there is no region \"PUSH\" (did you mean \"push\"?)"},
        {"click \"other\"", 1,
         "there is no region \"other\"; the popup has \"push\", \"radio\", \"a \\\"quoted"},
        {"click \"number\"", 1, "\"number\" is no button"},
        {"click \"empty\"", 1, "\"empty\" is no button"},
        {"edit \"push\" 1", 1, "\"push\" is no box for a number"},
        {"click \"off\"", 1, "\"off\" is disabled"},
        {"close\nmove 1 1", 2, "the popup has closed already"},
    };
    for (const auto& c : cases)
    {
        const std::string error = Play(c.text);
        EXPECT_TRUE(error.starts_with(path_ + ":" + std::to_string(c.line) + ": ")) << c.text << "\n"
                                                                                    << error;
        EXPECT_NE(error.find(c.cause), std::string::npos) << c.text << "\n" << error;
    }
    EXPECT_EQ(Play("click \"a \\\"quoted\\\" #1\"\nfrob"),
              path_ + ":2: there is no step \"frob\"; steps are click, "
                      "set, edit, move and close");
    EXPECT_EQ(dialog_.check.State, 0) << "a text that is not right is not played at all";
}

TEST_F(PopupScriptTest, TellsWhyAFileCannotBeRead)
{
    std::string error;
    EXPECT_FALSE(PopupScript::Read(path_ + ".gone", error));
    EXPECT_EQ(error, path_ + ".gone: cannot be read: No such file or directory");
    const std::string itself = folder_.Folder().string();
    EXPECT_FALSE(PopupScript::Read(itself, error));
    EXPECT_TRUE(error.starts_with(itself + ": cannot be read: ")) << error;
}

} // namespace
} // namespace mobu_host
