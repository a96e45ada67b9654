// The window-based runs start the program again through a privilege tool. Fake tools on a
// scratch PATH stand in for the desktop's.
#include "RunBinary.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using curatool::test::RunCuratool;
using curatool::test::RunOptions;
using curatool::test::RunResult;

// A folder for PATH holding one tool script.
std::string ToolFolder(const std::string& tool, const std::string& script)
{
    const std::string folder = curatool::test::MakeScratchDir("tools");
    const std::string path = folder + "/" + tool;
    curatool::test::WriteFile(path, "#!/bin/sh\n" + script);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return folder;
}

// A tool that writes each of its arguments on a line of its own and ends with code 5.
const char kRecordingTool[] = "for a in \"$@\"; do printf '%s\\n' \"$a\" >> \"$TOOL_LOG\"; done\nexit 5\n";

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    return lines;
}

RunOptions WithTool(const std::string& folder, const std::string& log)
{
    RunOptions options;
    options.setEnvironment["PATH"] = folder + ":/usr/bin:/bin";
    options.setEnvironment["TOOL_LOG"] = log;
    return options;
}

TEST(RelaunchE2E, WindowBasedRunStartsItselfAgainThroughKdesuAndEndsWithItsCode)
{
    const std::string log = curatool::test::MakeScratchDir("log") + "/args";
    const RunResult r = RunCuratool({"-source", "/media/my disc", "-zz"},
                                    WithTool(ToolFolder("kdesu", kRecordingTool), log));
    EXPECT_EQ(5, r.exitCode);
    EXPECT_EQ("", r.err) << "the parent prints nothing of its own";
    const std::string program = std::filesystem::canonical(CURATOOL_BINARY).string();
    EXPECT_EQ((std::vector<std::string>{"--", "'" + program + "'", "-source", "/media/my disc", "-zz", "-authorized"}),
              Lines(curatool::test::ReadFile(log)));
}

TEST(RelaunchE2E, GksudoGetsOneEscapedCommand)
{
    const std::string log = curatool::test::MakeScratchDir("log") + "/args";
    const RunResult r = RunCuratool({"--uninstallall", "-source", "a b;c"}, WithTool(ToolFolder("gksudo", kRecordingTool), log));
    EXPECT_EQ(5, r.exitCode);
    const std::string program = std::filesystem::canonical(CURATOOL_BINARY).string();
    EXPECT_EQ((std::vector<std::string>{program + " --uninstallall -source a\\ b\\;c -authorized"}),
              Lines(curatool::test::ReadFile(log)));
}

TEST(RelaunchE2E, CommandLineModesAndAuthorizedRunsDoNotRelaunch)
{
    const std::string log = curatool::test::MakeScratchDir("log") + "/args";
    const RunOptions options = WithTool(ToolFolder("kdesu", kRecordingTool), log);
    EXPECT_NE(5, RunCuratool({"--register"}, options).exitCode);
    EXPECT_NE(5, RunCuratool({"-h"}, options).exitCode);
    EXPECT_NE(5, RunCuratool({"--waitforcd", "-authorized", "-h"}, options).exitCode);
    EXPECT_FALSE(curatool::test::Exists(log)) << curatool::test::ReadFile(log);
}

TEST(RelaunchE2E, WithoutAnyToolTheRunEndsWithZeroAndDoesNothing)
{
    RunOptions options;
    options.setEnvironment["PATH"] = curatool::test::MakeScratchDir("empty-path");
    const RunResult r = RunCuratool({"-zz"}, options);
    EXPECT_EQ(0, r.exitCode);
    EXPECT_EQ("", r.out);
    EXPECT_EQ("", r.err);
}

TEST(RelaunchE2E, TheRelaunchingParentDoesNotHoldTheInstanceLock)
{
    // The tool runs the program once more while the parent waits for it; that child must get
    // through the lock.
    const std::string script =
        std::string("exec \"") + CURATOOL_BINARY + "\" --help\n";
    RunOptions options;
    options.setEnvironment["PATH"] = ToolFolder("kdesu", script) + ":/usr/bin:/bin";
    const RunResult r = RunCuratool({"--uninstallall"}, options);
    EXPECT_EQ(666 & 0xFF, r.exitCode);
    EXPECT_EQ(curatool::test::ReadFile(CURATOOL_SOURCE_DIR "/tests/e2e/data/usage.txt"), r.out);
    EXPECT_EQ("", r.err);
}

}  // namespace
