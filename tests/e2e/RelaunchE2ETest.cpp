// The window-based runs start the program again through a privilege tool. Fake tools on a
// scratch PATH stand in for the desktop's.
#include "support/E2EGallery.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using namespace curatool::test;

// A folder for PATH holding one tool script.
std::string ToolFolder(const std::string& tool, const std::string& script)
{
    const std::string folder = MakeScratchDir("tools");
    const std::string path = folder + "/" + tool;
    WriteFile(path, "#!/bin/sh\n" + script);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return folder;
}

// A tool that writes each of its arguments on a line of its own and ends with code 5.
const char kRecordingTool[] = "for a in \"$@\"; do printf '%s\\n' \"$a\" >> \"$TOOL_LOG\"; done\nexit 5\n";

RunOptions WithTool(const std::string& folder, const std::string& log)
{
    RunOptions options;
    options.setEnvironment["PATH"] = folder + ":/usr/bin:/bin";
    options.setEnvironment["TOOL_LOG"] = log;
    return options;
}

TEST(RelaunchE2E, WindowBasedRunStartsItselfAgainThroughTheToolAndEndsWithItsCode)
{
    const std::string program = CuratoolProgram();
    struct Case {
        const char* tool;
        std::vector<std::string> arguments;
        std::vector<std::string> toolGot;
    };
    const Case cases[] = {
        {"kdesu",
         {"-source", "/media/my disc", "-zz"},
         {"--", "'" + program + "'", "-source", "/media/my disc", "-zz", "-authorized"}},
        // gksudo gets one escaped command line.
        {"gksudo", {"--uninstallall", "-source", "a b;c"}, {program + " --uninstallall -source a\\ b\\;c -authorized"}},
    };
    for (const Case& c : cases) {
        const std::string log = MakeScratchDir("log") + "/args";
        const RunResult r = RunCuratool(c.arguments, WithTool(ToolFolder(c.tool, kRecordingTool), log));
        EXPECT_EQ(5, r.exitCode) << c.tool;
        EXPECT_EQ("", r.err) << "the parent prints nothing of its own";
        EXPECT_EQ(c.toolGot, Lines(ReadFile(log))) << c.tool;
    }
}

TEST(RelaunchE2E, CommandLineModesAndAuthorizedRunsDoNotRelaunch)
{
    const std::string log = MakeScratchDir("log") + "/args";
    const RunOptions options = WithTool(ToolFolder("kdesu", kRecordingTool), log);
    EXPECT_NE(5, RunCuratool({"--register"}, options).exitCode);
    EXPECT_NE(5, RunCuratool({"-h"}, options).exitCode);
    EXPECT_NE(5, RunCuratool({"--waitforcd", "-authorized", "-h"}, options).exitCode);
    EXPECT_FALSE(Exists(log)) << ReadFile(log);

    // A window-based run without any tool ends with zero and does nothing.
    EXPECT_EQ((Outcome{0, "", ""}), OutcomeOf(RunCuratool({"-zz"}, NoPrivilegeTools())));
}

TEST(RelaunchE2E, TheRelaunchingParentDoesNotHoldTheInstanceLock)
{
    // The tool runs the program once more while the parent waits for it; that child must get
    // through the lock.
    const std::string script = std::string("exec \"") + CURATOOL_BINARY + "\" --help\n";
    RunOptions options;
    options.setEnvironment["PATH"] = ToolFolder("kdesu", script) + ":/usr/bin:/bin";
    const RunResult r = RunCuratool({"--uninstallall"}, options);
    EXPECT_EQ((Outcome{kUsageExit, UsageText(), ""}), OutcomeOf(r));
}

}  // namespace
