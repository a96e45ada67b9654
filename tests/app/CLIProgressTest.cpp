#include "app/CLIProgress.h"

#include <gtest/gtest.h>

namespace {

std::string Printed(CLIProgress& progress, int stage, const wchar_t* item, int percent, int overall)
{
    testing::internal::CaptureStdout();
    progress.Progress(eGalleryInstallationProgress(stage), nullptr, item, percent, overall);
    return testing::internal::GetCapturedStdout();
}

TEST(CLIProgress, SilentUnlessVerboseAndThenOnlyForFinishedItems)
{
    CLIProgress progress;
    EXPECT_FALSE(progress.IsVerbose());
    EXPECT_EQ("", Printed(progress, 1, L"a.zip", 100, 50));
    progress.SetVerbose(true);
    EXPECT_EQ("", Printed(progress, 6, L"done", 99, 100));
    EXPECT_EQ("", Printed(progress, 2, L"x", 0, 0));
    EXPECT_EQ("", Printed(progress, 2, L"x", -5, 0));
    EXPECT_NE("", Printed(progress, 2, L"x", 101, 0));
}

TEST(CLIProgress, WorkingStagesShareTheLineFinalOnesHaveALineOfTheirOwn)
{
    CLIProgress progress;
    progress.SetVerbose(true);
    struct Case {
        int stage;
        const wchar_t* item;
        int overall;
        const char* line;
    };
    for (const Case& c :
         {Case{1, L"Pictures/animals.zip", 42, "Downloading:  \t[42%] Pictures/animals.zip\n"},
          Case{2, L"a", 0, "Installing:  \t[0%] a\n"}, Case{3, L"b", 100, "Uninstalling:  \t[100%] b\n"},
          Case{4, L"", 7, "Reading:  \t[7%] \n"}, Case{5, L"c", 3, "Canceled\n \t[3%] c\n"},
          Case{6, L"all", 100, "Complete\n \t[100%] all\n"}, Case{7, L"f.gallery", 61, "Failed\n \t[61%] f.gallery\n"},
          Case{0, L"z", 1, " \t[1%] z\n"},  // unknown stages print no word
          Case{8, L"z", 1, " \t[1%] z\n"}})
        EXPECT_EQ(c.line, Printed(progress, c.stage, c.item, 100, c.overall)) << c.stage;
}

TEST(CLIProgress, CategoryNameGoesInParenthesesBeforeTheItem)
{
    const CAtlString category(QStringLiteral("Tiere & Pflanzen é"));
    EXPECT_STREQ("Installing:  \t[5%] (Tiere & Pflanzen \xC3\xA9) pkg/\xE2\x82\xAC.zip\n",
                 CLIProgress::FormatLine(2, &category, L"pkg/\u20AC.zip", 5).GetString());
    const CAtlString unnamed;
    EXPECT_STREQ("Complete\n \t[100%] () x\n", CLIProgress::FormatLine(6, &unnamed, L"x", 100).GetString());
    EXPECT_STREQ("Installing:  \t[5%] y\n", CLIProgress::FormatLine(2, nullptr, L"y", 5).GetString());
}

TEST(CLIProgress, EachFailureIsOneLineOnStandardErrorWithItsReasonAndIsCounted)
{
    CLIProgress progress;  // not verbose: a failure is a complaint all the same
    testing::internal::CaptureStderr();
    progress.FailureReason(nullptr, L"a\x1b.zip", L"HTTP status 404");
    progress.Progress(eGalleryInstallationProgressFailed, nullptr, L"a\x1b.zip", 100, 10);
    progress.Progress(eGalleryInstallationProgressComplete, nullptr, L"x", 100, 15);
    progress.Progress(eGalleryInstallationProgressFailed, nullptr, L"b.zip", 100, 20);  // no reason of its own
    EXPECT_EQ("Failed: a\\x1B.zip: HTTP status 404\nFailed: b.zip\n", testing::internal::GetCapturedStderr());
    EXPECT_EQ(2, progress.GetFailedCount());
}

}  // namespace
