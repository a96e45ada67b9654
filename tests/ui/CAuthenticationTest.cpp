#include "ui/CAuthentication.h"
#include "ui/CPasswordDialog.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

namespace {

using curatool::test::Exists;
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

// The forms without a user are checked through the fake tools below.
TEST(CAuthenticationArguments, AGivenUserIsNamedToEveryTool)
{
    EXPECT_EQ((QStringList{"-u", "bob", "--", "'/bin/x'"}), CAuthentication::KdesuArguments("/bin/x", {}, "bob"));
    EXPECT_EQ((QStringList{"-u", "bob", "/bin/x "}), CAuthentication::GksudoArguments("/bin/x", {""}, "bob"));
    EXPECT_EQ((QStringList{"-p", "PASSWORD:", "-S", "/opt/my app/x", "-a", "b c"}),
              CAuthentication::SudoArguments("/opt/my app/x", {"-a", "b c"}, QString()));
    EXPECT_EQ((QStringList{"-p", "PASSWORD:", "-S", "-u", "bob", "/bin/x"}),
              CAuthentication::SudoArguments("/bin/x", {}, "bob"));
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

TEST(CAuthenticationRun, NoToolMeansNothingStartedAndZero)
{
    ScratchPath path;
    CAuthentication authentication;
    EXPECT_EQ(0, authentication.RunAs("/bin/false", {"x"}, QString(), false));
    EXPECT_FALSE(Exists(path.Log()));
}

TEST(CAuthenticationRun, KdesuWinsThenGksudoThenSudoAndTheToolsCodeIsReturned)
{
    {
        ScratchPath path;
        path.AddTool("kdesu", Recorder("kdesu", 7));
        path.AddTool("gksudo", Recorder("gksudo", 8));
        path.AddTool("sudo", Recorder("sudo", 9));
        CAuthentication authentication;
        EXPECT_EQ(7, authentication.RunAs("/opt/my app/curatool", {"-source", "a b", "-authorized"}, QString(), false));
        EXPECT_EQ("kdesu\n--\n'/opt/my\\ app/curatool'\n-source\na b\n-authorized\n", path.LogText());
    }
    ScratchPath path;
    path.AddTool("gksudo", Recorder("gksudo", 4));
    path.AddTool("sudo", Recorder("sudo", 9));
    CAuthentication authentication;
    EXPECT_EQ(4, authentication.RunAs("/opt/my app/x", {"-a b;c"}, "alice", false));
    EXPECT_EQ("gksudo\n-u\nalice\n/opt/my\\ app/x -a\\ b\\;c\n", path.LogText());
}

TEST(CAuthenticationRun, EchoForwardsTheToolsOutput)
{
    ScratchPath path;
    path.AddTool("kdesu", Recorder("kdesu", 0));
    CAuthentication authentication;

    testing::internal::CaptureStdout();
    authentication.RunAs("/bin/x", {}, QString(), true);
    EXPECT_EQ("tool output\n", testing::internal::GetCapturedStdout());

    testing::internal::CaptureStdout();
    authentication.RunAs("/bin/x", {}, QString(), false);
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
}

TEST(CAuthenticationRun, ToolThatCannotStartGivesMinusOne)
{
    ScratchPath path;
    path.AddTool("kdesu", "exit 0\n", false);
    CAuthentication authentication;
    EXPECT_EQ(-1, authentication.RunAs("/bin/x", {}, QString(), false));
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

// Answers each modal window the sudo conversation opens, and notes what it saw.
class DialogDriver {
public:
    explicit DialogDriver(std::vector<QString> passwords)
        : m_passwords(std::move(passwords))
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { Answer(); });
        m_timer.start(20);
    }

    std::vector<std::string> seen;
    QString shownUser;
    bool userReadOnly = false;

private:
    void Answer()
    {
        QWidget* modal = QApplication::activeModalWidget();
        if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            seen.push_back("warning: " + box->windowTitle().toStdString() + ": " + box->text().toStdString());
            box->button(QMessageBox::Ok)->click();
            return;
        }
        auto* dialog = qobject_cast<CPasswordDialog*>(modal);
        if (!dialog)
            return;
        auto* user = dialog->findChild<QLineEdit*>("editUser");
        shownUser = user->text();
        userReadOnly = user->isReadOnly();
        if (m_passwords.empty()) {
            seen.push_back("cancel");
            dialog->findChild<QPushButton*>("buttonCancel")->click();
            return;
        }
        seen.push_back("password");
        dialog->findChild<QLineEdit*>("editPassword")->setText(m_passwords.front());
        m_passwords.erase(m_passwords.begin());
        dialog->findChild<QPushButton*>("buttonOK")->click();
    }

    std::vector<QString> m_passwords;
    QTimer m_timer;
};

TEST(CAuthenticationSudo, WrongPasswordIsToldAtTheSecondPromptNotTheFirst)
{
    ScratchPath path;
    path.AddTool("sudo", kFakeSudo);
    // Neither answer is "right"; the third prompt is cancelled.
    DialogDriver driver({"wrong", QStringLiteral("right ü")});
    CAuthentication authentication;
    testing::internal::CaptureStdout();
    const int code = authentication.RunAs("/opt/my app/x", {"-authorized"}, QString(), true);
    const std::string echoed = testing::internal::GetCapturedStdout();

    EXPECT_EQ((std::vector<std::string>{"password", "warning: Authentication: Incorrect password. Please try again.",
                                        "password", "warning: Authentication: Incorrect password. Please try again.",
                                        "cancel"}),
              driver.seen);
    EXPECT_EQ(QStringLiteral("root"), driver.shownUser) << "an empty user is shown as root";
    EXPECT_TRUE(driver.userReadOnly);
    EXPECT_EQ("-p\nPASSWORD:\n-S\n/opt/my app/x\n-authorized\n", path.LogText()) << "no -u for an empty user";
    EXPECT_EQ("wrong\nright \xC3\xBC\n", ReadFile(path.Log() + ".pw")) << "the password goes in UTF-8";
    EXPECT_NE(std::string::npos, echoed.find("Sorry, try again.")) << echoed;
    EXPECT_NE(3, code);
}

TEST(CAuthenticationSudo, RightPasswordRunsTheProgramAndGivesItsCode)
{
    ScratchPath path;
    path.AddTool("sudo", kFakeSudo);
    DialogDriver driver({"right"});
    CAuthentication authentication;
    testing::internal::CaptureStdout();
    const int code = authentication.RunAs("/bin/x", {}, "bob", false);
    EXPECT_EQ("", testing::internal::GetCapturedStdout()) << "without echo nothing of the child is printed";

    EXPECT_EQ(3, code);
    EXPECT_EQ(std::vector<std::string>{"password"}, driver.seen);
    EXPECT_EQ(QStringLiteral("bob"), driver.shownUser);
    EXPECT_EQ("-p\nPASSWORD:\n-S\n-u\nbob\n/bin/x\n", path.LogText());
}

TEST(CAuthenticationSudo, CancelEndsSudoWithoutWritingAPassword)
{
    ScratchPath path;
    path.AddTool("sudo", kFakeSudo);
    DialogDriver driver({});
    CAuthentication authentication;
    const int code = authentication.RunAs("/bin/x", {}, QString(), false);
    EXPECT_EQ(std::vector<std::string>{"cancel"}, driver.seen);
    EXPECT_FALSE(Exists(path.Log() + ".pw"));
    EXPECT_NE(3, code);
}

}  // namespace
