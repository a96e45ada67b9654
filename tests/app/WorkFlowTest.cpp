#include "CCmdLineContext.h"
#include "CWorkFlow.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace {

std::string ExpectedUsage()
{
    std::ifstream in(CURATOOL_SOURCE_DIR "/tests/e2e/data/usage.txt", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

TEST(WorkFlowUsage, PrintsTheTextOnStandardOutputAndReturns666)
{
    CWorkFlow flow;
    CCmdLineContext context;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = flow.Usage(context, nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();

    EXPECT_EQ(666, code);
    EXPECT_EQ(ExpectedUsage(), out);
    EXPECT_EQ(std::string(CWorkFlow::UsageText()), out);
    EXPECT_EQ("", err) << "no complaints, no heading";
}

TEST(WorkFlowUsage, ComplaintsGoFirstAndToStandardError)
{
    CWorkFlow flow;
    CCmdLineContext context;
    context.errors = {CAtlString(L"Unknown: \"foo\""), CAtlString(L"Illegal: \"guid\"")};
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    flow.Usage(context, nullptr);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ("Errors in parameters:\n   Unknown: \"foo\"\n   Illegal: \"guid\"\n\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(ExpectedUsage(), out);
}

TEST(WorkFlowPrintErrors, NothingForNoErrors)
{
    testing::internal::CaptureStderr();
    CWorkFlow::PrintErrors({});
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(WorkFlowPrintErrors, NonAsciiComplaintsAreWrittenAsUtf8)
{
    testing::internal::CaptureStderr();
    CWorkFlow::PrintErrors({CAtlString(QStringLiteral("Unknown: \"größe\"")), CAtlString(L"")});
    EXPECT_EQ("Errors in parameters:\n   Unknown: \"gr\xC3\xB6\xC3\x9F" "e\"\n   \n\n",
              testing::internal::GetCapturedStderr());
}

TEST(WorkFlowArguments, RestartArgumentsAreTheRawOnesThenTheOpenedFiles)
{
    CCmdLineContext context;
    context.rawArguments = {"-source", "/media/cd"};
    context.openedFiles = {CAtlString(L"/home/u/a.gallerycollection")};
    EXPECT_EQ((QStringList{"-source", "/media/cd", "/home/u/a.gallerycollection"}),
              CWorkFlow::ArgumentsForRestart(context));
}

TEST(WorkFlowArguments, StoredArgumentsComeBackOnceInOrder)
{
    const QStringList arguments{"-configuration", "/path with blanks/ü", "", "--installall"};
    ASSERT_TRUE(CWorkFlow::StoreArguments(arguments));
    ASSERT_TRUE(CWorkFlow::StoreArguments(arguments)) << "storing again replaces";

    QStringList loaded;
    EXPECT_TRUE(CWorkFlow::LoadArguments(loaded));
    EXPECT_EQ(arguments, loaded);

    QStringList second;
    EXPECT_TRUE(CWorkFlow::LoadArguments(second)) << "an absent key is an empty success";
    EXPECT_TRUE(second.isEmpty());
}

}  // namespace
