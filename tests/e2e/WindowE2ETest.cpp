// The window-based program on a real X display (Xvfb), driven with xdotool as a user would; the
// gallery on disc tells the result.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include <unistd.h>

using namespace curatool::test;
namespace fs = std::filesystem;

namespace {

const char kXvfb[] = "/usr/bin/Xvfb";
const char kXdotool[] = "/usr/bin/xdotool";
const char kMainWindowTitle[] = "^ZOLTA Sample Collection$";
const char kProgressTitle[] = "^ZOLTA Curatool: Please Wait...$";
const char kMessageTitle[] = "^Curatool$";
// The "All Categories" row, in the main window's own coordinates.
const int kRootRowX = 60;
const int kRootRowY = 29;

bool WaitFor(const std::function<bool()>& condition, int timeoutMs = 20000)
{
    for (int waited = 0; waited < timeoutMs; waited += 100) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return condition();
}

// The sample world, its source also served over loopback HTTP, and an X display of its own.
class WindowE2E : public ServedGallery {
protected:
    void SetUp() override
    {
        if (access(kXvfb, X_OK) != 0 || access(kXdotool, X_OK) != 0)
            GTEST_SKIP() << "Xvfb and xdotool are needed";
        ServedGallery::SetUp();
        // A display number that nobody holds.
        for (int number = 90; number < 190 && m_display.empty(); ++number)
            if (!Exists("/tmp/.X" + std::to_string(number) + "-lock") &&
                !Exists("/tmp/.X11-unix/X" + std::to_string(number)))
                m_display = ":" + std::to_string(number);
        ASSERT_FALSE(m_display.empty());
        m_xvfb = std::make_unique<BinaryProcess>(
            kXvfb, std::vector<std::string>{m_display, "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-noreset"},
            RunOptions{});
        ASSERT_TRUE(m_xvfb->Started());
        const std::string socket = "/tmp/.X11-unix/X" + m_display.substr(1);
        ASSERT_TRUE(WaitFor([&] { return Exists(socket); })) << "Xvfb did not start on " << m_display;
        // The socket comes before the server answers; -noreset keeps this probe from resetting it.
        ASSERT_TRUE(WaitFor([&] { return !Xdotool({"getdisplaygeometry"}).empty(); }))
            << "Xvfb does not answer on " << m_display;
    }

    void TearDown() override
    {
        m_program.reset();
        if (m_xvfb) {
            m_xvfb->Kill(SIGTERM);
            m_xvfb->Wait();
        }
    }

    RunOptions OnDisplay() const
    {
        RunOptions options = Options();
        options.unsetEnvironment = {"WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
        options.setEnvironment["DISPLAY"] = m_display;
        options.timeoutMs = 60000;
        return options;
    }

    // Starts the window-based program; it runs while the test drives it.
    void Start(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "-authorized");
        m_program = std::make_unique<BinaryProcess>(CURATOOL_BINARY, arguments, OnDisplay());
        ASSERT_TRUE(m_program->Started());
    }

    RunResult Finished()
    {
        EXPECT_TRUE(WaitFor([&] { return !m_program->IsRunning(); })) << "the program did not end";
        return m_program->Wait();
    }

    std::string Xdotool(const std::vector<std::string>& arguments) const
    {
        RunOptions options = OnDisplay();
        options.timeoutMs = 10000;
        BinaryProcess xdotool(kXdotool, arguments, options);
        return xdotool.Wait().out;
    }

    // The id of the visible window whose title matches `title`; empty if it never comes.
    std::string FindWindow(const std::string& title)
    {
        std::string id;
        WaitFor([&] {
            const std::vector<std::string> found = Lines(Xdotool({"search", "--onlyvisible", "--name", title}));
            id = found.empty() ? std::string() : found.front();
            return !id.empty() || !m_program->IsRunning();
        });
        return id;
    }

    // Keys go where the input focus is, as a user's would.
    void Press(const std::string& window, const std::string& key)
    {
        Xdotool({"windowfocus", "--sync", window});
        Xdotool({"key", "--delay", "50", key});
    }

    // One click on "All Categories", Return for "Next >>", then Return for "Finish" once done; the
    // program ends with 0 and everything is installed in `gallery`.
    void ChooseAllNextAndFinish(const std::string& gallery, RunResult* result = nullptr)
    {
        const std::string window = FindWindow(kMainWindowTitle);
        ASSERT_FALSE(window.empty()) << Finished().err;
        Xdotool({"mousemove", "--window", window, std::to_string(kRootRowX), std::to_string(kRootRowY), "click", "1"});
        Press(window, "Return");

        const std::string progress = FindWindow(kProgressTitle);
        ASSERT_FALSE(progress.empty()) << Finished().err;
        ASSERT_TRUE(WaitFor([&] { return Exists(gallery + "/Uninstall/updateinfo.xml"); }));
        // The run is over: a press that comes before "Finish" only cancels what has already ended.
        WaitFor([&] {
            Press(progress, "Return");
            return !m_program->IsRunning();
        });
        const RunResult r = Finished();
        EXPECT_EQ(0, r.exitCode) << r.err;
        if (result)
            *result = r;
        for (const SampleCategory& category : SampleCategories())
            EXPECT_TRUE(HasCategory(gallery, category.alias)) << category.alias;
        EXPECT_TRUE(Exists(gallery + "/imsmanifest.xml"));
        EXPECT_TRUE(IsRegistered());
    }

    std::string m_display;
    std::unique_ptr<BinaryProcess> m_xvfb;
    std::unique_ptr<BinaryProcess> m_program;
};

}  // namespace

TEST_F(WindowE2E, ChooseAllNextAndFinishInstallsTheGallery)
{
    // A window-based run installs where the gallery's own folder is, unless the user browses.
    Start({"-configuration", m_collection, "-source", m_source});
    ChooseAllNextAndFinish(DefaultInstallDirectory());
}

TEST_F(WindowE2E, OverHttpThroughAProxyThatAsksWhoWeAre)
{
    ServerProcess proxy;
    if (!proxy.StartTinyproxy(QString::fromStdString(MakeScratchDir("tinyproxy")), "curator", "s3cret"))
        GTEST_SKIP() << "tinyproxy is needed";
    StoreProxy("127.0.0.1", proxy.Port());
    // No -source: the collection's server is checked, and the proxy asks for credentials.
    Start({"-configuration", m_collection});
    const std::string prompt = FindWindow("^Proxy Authentication Required$");
    ASSERT_FALSE(prompt.empty()) << Finished().err;
    Xdotool({"windowfocus", "--sync", prompt});
    Xdotool({"type", "--delay", "20", "curator"});
    Xdotool({"key", "Tab"});
    Xdotool({"type", "--delay", "20", "s3cret"});
    Xdotool({"key", "Return"});

    RunResult r;
    ChooseAllNextAndFinish(DefaultInstallDirectory(), &r);
    EXPECT_EQ("Checking connection to: " + m_url + "\nCheck succeeded.\n", r.out);
    EXPECT_EQ("127.0.0.1", StoredProxyValue("HttpProxyHost"));
}

TEST_F(WindowE2E, UninstallAllRemovesEveryRegisteredGallery)
{
    const RunResult install =
        Curatool({"--installall", "-configuration", m_collection, "-source", m_source, "-destination", m_gallery});
    ASSERT_EQ(0, install.exitCode) << install.err;
    ASSERT_TRUE(IsRegistered());

    Start({"--uninstallall"});
    const std::string question = FindWindow(kMessageTitle);
    ASSERT_FALSE(question.empty()) << Finished().err;
    Press(question, "Return");  // Yes

    const RunResult r = Finished();
    EXPECT_EQ((Outcome{0, "Uninstall complete.\n", ""}), OutcomeOf(r));
    for (const SampleCategory& category : SampleCategories())
        EXPECT_TRUE(LacksCategory(m_gallery, category.alias)) << category.alias;
    EXPECT_FALSE(Exists(m_gallery + "/imsmanifest.xml"));
    EXPECT_FALSE(IsRegistered());
    EXPECT_FALSE(Exists(StoredConfigurationDirectory()));
}

TEST_F(WindowE2E, WaitForCDWithoutSourceSaysInvalidArgument)
{
    Start({"--waitforcd", "-configuration", m_collection});
    const std::string box = FindWindow(kMessageTitle);
    ASSERT_FALSE(box.empty()) << Finished().err;
    Press(box, "Return");
    EXPECT_EQ((Outcome{1, "", ""}), OutcomeOf(Finished()));
}

TEST_F(WindowE2E, ABareStartOffersTheKnownGalleries)
{
    const RunResult install =
        Curatool({"--installsome", "-configuration", m_collection, "-source", m_source, "-c", "maps"});
    ASSERT_EQ(0, install.exitCode) << install.err;

    Start({"-source", m_source});
    const std::string chooser = FindWindow("^Select a Gallery$");
    ASSERT_FALSE(chooser.empty()) << Finished().err;
    // The list has the focus and its first row is current: the space key selects it.
    Press(chooser, "space");
    Press(chooser, "Return");
    // The chosen gallery comes up in the main window; Escape leaves it without a change.
    const std::string window = FindWindow(kMainWindowTitle);
    ASSERT_FALSE(window.empty()) << Finished().err;
    Press(window, "Escape");
    EXPECT_EQ(0, Finished().exitCode);
    EXPECT_TRUE(HasCategory(DefaultInstallDirectory(), "maps"));
    EXPECT_TRUE(LacksCategory(DefaultInstallDirectory(), "animals"));
}

TEST_F(WindowE2E, WaitForCDGoesOnWhenTheDiscArrives)
{
    const std::string disc = m_base + "/cdrom";
    fs::create_directories(disc);
    Start({"--waitforcd", "-configuration", m_collection, "-source", disc});
    const std::string wait = FindWindow("^ZOLTA Curatool$");
    ASSERT_FALSE(wait.empty()) << Finished().err;
    // The disc is inserted: its data is found by the dialog's next look.
    fs::copy(m_source, disc, fs::copy_options::recursive);
    ChooseAllNextAndFinish(DefaultInstallDirectory());
}
