#include "ui/Output.h"

#include <gtest/gtest.h>

namespace {

struct OutputTable : testing::Test {
    void SetUp() override { Output::Initialize(); }
};

TEST_F(OutputTable, HoldsEveryCodeWithItsText)
{
    const std::vector<std::pair<int, const char*>> expected = {
        {0, "Could not load the configuration."},
        {1, "You must have write permissions for the destination directory:\n%1"},
        {2, "Curatool"},
        {3, "Please select another directory."},
        {4, "Could not read preferences."},
        {5, "Could not save preferences."},
        {6, "Could not copy the configuration files."},
        {7, "Could not download the file:\n%1\nMake sure the computer has an active Internet connection."},
        {8, "Could not register file associations."},
        {9, "Cannot find the source for this Gallery."},
        {10, "There is an update for the application. Click OK to start."},
        {11, "Could not download the update for Curatool."},
        {12, "Uninstall complete."},
        {13, "Another instance of this application is running. Please use it instead."},
    };
    for (const auto& [code, text] : expected) {
        EXPECT_STREQ(text, Output::GetText(code).GetString()) << code;
        EXPECT_EQ(QString::fromUtf8(text), Output::GetTranslated(code)) << code;
    }
}

TEST_F(OutputTable, ValueFillsThePlaceholder)
{
    EXPECT_STREQ("You must have write permissions for the destination directory:\n/usr/local/share/G",
                 Output::GetText(1, "/usr/local/share/G").GetString());
    EXPECT_EQ(QStringLiteral("Could not download the file:\nhttp://h/ü\nMake sure the computer has an active "
                             "Internet connection."),
              Output::GetTranslated(7, CAtlStringA(QStringLiteral("http://h/ü"))));
    // A value that itself holds a placeholder is not expanded again.
    EXPECT_STREQ("You must have write permissions for the destination directory:\n%1%1",
                 Output::GetText(1, "%1%1").GetString());
}

TEST_F(OutputTable, ConsoleErrorsGoToStandardErrorOnlyAndUnknownCodesAreEmpty)
{
    EXPECT_STREQ("", Output::GetText(14).GetString());
    EXPECT_STREQ("", Output::GetText(-1, "x").GetString());
    EXPECT_TRUE(Output::GetTranslated(99).isEmpty());

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    Output::Error(1, "/opt/x", false);
    Output::Error(1, false);
    Output::Error(1234, false);
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ("You must have write permissions for the destination directory:\n/opt/x\n"
              "You must have write permissions for the destination directory:\n%1\n"
              "\n",
              testing::internal::GetCapturedStderr());
}

}  // namespace
