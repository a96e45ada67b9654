// The command line of the real binary: usage text, complaints and exit codes. Every run here is
// on a machine without any display, where Qt must say nothing of its own.
#include "support/RunBinary.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace curatool::test;

std::string ErrorBlock(const std::vector<std::string>& lines)
{
    std::string text = "Errors in parameters:\n";
    for (const std::string& line : lines)
        text += "   " + line + "\n";
    return text + "\n";
}

RunOptions NoDisplay()
{
    RunOptions options = Headless(NoPrivilegeTools());
    options.unsetEnvironment.push_back("XDG_RUNTIME_DIR");
    return options;
}

TEST(CommandLineE2E, EveryHelpSpellingPrintsTheUsageExactly)
{
    ASSERT_FALSE(UsageText().empty());
    for (const char* help : {"-h", "--help", "-?", "\\help", "\\h", "--?"}) {
        const RunResult r = RunCuratool({help}, NoDisplay());
        EXPECT_EQ((Outcome{kUsageExit, UsageText(), ""}), OutcomeOf(r)) << help;
    }
}

TEST(CommandLineE2E, ComplaintsComeBeforeTheUsageText)
{
    struct Case {
        std::vector<std::string> arguments;
        std::vector<std::string> complaints;
    };
    const Case cases[] = {
        {{"--installall", "--uninstall"}, {"Illegal: \"uninstall\""}},
        {{"--downloadall", "--register"}, {"Illegal: \"register\""}},
        {{"-destination"}, {"Missing value: \"destination\""}},
        {{"--installall", "-destination", "-verbose"}, {"Missing value: \"destination\""}},
        // Case counts, and so does the usage text's own misspelling; -h makes the run end in usage.
        {{"-INSTALLALL", "--dowloadall", "-installall:x", "-", "-h"},
         {"Unknown: \"INSTALLALL\"", "Unknown: \"dowloadall\"", "Unknown: \"installall\"", "Unknown: \"\""}},
        // The help object answers to three names, so its complaint comes three times.
        {{"--register", "-?", "-guid", "a", "-guid", "b"},
         {"Illegal: \"guid\"", "Illegal: \"?\"", "Illegal: \"?\"", "Illegal: \"?\""}},
        {{"-gr\xC3\xB6\xC3\x9F"
          "e",
          "-h"},
         {"Unknown: \"gr\xC3\xB6\xC3\x9F"
          "e\""}},
    };
    for (const Case& c : cases) {
        const RunResult r = RunCuratool(c.arguments, NoDisplay());
        EXPECT_EQ((Outcome{kUsageExit, UsageText(), ErrorBlock(c.complaints)}), OutcomeOf(r)) << c.arguments[0];
    }
}

TEST(CommandLineE2E, WindowBasedRunWithoutDisplayFailsClearly)
{
    for (const char* argument : {"-authorized", "--waitforcd"}) {
        const RunResult r = RunCuratool({argument}, NoDisplay());
        EXPECT_EQ(1, r.exitCode);
        EXPECT_EQ("", r.out);
        EXPECT_NE(std::string::npos, r.err.find("no display is available")) << r.err;
        EXPECT_EQ(1, std::count(r.err.begin(), r.err.end(), '\n')) << "one line, nothing from Qt: " << r.err;
    }
}

}  // namespace
