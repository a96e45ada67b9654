#include "ui/CAuthentication.h"
#include "ui/CPasswordDialog.h"
#include "support/ModalAnswerer.h"
#include "support/TestEnvironment.h"
#include "support/TestText.h"

#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

namespace {

using curatool::test::Contains;
using curatool::test::MakeScratchDir;
using curatool::test::ReadFile;
using curatool::test::WriteFile;

// Puts PATH (and the log the fake tools write) in place for one test and restores it afterwards.
class ScratchPath {
public:
    ScratchPath()
        : m_folder(MakeScratchDir("bin")),
          m_log(MakeScratchDir("log") + "/tool.log")
    {
        if (const char* old = std::getenv("PATH"))
            m_oldPath = old;
        setenv("PATH", m_folder.c_str(), 1);
        setenv("TOOL_LOG", m_log.c_str(), 1);
    }
    ~ScratchPath()
    {
        setenv("PATH", m_oldPath.c_str(), 1);
        unsetenv("TOOL_LOG");
    }

    void AddTool(const std::string& name, const std::string& body, bool executable = true)
    {
        const std::string path = m_folder + "/" + name;
        WriteFile(path, "#!/bin/sh\n" + body);
        std::filesystem::permissions(path, executable ? std::filesystem::perms::owner_all
                                                      : std::filesystem::perms::owner_read);
    }
    const std::string& Folder() const { return m_folder; }
    const std::string& Log() const { return m_log; }
    std::string LogText() const { return ReadFile(m_log); }

private:
    std::string m_folder;
    std::string m_log;
    std::string m_oldPath;
};

// Records the tool's name and each argument on a line of its own.
std::string Recorder(const std::string& name, int exitCode)
{
    return "{ echo '" + name +
           "'; for a in \"$@\"; do printf '%s\\n' \"$a\"; done; } >> \"$TOOL_LOG\"\n"
           "echo 'tool output'\nexit " +
           std::to_string(exitCode) + "\n";
}

TEST(CAuthenticationEscape, EveryShellCharacterGetsABackslash)
{
    EXPECT_EQ(QStringLiteral("\\ \\~\\`\\!\\#\\&\\*\\(\\)\\\\\\|\\?\\<\\>\\\"\\'\\;"),
              CAuthentication::ShellEscape(QStringLiteral(" ~`!#&*()\\|?<>\"';")));
    EXPECT_EQ(QStringLiteral("/opt/a-b_c.d/e$f{g}[h]%=+,@:^"),
              CAuthentication::ShellEscape(QStringLiteral("/opt/a-b_c.d/e$f{g}[h]%=+,@:^")));
    EXPECT_EQ(QString(), CAuthentication::ShellEscape(QString()));
}

// The other forms are checked through the fake tools below.
TEST(CAuthenticationArguments, AGivenUserIsNamedToKdesuAndGksudo)
{
    EXPECT_EQ((QStringList{"-u", "bob", "--", "'/bin/x'"}), CAuthentication::KdesuArguments("/bin/x", {}, "bob"));
    EXPECT_EQ((QStringList{"-u", "bob", "/bin/x "}), CAuthentication::GksudoArguments("/bin/x", {""}, "bob"));
}

TEST(CAuthenticationPath, FindsToolsInAnyPathFolderSkippingEmptyParts)
{
    ScratchPath path;
    path.AddTool("gksudo", "exit 0\n");
    const std::string other = MakeScratchDir("other");
    setenv("PATH", (":" + other + "::" + path.Folder() + ":").c_str(), 1);
    EXPECT_TRUE(CAuthentication::FindInPath("gksudo"));
    EXPECT_TRUE(CAuthentication::HasGksudo());
    EXPECT_FALSE(CAuthentication::HasKdesu());
    EXPECT_FALSE(CAuthentication::HasSudo());
    EXPECT_FALSE(CAuthentication::FindInPath("tool.log"));

    unsetenv("PATH");
    EXPECT_FALSE(CAuthentication::FindInPath("gksudo"));
}

// kdesu wins, then gksudo, then sudo; the tool's code is returned, -1 when it can't start, and its
// output is forwarded only when asked.
TEST(CAuthenticationRun, TheFirstToolFoundRunsTheProgram)
{
    struct Tool {
        const char* name;
        int code;
        bool executable;
    };
    struct Case {
        std::vector<Tool> tools;
        QString user;
        bool echo;
        int code;
        std::string log;
    };
    const Case cases[] = {
        {{}, QString(), true, 0, ""},
        {{{"kdesu", 7, true}, {"gksudo", 8, true}, {"sudo", 9, true}},
         QString(),
         true,
         7,
         "kdesu\n--\n'/opt/my\\ app/x'\n-source\na b;c\n"},
        {{{"gksudo", 4, true}, {"sudo", 9, true}},
         "alice",
         false,
         4,
         "gksudo\n-u\nalice\n/opt/my\\ app/x -source a\\ b\\;c\n"},
        {{{"kdesu", 0, false}}, QString(), false, -1, ""},
    };
    for (const Case& c : cases) {
        ScratchPath path;
        for (const Tool& tool : c.tools)
            path.AddTool(tool.name, Recorder(tool.name, tool.code), tool.executable);
        CAuthentication authentication;
        testing::internal::CaptureStdout();
        EXPECT_EQ(c.code, authentication.RunAs("/opt/my app/x", {"-source", "a b;c"}, c.user, c.echo)) << c.log;
        const bool ran = !c.log.empty();
        EXPECT_EQ(ran && c.echo ? "tool output\n" : "", testing::internal::GetCapturedStdout()) << c.log;
        EXPECT_EQ(c.log, path.LogText());
    }
}

// A fake sudo: asks for the password up to three times; "right" runs the program (exit 3).
const char kFakeSudo[] = "printf '%s\\n' \"$@\" > \"$TOOL_LOG\"\n"
                         "tries=0\n"
                         "while :; do\n"
                         "  printf 'PASSWORD:'\n"
                         "  read pw || exit 9\n"
                         "  tries=$((tries+1))\n"
                         "  printf '%s\\n' \"$pw\" >> \"$TOOL_LOG.pw\"\n"
                         "  if [ \"$pw\" = right ]; then echo 'program ran'; exit 3; fi\n"
                         "  echo 'Sorry, try again.'\n"
                         "  [ $tries -ge 3 ] && exit 1\n"
                         "done\n";

// Answers the sudo conversation's windows: each password dialog with the next password (a cancel
// when none is left), each box with OK; notes both in the order they came.
struct DialogDriver : curatool::test::ModalAnswerer {
    explicit DialogDriver(std::vector<QString> passwords)
    {
        other = [this, passwords](QWidget* modal) mutable {
            auto* dialog = qobject_cast<CPasswordDialog*>(modal);
            if (!dialog)
                return;
            NoteBoxes();
            auto* user = dialog->findChild<QLineEdit*>("editUser");
            shownUser = user->text();
            userReadOnly = user->isReadOnly();
            seen.push_back(passwords.empty() ? "cancel" : "password");
            if (passwords.empty())
                return dialog->findChild<QPushButton*>("buttonCancel")->click();
            dialog->findChild<QLineEdit*>("editPassword")->setText(passwords.front());
            passwords.erase(passwords.begin());
            dialog->findChild<QPushButton*>("buttonOK")->click();
        };
    }
    void NoteBoxes()
    {
        for (; noted < boxes.size(); ++noted)
            seen.push_back("warning: " + titles[noted].toStdString() + ": " + boxes[noted].toStdString());
    }

    std::vector<std::string> seen;
    QString shownUser;
    bool userReadOnly = false;
    qsizetype noted = 0;
};

// Every answer goes to sudo in UTF-8; a wrong one is told at the next prompt, and a cancel ends sudo.
TEST(CAuthenticationSudo, ThePasswordConversation)
{
    const std::string again = "warning: Authentication: Incorrect password. Please try again.";
    struct Case {
        std::vector<QString> passwords;
        QString user;
        std::vector<std::string> seen;
        QString shownUser;  // an empty user is shown as root
        std::string sudoGot;
        std::string typed;
    };
    const Case cases[] = {
        {{"wrong", QStringLiteral("right ü")},
         QString(),
         {"password", again, "password", again, "cancel"},
         "root",
         "-p\nPASSWORD:\n-S\n/opt/my app/x\n-authorized\n",
         "wrong\nright \xC3\xBC\n"},
        {{"right"}, "bob", {"password"}, "bob", "-p\nPASSWORD:\n-S\n-u\nbob\n/opt/my app/x\n-authorized\n", "right\n"},
        {{}, QString(), {"cancel"}, "root", "-p\nPASSWORD:\n-S\n/opt/my app/x\n-authorized\n", ""},
    };
    for (const Case& c : cases) {
        ScratchPath path;
        path.AddTool("sudo", kFakeSudo);
        DialogDriver driver(c.passwords);
        CAuthentication authentication;
        const bool echo = c.seen.size() > 1;
        testing::internal::CaptureStdout();
        const int code = authentication.RunAs("/opt/my app/x", {"-authorized"}, c.user, echo);
        const std::string echoed = testing::internal::GetCapturedStdout();

        driver.NoteBoxes();
        EXPECT_EQ(c.seen, driver.seen);
        EXPECT_EQ(c.shownUser, driver.shownUser);
        EXPECT_TRUE(driver.userReadOnly);
        EXPECT_EQ(c.sudoGot, path.LogText());
        EXPECT_EQ(c.typed, ReadFile(path.Log() + ".pw"));
        EXPECT_EQ(c.typed == "right\n", code == 3) << "the program ran";
        EXPECT_EQ(echo, Contains(echoed, "Sorry, try again.")) << echoed;
        EXPECT_TRUE(echo || echoed.empty()) << "without echo nothing of the child is printed: " << echoed;
    }
}

}  // namespace
