// The command line of the real binary: usage text, complaints and exit codes.
#include "RunBinary.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using curatool::test::Headless;
using curatool::test::RunCuratool;
using curatool::test::RunOptions;
using curatool::test::RunResult;

const int kUsageExit = 666 & 0xFF;  // what the system makes of the work flow's 666

std::string Usage()
{
    return curatool::test::ReadFile(CURATOOL_SOURCE_DIR "/tests/e2e/data/usage.txt");
}

std::string ErrorBlock(const std::vector<std::string>& lines)
{
    std::string text = "Errors in parameters:\n";
    for (const std::string& line : lines)
        text += "   " + line + "\n";
    return text + "\n";
}

// No privilege tool may be found by accident: a run that relaunches itself must not reach a real sudo.
RunOptions NoPrivilegeTools(RunOptions options = {})
{
    options.setEnvironment["PATH"] = curatool::test::MakeScratchDir("empty-path");
    return options;
}

TEST(CommandLineE2E, EveryHelpSpellingPrintsTheUsageExactly)
{
    ASSERT_FALSE(Usage().empty());
    for (const char* help : {"-h", "--help", "-?", "\\help", "\\h", "--?"}) {
        const RunResult r = RunCuratool({help}, NoPrivilegeTools());
        EXPECT_EQ(kUsageExit, r.exitCode) << help;
        EXPECT_EQ(Usage(), r.out) << help;
        EXPECT_EQ("", r.err) << help;
    }
}

TEST(CommandLineE2E, SecondActionIsIllegalAndEndsInUsage)
{
    const RunResult r = RunCuratool({"--installall", "--uninstall"}, NoPrivilegeTools());
    EXPECT_EQ(kUsageExit, r.exitCode);
    EXPECT_EQ(ErrorBlock({"Illegal: \"uninstall\""}), r.err);
    EXPECT_EQ(Usage(), r.out);
}

TEST(CommandLineE2E, UnknownOptionIsReportedAndTheInstallStillRuns)
{
    const RunResult r = RunCuratool({"--foo", "--installall"}, NoPrivilegeTools());
    EXPECT_EQ(0, r.err.rfind(ErrorBlock({"Unknown: \"foo\""}), 0)) << r.err;
    EXPECT_EQ(std::string::npos, r.out.find("Usage:"));
    EXPECT_NE(kUsageExit, r.exitCode);
    EXPECT_EQ(0, r.signal);
}

TEST(CommandLineE2E, MissingValueEndsInUsage)
{
    const RunResult last = RunCuratool({"-destination"}, NoPrivilegeTools());
    EXPECT_EQ(kUsageExit, last.exitCode);
    EXPECT_EQ(ErrorBlock({"Missing value: \"destination\""}), last.err);
    EXPECT_EQ(Usage(), last.out);

    const RunResult beforeFlag = RunCuratool({"--installall", "-destination", "-verbose"}, NoPrivilegeTools());
    EXPECT_EQ(kUsageExit, beforeFlag.exitCode);
    EXPECT_EQ(ErrorBlock({"Missing value: \"destination\""}), beforeFlag.err);
}

TEST(CommandLineE2E, CaseAndTheUsageTextsMisspellingAreUnknown)
{
    // -h makes the run print and end at once; the unknown tokens only add complaints.
    const RunResult r = RunCuratool({"-INSTALLALL", "--dowloadall", "-installall:x", "-", "-h"}, NoPrivilegeTools());
    EXPECT_EQ(kUsageExit, r.exitCode);
    EXPECT_EQ(ErrorBlock({"Unknown: \"INSTALLALL\"", "Unknown: \"dowloadall\"", "Unknown: \"installall\"",
                          "Unknown: \"\""}),
              r.err);
    EXPECT_EQ(Usage(), r.out);
}

TEST(CommandLineE2E, ComplaintsOfTheHelpObjectAreRecordedOncePerName)
{
    const RunResult r = RunCuratool({"--register", "-?", "-guid", "a", "-guid", "b"}, NoPrivilegeTools());
    EXPECT_EQ(kUsageExit, r.exitCode);
    EXPECT_EQ(ErrorBlock({"Illegal: \"guid\"", "Illegal: \"?\"", "Illegal: \"?\"", "Illegal: \"?\""}), r.err);
}

TEST(CommandLineE2E, NonAsciiArgumentsReachTheComplaintsIntact)
{
    const RunResult r = RunCuratool({"-gr\xC3\xB6\xC3\x9F" "e", "-h"}, NoPrivilegeTools());
    EXPECT_EQ(ErrorBlock({"Unknown: \"gr\xC3\xB6\xC3\x9F" "e\""}), r.err);
}

TEST(CommandLineE2E, WithoutAnyDisplayQtSaysNothing)
{
    RunOptions options = Headless(NoPrivilegeTools());
    options.unsetEnvironment.push_back("XDG_RUNTIME_DIR");

    const RunResult help = RunCuratool({"--help"}, options);
    EXPECT_EQ(kUsageExit, help.exitCode);
    EXPECT_EQ(Usage(), help.out);
    EXPECT_EQ("", help.err);

    const RunResult illegal = RunCuratool({"--downloadall", "--register"}, options);
    EXPECT_EQ(kUsageExit, illegal.exitCode);
    EXPECT_EQ(ErrorBlock({"Illegal: \"register\""}), illegal.err);
}

TEST(CommandLineE2E, WindowBasedRunWithoutDisplayFailsClearly)
{
    RunOptions options = Headless(NoPrivilegeTools());
    options.unsetEnvironment.push_back("XDG_RUNTIME_DIR");
    for (const std::vector<std::string>& args : {std::vector<std::string>{"-authorized"},
                                                  std::vector<std::string>{"--waitforcd"}}) {
        const RunResult r = RunCuratool(args, options);
        EXPECT_EQ(1, r.exitCode);
        EXPECT_EQ("", r.out);
        EXPECT_NE(std::string::npos, r.err.find("no display is available")) << r.err;
        EXPECT_EQ(1, std::count(r.err.begin(), r.err.end(), '\n')) << "one line, nothing from Qt: " << r.err;
    }
}

}  // namespace
